#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/ClassPredictions.h"
#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// New rows and what a PLS, OPLS or O2PLS model says of them.
struct PLSPredictions {
  NewRows rows;
  std::vector<std::vector<double>> measured;  ///< for each Y of the model its cells, a hole NaN; or nothing, if it is
                                              ///< not there, or of classes
  std::vector<RowPrediction> predictions;  ///< of classes their dummies
  std::optional<ClassPredictions> classes;  ///< of a model of classes
  std::vector<std::string> scoreNames;  ///< of their scores: t1, t2, to1, or u1, uo1 of a model turned around
  RowDiagnosis diagnosis;
  int components = 0;                        ///< of the model
  Notes notes;                               ///< what was done of its own accord
};

/// What the model says of rows that were read for it; measured values of Y in the table serve as a check. `progress`
/// may be null. Throws Stopped where the bar wants to stop.
KALMIA_EXPORT PLSPredictions PredictTable(const StoredPLS& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
KALMIA_EXPORT PLSPredictions PredictTable(const StoredOPLS& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
KALMIA_EXPORT PLSPredictions PredictTable(const StoredO2PLS& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress);

}  // namespace kalmia::analysis
