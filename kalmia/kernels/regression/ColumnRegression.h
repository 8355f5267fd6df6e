#pragma once

#include <cmath>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/passes/BlockedColumnSums.h"

namespace kalmia {

/// Writes numerator / denominator to a cell that is missing so far and counts one missing cell less; does nothing where
/// the denominator is at or below 1e-30 in absolute value.
template <class T>
void WriteQuotient(T& cell, long double numerator, long double denominator, int& numMisVal) {
  if (std::fabs(denominator) <= kSmallestDenominator) return;
  cell = static_cast<T>(numerator / denominator);
  --numMisVal;
}

/// WriteQuotient for n cells with the same denominator.
template <class T>
void WriteQuotients(T* cells, const double* numerators, int n, long double denominator, int& numMisVal);

/// The regression of columns of X on v, with or without the Fix, as blocks of columns; each column gets the bits of
/// RegressOneColumn or SpecialNipalsRegressOneColumnFix (which, unlike this, has no mode 0).
template <class T>
struct ColumnRegression {
  const NCDataMatrix<T>& X;
  const NCDataVector<T>& v;
  long double ss;  ///< full sum of squares of v: denominator of complete columns, and what the Fix takes a third of
  int misValMode;
  bool fix;

  /// Columns first to last, both included, into the 1-based cells of `out`, which are missing so far. Returns the
  /// change of their count of missing cells.
  int Slice(T* out, int first, int last) const;

  /// What Slice writes for columns first to first + n - 1, from their sums over pairs (of products with v, and of v^2),
  /// from 0.
  int Write(T* out, int first, int n, const double* products, const double* weights) const;

 private:
  int CompleteBlock(T* out, int first, int n, const SumsBuffer<T>& buffer) const;
  int BlockWithHoles(T* out, int first, int n, const SumsBuffer<T>& buffer) const;
};

extern template struct ColumnRegression<float>;
extern template struct ColumnRegression<double>;

}  // namespace kalmia
