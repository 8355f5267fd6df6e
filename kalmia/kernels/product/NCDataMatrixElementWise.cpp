// Sums, differences, products and quotients cell by cell. A result target may be one of the operands.

#include <functional>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/AliasSafeRow.h"

using kalmia::kMissing;
using kalmia::kMissingCell;
using kalmia::AliasSafeRow;

template <class T>
template <class FillRow>
void NCDataMatrix<T>::FillRows(const FillRow& fillRow) {
  for (int r = 1; r <= rows_; ++r) {
    rowArray_[r].Unlink();
    fillRow(r, rowArray_[r].data_);
    rowArray_[r].CountMissing();
  }
  CountMissing();
}

namespace {

/// out[c] = operation(a[c], b[c]) for c = 1..n, rounded once; missing where either is. `out` may be `a` or `b`.
template <class T, class Operation>
void CombineCells(const T* a, const T* b, int n, T* out, const Operation& operation) {
  for (int c = 1; c <= n; ++c)
    out[c] = a[c] == kMissing || b[c] == kMissing ? kMissingCell<T> : static_cast<T>(operation(a[c], b[c]));
}

/// The same with one number for all cells.
template <class T, class Number, class Operation>
void CombineWithNumber(const T* a, Number b, int n, T* out, const Operation& operation) {
  const bool empties = b == kMissing;
  for (int c = 1; c <= n; ++c)
    out[c] = empties || a[c] == kMissing ? kMissingCell<T> : static_cast<T>(operation(a[c], b));
}

}  // namespace

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::operator+(const NCDataMatrix& B) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineCells(rowArray_[r].data_, B.rowArray_[r].data_, columns_, out, std::plus<T>());
  });
  return *holder.matrix;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::operator-(const NCDataMatrix& B) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineCells(rowArray_[r].data_, B.rowArray_[r].data_, columns_, out, std::minus<T>());
  });
  return *holder.matrix;
}

template <class T>
NCDataMatrix<T>& NCDataMatrix<T>::operator+=(const NCDataMatrix& B) {
  Result(this);
  *this + B;
  return *this;
}

template <class T>
NCDataMatrix<T>& NCDataMatrix<T>::operator-=(const NCDataMatrix& B) {
  Result(this);
  *this - B;
  return *this;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::operator*(long double d) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineWithNumber(rowArray_[r].data_, d, columns_, out, std::multiplies<long double>());
  });
  return *holder.matrix;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::DotMultiplyVector(const NCDataVector<T>& v) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  const AliasSafeRow<T> operand(v, *holder.matrix);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineWithNumber(rowArray_[r].data_, (*operand)[r], columns_, out, std::multiplies<T>());
  });
  return *holder.matrix;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::DotDivideVector(const NCDataVector<T>& v) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  const AliasSafeRow<T> operand(v, *holder.matrix);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineWithNumber(rowArray_[r].data_, (*operand)[r], columns_, out, std::divides<T>());
  });
  return *holder.matrix;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::DotPreMultiplyVector(const NCDataVector<T>& v) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  const AliasSafeRow<T> operand(v, *holder.matrix);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineCells(rowArray_[r].data_, (*operand).GetVector(), columns_, out, std::multiplies<T>());
  });
  return *holder.matrix;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::DotPreDivideVector(const NCDataVector<T>& v) const {
  MatrixDestroyer<T> holder;
  GetReturnMatrix(holder, rows_, columns_);
  const AliasSafeRow<T> operand(v, *holder.matrix);
  holder.matrix->FillRows([&](int r, T* out) {
    CombineCells(rowArray_[r].data_, (*operand).GetVector(), columns_, out, std::divides<T>());
  });
  return *holder.matrix;
}

template NCDataMatrix<float> NCDataMatrix<float>::operator+(const NCDataMatrix<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::operator-(const NCDataMatrix<float>&) const;
template NCDataMatrix<float>& NCDataMatrix<float>::operator+=(const NCDataMatrix<float>&);
template NCDataMatrix<float>& NCDataMatrix<float>::operator-=(const NCDataMatrix<float>&);
template NCDataMatrix<float> NCDataMatrix<float>::operator*(long double) const;
template NCDataMatrix<float> NCDataMatrix<float>::DotMultiplyVector(const NCDataVector<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::DotDivideVector(const NCDataVector<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::DotPreMultiplyVector(const NCDataVector<float>&) const;
template NCDataMatrix<float> NCDataMatrix<float>::DotPreDivideVector(const NCDataVector<float>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::operator+(const NCDataMatrix<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::operator-(const NCDataMatrix<double>&) const;
template NCDataMatrix<double>& NCDataMatrix<double>::operator+=(const NCDataMatrix<double>&);
template NCDataMatrix<double>& NCDataMatrix<double>::operator-=(const NCDataMatrix<double>&);
template NCDataMatrix<double> NCDataMatrix<double>::operator*(long double) const;
template NCDataMatrix<double> NCDataMatrix<double>::DotMultiplyVector(const NCDataVector<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::DotDivideVector(const NCDataVector<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::DotPreMultiplyVector(const NCDataVector<double>&) const;
template NCDataMatrix<double> NCDataMatrix<double>::DotPreDivideVector(const NCDataVector<double>&) const;
