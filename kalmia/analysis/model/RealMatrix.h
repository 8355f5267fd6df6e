#pragma once

#include <cstddef>
#include <limits>
#include <vector>

namespace kalmia::analysis {

/// What a number is that cannot be computed, or a cell that is missing.
constexpr double kNotANumber = std::numeric_limits<double>::quiet_NaN();

/// Numbers in rows and columns, which count from 0. A cell that is missing is not a number.
struct RealMatrix {
  RealMatrix() = default;
  RealMatrix(std::size_t rowCount, std::size_t columnCount, double value = 0.0)
      : rows(rowCount), columns(columnCount), cells(rowCount * columnCount, value) {}

  double& operator()(std::size_t row, std::size_t column) { return cells[row * columns + column]; }
  double operator()(std::size_t row, std::size_t column) const { return cells[row * columns + column]; }

  std::size_t rows = 0;
  std::size_t columns = 0;
  std::vector<double> cells;  ///< row after row
};

}  // namespace kalmia::analysis
