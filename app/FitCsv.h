#pragma once

#include <vector>

#include "app/CsvText.h"
#include "app/ModelData.h"
#include "app/ModelDiagnostics.h"
#include "app/Prediction.h"
#include "app/StoredModel.h"

namespace kalmia::app {

/// fit.csv: each row's measured and predicted values of every Y column.
CsvFile FitCsv(const ModelData& data, const std::vector<RowPrediction>& fitted, const CsvMarks& marks);

/// coefficients.csv: the intercept of each Y column, then the slopes of each X column.
CsvFile CoefficientsCsv(const Coefficients& coefficients, const YModelFrame& model, const CsvMarks& marks);

}  // namespace kalmia::app
