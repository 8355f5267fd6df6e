#include "kalmia/kernels/rows/UnlinkedRows.h"

#include <algorithm>
#include <cstddef>

#include "kalmia/containers/internal/MoveCells.h"

namespace kalmia {

template <class T>
UnlinkedRows<T>::UnlinkedRows(NCDataMatrix<T>* matrix) {
  matrix->Unlink();
  rows_ = matrix->rowArray_;
  const int rows = matrix->rows_;
  const auto shares = [](const NCDataVector<T>& row) { return *row.refCount_ != 1; };
  if (rows == 0 || std::none_of(rows_ + 1, rows_ + 1 + rows, shares)) return;  // nothing to take memory for
  old_.resize(static_cast<std::size_t>(rows) + 1);
  shared_.reserve(static_cast<std::size_t>(rows));
  try {
    for (int r = 1; r <= rows; ++r) {
      NCDataVector<T>& row = rows_[r];
      if (!shares(row)) continue;
      shared_.emplace_back(r, row);
      row.PrepareToOverwrite(row.size_);
      old_[static_cast<std::size_t>(r)] = shared_.back().second.begin();
    }
  } catch (...) {
    for (const auto& [r, share] : shared_) rows_[r] = share;
    throw;
  }
}

template <class T>
const T* UnlinkedRows<T>::OldCells(int r) const {
  const T* old = old_.empty() ? nullptr : old_[static_cast<std::size_t>(r)];
  return old ? old : NewCells(r);
}

template <class T>
T* UnlinkedRows<T>::NewCells(int r) const {
  return rows_[r].Cells();
}

template <class T>
T* UnlinkedRows<T>::Fetch(int r) const {
  T* const cells = NewCells(r);
  const T* old = OldCells(r);
  if (old != cells) MoveCells(cells, old, rows_[r].size_);
  return cells;
}

template class UnlinkedRows<float>;
template class UnlinkedRows<double>;

}  // namespace kalmia
