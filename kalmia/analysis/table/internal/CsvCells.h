#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "kalmia/analysis/table/CsvColumn.h"
#include "kalmia/analysis/table/SharedWork.h"
#include "kalmia/analysis/table/internal/CellNumber.h"
#include "kalmia/analysis/table/internal/CsvRecords.h"
#include "kalmia/analysis/table/internal/CsvRows.h"

namespace kalmia::analysis {

/// The cells that ReadCells reads.
struct CsvCells {
  std::unique_ptr<double[]> numbers;  ///< of all columns, one column after the other
  std::vector<CsvColumn> columns;
  std::int64_t commas = 0;  ///< numbers with a decimal comma, if that is the mark
  std::int64_t points = 0;  ///< numbers with a decimal point, if that is the mark
  std::optional<std::size_t> badRow;  ///< the first row with another number of fields; all else is then undefined
};

/// Reads the first `count` rows in one pass on all threads, `rowsAtOnce` rows in a task. Memory grows with the text,
/// not with the number of columns.
CsvCells ReadCells(std::string_view text, const CsvFormat& format, const CsvRows& rows, std::size_t count,
                   std::size_t columns, const CellFormat& cellFormat, std::size_t rowsAtOnce, const Proceed& proceed);

}  // namespace kalmia::analysis
