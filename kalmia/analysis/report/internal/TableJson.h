#pragma once

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

/// What was read: file, rows, columns, separator, decimal mark.
Json TableJson(const Table& table);

}  // namespace kalmia::analysis
