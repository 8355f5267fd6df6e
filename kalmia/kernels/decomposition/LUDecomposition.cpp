#include "kalmia/kernels/decomposition/LUDecomposition.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>

namespace kalmia {
namespace {

constexpr double kPivotInsteadOfZero = 1e-20;

/// 1 over the largest absolute value of each row, from 1. False if a row has none above 0.
template <class T>
bool GetRowScales(const T* const* a, int n, std::vector<long double>& scales) {
  scales.assign(static_cast<std::size_t>(n) + 1, 0);
  for (int i = 1; i <= n; ++i) {
    T largest = 0;
    for (int j = 1; j <= n; ++j) largest = std::max(largest, std::abs(a[i][j]));
    if (largest == 0) return false;
    scales[i] = 1 / static_cast<long double>(largest);
  }
  return true;
}

/// start - sum(row[k] column[k]) over 1 <= k < end.
template <class T>
double SubtractProducts(double start, const T* row, const std::vector<double>& column, int end) {
  for (int k = 1; k < end; ++k) start -= row[k] * column[k];
  return start;
}

/// A square of doubles in one block.
class Square {
 public:
  explicit Square(int n) : n_(static_cast<std::size_t>(n)), cells_(n_ * n_, 0.0) {}
  double* Row(int i) { return cells_.data() + static_cast<std::size_t>(i - 1) * n_; }  ///< i from 1, cells from 0

 private:
  std::size_t n_;
  std::vector<double> cells_;
};

void SubtractMultiple(double* to, double factor, const double* from, int n) {
  for (int j = 0; j < n; ++j) to[j] -= factor * from[j];
}

}  // namespace

template <class T>
bool DecomposeLU(T** a, int n, std::vector<int>& order) {
  std::vector<long double> scales;
  if (!GetRowScales(a, n, scales)) return false;
  order.resize(static_cast<std::size_t>(n) + 1);
  std::iota(order.begin(), order.end(), 0);
  std::vector<double> column(static_cast<std::size_t>(n) + 1);  // column j in one piece

  for (int j = 1; j <= n; ++j) {
    for (int i = 1; i <= n; ++i) column[i] = a[i][j];
    int pivot = j;
    long double largest = 0;
    for (int i = 1; i <= n; ++i) {
      a[i][j] = static_cast<T>(SubtractProducts(column[i], a[i], column, std::min(i, j)));
      column[i] = a[i][j];
      const long double scaled = i < j ? 0 : scales[i] * std::abs(a[i][j]);
      if (scaled > largest) {
        largest = scaled;
        pivot = i;
      }
    }
    std::swap(a[pivot], a[j]);
    std::swap(order[pivot], order[j]);
    std::swap(scales[pivot], scales[j]);
    if (a[j][j] == 0) a[j][j] = static_cast<T>(kPivotInsteadOfZero);
    for (int i = j + 1; i <= n; ++i) a[i][j] /= a[j][j];
  }
  return true;
}

template <class T>
void InvertLU(const T* const* a, int n, const std::vector<int>& order, T* const* inverse) {
  Square x(n);
  for (int i = 1; i <= n; ++i) {
    x.Row(i)[order[i] - 1] = 1;
    for (int k = 1; k < i; ++k) SubtractMultiple(x.Row(i), a[i][k], x.Row(k), n);
  }
  for (int i = n; i >= 1; --i) {
    double* row = x.Row(i);
    for (int k = i + 1; k <= n; ++k) SubtractMultiple(row, a[i][k], x.Row(k), n);
    for (int j = 0; j < n; ++j) {
      row[j] /= a[i][i];
      inverse[i][j + 1] = static_cast<T>(row[j]);
    }
  }
}

template bool DecomposeLU(float** a, int n, std::vector<int>& order);
template bool DecomposeLU(double** a, int n, std::vector<int>& order);
template void InvertLU(const float* const* a, int n, const std::vector<int>& order, float* const* inverse);
template void InvertLU(const double* const* a, int n, const std::vector<int>& order, double* const* inverse);

}  // namespace kalmia
