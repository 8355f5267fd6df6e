#pragma once

#include <vector>

#include "app/CsvText.h"
#include "app/ModelData.h"
#include "app/Prediction.h"

namespace kalmia::app {

/// fit.csv: each row's measured and predicted values of every Y column.
CsvFile FitCsv(const ModelData& data, const std::vector<RowPrediction>& fitted);

}  // namespace kalmia::app
