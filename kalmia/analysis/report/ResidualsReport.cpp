#include "kalmia/analysis/report/ResidualsReport.h"

#include <cstddef>

#include "kalmia/analysis/table/internal/CsvText.h"

namespace kalmia::analysis {

CsvFile ResidualsCsv(const std::vector<std::string>& rowNames, const std::vector<std::string>& columnNames,
                     const NCDataMatrix<float>& residuals, const CsvMarks& marks, const std::string& file) {
  CsvText csv(marks);
  csv.Field("row");
  for (const std::string& name : columnNames) csv.Field(name);
  csv.EndLine();
  for (std::size_t i = 0; i < rowNames.size(); ++i) {
    csv.Field(rowNames[i]);
    const NCDataVector<float>& row = residuals[static_cast<int>(i) + 1];
    for (int k = 1; k <= row.Size(); ++k) csv.Cell(row[k]);
    csv.EndLine();
  }
  return {file, csv.Text()};
}

}  // namespace kalmia::analysis
