#pragma once

#include <cstdint>
#include <limits>

namespace kalmia {

/// Positions and counts of missing cells are `int`: a vector holds at most so many cells, and so does a whole table.
constexpr int kMostCells = std::numeric_limits<int>::max();

constexpr bool CanBeVector(std::int64_t cells) { return cells >= 0 && cells <= kMostCells; }
constexpr bool CanBeTable(std::int64_t rows, std::int64_t columns) {
  return CanBeVector(rows) && CanBeVector(columns) && CanBeVector(rows * columns);
}

/// Throw NCError where the size is negative or too large. Called before any memory is taken.
void RequireVectorSize(std::int64_t cells);
void RequireTableSize(std::int64_t rows, std::int64_t columns);

}  // namespace kalmia
