#include "kalmia/analysis/report/internal/FitCsv.h"

#include <limits>
#include <string>

namespace kalmia::analysis {

CsvFile FitCsv(const ModelData& data, const std::vector<RowPrediction>& fitted, const CsvMarks& marks) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  CsvText csv(marks);
  csv.Field("row");
  for (const std::string& y : data.yNames) csv.Field("measured " + y).Field("predicted " + y);
  csv.EndLine();
  for (std::size_t i = 0; i < fitted.size(); ++i) {
    csv.Field(data.rowNames[i]);
    for (std::size_t j = 0; j < data.yNames.size(); ++j) {
      csv.Cell(data.y[static_cast<int>(i) + 1][static_cast<int>(j) + 1]);
      csv.Number(fitted[i].y.empty() ? kNone : fitted[i].y[j]);
    }
    csv.EndLine();
  }
  return {"fit.csv", csv.Text()};
}

CsvFile CoefficientsCsv(const Coefficients& coefficients, const YModelInfo& model, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("column");
  for (const std::string& y : model.yNames) csv.Field(y);
  csv.EndLine();
  csv.Field("(intercept)");
  for (const double intercept : coefficients.intercepts) csv.Number(intercept);
  csv.EndLine();
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    csv.Field(model.xNames[k]);
    for (const double slope : coefficients.slopes[k]) csv.Number(slope);
    csv.EndLine();
  }
  return {"coefficients.csv", csv.Text()};
}

}  // namespace kalmia::analysis
