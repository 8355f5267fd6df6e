#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/table/CsvText.h"
#include "kalmia/analysis/text/Json.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// New rows and where they lie in a PCA model.
struct PCAPredictions {
  NewRows rows;
  std::vector<RowScores> scores;
  Notes notes;  ///< what was done of its own accord
};

// `kalmia predict` for a PCA model, step by step.

PCAPredictions PredictTable(const StoredPCA& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
std::string PredictText(const StoredPCA& model, const CsvTable& table, const PCAPredictions& result);
constexpr auto PredictFormat(const StoredPCA& /*model*/) { return "kalmia-predict-pca"; }
void AddPredictJson(const StoredPCA& model, const PCAPredictions& result, Json* json);
/// For each row its scores, its distance to the model and the reason where it has none.
CsvFile PredictCsv(const StoredPCA& model, const PCAPredictions& result, const std::string& file,
                   const CsvMarks& marks);

}  // namespace kalmia::analysis
