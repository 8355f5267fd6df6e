#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/AliasSafeRow.h"

using kalmia::kMissing;
using kalmia::kMissingCell;

namespace {

/// What stands for a computed value of exactly -99: the next float below it, in double a like step.
template <class T>
constexpr T kBelowMissing = std::is_same_v<T, float> ? static_cast<T>(-99.00000762939453) : static_cast<T>(-99.00001);

}  // namespace

template <class T>
void NCDataMatrix<T>::SetRow(int r, const NCDataVector<T>& v) {
  const NCDataVector<T> row(v);  // v may be a row of this matrix
  Unlink();
  AddToCounts(rowArray_[r], -1);
  AddToCounts(row, 1);
  rowArray_[r] = row;
}

template <class T>
void NCDataMatrix<T>::SetRow(int r, T value) {
  if (value == kMissingCell<T> && rowArray_[r].numMisVal_ == columns_) return;
  for (int c = 1; c <= columns_; ++c) (*this)(r, c, value);
}

template <class T>
void NCDataMatrix<T>::SetColumn(int c, const T* p) {
  for (int r = 1; r <= rows_; ++r) (*this)(r, c, p[r]);
}

template <class T>
void NCDataMatrix<T>::SetColumn(int c, const NCDataVector<T>& v) {
  const kalmia::AliasSafeRow<T> column(v, *this);
  SetColumn(c, (*column).GetVector());
}

template <class T>
void NCDataMatrix<T>::SetColumn(int c, T value) {
  if (value == kMissingCell<T> && GetColumnMisVal(c) == columns_) return;
  for (int r = 1; r <= rows_; ++r) (*this)(r, c, value);
}

template <class T>
void NCDataMatrix<T>::EmptyColumn(int c) {
  for (int r = 1; r <= rows_; ++r) (*this)(r, c, kMissingCell<T>);
}

template <class T>
void NCDataMatrix<T>::CopyRow(int from, int to) {
  const int diagonal = std::min(rows_, columns_);
  for (int c = 1; c <= diagonal; ++c) {
    const int before = rowArray_[c].data_[c] == kMissingCell<T> ? 1 : 0;
    const int after = rowArray_[from].data_[c] == kMissingCell<T> ? 1 : 0;
    if (before != after) (*columnMisVal_)(c) += after - before;
  }
  rowArray_[to] = rowArray_[from];
}

template <class T>
void NCDataMatrix<T>::CopyColumn(int from, int to) {
  CopyColumn(to, *this, from);
}

template <class T>
void NCDataMatrix<T>::CopyColumn(int to, const NCDataMatrix& m, int from) {
  for (int r = 1; r <= rows_; ++r) (*this)(r, to, m[r][from]);
}

template <class T>
void NCDataMatrix<T>::SetAllValues(T value) {
  Unlink();
  PrepareRows(rows_, columns_);
  const bool missing = value == kMissingCell<T>;
  for (int r = 1; r <= rows_; ++r) rowArray_[r].SetAllValues(value);
  columnMisVal_->SetAllValues(missing ? rows_ : 0);
  numMisVal_ = missing ? static_cast<int>(std::int64_t{rows_} * columns_) : 0;
}

template <class T>
void NCDataMatrix<T>::SetNoMisVal() {
  for (int r = 1; r <= rows_; ++r) rowArray_[r].numMisVal_ = 0;
  columnMisVal_->SetAllValues(0);
  numMisVal_ = 0;
}

template <class T>
void NCDataMatrix<T>::MultiplyRow(int row, T factor) {
  for (int c = 1; c <= columns_; ++c) {
    const T cell = rowArray_[row].data_[c];
    if (cell != kMissingCell<T>) (*this)(row, c, cell * factor);
  }
}

template <class T>
void NCDataMatrix<T>::MultiplyColumn(int c, long double d, int to) {
  if (d == kMissing) {
    EmptyColumn(c);
    return;
  }
  for (int r = 1; r <= rows_; ++r) {
    const T cell = rowArray_[r].data_[c];
    (*this)(r, to, cell == kMissingCell<T> ? cell : static_cast<T>(cell * d));
  }
}

template <class T>
void NCDataMatrix<T>::MultiplyColumns(int a, int b, int to) {
  for (int r = 1; r <= rows_; ++r) {
    const T left = rowArray_[r].data_[a];
    const T right = rowArray_[r].data_[b];
    (*this)(r, to, left == kMissingCell<T> || right == kMissingCell<T> ? kMissingCell<T> : left * right);
  }
}

template <class T>
void NCDataMatrix<T>::SubtractFromColumn(int c, long double d) {
  if (d == kMissing) {
    EmptyColumn(c);
    return;
  }
  for (int r = 1; r <= rows_; ++r) {
    const T cell = rowArray_[r].data_[c];
    if (cell == kMissingCell<T>) continue;
    const T difference = static_cast<T>(cell - d);
    (*this)(r, c, difference == kMissingCell<T> ? kBelowMissing<T> : difference);
  }
}

template <class T>
void NCDataMatrix<T>::LagColumn(int c, int k) {
  if (k == 0) return;
  if (k >= rows_ || k <= -rows_) {
    EmptyColumn(c);
    return;
  }
  for (int r = rows_; r > k && k > 0; --r) (*this)(r, c, rowArray_[r - k].data_[c]);
  for (int r = 1; r <= k; ++r) (*this)(r, c, kMissingCell<T>);
  for (int r = 1; r <= rows_ + k && k < 0; ++r) (*this)(r, c, rowArray_[r - k].data_[c]);
  for (int r = rows_ + k + 1; r <= rows_; ++r) (*this)(r, c, kMissingCell<T>);
}

template <class T>
void NCDataMatrix<T>::TransformToColumnScaled(const NCDataVector<T>& s) {
  NCDataVector<T> scales;  // s may be a row of this matrix, which does not unlink
  scales.CopyContent(s);
  for (int r = 1; r <= rows_; ++r) {
    T* row = rowArray_[r].data_;
    for (int c = 1; c <= columns_; ++c)
      if (row[c] != kMissingCell<T> && scales.data_[c] != kMissingCell<T>) row[c] *= scales.data_[c];
  }
}

template <class T>
void NCDataMatrix<T>::TransformToDotSubRowVector(const NCDataVector<T>& v) {
  const kalmia::AliasSafeRow<T> operand(v, *this);
  const NCDataVector<T>& subtrahend = *operand;
  ForceUnlink();
  for (int r = 1; r <= rows_; ++r) {
    T* row = rowArray_[r].data_;
    for (int c = 1; c <= columns_; ++c)
      if (row[c] != kMissingCell<T> && subtrahend.data_[c] != kMissingCell<T>) row[c] -= subtrahend.data_[c];
  }
}

template <class T>
bool NCDataMatrix<T>::operator==(const NCDataMatrix& other) const {
  if (linkCount_ == other.linkCount_) return true;
  for (int r = 1; r <= rows_; ++r)
    if (r > other.rows_ || rowArray_[r] != other.rowArray_[r]) return false;
  return true;
}

#define KALMIA_INSTANTIATE(T)                                                                \
  template void NCDataMatrix<T>::SetRow(int, const NCDataVector<T>&);                        \
  template void NCDataMatrix<T>::SetRow(int, T);                                             \
  template void NCDataMatrix<T>::SetColumn(int, const T*);                                   \
  template void NCDataMatrix<T>::SetColumn(int, const NCDataVector<T>&);                     \
  template void NCDataMatrix<T>::SetColumn(int, T);                                          \
  template void NCDataMatrix<T>::EmptyColumn(int);                                           \
  template void NCDataMatrix<T>::CopyRow(int, int);                                          \
  template void NCDataMatrix<T>::CopyColumn(int, int);                                       \
  template void NCDataMatrix<T>::CopyColumn(int, const NCDataMatrix<T>&, int);               \
  template void NCDataMatrix<T>::SetAllValues(T);                                            \
  template void NCDataMatrix<T>::SetNoMisVal();                                              \
  template void NCDataMatrix<T>::MultiplyRow(int, T);                                        \
  template void NCDataMatrix<T>::MultiplyColumn(int, long double, int);                      \
  template void NCDataMatrix<T>::MultiplyColumns(int, int, int);                             \
  template void NCDataMatrix<T>::SubtractFromColumn(int, long double);                       \
  template void NCDataMatrix<T>::LagColumn(int, int);                                        \
  template void NCDataMatrix<T>::TransformToColumnScaled(const NCDataVector<T>&);            \
  template void NCDataMatrix<T>::TransformToDotSubRowVector(const NCDataVector<T>&);         \
  template bool NCDataMatrix<T>::operator==(const NCDataMatrix<T>&) const;

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
