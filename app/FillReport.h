#pragma once

#include <string>

#include "app/CsvTable.h"
#include "app/FillOutcome.h"
#include "app/Notes.h"

namespace kalmia::app {

/// What `kalmia fill` prints; `out` is the file that it has written, with the marks of the table or `anew` with others.
std::string FillText(const CsvTable& table, const FillOutcome& outcome, const std::string& out, bool anew);
std::string FillJson(const CsvTable& table, const FillOutcome& outcome, const std::string& out, const Notes& notes);

}  // namespace kalmia::app
