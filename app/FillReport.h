#pragma once

#include <string>

#include "app/CsvTable.h"
#include "app/FillOutcome.h"
#include "app/ModelOptions.h"
#include "app/Notes.h"

namespace kalmia::app {

/// What `kalmia fill` prints; --out, or `out`, is the file that it has written.
std::string FillText(const CsvTable& table, const FillOutcome& outcome, const FillOptions& options);
std::string FillJson(const CsvTable& table, const FillOutcome& outcome, const std::string& out, const Notes& notes);

}  // namespace kalmia::app
