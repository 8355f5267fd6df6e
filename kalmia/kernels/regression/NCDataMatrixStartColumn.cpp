#include <algorithm>
#include <cmath>
#include <cstdint>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/passes/BlockedColumnSums.h"
#include "kalmia/kernels/rows/BuildInTarget.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

// The score vector that an iteration starts from.

namespace {

/// A later column must be this much larger, so that rounding does not decide.
constexpr double kLeadOfALaterColumn = 1.000001;

/// The sum of squares of every column, over its present cells. Columns are shared out, so any team gives the same bits.
template <class T>
void SumSquares(const NCDataMatrix<T>& X, double* squares) {
  const int team = kalmia::TeamSize(static_cast<std::int64_t>(X.SizeRows()) * X.SizeColumns());
  kalmia::ForSlices(X.SizeColumns(), team, kalmia::kColumnsPerGrain, [&](int first, int last) {
    kalmia::ForColumnBlocks(first, last, [&](int c, int n) {
      const kalmia::SumsBuffer<T> buffer(n);
      kalmia::MarkColumnsWithHoles(X, c, n, buffer.Holes());
      kalmia::SumColumnSquares(X, c, n, buffer.Holes(), squares + (c - 1));
    });
    return 0;
  });
}

/// The first column of largest sum of squares, up to the lead; the first of all where none exceeds 0.
template <class T>
int ColumnOfLargestSumOfSquares(const NCDataMatrix<T>& X) {
  const kalmia::SumsBuffer<T> buffer(X.SizeColumns());
  SumSquares(X, buffer.Products());
  double best = 0;
  int chosen = 1;
  for (int j = 0; j < X.SizeColumns(); ++j) {
    if (!(buffer.Products()[j] > best * kLeadOfALaterColumn)) continue;
    best = buffer.Products()[j];
    chosen = j + 1;
  }
  return chosen;
}

/// Fills the holes with a hundredth of the largest absolute value, signs alternating from plus. If that is 99, every
/// second fill is a hole by accident.
template <class T>
void FillHoles(T* cells, int n) {
  T largest = -1;
  for (int r = 1; r <= n; ++r)
    if (cells[r] != kalmia::kMissing) largest = std::max(largest, std::fabs(cells[r]));
  T fill = largest / 100;
  for (int r = 1; r <= n; ++r) {
    if (cells[r] != kalmia::kMissing) continue;
    cells[r] = fill;
    fill = -fill;
  }
}

}  // namespace

template <class T>
NCDataVector<T> NCDataMatrix<T>::GetNIPALSStartColumn() const {
  return kalmia::BuildInTarget<T>(*this, nullptr, rows_, [&](NCDataVector<T>& start) {
    if (columns_ < 1) {
      start.SetAllValues(kalmia::kMissingCell<T>);
      return;
    }
    const int c = columns_ == 1 ? 1 : ColumnOfLargestSumOfSquares(*this);
    for (int r = 1; r <= rows_; ++r) start.data_[r] = rowArray_[r].data_[c];
    start.CountMissing();
    if (columns_ > 1 && start.numMisVal_ > 0 && start.numMisVal_ < rows_) {
      FillHoles(start.data_, rows_);
      start.CountMissing();
    }
  });
}

template NCDataVector<float> NCDataMatrix<float>::GetNIPALSStartColumn() const;
template NCDataVector<double> NCDataMatrix<double>::GetNIPALSStartColumn() const;
