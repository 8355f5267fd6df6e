#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/RowTerms.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// How rows lie by a model: what they are flagged for, and how far their Y can be from what is predicted.
struct KALMIA_EXPORT RowDiagnosis {
  RowLimits limits;  ///< that the rows were held against
  std::vector<double> t2;                 ///< not a number where a row, or the model, has none
  std::vector<double> distances;          ///< normalised, see DistanceToModel
  std::vector<double> absoluteDistances;  ///< in scaled units
  std::vector<std::vector<std::string>> flags;  ///< of each row, see LimitsPassed
  /// Rows by Y columns: half the width of the interval that covers 95 % of new values; not a number where there is
  /// none. The interval of a row with a flag is an extrapolation.
  RealMatrix halfWidths;

  bool IsBeyond(std::size_t row) const { return !flags[row].empty(); }
  bool IsBeyond99(std::size_t row) const;       ///< a limit of 99 %, of T2 or of the distance
  bool HasInterval(std::size_t row) const;  ///< of some Y column
};

/// Holds rows that the model has not seen against its limits. Notes how many rows lie beyond a limit of 99 %, and why
/// there are no limits or no intervals, where that is so. A model of classes has no intervals.
KALMIA_EXPORT RowDiagnosis Diagnose(const StoredPLS& model, const std::vector<RowPrediction>& rows, Notes* notes);
KALMIA_EXPORT RowDiagnosis Diagnose(const StoredOPLS& model, const std::vector<RowPrediction>& rows, Notes* notes);
KALMIA_EXPORT RowDiagnosis Diagnose(const StoredO2PLS& model, const std::vector<RowPrediction>& rows, Notes* notes);
KALMIA_EXPORT RowDiagnosis Diagnose(const StoredPCA& model, const std::vector<RowScores>& rows, Notes* notes);

/// Says so where rows that were predicted, with names and X cells as `rows`, are the very ones that the model was
/// fitted to: they have their names, in their order, and those without holes their T2 and absolute distance, within
/// what roundings make of scores of single precision (0.001, or 0.1 % where they are above 1). Nothing of a model
/// without its rows, or where all have holes.
KALMIA_EXPORT void NoteOwnRows(const ModelInfo& model, const NewRows& rows, const RowDiagnosis& diagnosis,
                               Notes* notes);

/// The same of the rows that the model was fitted to, from its row statistics: their limits are those of training rows,
/// and they have no intervals. Empty for a model without row statistics.
KALMIA_EXPORT RowDiagnosis DiagnoseTrainingRows(const ModelInfo& model);

}  // namespace kalmia::analysis
