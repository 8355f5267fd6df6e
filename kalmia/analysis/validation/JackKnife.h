#pragma once

#include <limits>
#include <vector>

#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// How certain the numbers of a model are, a cell for each.
struct JackKnifeResult {
  int degrees = 0;  ///< G - 1; with 1 or 2 of them intervals are wide and mean little
  std::vector<double> standardErrors;
  std::vector<double> lower;  ///< b - t s, t the quantile of |T| with G - 1 degrees
  std::vector<double> upper;  ///< b + t s
  std::vector<double> p;      ///< P(|T| > |b / s|); not a number where s is 0
};

/// The jack-knife of numbers b_k of a model, its coefficients in the units of the table or its VIP, by what they are in
/// the rounds of a validation:
///
///   s_k^2 = mean over the repeats of (G - 1) / G sum over the rounds g of (b_k(-g) - b_k)^2,
///
/// about the numbers of the model of all rows. Where s is 0 the interval is b alone. Groups of unequal size have equal
/// weight. Each round brings one vector with a cell for each number, in units that are the same in all rounds; a column
/// without spread in a round has the coefficient 0 there. p is not corrected for the number of columns.
/// Source: H. Martens, M. Martens, Food Qual. Prefer. 11 (2000) 5-16.
class KALMIA_EXPORT JackKnife {
 public:
  /// G groups, at least 2.
  JackKnife(std::vector<double> numbersOfModel, int groups);

  /// The next round; rounds of all repeats alike. Sums run in the order of the calls.
  void AddRound(const std::vector<double>& numbers);

  /// After whole repeats, one at least: intervals of the probability `share` (0.5 to 0.9999), cut at `least` below, as
  /// at 0 for numbers that cannot be negative.
  /// Cost: less than a microsecond a number. Throws Stopped where `progress`, which may be null, wants to stop.
  JackKnifeResult Result(double share = 0.95, double least = -std::numeric_limits<double>::infinity(),
                         NCProgress* progress = nullptr) const;

 private:
  std::vector<double> numbers_;
  std::vector<double> squares_;  ///< sums over the rounds
  int groups_;
  int rounds_ = 0;
};

/// The intervals and p of numbers with these standard errors, of `degrees` (G - 1) degrees of freedom, as
/// JackKnife::Result has them. p is not a number where that over its standard error is none.
KALMIA_EXPORT JackKnifeResult IntervalsOf(const std::vector<double>& numbers, const std::vector<double>& standardErrors,
                                          int degrees, double share = 0.95,
                                          double least = -std::numeric_limits<double>::infinity(),
                                          NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
