#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/simd/Dots.h"

namespace kalmia {

/// Rows of one kind that are worked on at the same time.
template <class T>
struct RowBatch {
  int count = 0;
  int row[simd::kRowsSideBySide];         ///< their numbers
  const T* cells[simd::kRowsSideBySide];  ///< their first cells
};

/// Goes over rows first to last, both included: collects complete rows and rows with holes, as their counts say, and
/// hands each kind on as a batch when there are enough of them, or at the end. A batch is never empty.
template <class T, class Complete, class WithHoles>
void ForRowBatches(const NCDataMatrix<T>& X, int first, int last, const Complete& complete,
                   const WithHoles& withHoles) {
  RowBatch<T> batches[2];
  const auto flush = [&](bool holes) {
    RowBatch<T>& batch = batches[holes];
    if (batch.count == 0) return;
    holes ? withHoles(batch) : complete(batch);
    batch.count = 0;
  };
  for (int r = first; r <= last; ++r) {
    const bool holes = X[r].GetNumMisVal() != 0;
    RowBatch<T>& batch = batches[holes];
    batch.row[batch.count] = r;
    batch.cells[batch.count] = X[r].begin();
    if (++batch.count == simd::kRowsSideBySide) flush(holes);
  }
  flush(false);
  flush(true);
}

}  // namespace kalmia
