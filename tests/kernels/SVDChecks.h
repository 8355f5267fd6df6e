#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <vector>

#include "kalmia/kernels/NCSVD.h"

// What the tests of the singular value decomposition hold it to.

template <class T>
std::unique_ptr<NCSVD<T>> Decompose(const NCDataMatrix<T>& a) {
  return std::unique_ptr<NCSVD<T>>(a.GetSVD());
}

/// max |M' M - I|, with M's columns first to `columns` only.
template <class T>
double DistanceFromOrthonormal(const NCDataMatrix<T>& m, int columns) {
  double largest = 0;
  for (int i = 1; i <= columns; ++i)
    for (int j = 1; j <= columns; ++j) {
      double sum = i == j ? -1 : 0;
      for (const auto& row : m) sum += static_cast<double>(row[i]) * row[j];
      largest = std::max(largest, std::abs(sum));
    }
  return largest;
}

/// max |U diag(W) V' - A|.
template <class T>
double DistanceFromProduct(const NCSVD<T>& svd, const NCDataMatrix<T>& a) {
  double largest = 0;
  for (int r = 1; r <= a.SizeRows(); ++r)
    for (int c = 1; c <= a.SizeColumns(); ++c) {
      double sum = -static_cast<double>(a[r][c]);
      for (int k = 1; k <= svd.GetW()->Size(); ++k)
        sum += static_cast<double>((*svd.GetU())[r][k]) * (*svd.GetW())[k] * (*svd.GetV())[c][k];
      largest = std::max(largest, std::abs(sum));
    }
  return largest;
}

/// What the rounding of the stored cells may leave: each of the n reflections and of about 2 n sweeps moves a cell of
/// an orthonormal matrix by at most a few units in the last place (Golub & Van Loan, 5.1 and 8.6), so that 8 n units
/// bound the sum; for A in units of its norm.
template <class T>
double Rounding(int rows, int columns) {
  return 8.0 * std::max(rows, columns) * std::numeric_limits<T>::epsilon();
}

template <class T>
double LargestOf(const NCDataVector<T>& w) {
  return w.Size() == 0 ? 0 : *std::max_element(w.begin(), w.end());
}

template <class T>
NCDataMatrix<T> Diagonal(const std::vector<T>& cells) {
  const int n = static_cast<int>(cells.size());
  NCDataMatrix<T> d(n, n, T(0));
  for (int i = 1; i <= n; ++i) d(i, i, cells[i - 1]);
  return d;
}
