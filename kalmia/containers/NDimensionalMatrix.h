#pragma once

#include <memory>
#include <vector>

#include "kalmia/support/Export.h"

/// Cells in any number of dimensions, which is chosen at run time; each dimension is counted from 1. Only cells that
/// were written take memory, so that a grid of many dimensions costs what its points cost. Copies share their cells
/// for good: what is set through one is seen through the other. Instantiated for `int`.
///
/// A cell that was written costs its whole index. NCDataMatrix::GetDensity counts points in such grids, of hundreds of
/// dimensions and of sizes beyond `int`; it splits the points dimension by dimension instead and keeps no index at all.
///
/// `level` is the number of dimensions: that of the index in Get and Set where it is below 0, that of `sizes` in the
/// constructor where it is below 1. Throws Exception "dimension error" where it does not fit the matrix, the list of
/// sizes or the index, and std::out_of_range for an index outside the sizes.
template <class T>
class KALMIA_EXPORT NDimensionalMatrix {
 public:
  /// sizes[k] cells in dimension k, all `value`. Throws std::length_error for a negative size.
  NDimensionalMatrix(const std::vector<int>& sizes, T value, int level = -1);
  NDimensionalMatrix(const NDimensionalMatrix& other);
  NDimensionalMatrix& operator=(const NDimensionalMatrix& other);
  ~NDimensionalMatrix();

  /// An index longer than `level` is read up to there.
  void Set(const std::vector<int>& index, T value, int level = -1);
  T Get(const std::vector<int>& index, int level = -1) const;

 private:
  struct Cells;
  std::vector<int> Key(const std::vector<int>& index, int level) const;

  std::shared_ptr<Cells> cells_;
};

extern template class NDimensionalMatrix<int>;
