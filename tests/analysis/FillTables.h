#pragma once

#include <cmath>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

// Tables with holes for the tests of filling. A hole is kHole<float>.

/// `directions` directions, each 0.6 times as strong as the one before, and noise of this size; columns at unit
/// variance.
inline NCDataMatrix<float> StructuredTable(int rows, int columns, int directions, double noise) {
  NCDataMatrix<float> scores = RandomMatrix<float>(directions, rows, 0, 1);
  for (int a = 2; a <= directions; ++a) scores.MultiplyRow(a, std::pow(0.6F, static_cast<float>(a - 1)));
  NCDataMatrix<float> table = scores.MatrixMultiply(RandomMatrix<float>(directions, columns, 0, 2), true, false);
  table += RandomMatrix<float>(rows, columns, 0, 3) * static_cast<long double>(noise);
  for (int c = 1; c <= columns; ++c) {
    const auto mean = table.GetColumnMean(c);
    const auto deviation = table.GetColumnStdDev(c);
    for (int r = 1; r <= rows; ++r) table(r, c, static_cast<float>((table[r][c] - mean) / deviation));
  }
  return table;
}

inline NCDataMatrix<float> WithHoles(NCDataMatrix<float> table, double holes) {
  const NCDataMatrix<float> mask = RandomMatrix<float>(table.SizeRows(), table.SizeColumns(), holes, 9);
  for (int r = 1; r <= table.SizeRows(); ++r) {
    for (int c = 1; c <= table.SizeColumns(); ++c) {
      if (mask[r][c] == kHole<float>) table(r, c, kHole<float>);
    }
  }
  return table;
}
