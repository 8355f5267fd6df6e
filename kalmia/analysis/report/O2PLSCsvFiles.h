#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/table/CsvText.h"

namespace kalmia::analysis {

/// The CSV files; docs/command/o2pls.md describes them. `result` has a model.
std::vector<CsvFile> O2PLSCsvFiles(const O2PLSResult& result, const CsvMarks& marks);

/// Their names, before there is anything to write.
std::vector<std::string> O2PLSCsvFileNames();

}  // namespace kalmia::analysis
