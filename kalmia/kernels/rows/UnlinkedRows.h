#pragma once

#include <utility>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// ForceUnlink() of a matrix in two steps, so that a team shares the copying and each row is in cache when it is worked
/// on: every row that shared its cells gets a block of its own at once; its cells come with Fetch. Until all rows have
/// been fetched, nobody else may look at the matrix. Takes no memory if no row shares its cells. Throws std::bad_alloc;
/// the matrix has its cells then.
template <class T>
class UnlinkedRows {
 public:
  explicit UnlinkedRows(NCDataMatrix<T>* matrix);
  UnlinkedRows(const UnlinkedRows&) = delete;
  UnlinkedRows& operator=(const UnlinkedRows&) = delete;

  /// The first cell of row r, to be called once for each row before it is written. Different threads may fetch
  /// different rows.
  T* Fetch(int r) const;

  /// For callers that overwrite whole rows, instead of Fetch: read row r from OldCells, write it to NewCells. Both are
  /// one place if nobody shares the row.
  const T* OldCells(int r) const;
  T* NewCells(int r) const;
  /// The same for n cells of row r from its cell `first`, from 0, on: each cell is to be fetched once.
  T* Fetch(int r, int first, int n) const;

 private:
  NCDataVector<T>* rows_;
  std::vector<std::pair<int, NCDataVector<T>>> shared_;  ///< the rows that shared, and shares that keep their cells
  std::vector<const T*> old_;                            ///< those cells, at the row's number; empty if none shared
};

extern template class UnlinkedRows<float>;
extern template class UnlinkedRows<double>;

}  // namespace kalmia
