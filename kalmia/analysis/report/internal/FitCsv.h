#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/report/internal/ClassReport.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/analysis/validation/JackKnife.h"

namespace kalmia::analysis {

// CSV files that several kinds of fits write alike.

/// Each row's measured and predicted values of every column; `measured` column by column, a hole NaN. With `leftOut` a
/// third one, predicted while the row was left out, rows by columns; empty where it is without rows. Of classes, in
/// front of these, the row's own, the one that it is assigned to, and the one while it was left out. A title that is
/// there already, as "cv class" of a class called "class", has " (2)" behind it.
CsvFile FitCsv(const std::string& file, const std::vector<std::string>& rowNames,
               const std::vector<std::string>& columnNames, const std::vector<std::vector<double>>& measured,
               const std::vector<RowPrediction>& fitted, const CsvMarks& marks, const RealMatrix* leftOut = nullptr,
               const std::optional<RowClasses>& classes = std::nullopt);

/// coefficients.csv: the intercept of each Y column, then the slopes of each X column. With `jackKnife`, of each Y
/// column the slopes, then the intercept, also their standard errors, intervals and p; empty where it has no cells.
CsvFile CoefficientsCsv(const Coefficients& coefficients, const YModelInfo& model, const CsvMarks& marks,
                        const std::vector<JackKnifeResult>* jackKnife = nullptr);

/// vip.csv: each kind of VIP of the X columns, called "VIP" and its name where it has one, then the standard errors and
/// intervals of each; empty where `jackKnife` has none.
struct NamedImportance {
  std::string name;
  std::vector<double> vip;
};
CsvFile VipCsv(const std::vector<std::string>& xNames, const std::vector<NamedImportance>& kinds,
               const std::vector<JackKnifeResult>& jackKnife, const CsvMarks& marks);

/// Of the model in the units of the file; without components the means of Y.
Coefficients CoefficientsOf(const StoredPLS& model);
Coefficients CoefficientsOf(const StoredOPLS& model);

}  // namespace kalmia::analysis
