#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "kalmia/analysis/table/CellNumber.h"
#include "kalmia/analysis/table/CsvRecords.h"
#include "kalmia/analysis/table/CsvRows.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// What a column holds: numbers as soon as one cell is one, with either decimal mark, or where there is nothing but
/// infinities; texts if there are words and no number; nothing.
enum class ColumnKind { Numbers, Texts, Empty };

/// So many strays of a column are known by their rows.
constexpr std::size_t kStraysKept = 3;

/// One column of a table.
struct CsvColumn {
  ColumnKind kind = ColumnKind::Empty;
  int missing = 0;
  int strays = 0;       ///< cells that are neither missing nor finite numbers within the range of float
  std::vector<int> firstStrays;  ///< rows of the first of them, in their order: at most kStraysKept
  const double* numbers = nullptr;  ///< one for each row; NaN where there is none; null in Texts
};

/// The cells of a table.
struct CsvCells {
  std::unique_ptr<double[]> numbers;  ///< of all columns, one behind the other
  std::vector<CsvColumn> columns;
  std::int64_t commas = 0;  ///< numbers with a decimal comma, if that is the mark
  std::int64_t points = 0;  ///< numbers with a decimal point, if that is the mark
  std::optional<std::size_t> badRow;  ///< the first row without one field for each column; nothing else is then good
};

/// Reads the first `count` rows, each in one go, on all threads, so many rows at once. Needs memory in proportion to
/// the text at most, whatever number of columns is asked for.
KALMIA_EXPORT CsvCells ReadCells(std::string_view text, const CsvFormat& format, const CsvRows& rows, std::size_t count,
                   std::size_t columns, const CellFormat& cellFormat, std::size_t rowsAtOnce, const Proceed& proceed);

}  // namespace kalmia::analysis
