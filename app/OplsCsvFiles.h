#pragma once

#include <string>
#include <vector>

#include "app/CsvText.h"
#include "app/OplsOutcome.h"

namespace kalmia::app {

/// The files that `kalmia opls --csv` writes; docs/command.md describes them. `outcome` has a model.
std::vector<CsvFile> OplsCsvFiles(const OplsOutcome& outcome, const CsvMarks& marks);

/// Their names, before there is anything to write.
std::vector<std::string> OplsCsvFileNames();

}  // namespace kalmia::app
