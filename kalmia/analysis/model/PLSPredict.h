#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/table/CsvText.h"
#include "kalmia/analysis/text/Json.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// New rows and what a PLS, OPLS or O2PLS model says of them.
struct PLSPredictions {
  NewRows rows;
  std::vector<std::vector<float>> measured;  ///< for each Y of the model its cells, or nothing if it is not there
  std::vector<RowPrediction> predictions;
  int components = 0;                        ///< of the model
  Notes notes;                               ///< what was done of its own accord
};

// `kalmia predict` for a PLS, OPLS or O2PLS model, step by step. Measured values of Y serve as a check.

PLSPredictions PredictTable(const StoredPLS& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
PLSPredictions PredictTable(const StoredOPLS& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
PLSPredictions PredictTable(const StoredO2PLS& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
std::string PredictText(const YModelInfo& model, const CsvTable& table, const PLSPredictions& result);
constexpr auto PredictFormat(const YModelInfo& /*model*/) { return "kalmia-predict"; }
constexpr auto PredictFormat(const StoredO2PLS& /*model*/) { return "kalmia-predict-o2pls"; }
void AddPredictJson(const YModelInfo& model, const PLSPredictions& result, Json* json);
void AddPredictJson(const StoredO2PLS& model, const PLSPredictions& result, Json* json);
/// For each row the predicted values, and the measured ones under "measured NAME" where the table has a column for a Y
/// (empty where it has none), the distance to the model and the reason for a missing prediction.
CsvFile PredictCsv(const YModelInfo& model, const PLSPredictions& result, const std::string& file,
                   const CsvMarks& marks);

}  // namespace kalmia::analysis
