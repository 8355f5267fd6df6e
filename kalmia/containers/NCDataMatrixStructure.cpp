#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/internal/AliasSafeRow.h"
#include "kalmia/containers/internal/CapacityRule.h"
#include "kalmia/containers/internal/SizeLimit.h"

using kalmia::kMissingCell;

template <class T>
void NCDataMatrix<T>::MakeRoom(int wanted) {
  const bool shared = *linkCount_ > 1;
  const int present = shared ? rows_ : rowCapacity_;
  if (shared || wanted > present) MoveRows(kalmia::GrownCapacity(present, wanted));
}

// What needs memory comes first in each operation, without a visible effect; what follows cannot fail.

template <class T>
void NCDataMatrix<T>::PrepareRows(int rows, int cells) {
  for (int r = 1; r <= rows; ++r) {
    NCDataVector<T>& row = rowArray_[r];
    if (*row.refCount_ > 1 && row.size_ > 0) {
      NCDataVector<T> own;  // split off and enlarged in one step
      own.Reserve(kalmia::GrownCapacity(row.size_, cells));
      own.InsertValues(1, row);
      row = own;
    } else {
      row.Unlink();
      row.Reserve(kalmia::GrownCapacity(row.capacity_, cells));
    }
  }
}

template <class T>
void NCDataMatrix<T>::VacateRows(int first, int last) {
  for (int r = first; r <= last; ++r) rowArray_[r] = rowArray_[0];
}

template <class T>
void NCDataMatrix<T>::SetSize(int r, int c) {
  if (r == rows_ && c == columns_) return;
  kalmia::RequireTableSize(r, c);
  MakeRoom(r);
  PrepareRows(r, c);
  const NCIntegralVector<int, -99> counts(c, r);
  VacateRows(r + 1, rows_);
  for (int row = 1; row <= r; ++row) {
    rowArray_[row].SetSize(c);
    rowArray_[row].SetAllValues(kMissingCell<T>);  // also where it had that size
  }
  *columnMisVal_ = counts;
  rows_ = r;
  columns_ = c;
  numMisVal_ = static_cast<int>(std::int64_t{r} * c);
}

template <class T>
void NCDataMatrix<T>::Resize(int r, int c) {
  kalmia::RequireTableSize(r, c);
  if (r < rows_) RemoveRows(r + 1, rows_ - r);
  if (c < columns_) RemoveColumns(c + 1, columns_ - c);
  if (c > columns_) InsertColumns(columns_ + 1, c - columns_);
  if (r > rows_) InsertRows(rows_ + 1, r - rows_);
}

template <class T>
void NCDataMatrix<T>::ReserveRows(int n) {
  if (n > rowCapacity_) MoveRows(n);
}

template <class T>
void NCDataMatrix<T>::ReserveColumns(int n) {
  Unlink();
  for (int r = 1; r <= rows_; ++r) rowArray_[r].Reserve(n);
}

template <class T>
void NCDataMatrix<T>::InsertRows(int at, int n) {
  if (n == 0) return;
  kalmia::RequireVectorSize(n);
  kalmia::RequireTableSize(std::int64_t{rows_} + n, columns_);
  MakeRoom(rows_ + n);
  std::vector<NCDataVector<T>> inserted(static_cast<std::size_t>(n));
  for (NCDataVector<T>& row : inserted) row.SetSize(columns_);
  at = std::min(at, rows_ + 1);
  for (int r = rows_; r >= at; --r) rowArray_[r + n] = rowArray_[r];
  std::copy(inserted.begin(), inserted.end(), rowArray_ + at);
  for (int c = 1; c <= columns_; ++c) (*columnMisVal_)(c) += n;
  numMisVal_ = static_cast<int>(numMisVal_ + std::int64_t{columns_} * n);
  rows_ += n;
}

template <class T>
void NCDataMatrix<T>::InsertRow(int at, const NCDataVector<T>& v) {
  kalmia::RequireTableSize(std::int64_t{rows_} + 1, rows_ == 0 ? v.Size() : columns_);
  const NCDataVector<T> row(v);  // v may be a row of this matrix, which moves
  MakeRoom(rows_ + 1);
  if (rows_ == 0) SetSize(0, row.Size());
  at = std::min(at, rows_ + 1);
  for (int r = rows_; r >= at; --r) rowArray_[r + 1] = rowArray_[r];
  rowArray_[at] = row;
  ++rows_;
  AddToCounts(row, 1);
}

template <class T>
const NCDataVector<T>* NCDataMatrix<T>::push_back(const NCDataVector<T>& v) {
  InsertRow(rows_ + 1, v);
  return end();
}

template <class T>
void NCDataMatrix<T>::RemoveRows(int at, int n) {
  if (n == 0) return;
  Unlink();
  for (int r = at; r < at + n; ++r) AddToCounts(rowArray_[r], -1);
  for (int r = at; r <= rows_ - n; ++r) rowArray_[r] = rowArray_[r + n];
  VacateRows(rows_ - n + 1, rows_);
  rows_ -= n;
}

template <class T>
void NCDataMatrix<T>::RemoveRows(const NCIntegralVector<int, -99>& indices) {
  if (indices.empty()) return;
  std::vector<int> ascending(indices.begin(), indices.end());
  std::sort(ascending.begin(), ascending.end());
  Unlink();
  auto next = ascending.begin();
  int kept = 0;
  for (int r = 1; r <= rows_; ++r) {
    while (next != ascending.end() && *next < r) ++next;
    if (next != ascending.end() && *next == r) {
      AddToCounts(rowArray_[r], -1);
    } else if (++kept != r) {
      rowArray_[kept] = rowArray_[r];
    }
  }
  VacateRows(kept + 1, rows_);
  rows_ = kept;
}

template <class T>
void NCDataMatrix<T>::InsertColumns(int at, int n) {
  if (n == 0) return;
  kalmia::RequireVectorSize(n);
  kalmia::RequireTableSize(rows_, std::int64_t{columns_} + n);
  Unlink();
  PrepareRows(rows_, columns_ + n);
  at = std::min(at, columns_ + 1);
  columnMisVal_->InsertValues(at, n, rows_);
  for (int r = 1; r <= rows_; ++r) rowArray_[r].InsertValues(at, n, kMissingCell<T>);
  numMisVal_ = static_cast<int>(numMisVal_ + std::int64_t{rows_} * n);
  columns_ += n;
}

template <class T>
void NCDataMatrix<T>::InsertColumns(int at, const NCDataMatrix& m) {
  if (m.columns_ == 0) return;
  if (rows_ == 0 && columns_ == 0) {
    *this = m;
    return;
  }
  kalmia::RequireTableSize(rows_, std::int64_t{columns_} + m.columns_);
  NCDataMatrix held;  // keeps what is inserted where m is this matrix; no share of any other in passing
  if (this == &m) held = m;
  const NCDataMatrix& source = this == &m ? held : m;
  Unlink();
  PrepareRows(rows_, columns_ + source.columns_);
  at = std::min(at, columns_ + 1);
  columnMisVal_->InsertValues(at, *source.columnMisVal_);
  for (int r = 1; r <= rows_; ++r) rowArray_[r].InsertValues(at, source.rowArray_[r]);
  numMisVal_ += source.numMisVal_;
  columns_ += source.columns_;
}

template <class T>
void NCDataMatrix<T>::InsertColumn(int at, const NCDataVector<T>& v) {
  const kalmia::AliasSafeRow<T> column(v, *this);
  if (columns_ == 0)
    SetSize((*column).Size(), 1);
  else
    InsertColumns(at, 1);
  SetColumn(std::min(at, columns_), *column);
}

template <class T>
void NCDataMatrix<T>::RemoveColumns(int at, int n) {
  if (n == 0) return;
  Unlink();
  PrepareRows(rows_, columns_);
  for (int r = 1; r <= rows_; ++r) rowArray_[r].RemoveValues(at, n);
  for (int c = at; c < at + n; ++c) numMisVal_ -= GetColumnMisVal(c);
  columnMisVal_->RemoveValues(at, n);
  columns_ -= n;
}

template <class T>
void NCDataMatrix<T>::ReduceColumns(const NCIntegralVector<int, -99>& indices) {
  kalmia::RequireTableSize(rows_, indices.Size());
  NCDataMatrix reduced(*this);
  reduced.MoveRows(rowCapacity_);
  for (int r = 1; r <= rows_; ++r) reduced.rowArray_[r].Reduce(indices);
  reduced.columns_ = indices.Size();
  if (numMisVal_ == 0)
    reduced.columnMisVal_->SetNumValues(reduced.columns_, 0);
  else
    reduced.CountMissing();
  *this = reduced;
}

template <class T>
void NCDataMatrix<T>::ConcatRows(const NCDataMatrix& m) {
  if (m.rows_ == 0) return;
  kalmia::RequireTableSize(std::int64_t{rows_} + m.rows_, rows_ == 0 ? m.columns_ : columns_);
  const NCDataMatrix source(m);  // m may be this matrix
  MoveRows(rows_ + source.rows_);
  if (rows_ == 0) SetSize(0, source.columns_);
  for (int r = 1; r <= source.rows_; ++r) rowArray_[rows_ + r] = source.rowArray_[r];
  for (int c = 1; c <= columns_; ++c) (*columnMisVal_)(c) += source.GetColumnMisVal(c);
  numMisVal_ += source.numMisVal_;
  rows_ += source.rows_;
}

template <class T>
void NCDataMatrix<T>::ConcatColumns(const NCDataMatrix& m) {
  InsertColumns(columns_ + 1, m);
}

template <class T>
void NCDataMatrix<T>::RearrangeColumns(const std::vector<int>& order) {
  kalmia::RequireTableSize(rows_, static_cast<std::int64_t>(order.size()));
  const NCDataMatrix old(*this);
  NCDataMatrix rearranged;
  for (const int c : order) rearranged.InsertColumn(rearranged.columns_ + 1, old.GetColumn(c));
  swap(rearranged);
}

template <class T>
void NCDataMatrix<T>::SwapRows(int a, int b) {
  if (a == b) return;
  const NCDataVector<T> row(rowArray_[a]);
  rowArray_[a] = rowArray_[b];
  rowArray_[b] = row;
}

template <class T>
void NCDataMatrix<T>::SwapColumns(int a, int b) {
  if (a == b) return;
  for (int r = 1; r <= rows_; ++r) std::swap(rowArray_[r].data_[a], rowArray_[r].data_[b]);
  std::swap((*columnMisVal_)(a), (*columnMisVal_)(b));
}

#define KALMIA_INSTANTIATE(T)                                                          \
  template void NCDataMatrix<T>::MakeRoom(int);                                        \
  template void NCDataMatrix<T>::PrepareRows(int, int);                                \
  template void NCDataMatrix<T>::VacateRows(int, int);                                 \
  template void NCDataMatrix<T>::SetSize(int, int);                                    \
  template void NCDataMatrix<T>::Resize(int, int);                                     \
  template void NCDataMatrix<T>::ReserveRows(int);                                     \
  template void NCDataMatrix<T>::ReserveColumns(int);                                  \
  template void NCDataMatrix<T>::InsertRows(int, int);                                 \
  template void NCDataMatrix<T>::InsertRow(int, const NCDataVector<T>&);               \
  template const NCDataVector<T>* NCDataMatrix<T>::push_back(const NCDataVector<T>&);  \
  template void NCDataMatrix<T>::RemoveRows(int, int);                                 \
  template void NCDataMatrix<T>::RemoveRows(const NCIntegralVector<int, -99>&);        \
  template void NCDataMatrix<T>::InsertColumns(int, int);                              \
  template void NCDataMatrix<T>::InsertColumns(int, const NCDataMatrix<T>&);           \
  template void NCDataMatrix<T>::InsertColumn(int, const NCDataVector<T>&);            \
  template void NCDataMatrix<T>::RemoveColumns(int, int);                              \
  template void NCDataMatrix<T>::ReduceColumns(const NCIntegralVector<int, -99>&);     \
  template void NCDataMatrix<T>::ConcatRows(const NCDataMatrix<T>&);                   \
  template void NCDataMatrix<T>::ConcatColumns(const NCDataMatrix<T>&);                \
  template void NCDataMatrix<T>::RearrangeColumns(const std::vector<int>&);            \
  template void NCDataMatrix<T>::SwapRows(int, int);                                   \
  template void NCDataMatrix<T>::SwapColumns(int, int);

KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
