#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/table/CsvText.h"

namespace kalmia::analysis {

/// The CSV files, for a model that kept components: one line for each row or column of the table,
/// under its name.
std::vector<CsvFile> PCACsvFiles(const PCAResult& result, const CsvMarks& marks);

/// The names of these files, before there is a model.
std::vector<std::string> PCACsvFileNames();

}  // namespace kalmia::analysis
