// Matrix products, matrix times vector, and the total sum of squares.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/product/MatrixProduct.h"
#include "kalmia/kernels/product/RowDots.h"
#include "kalmia/kernels/rows/BuildInTarget.h"
#include "kalmia/kernels/simd/Dots.h"
#include "kalmia/kernels/threads/Slices.h"
#include "kalmia/kernels/threads/Team.h"

using kalmia::kMissing;

namespace {

/// row.GetSS() to the bit, as the dot product of the row with itself.
template <class T>
double SquaresOf(const NCDataVector<T>& row) {
  const int n = row.Size();
  if (n == 0 || row.GetNumMisVal() == n) return static_cast<double>(row.GetSS());
  const T* cells = row.begin();
  return row.GetNumMisVal() == 0 ? kalmia::simd::Dot(cells, cells, n) : kalmia::simd::DotMasked(cells, cells, n);
}

/// The cells of m's rows, from 0, for writing; m has rows and columns, and is not shared.
template <class T>
std::vector<T*> CellsOf(NCDataMatrix<T>& m) {
  std::vector<T*> cells;
  cells.reserve(static_cast<std::size_t>(m.SizeRows()));  // nothing may throw while the rows are in hand
  T** rows = NCDataMatrix<T>::GetMatrixAsPointerPointer(m, /*keep=*/true);
  for (int r = 1; r <= m.SizeRows(); ++r) cells.push_back(rows[r] + 1);
  NCDataMatrix<T>::ReleasePointerPointer(rows, m.SizeRows(), /*cells=*/false);
  return cells;
}

/// What `multiply(product)` makes of a work matrix of a's; a target that is a factor itself is written at the end.
template <class T, class Multiply>
NCDataMatrix<T> ProductInTarget(const NCDataMatrix<T>& a, const NCDataMatrix<T>& b, int rows, int columns,
                                const Multiply& multiply) {
  MatrixDestroyer<T> holder;
  a.GetReturnMatrix(holder, rows, columns);
  if (holder.matrix == &a || holder.matrix == &b) {
    NCDataMatrix<T> product(rows, columns);
    multiply(product);
    *holder.matrix = product;
  } else {
    multiply(*holder.matrix);
  }
  return *holder.matrix;
}

}  // namespace

template <class T>
void NCDataMatrix<T>::MultiplyInto(NCDataMatrix& product, const NCDataMatrix& B, bool transposeThis,
                                   bool transposeOther) const {
  product.SetAllValues(static_cast<T>(0));
  if (product.rows_ == 0 || product.columns_ == 0) return;
  kalmia::ProductFactor<T> a(*this, /*sharedAlongRows=*/!transposeThis);
  kalmia::ProductFactor<T> b(B, /*sharedAlongRows=*/transposeOther);
  const bool holes = numMisVal_ > 0 || B.numMisVal_ > 0;
  kalmia::MultiplyFactors(a, b, holes, CellsOf(product).data());
  if (!holes) return;
  for (int r = 1; r <= product.rows_; ++r) product.rowArray_[r].CountMissing();
  product.CountMissing();
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::MultiplyTransposeThis(const NCDataMatrix& B) const {
  return ProductInTarget(*this, B, columns_, B.columns_,
                         [&](NCDataMatrix& product) { MultiplyInto(product, B, true, false); });
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::MultiplyTransposeOther(const NCDataMatrix& B) const {
  return ProductInTarget(*this, B, rows_, B.rows_,
                         [&](NCDataMatrix& product) { MultiplyInto(product, B, false, true); });
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::MultiplyTransposeBoth(const NCDataMatrix& B) const {
  return ProductInTarget(*this, B, columns_, B.rows_,
                         [&](NCDataMatrix& product) { MultiplyInto(product, B, true, true); });
}

/// With holes that are all counted, row r is B.PreMultiply(row r of this) to the bit: both add a column's products in
/// the order of the rows. A cell of -99 that no count knows is a hole here, while PreMultiply believes the counts.
template <class T>
NCDataMatrix<T> NCDataMatrix<T>::operator*(const NCDataMatrix& B) const {
  return ProductInTarget(*this, B, rows_, B.columns_,
                         [&](NCDataMatrix& product) { MultiplyInto(product, B, false, false); });
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::MatrixMultiply(const NCDataMatrix& B, bool transposeThis, bool transposeOther) const {
  if (transposeThis) return transposeOther ? MultiplyTransposeBoth(B) : MultiplyTransposeThis(B);
  return transposeOther ? MultiplyTransposeOther(B) : *this * B;
}

template <class T>
void NCDataMatrix<T>::TransformToMprim_mul_M() {
  NCDataMatrix product(columns_, columns_);
  MultiplyInto(product, *this, /*transposeThis=*/true, /*transposeOther=*/false);
  *this = product;
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::operator*(const NCDataVector<T>& v) const {
  return kalmia::BuildInTarget(*this, &v, rows_, [&](NCDataVector<T>& product) {
    constexpr int kRowsPerGrain = 8;
    T* cells = product.data_;
    const int team = kalmia::TeamSize(std::int64_t{rows_} * columns_);
    product.numMisVal_ = kalmia::ForSlices(rows_, team, kRowsPerGrain, [&](int first, int last) {
      return kalmia::DotRows(*this, v, cells, first, last);
    });
  });
}

template <class T>
long double NCDataMatrix<T>::GetSS() const {
  std::vector<double> squares(static_cast<std::size_t>(rows_));
  kalmia::ForSlices(rows_, kalmia::TeamSize(std::int64_t{rows_} * columns_), /*grain=*/8, [&](int first, int last) {
    for (int r = first; r <= last; ++r) squares[static_cast<std::size_t>(r) - 1] = SquaresOf(rowArray_[r]);
    return 0;
  });
  double sum = 0.0;
  for (const double square : squares)
    if (square != kMissing) sum += square;
  return sum;
}

template void NCDataMatrix<float>::MultiplyInto(NCDataMatrix<float>&, const NCDataMatrix<float>&, bool, bool) const;
template NCDataMatrix<float> NCDataMatrix<float>::MultiplyTransposeThis(const NCDataMatrix<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::MultiplyTransposeOther(const NCDataMatrix<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::MultiplyTransposeBoth(const NCDataMatrix<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::operator*(const NCDataMatrix<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::MatrixMultiply(const NCDataMatrix<float>&, bool, bool) const;
template void NCDataMatrix<float>::TransformToMprim_mul_M();
template NCDataVector<float> NCDataMatrix<float>::operator*(const NCDataVector<float>&) const;
template long double NCDataMatrix<float>::GetSS() const;

template void NCDataMatrix<double>::MultiplyInto(NCDataMatrix<double>&, const NCDataMatrix<double>&, bool, bool) const;
template NCDataMatrix<double> NCDataMatrix<double>::MultiplyTransposeThis(const NCDataMatrix<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::MultiplyTransposeOther(const NCDataMatrix<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::MultiplyTransposeBoth(const NCDataMatrix<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::operator*(const NCDataMatrix<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::MatrixMultiply(const NCDataMatrix<double>&, bool, bool) const;
template void NCDataMatrix<double>::TransformToMprim_mul_M();
template NCDataVector<double> NCDataMatrix<double>::operator*(const NCDataVector<double>&) const;
template long double NCDataMatrix<double>::GetSS() const;
