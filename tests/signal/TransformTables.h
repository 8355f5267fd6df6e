#pragma once

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "testing/RandomTables.h"

// Tables that tests of transformations share, and their cells to the bit.

/// Two bad cells in the second column, one in the third, and a hole in each.
inline NCDataMatrix<float> BadTable() {
  return MatrixOf<float>({{1, 10, 100}, {-99, -1, -99}, {3, 0, -5}, {4, -99, 10}});
}

/// Three columns with holes, infinite cells and one that is no number.
inline NCDataMatrix<float> TableOfAllSorts() {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  return MatrixOf<float>(
      {{1, -99, kInfinity}, {-99, -1, std::numeric_limits<float>::quiet_NaN()}, {-kInfinity, 0, -99}});
}

/// The bits of all cells, which tell also what is no number.
inline std::vector<std::uint32_t> BitsOf(const NCDataMatrix<float>& table) {
  std::vector<std::uint32_t> bits;
  for (const NCDataVector<float>& row : table)
    for (const float cell : row) std::memcpy(&bits.emplace_back(), &cell, sizeof cell);
  return bits;
}
