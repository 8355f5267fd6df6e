#pragma once

#include <string_view>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/internal/CellNumber.h"

namespace kalmia::analysis {

/// What a cell of the table with this text is.
inline CellValue ReadTableCell(const Table& table, std::string_view text) {
  return ReadCell(text, table.DecimalComma(), table.MissingWords());
}

}  // namespace kalmia::analysis
