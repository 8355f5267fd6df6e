#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/PredictionInterval.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/RowLimits.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What the interval of one Y column takes: N, the means and the variances are of the rows in which it is measured.
struct YIntervalTerms : IntervalTerms {
  ScoreMoments scores;
};

/// What a model needs to judge any row by: what T2, limits and intervals are computed from. Part of the stored model.
struct RowTerms {
  ScoreMoments scores;                          ///< of the training rows; without means where T2 has no meaning
  std::optional<DistanceMoments> distances;     ///< of the training rows; nothing where they have none or are alike
  /// Of rows while they were left out: nothing where none ever was, no rows where the rounds leave nothing to measure a
  /// distance by, or all distances are the same.
  std::optional<DistanceMoments> leftOut;
  std::vector<std::optional<YIntervalTerms>> intervals;  ///< one for each Y column; nothing without left-out errors
};

/// What a model says of the rows that it was fitted to.
struct RowStatistics {
  std::vector<double> t2;                 ///< not a number where a row has none
  std::vector<double> absoluteDistances;  ///< residual deviation of X, in scaled units; likewise
  RealMatrix fitted;                      ///< rows by Y columns, in the units of the table; no rows without Y
  RealMatrix leftOut;                     ///< likewise, while they were left out; no rows where none ever was
};

/// Limits that 95 and 99 % of the rows stay within; nothing where there is none.
struct LimitPair {
  std::optional<double> at95;
  std::optional<double> at99;
};

/// Limits of Hotelling's T2 and of the normalised distance to the model.
struct RowLimits {
  LimitPair t2;
  LimitPair distance;
};

/// Of rows that the model was fitted to.
KALMIA_EXPORT RowLimits LimitsOfTrainingRows(const RowTerms& terms);

/// Of rows that the model has not seen. Where no row was ever left out, the limit of the distance is that of training
/// rows, widened as DistanceLimitWithoutRefits has it for a model of `components` components.
KALMIA_EXPORT RowLimits LimitsOfNewRows(const RowTerms& terms, int components);

/// The names of the limits that a row passes: "T2 95 %", "T2 99 %", "distance 95 %", "distance 99 %". A number that is
/// none passes no limit; an infinite one passes all.
KALMIA_EXPORT std::vector<std::string> LimitsPassed(const RowLimits& limits, double t2, double distance);

/// T2 of a row's scores by the moments; not a number without scores, or where T2 has no meaning.
KALMIA_EXPORT double T2OfRow(const ScoreMoments& moments, const std::vector<double>& scores);

}  // namespace kalmia::analysis
