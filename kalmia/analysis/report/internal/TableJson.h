#pragma once

#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

/// What was read: file, rows, columns, separator, decimal mark.
Json TableJson(const CsvTable& table);

}  // namespace kalmia::analysis
