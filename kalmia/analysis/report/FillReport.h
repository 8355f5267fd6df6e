#pragma once

#include <string>

#include "kalmia/analysis/fit/FillResult.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The text of a report; `out` is the file that it has written, with the marks of the table or `anew` with others.
KALMIA_EXPORT std::string FillText(const Table& table, const FillResult& result, const std::string& out, bool anew);
KALMIA_EXPORT std::string FillJson(const Table& table, const FillResult& result, const std::string& out,
                                   const Notes& notes);

}  // namespace kalmia::analysis
