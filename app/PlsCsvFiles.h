#pragma once

#include <string>
#include <vector>

#include "app/PlsOutcome.h"

namespace kalmia::app {

/// A CSV file still in memory.
struct CsvFile {
  std::string name;  ///< within the folder
  std::string bytes;
};

/// The files of `kalmia pls --csv`, for a model that kept components: one line for each row or column of the table,
/// under its name; commas, decimal points, full precision; an empty field for what is missing or cannot be computed.
std::vector<CsvFile> PlsCsvFiles(const PlsOutcome& outcome);

/// The names of these files, before there is a model.
std::vector<std::string> PlsCsvFileNames();

constexpr auto kPredictionsFile = "predictions.csv";

/// predictions.csv: for each row the predicted values, and the measured ones under "measured NAME" where `measured` has
/// a column for a Y (empty where it has none), the distance to the model and the reason for a missing prediction.
CsvFile PredictionsCsv(const StoredModel& model, const std::vector<std::string>& rowNames,
                       const std::vector<RowPrediction>& rows, const std::vector<std::vector<float>>& measured);

}  // namespace kalmia::app
