#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/table/CsvText.h"

namespace kalmia::analysis {

/// The CSV files; docs/command/opls.md describes them. `result` has a model.
std::vector<CsvFile> OPLSCsvFiles(const OPLSResult& result, const CsvMarks& marks);

/// Their names, before there is anything to write.
std::vector<std::string> OPLSCsvFileNames();

}  // namespace kalmia::analysis
