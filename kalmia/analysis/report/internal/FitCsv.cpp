#include "kalmia/analysis/report/internal/FitCsv.h"

#include <limits>

#include "kalmia/analysis/table/internal/CsvText.h"

namespace kalmia::analysis {

CsvFile FitCsv(const std::string& file, const std::vector<std::string>& rowNames,
               const std::vector<std::string>& columnNames, const std::vector<std::vector<double>>& measured,
               const std::vector<RowPrediction>& fitted, const CsvMarks& marks) {
  constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
  CsvText csv(marks);
  csv.Field("row");
  for (const std::string& name : columnNames) csv.Field("measured " + name).Field("predicted " + name);
  csv.EndLine();
  for (std::size_t i = 0; i < fitted.size(); ++i) {
    csv.Field(rowNames[i]);
    for (std::size_t j = 0; j < columnNames.size(); ++j) {
      csv.Number(measured[j][i]);
      csv.Number(fitted[i].y.empty() ? kNone : fitted[i].y[j]);
    }
    csv.EndLine();
  }
  return {file, csv.Text()};
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

CsvFile RowsCsv(const std::vector<std::string>& names, const std::vector<double>& t2,
                const std::vector<double>& distances, const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row").Field("T2").Field("distance").EndLine();
  for (std::size_t i = 0; i < names.size(); ++i) csv.Field(names[i]).Number(t2[i]).Number(distances[i]).EndLine();
  return {"rows.csv", csv.Text()};
}

}  // namespace kalmia::analysis
