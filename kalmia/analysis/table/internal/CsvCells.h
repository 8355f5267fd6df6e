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
  std::unique_ptr<double[]> numbers;  ///< of all columns, one behind the other
  std::vector<CsvColumn> columns;
  std::int64_t commas = 0;  ///< numbers with a decimal comma, if that is the mark
  std::int64_t points = 0;  ///< numbers with a decimal point, if that is the mark
  std::optional<std::size_t> badRow;  ///< the first row without one field for each column; nothing else is then good
};

/// Reads the first `count` rows, each in one go, on all threads, so many rows at once. Needs memory in proportion to
/// the text at most, whatever number of columns is asked for.
CsvCells ReadCells(std::string_view text, const CsvFormat& format, const CsvRows& rows, std::size_t count,
                   std::size_t columns, const CellFormat& cellFormat, std::size_t rowsAtOnce, const Proceed& proceed);

}  // namespace kalmia::analysis
