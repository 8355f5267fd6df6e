#pragma once

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// Array of row pointers, rows and cells from 1, of a matrix that goes on owning its cells and outlives the array.
/// Cells are written behind the back of the counts: the matrix must be unshared and stay free of holes.
template <class T>
class RowPointers {
 public:
  explicit RowPointers(NCDataMatrix<T>& m)
      : count_(m.SizeRows()), rows_(NCDataMatrix<T>::GetMatrixAsPointerPointer(m, /*keep=*/true)) {}
  RowPointers(const RowPointers&) = delete;
  RowPointers& operator=(const RowPointers&) = delete;
  ~RowPointers() { NCDataMatrix<T>::ReleasePointerPointer(rows_, count_, /*cells=*/false); }

  T** Get() const { return rows_; }

 private:
  int count_;
  T** rows_;
};

}  // namespace kalmia
