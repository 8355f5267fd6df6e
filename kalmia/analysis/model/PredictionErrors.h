#pragma once

#include <cstddef>

#include "kalmia/analysis/model/PLSPredictions.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// How predictions of a Y column meet what was measured, over the rows that have both: y measured, p predicted, in the
/// units of Y. What cannot be told is not a number.
struct PredictionError {
  int rows = 0;
  double rmsep = kNotANumber;  ///< sqrt(sum of (p - y)^2 / rows)
  double bias = kNotANumber;   ///< mean of p - y
  /// Of the regression line of y on p: sum (p - mean p) (y - mean y) / sum (p - mean p)^2. 1 where predictions need no
  /// correction but the bias; it takes two rows and predictions that differ.
  double slope = kNotANumber;
  int rowsWithInterval = 0;      ///< of these rows
  double covered = kNotANumber;  ///< share of these whose measured value lies inside its interval of 95 %
};

/// Of Y column j, from 0; no rows where the table does not have it.
KALMIA_EXPORT PredictionError ErrorOf(const PLSPredictions& predictions, std::size_t j);

/// Says of which Y columns fewer than half of at least 5 measured values lie inside their intervals, as where they are
/// in other units than those of the model.
KALMIA_EXPORT void NoteUncovered(const YModelInfo& model, const PLSPredictions& predictions, Notes* notes);

}  // namespace kalmia::analysis
