#include "kalmia/kernels/passes/BlockedColumnSums.h"

#include <algorithm>
#include <limits>

#include "kalmia/kernels/simd/ColumnSums.h"

namespace kalmia {
namespace {

using simd::kRowsSideBySide;

/// The rows of one step: where their cells start, and what they bring with them.
template <class T>
struct Step {
  int count = 0;
  const T* row[kRowsSideBySide];
  double v[kRowsSideBySide];
  double weight[kRowsSideBySide];

  bool IsFull() const { return count == kRowsSideBySide; }
};

/// Calls add(step) for the rows in their order, a step at a time.
template <class T, class Add>
void ForSteps(const NCDataMatrix<T>& X, const NCDataVector<T>& v, RowsUsed used, RowWeight weight, int first,
              const Add& add) {
  const int rows = X.SizeRows();
  Step<T> step;
  for (int r = 1; r <= rows; ++r) {
    const T cell = v[r];
    if (used == RowsUsed::WithV && cell == kMissing) continue;
    step.row[step.count] = X[r].GetVector() + first;
    step.v[step.count] = cell;
    step.weight[step.count] = weight == RowWeight::One ? 1.0 : static_cast<double>(cell) * cell;
    ++step.count;
    if (!step.IsFull()) continue;
    add(step);
    step.count = 0;
  }
  if (step.count > 0) add(step);
}

}  // namespace

template <class T>
void SumColumns(const NCDataMatrix<T>& X, const NCDataVector<T>& v, int first, int n, double* products) {
  std::fill_n(products, n, 0.0);
  if (n < 1) return;
  ForSteps(X, v, RowsUsed::All, RowWeight::One, first,
           [=](const Step<T>& step) { simd::AddRows(step.row, step.v, step.count, n, products); });
}

template <class T>
void SumColumnPairs(const NCDataMatrix<T>& X, const NCDataVector<T>& v, RowsUsed used, RowWeight weight, int first,
                    int n, const T* hole, double* products, double* weights) {
  std::fill_n(products, n, 0.0);
  std::fill_n(weights, n, 0.0);
  if (n < 1) return;
  ForSteps(X, v, used, weight, first, [=](const Step<T>& step) {
    simd::AddRowsMasked(step.row, step.v, step.weight, step.count, n, hole, products, weights);
  });
}

template <class T>
void SumColumnSquares(const NCDataMatrix<T>& X, int first, int n, const T* hole, double* squares) {
  std::fill_n(squares, n, 0.0);
  if (n < 1) return;
  const T* row[kRowsSideBySide];
  for (int r = 1; r <= X.SizeRows(); r += kRowsSideBySide) {
    const int count = std::min(kRowsSideBySide, X.SizeRows() - r + 1);
    for (int k = 0; k < count; ++k) row[k] = X[r + k].GetVector() + first;
    simd::AddSquaresMasked(row, count, n, hole, squares);
  }
}

template <class T>
bool MarkColumnsWithHoles(const NCDataMatrix<T>& X, int first, int n, T* hole) {
  bool any = false;
  for (int j = 0; j < n; ++j) {
    const bool hasHoles = X.GetColumnMisVal(first + j) != 0;
    hole[j] = hasHoles ? kMissingCell<T> : std::numeric_limits<T>::quiet_NaN();
    any = any || hasHoles;
  }
  return any;
}

#define KALMIA_INSTANTIATE(T)                                                                                    \
  template void SumColumns(const NCDataMatrix<T>&, const NCDataVector<T>&, int, int, double*);                   \
  template void SumColumnPairs(const NCDataMatrix<T>&, const NCDataVector<T>&, RowsUsed, RowWeight, int, int,    \
                               const T*, double*, double*);                                                      \
  template void SumColumnSquares(const NCDataMatrix<T>&, int, int, const T*, double*);                           \
  template bool MarkColumnsWithHoles(const NCDataMatrix<T>&, int, int, T*);

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE

}  // namespace kalmia
