#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/simd/AddScaled.h"

// The row step of a deflation.

namespace {

/// One more missing cell of a column. Rows run in parallel and share these counts.
void CountForColumn(int& columnCount) {
#pragma omp atomic
  ++columnCount;
}

/// Empties the present cells j (from 0) for which goes(j); returns how many there were.
template <class T, class Goes>
int EmptyCells(T* cells, int n, int* columnMisVal, const Goes& goes) {
  int emptied = 0;
  for (int j = 0; j < n; ++j) {
    if (cells[j] == kalmia::kMissing || !goes(j)) continue;
    cells[j] = kalmia::kMissingCell<T>;
    CountForColumn(columnMisVal[j + 1]);
    ++emptied;
  }
  return emptied;
}

}  // namespace

template <class T>
void NCDataMatrix<T>::AddFV(NCDataMatrix& X, T f, const T* w, int misValMode, int r, int& numMisVal,
                            int* columnMisVal) {
  X.Unlink();
  NCDataVector<T>& row = X.rowArray_[r];
  const int n = X.columns_;
  if (n < 1) return;
  if (f == kalmia::kMissing) {
    if (row.numMisVal_ == n) return;
    row.Unlink();
    numMisVal += EmptyCells(row.data_ + 1, n, columnMisVal, [](int) { return true; });
    row.numMisVal_ = n;
  } else if (misValMode == 0) {
    row.Unlink();
    kalmia::simd::AddScaled(row.data_ + 1, w, f, n);
  } else if (misValMode >= 1 && misValMode <= 3) {
    row.Unlink();
    if (kalmia::simd::AddScaledMasked(row.data_ + 1, w, f, n) == 0) return;
    const int emptied = EmptyCells(row.data_ + 1, n, columnMisVal, [w](int j) { return w[j] == kalmia::kMissing; });
    row.numMisVal_ += emptied;
    numMisVal += emptied;
  }
}

template void NCDataMatrix<float>::AddFV(NCDataMatrix&, float, const float*, int, int, int&, int*);
template void NCDataMatrix<double>::AddFV(NCDataMatrix&, double, const double*, int, int, int&, int*);
