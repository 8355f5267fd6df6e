#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/regression/ExcludedPositions.h"

namespace kalmia {

/// The regression of rows of a table on v, a few rows at a time so that v and its squares are loaded once for all of
/// them. Rows whose count says that they have no holes go through sums that look at no cell of theirs. Each row gets
/// the bits that v.Regress or v.SpecialNipalsRegressFix has for it alone.
template <class T>
class RowRegression {
 public:
  RowRegression(const VectorWithExclusions<T>& v, bool fix);

  /// Rows first to last, both included, into the 1-based cells of `out`. Returns how many of them are missing.
  int Rows(const NCDataMatrix<T>& X, T* out, int first, int last) const;

  /// The same of rows without holes whose dot products with v are known: for `count` rows, into the cells of `out`.
  int CompleteRows(const double* dots, int count, T* out) const;

 private:
  /// Writes the coefficient that the sums over pairs make; true if it is missing.
  bool Write(T* cell, double product, double square) const;

  const VectorWithExclusions<T>& v_;
  bool fix_;
  double sumOfSquares_;  ///< of v, over its present cells
};

extern template class RowRegression<float>;
extern template class RowRegression<double>;

}  // namespace kalmia
