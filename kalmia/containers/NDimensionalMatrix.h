#pragma once

#include <memory>
#include <vector>

#include "kalmia/support/Export.h"

/// Cells in any number of dimensions, chosen at run time; positions count from 1. Only written cells take memory: each
/// its value and its whole index. Copies share their cells for good: a cell set through one changes in the other.
/// Instantiated for `int`.
///
/// `level` is the number of dimensions. In Get and Set a level below 0 means the length of the index; in the
/// constructor a level below 1 means the number of `sizes`. Throws Exception "dimension error" if it does not fit the
/// matrix, the sizes or the index, and std::out_of_range for an index outside the sizes.
template <class T>
class KALMIA_EXPORT NDimensionalMatrix {
 public:
  /// sizes[k] cells in dimension k, all `value`. Throws std::length_error for a negative size.
  NDimensionalMatrix(const std::vector<int>& sizes, T value, int level = -1);
  NDimensionalMatrix(const NDimensionalMatrix& other);
  NDimensionalMatrix& operator=(const NDimensionalMatrix& other);
  ~NDimensionalMatrix();

  /// Only the first `level` numbers of a longer index are read.
  void Set(const std::vector<int>& index, T value, int level = -1);
  T Get(const std::vector<int>& index, int level = -1) const;

 private:
  struct Cells;
  std::vector<int> Key(const std::vector<int>& index, int level) const;

  std::shared_ptr<Cells> cells_;
};

extern template class NDimensionalMatrix<int>;
