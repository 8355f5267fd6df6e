// Transposition in place.

#include <algorithm>
#include <utility>

#include "kalmia/containers/NCDataMatrix.h"

namespace {

/// Cells are exchanged in squares of this size, so that both places of an exchange stay in the first-level cache.
constexpr int kSquare = 32;

/// Calls visit(i, j) for all i in first..last of the rows and j of the columns, square by square.
template <class Visit>
void VisitInSquares(int firstRow, int lastRow, int firstColumn, int lastColumn, const Visit& visit) {
  for (int row = firstRow; row <= lastRow; row += kSquare)
    for (int column = firstColumn; column <= lastColumn; column += kSquare)
      for (int i = row; i <= std::min(row + kSquare - 1, lastRow); ++i)
        for (int j = column; j <= std::min(column + kSquare - 1, lastColumn); ++j) visit(i, j);
}

}  // namespace

/// The leading square is transposed by exchanging cells across the diagonal. What lies to the right of it then moves
/// into new rows, or what lies below it to the end of the rows that stay. All memory is taken before a cell moves.
template <class T>
void NCDataMatrix<T>::Transpose() {
  ForceUnlink();
  const int oldRows = rows_, oldColumns = columns_, square = std::min(oldRows, oldColumns);
  NCIntegralVector<int, -99> newColumnMisVal(oldRows, 0);
  const bool squareWithRoom = oldColumns == oldRows && rowCapacity_ > oldRows;
  if (oldColumns > oldRows || squareWithRoom) MoveRows(oldColumns);  // room for exactly the new rows
  for (int r = 1; r <= square; ++r) rowArray_[r].Reserve(oldRows);
  for (int r = oldRows + 1; r <= oldColumns; ++r) rowArray_[r].SetSize(oldRows);

  VisitInSquares(1, square, 1, square, [this](int i, int j) {
    if (i < j) std::swap(rowArray_[i].data_[j], rowArray_[j].data_[i]);
  });
  VisitInSquares(1, oldRows, square + 1, oldColumns,
                 [this](int i, int j) { rowArray_[j].data_[i] = rowArray_[i].data_[j]; });
  VisitInSquares(square + 1, oldRows, 1, oldColumns,
                 [this](int i, int j) { rowArray_[j].data_[i] = rowArray_[i].data_[j]; });

  for (int r = 1; r <= oldRows; ++r) newColumnMisVal(r) = rowArray_[r].numMisVal_;
  for (int r = 1; r <= oldColumns; ++r) {
    rowArray_[r].size_ = oldRows;
    rowArray_[r].numMisVal_ = (*columnMisVal_)[r];
  }
  *columnMisVal_ = newColumnMisVal;
  rows_ = oldColumns;
  columns_ = oldRows;
  GiveBackSurplus(oldRows);
}

/// After a transposition: drops the rows that are left over, and the rest of rows that became shorter.
template <class T>
void NCDataMatrix<T>::GiveBackSurplus(int oldRows) {
  if (oldRows > rows_) MoveRows(rows_);
  for (int r = 1; r <= std::min(oldRows, rows_); ++r) {
    if (rowArray_[r].capacity_ == columns_) continue;
    NCDataVector<T> cut;
    cut.CopyContent(rowArray_[r]);
    rowArray_[r] = cut;
  }
}

template void NCDataMatrix<float>::GiveBackSurplus(int);
template void NCDataMatrix<double>::GiveBackSurplus(int);
template void NCDataMatrix<float>::Transpose();
template void NCDataMatrix<double>::Transpose();
