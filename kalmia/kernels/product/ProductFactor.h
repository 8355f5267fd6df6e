#pragma once

#include <cstdint>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// One factor of a matrix product, seen as `Outer()` vectors of `Shared()` cells each, both from 0: the shared index is
/// the one that the product sums over. Refers to the rows of the matrix, which must outlive it unchanged.
template <class T>
class ProductFactor {
 public:
  /// With `sharedAlongRows` the vectors are the rows of m, otherwise its columns.
  ProductFactor(const NCDataMatrix<T>& m, bool sharedAlongRows);

  int Outer() const { return outer_; }
  int Shared() const { return shared_; }
  T Cell(int vector, int k) const { return sharedAlongRows_ ? rows_[vector][k] : rows_[k][vector]; }

  /// Notes which cells are present, and whether those are all finite. Needed before HasPair; from here on a missing
  /// cell is a hole, before it is a number like any other.
  void MarkPresent();
  bool IsFinite() const { return isFinite_; }  ///< false only after MarkPresent
  /// Whether `vector` and the other factor's `otherVector` have a position at which both are present.
  bool HasPair(int vector, const ProductFactor& other, int otherVector) const;

  /// Copies the cells of `count` vectors at the positions firstShared to firstShared + depth - 1 into panels of
  /// `width` vectors: panel after panel, in each position after position, in each vector after vector. A hole
  /// becomes 0, and so does the rest of a last panel. For the widths of a tile's rows and columns.
  template <int width>
  void Pack(int firstVector, int count, int firstShared, int depth, double* panels) const;

 private:
  template <int width>
  void PackColumns(int firstVector, int count, int firstShared, int depth, double* panels) const;
  template <int width>
  void PackRows(int firstVector, int firstShared, int depth, double* panel) const;
  template <int width>
  void PackLast(int firstVector, int count, int firstShared, int depth, double* panel) const;

  std::vector<const T*> rows_;  // cells of the matrix' rows, from 0
  bool sharedAlongRows_;
  int outer_;
  int shared_;
  bool isMarked_ = false;
  bool isFinite_ = true;
  std::size_t words_ = 0;                // 64-bit words of a vector's marks
  std::vector<std::uint64_t> present_;  // a bit for each cell, vector after vector
};

extern template class ProductFactor<float>;
extern template class ProductFactor<double>;

}  // namespace kalmia
