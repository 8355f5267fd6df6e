#pragma once

#include "kalmia/statistics/internal/ChiSquareTail.h"
#include "kalmia/statistics/internal/PartialTable.h"

namespace kalmia {

/// When a partial table is judged by the chi-square distribution rather than exactly: its expected counts are above
/// `smallest` in all cells, and at least `expected` in at least `percent` % of them. Never where `expected` is not
/// above 0. Source: Cochran (1954), Biometrics 10, 417-451.
struct CochranConditions {
  double expected;
  double percent;
  double smallest;

  bool AllowApproximation() const { return expected > 0; }
  bool AreMetBy(const PartialTable& table) const;
};

/// Freeman and Halton's statistic of the completions of a partial table, -2 ln(gamma P) with P a completion's
/// probability among them, is distributed nearly as chi-square with (r - 1)(c - 1) degrees of freedom, where
/// gamma = (2 pi)^(df / 2) n^(-(r c - 1) / 2) prod R_i^((c - 1) / 2) prod C_j^((r - 1) / 2).
/// Source: Freeman & Halton (1951), Biometrika 38, 141-149; in the network: Mehta & Patel (1986), ACM Trans. Math.
/// Software 12, 154-161.
class FreemanHaltonStatistic {
 public:
  explicit FreemanHaltonStatistic(const PartialTable& table);
  /// Of the completions at most as probable as one of the probability e^logProbability.
  double Tail(double logProbability) const { return tail_(-2 * (logGamma_ + logProbability)); }

 private:
  double logGamma_;
  ChiSquareTail tail_;
};

}  // namespace kalmia
