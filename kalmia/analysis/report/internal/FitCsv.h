#pragma once

#include <vector>

#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/CsvText.h"

namespace kalmia::analysis {

/// fit.csv: each row's measured and predicted values of every Y column.
CsvFile FitCsv(const ModelData& data, const std::vector<RowPrediction>& fitted, const CsvMarks& marks);

/// coefficients.csv: the intercept of each Y column, then the slopes of each X column.
CsvFile CoefficientsCsv(const Coefficients& coefficients, const YModelInfo& model, const CsvMarks& marks);

}  // namespace kalmia::analysis
