#pragma once

#include "app/CsvTable.h"
#include "app/Json.h"

namespace kalmia::app {

/// What was read: file, rows, columns, separator, decimal mark.
Json TableJson(const CsvTable& table);

}  // namespace kalmia::app
