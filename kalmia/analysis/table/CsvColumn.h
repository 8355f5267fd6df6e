#pragma once

#include <cstddef>
#include <vector>

namespace kalmia::analysis {

/// What a column holds. Numbers: at least one cell is a number, with either decimal mark, or all present cells are
/// infinite. Texts: words and no number. Empty: no cell.
enum class ColumnKind { Numbers, Texts, Empty };

/// At most so many strays of a column are kept with their rows.
constexpr std::size_t kStraysKept = 3;

/// One column of a table.
struct CsvColumn {
  ColumnKind kind = ColumnKind::Empty;
  int missing = 0;
  int strays = 0;       ///< cells that are neither missing nor finite numbers within the range of float
  std::vector<int> firstStrays;  ///< rows of the first of them, in their order: at most kStraysKept
  const double* numbers = nullptr;  ///< one for each row; NaN where there is none; null in Texts
};

}  // namespace kalmia::analysis
