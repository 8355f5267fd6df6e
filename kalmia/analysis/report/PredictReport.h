#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/model/PCAPredictions.h"
#include "kalmia/analysis/model/PLSPredictions.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Where a prediction came from and went.
struct PredictFiles {
  std::string model, table;
  std::vector<std::string> csv;
  std::vector<std::string> svg;  ///< drawings of the figures
};

/// A line for each row: what is predicted of Y with its interval, beside what was measured, or its class with the
/// logarithm of the odds, or its scores; T2, the distance to the model, the limits that it passes, and why nothing can
/// be said. Below it the limits, how each Y that was measured was met (PredictionError), or how many rows of each class
/// are assigned to which, and what columns contribute to rows that were asked for.
KALMIA_EXPORT std::string PredictText(const YModelInfo& model, const Table& table, const PLSPredictions& result,
                                      const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::string PredictText(const StoredPCA& model, const Table& table, const PCAPredictions& result,
                                      const std::vector<RowContributions>& contributions = {});

/// What a model says of new rows as JSON, format kalmia-predict, or kalmia-predict-o2pls or kalmia-predict-pca.
KALMIA_EXPORT std::string PredictJson(const StoredPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes, const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::string PredictJson(const StoredOPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes, const std::vector<RowContributions>& contributions = {});
KALMIA_EXPORT std::string PredictJson(const StoredO2PLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes);
KALMIA_EXPORT std::string PredictJson(const StoredPCA& model, const PCAPredictions& result, const PredictFiles& files,
                        const Notes& notes, const std::vector<RowContributions>& contributions = {});

/// For each row the predicted values with their intervals, and the measured ones under "measured NAME" where the table
/// has a column for a Y (empty where it has none), of classes also the class and the log odds, scores, T2, distances,
/// flags and the reason for a missing prediction.
KALMIA_EXPORT CsvFile PredictCsv(const YModelInfo& model, const PLSPredictions& result, const std::string& file,
                   const CsvMarks& marks);
/// For each row its scores, T2, distances, flags, and the reason where it has none.
KALMIA_EXPORT CsvFile PredictCsv(const StoredPCA& model, const PCAPredictions& result, const std::string& file,
                   const CsvMarks& marks);

}  // namespace kalmia::analysis
