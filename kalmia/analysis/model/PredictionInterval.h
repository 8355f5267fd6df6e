#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Where the scores of a model's training rows lie: what Hotelling's T2 of any row is measured by.
struct ScoreMoments {
  std::size_t rows = 0;            ///< that took part, n
  std::vector<double> means;       ///< of each component
  std::vector<double> variances;   ///< divisor n - 1; not a number of fewer than two rows
};

/// Of the scores, N x A, over the rows with all scores, or those of them that `takesPart` names, N cells, where it is
/// given: for one Y column the rows that it is measured in.
KALMIA_EXPORT ScoreMoments MomentsOfScores(const RealMatrix& scores, const std::vector<bool>* takesPart = nullptr);

/// T2 = sum over the components of (t_a - mean_a)^2 / var_a, of A scores; not a number if one of them is none.
KALMIA_EXPORT double T2OfScores(const ScoreMoments& moments, const double* scores);

/// How far one Y column of a new row can be from what is predicted: what a stored model keeps.
struct IntervalTerms {
  std::size_t rows = 0;  ///< N: training rows in which the column is measured
  int degrees = 0;       ///< N - 1 - A
  /// The root of the mean of e_i^2 / (1 + 1/N + h_i): an error of the left-out row i, less what its place among the
  /// scores adds to it.
  double s = 0.0;
};

/// From e_i^2, the squared errors of left-out rows in the units of the table, and T2 of the rows in the model of all,
/// with the moments of the N rows; h_i = T2_i / (N - 1). The mean is over the rows that have both; cells of others are
/// not numbers. Nothing where N - 1 - A < 1 or no row has both.
/// Sources: K. Faber, R. Bro, Chemom. Intell. Lab. Syst. 61 (2002) 133-149; N. M. Faber, X.-H. Song, P. K. Hopke,
/// Trends Anal. Chem. 22 (2003) 330-334; A. Hoskuldsson, J. Chemometrics 2 (1988) 211-228.
KALMIA_EXPORT std::optional<IntervalTerms> IntervalTermsOf(const std::vector<double>& squaredErrors,
                                                           const std::vector<double>& t2, std::size_t rows,
                                                           int components);

/// Half the width of the interval that covers a new row's value with the probability `share` (0.5 to 0.9999):
///
///   t(share; N - 1 - A) s sqrt(1 + 1/N + T2 / (N - 1)),  t the quantile of |T|.
///
/// It grows with T2; rows beyond the limits of the model are extrapolated, whatever the interval says.
class KALMIA_EXPORT IntervalHalfWidth {
 public:
  IntervalHalfWidth(const IntervalTerms& terms, double share);  ///< finds the quantile, some microseconds
  double At(double t2) const;  ///< not a number for a T2 that is none

 private:
  double rows_;
  double factor_;
};

}  // namespace kalmia::analysis
