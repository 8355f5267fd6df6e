#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/report/CsvFile.h"
#include "kalmia/analysis/table/CsvMarks.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

constexpr auto kResidualsFile = "residuals.csv";
constexpr auto kXResidualsFile = "x-residuals.csv";  ///< of O2PLS, with the next
constexpr auto kYResidualsFile = "y-residuals.csv";

/// What a model leaves of X (XResiduals), in scaled units: a line for each row, a column for each of `columnNames`,
/// empty where a cell is missing.
KALMIA_EXPORT CsvFile ResidualsCsv(const std::vector<std::string>& rowNames,
                                   const std::vector<std::string>& columnNames, const NCDataMatrix<float>& residuals,
                                   const CsvMarks& marks, const std::string& file = kResidualsFile);

}  // namespace kalmia::analysis
