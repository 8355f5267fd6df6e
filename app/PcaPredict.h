#pragma once

#include <string>
#include <vector>

#include "app/CsvTable.h"
#include "app/CsvText.h"
#include "app/Json.h"
#include "app/NewRows.h"
#include "app/Notes.h"
#include "app/PcaScores.h"

namespace kalmia::app {

/// New rows and where they lie in a PCA model.
struct PcaPredictions {
  NewRows rows;
  std::vector<RowScores> scores;
};

// `kalmia predict` for a PCA model, step by step.

PcaPredictions PredictTable(const StoredPca& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress);
std::string PredictText(const StoredPca& model, const CsvTable& table, const PcaPredictions& result);
constexpr auto PredictFormat(const StoredPca& /*model*/) { return "kalmia-predict-pca"; }
void AddPredictJson(const StoredPca& model, const PcaPredictions& result, Json* json);
/// For each row its scores, its distance to the model and the reason where it has none.
CsvFile PredictCsv(const StoredPca& model, const PcaPredictions& result, const std::string& file,
                   const CsvMarks& marks);

}  // namespace kalmia::app
