#pragma once

#include <cstddef>
#include <limits>
#include <vector>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Cells of a table row by row, in double; a hole is NaN. Rows and columns count from 0; no number of one is checked.
class KALMIA_EXPORT CellRows {
 public:
  CellRows() = default;
  /// All cells are holes.
  CellRows(int rows, int columns)
      : rows_(rows),
        columns_(columns),
        cells_(static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns),
               std::numeric_limits<double>::quiet_NaN()) {}

  int Rows() const { return rows_; }
  int Columns() const { return columns_; }
  double* Row(int row) { return cells_.data() + Begin(row); }
  const double* Row(int row) const { return cells_.data() + Begin(row); }

  std::vector<double> Column(int column) const {
    std::vector<double> cells;
    cells.reserve(static_cast<std::size_t>(rows_));
    for (int row = 0; row < rows_; ++row) cells.push_back(Row(row)[column]);
    return cells;
  }
  /// Takes over as many cells as there are rows.
  void SetColumn(int column, const double* cells) {
    for (int row = 0; row < rows_; ++row) Row(row)[column] = cells[row];
  }

 private:
  std::size_t Begin(int row) const { return static_cast<std::size_t>(row) * static_cast<std::size_t>(columns_); }

  int rows_ = 0;
  int columns_ = 0;
  std::vector<double> cells_;
};

}  // namespace kalmia::analysis
