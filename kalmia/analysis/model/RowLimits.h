#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// Limits that a given share of the rows stays within, if the model holds for them. Shares from 0.5 to 0.9999, not
// checked.

/// Hotelling's T2 of rows that the model was fitted to, N rows and A components:
///
///   (N - 1)^2 / N  B(share; A / 2, (N - A - 1) / 2),  B the quantile of the beta distribution.
///
/// Approximate where scores correlate or rows have holes. Nothing for A < 1 and N <= A + 1.
/// Source: N. D. Tracy, J. C. Young, R. L. Mason, J. Qual. Technol. 24 (1992) 88-95.
KALMIA_EXPORT std::optional<double> T2LimitOfTrainingRows(std::size_t rows, int components, double share);

/// The same of rows that the model has not seen, whose T2 takes means and variances of the training rows:
///
///   A (N^2 - 1) / (N (N - A))  F(share; A, N - A).
///
/// Nothing for A < 1 and N <= A.
/// Sources: Tracy et al. as above; NIST/SEMATECH e-Handbook of Statistical Methods, 6.5.4.3.4.
KALMIA_EXPORT std::optional<double> T2LimitOfNewRows(std::size_t rows, int components, double share);

/// The distribution of squared distances to a model, as that of a multiple of chi-square.
struct DistanceMoments {
  /// That have a distance: of fewer than ten the limit is a guess, of none there is no limit.
  std::size_t rows = 0;
  double mean = 0.0;       ///< of the squared distances v
  double degrees = 1.0;    ///< 2 mean(v)^2 / var(v), at least 1; var with divisor n - 1
};

/// Of distances d (not a number: none), v = d^2. For rows that the model was fitted to, these are their distances; for
/// new rows those of rows while they were left out, each over the pooled distance of the model it was left out of.
/// Nothing where fewer than two rows have a distance, or all have the same.
/// Neighbouring channels of spectra are anything but independent: limits that count columns as degrees of freedom flag
/// a third of good spectra.
/// Sources: G. E. P. Box, Ann. Math. Stat. 25 (1954) 290-302; P. Nomikos, J. F. MacGregor, Technometrics 37 (1995)
/// 41-59; A. Pomerantsev, J. Chemometrics 22 (2008) 601-609.
KALMIA_EXPORT std::optional<DistanceMoments> MomentsOfDistances(const std::vector<double>& distances);

/// sqrt(mean(v) chi2(share; degrees) / degrees), to be compared with a distance d.
KALMIA_EXPORT double DistanceLimit(const DistanceMoments& moments, double share);

/// The limit of new rows from that of training rows, where no row was ever left out: sqrt(N / (N - A - 1)) times it.
/// Nothing for N <= A + 1.
KALMIA_EXPORT std::optional<double> DistanceLimitWithoutRefits(double trainingLimit, std::size_t rows, int components);

}  // namespace kalmia::analysis
