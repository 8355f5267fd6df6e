#pragma once

#include <string>
#include <vector>

#include "app/CsvText.h"
#include "app/O2PLSOutcome.h"

namespace kalmia::app {

/// The files that `kalmia o2pls --csv` writes; docs/command/o2pls.md describes them. `outcome` has a model.
std::vector<CsvFile> O2PLSCsvFiles(const O2PLSOutcome& outcome, const CsvMarks& marks);

/// Their names, before there is anything to write.
std::vector<std::string> O2PLSCsvFileNames();

}  // namespace kalmia::app
