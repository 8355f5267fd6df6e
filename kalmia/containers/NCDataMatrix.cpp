#include "kalmia/containers/NCDataMatrix.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "kalmia/containers/internal/AlignedBlock.h"
#include "kalmia/containers/internal/SizeLimit.h"

using kalmia::kMissingCell;

template <class T>
typename NCDataMatrix<T>::DerivedStreamableData NCDataMatrix<T>::MyStreamableData(4, "NCDM");

template <class T>
MatrixDestroyer<T>::~MatrixDestroyer() {
  if (owner) delete matrix;
}

template <class T>
NCDataMatrix<T>::NCDataMatrix() {
  auto links = std::make_unique<int>(1);
  columnMisVal_ = new NCIntegralVector<int, -99>();
  linkCount_ = links.release();
}

template <class T>
NCDataMatrix<T>::NCDataMatrix(int rows, int columns, T value) : NCDataMatrix() {
  kalmia::RequireTableSize(rows, columns);
  const bool missing = value == kMissingCell<T>;
  MoveRows(rows);
  for (int r = 1; r <= rows; ++r) rowArray_[r].InsertValues(1, columns, value);
  columnMisVal_->SetNumValues(columns, missing ? rows : 0);
  rows_ = rows;
  columns_ = columns;
  numMisVal_ = missing ? static_cast<int>(std::int64_t{rows} * columns) : 0;
}

template <class T>
NCDataMatrix<T>::NCDataMatrix(const NCDataMatrix& other)
    : Persistence(),
      linkCount_(other.linkCount_),
      columns_(other.columns_),
      rows_(other.rows_),
      rowArray_(other.rowArray_),
      columnMisVal_(other.columnMisVal_),
      numMisVal_(other.numMisVal_),
      rowCapacity_(other.rowCapacity_) {
  ++*linkCount_;
}

template <class T>
NCDataMatrix<T>& NCDataMatrix<T>::operator=(const NCDataMatrix& other) {
  if (linkCount_ == other.linkCount_) return *this;
  LetGo();
  ++*other.linkCount_;
  linkCount_ = other.linkCount_;
  rowArray_ = other.rowArray_;
  rows_ = other.rows_;
  columns_ = other.columns_;
  rowCapacity_ = other.rowCapacity_;
  numMisVal_ = other.numMisVal_;
  columnMisVal_ = other.columnMisVal_;
  return *this;
}

template <class T>
NCDataMatrix<T>::~NCDataMatrix() {
  LetGo();
}

template <class T>
void NCDataMatrix<T>::LetGo() {
  if (*linkCount_ > 1) {
    --*linkCount_;
    return;
  }
  delete[] rowArray_;
  delete columnMisVal_;
  delete linkCount_;
}

template <class T>
void NCDataMatrix<T>::swap(NCDataMatrix& other) {
  std::swap(linkCount_, other.linkCount_);
  std::swap(columns_, other.columns_);
  std::swap(rows_, other.rows_);
  std::swap(rowArray_, other.rowArray_);
  std::swap(columnMisVal_, other.columnMisVal_);
  std::swap(numMisVal_, other.numMisVal_);
  std::swap(rowCapacity_, other.rowCapacity_);
  std::swap(vectorResultTarget_, other.vectorResultTarget_);
  std::swap(matrixResultTarget_, other.matrixResultTarget_);
}

template <class T>
void NCDataMatrix<T>::Clear() {
  NCDataMatrix empty;
  swap(empty);
}

template <class T>
void NCDataMatrix<T>::Unlink() {
  if (*linkCount_ > 1) UnlinkMe();
}

template <class T>
void NCDataMatrix<T>::UnlinkMe() {
  if (*linkCount_ != 1) MoveRows(rows_);
}

template <class T>
void NCDataMatrix<T>::MoveRows(int capacity) {
  std::unique_ptr<NCDataVector<T>[]> rows;
  if (capacity > 0) rows.reset(new NCDataVector<T>[static_cast<std::size_t>(capacity) + 1]);
  for (int r = 1; r <= rows_; ++r) rows[static_cast<std::size_t>(r)] = rowArray_[r];
  if (*linkCount_ == 1) {
    delete[] rowArray_;
  } else {
    auto links = std::make_unique<int>(1);
    auto counts = std::make_unique<NCIntegralVector<int, -99>>(*columnMisVal_);
    counts->ForceUnlink();  // now, so that no later change of a count needs memory
    --*linkCount_;
    linkCount_ = links.release();
    columnMisVal_ = counts.release();
  }
  rowArray_ = rows.release();
  rowCapacity_ = capacity;
}

template <class T>
void NCDataMatrix<T>::ForceUnlink() {
  UnlinkMe();
  for (int r = 1; r <= rows_; ++r) rowArray_[r].ForceUnlink();
}

template <class T>
void NCDataMatrix<T>::CopyContent(const NCDataMatrix& other) {
  if (this == &other) return ForceUnlink();
  // No share of `other` in passing: several threads may copy it at the same time.
  MakeRoom(other.rows_);
  PrepareRows(other.rows_, other.columns_);
  NCIntegralVector<int, -99> counts;
  counts.CopyContent(*other.columnMisVal_);
  VacateRows(other.rows_ + 1, rows_);
  for (int r = 1; r <= other.rows_; ++r) rowArray_[r].CopyContent(other.rowArray_[r]);
  *columnMisVal_ = counts;
  rows_ = other.rows_;
  columns_ = other.columns_;
  numMisVal_ = other.numMisVal_;
}

template <class T>
NCDataVector<T>& NCDataMatrix<T>::operator()(int r) {
  Unlink();
  return rowArray_[r];
}

template <class T>
T NCDataMatrix<T>::operator()(int r, int c, T value) {
  Unlink();
  const int change = rowArray_[r].SetAndReturn_dMisVal(c, value);
  if (change != 0) {
    (*columnMisVal_)(c) += change;
    numMisVal_ += change;
  }
  return value;
}

template <class T>
NCDataVector<T> NCDataMatrix<T>::GetColumn(int c) const {
  const std::less<const NCDataVector<T>*> before;
  NCDataVector<T>* target = vectorResultTarget_;
  if (target && !before(target, begin()) && before(target, end())) {
    // A row of this matrix: all of its cells are read before one is written.
    vectorResultTarget_ = nullptr;
    target->CopyContent(GetColumn(c));
    return *target;
  }
  VectorDestroyer<T> holder;
  GetReturnVector(holder, rows_);
  T* cells = holder.vector->data_;
  int missing = 0;
  for (int r = 1; r <= rows_; ++r) {
    cells[r] = rowArray_[r].data_[c];
    if (cells[r] == kMissingCell<T>) ++missing;
  }
  holder.vector->numMisVal_ = missing;
  return *holder.vector;
}

template <class T>
NCDataMatrix<T> NCDataMatrix<T>::GetRowSubMatrix(int first, int last) const {
  if (first == 1 && last == rows_) return *this;
  NCDataMatrix part;
  part.SetSize(0, columns_);
  if (last < first) return part;
  part.MoveRows(last - first + 1);
  for (int r = first; r <= last; ++r) part.rowArray_[r - first + 1] = rowArray_[r];
  part.rows_ = last - first + 1;
  part.CountMissing();
  return part;
}

template <class T>
T** NCDataMatrix<T>::GetMatrixAsPointerPointer(NCDataMatrix& m, bool keep) {
  std::unique_ptr<T*[]> cells(new T*[static_cast<std::size_t>(m.rows_) + 1]());
  if (!keep) m.ForceUnlink();
  for (int r = 1; r <= m.rows_; ++r) cells[static_cast<std::size_t>(r)] = m.rowArray_[r].data_;
  if (!keep) m.GiveCellsAway();
  return cells.release();
}

template <class T>
void NCDataMatrix<T>::GiveCellsAway() {
  for (int r = 1; r <= rows_; ++r) {
    rowArray_[r].data_ = nullptr;
    rowArray_[r].size_ = 0;
  }
  delete[] rowArray_;
  delete columnMisVal_;
  rowArray_ = nullptr;
  columnMisVal_ = nullptr;
  rows_ = columns_ = numMisVal_ = rowCapacity_ = 0;
}

template <class T>
void NCDataMatrix<T>::ReleasePointerPointer(T** rows, int count, bool cells) {
  for (int r = 1; cells && r <= count; ++r) kalmia::AlignedBlock<T>::Free(rows[r]);
  delete[] rows;
}

template <class T>
NCDataMatrix<T>& NCDataMatrix<T>::Result(NCDataMatrix* target) {
  matrixResultTarget_ = target;
  return *this;
}

template <class T>
const NCDataMatrix<T>& NCDataMatrix<T>::Result(NCDataMatrix* target) const {
  matrixResultTarget_ = target;
  return *this;
}

template <class T>
NCDataMatrix<T>& NCDataMatrix<T>::Result(NCDataVector<T>* target) {
  vectorResultTarget_ = target;
  return *this;
}

template <class T>
const NCDataMatrix<T>& NCDataMatrix<T>::Result(NCDataVector<T>* target) const {
  vectorResultTarget_ = target;
  return *this;
}

template <class T>
void NCDataMatrix<T>::GetReturnVector(VectorDestroyer<T>& holder, int n) const {
  const NCDataVector<T> vector;  // its mechanism is the one for vectors
  // Without a target nothing is written: a table may be read from several threads.
  if (vectorResultTarget_) vector.Result(std::exchange(vectorResultTarget_, nullptr));
  vector.GetReturnVector(holder, n);
}

template <class T>
void NCDataMatrix<T>::GetReturnMatrix(MatrixDestroyer<T>& holder, int rows, int columns) const {
  if (matrixResultTarget_) {
    NCDataMatrix* target = std::exchange(matrixResultTarget_, nullptr);
    target->Unlink();
    holder.matrix = target;
    holder.owner = false;
  } else if (rows != 0 && columns != 0) {
    holder.matrix = new NCDataMatrix(rows, columns);
  } else {
    holder.matrix = new NCDataMatrix();
    if (rows != 0) holder.matrix->InsertRows(1, rows);
  }
}

template <class T>
void NCDataMatrix<T>::CountMissing() {
  columnMisVal_->SetSize(columns_);
  columnMisVal_->SetAllValues(0);
  numMisVal_ = 0;
  for (int r = 1; r <= rows_; ++r) AddToCounts(rowArray_[r], 1);
}

template <class T>
void NCDataMatrix<T>::AddToCounts(const NCDataVector<T>& row, int times) {
  if (row.numMisVal_ == 0) return;
  int* counts = &(*columnMisVal_)(1) - 1;  // cell 0 exists
  // Free of branches and of loads through this: rows are counted each time they move from one table to another.
  const T* cells = row.data_;
  for (int c = 1, columns = columns_; c <= columns; ++c) counts[c] += cells[c] == kMissingCell<T> ? times : 0;
  numMisVal_ += times * row.numMisVal_;
}

template struct MatrixDestroyer<float>;
template struct MatrixDestroyer<double>;
template class NCDataMatrix<float>;
template class NCDataMatrix<double>;
