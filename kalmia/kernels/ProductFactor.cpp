#include "kalmia/kernels/ProductFactor.h"

#include <algorithm>
#include <cmath>

namespace kalmia {

template <class T>
ProductFactor<T>::ProductFactor(const NCDataMatrix<T>& m, bool sharedAlongRows)
    : sharedAlongRows_(sharedAlongRows),
      outer_(sharedAlongRows ? m.SizeRows() : m.SizeColumns()),
      shared_(sharedAlongRows ? m.SizeColumns() : m.SizeRows()) {
  if (outer_ == 0 || shared_ == 0) return;  // no cells
  rows_.reserve(static_cast<std::size_t>(m.SizeRows()));
  for (int r = 1; r <= m.SizeRows(); ++r) rows_.push_back(m[r].begin());
}

template <class T>
void ProductFactor<T>::MarkPresent() {
  isMarked_ = true;
  words_ = (static_cast<std::size_t>(shared_) + 63) / 64;
  present_.assign(words_ * static_cast<std::size_t>(outer_), 0);
  const int rowCount = static_cast<int>(rows_.size());
  const int columnCount = sharedAlongRows_ ? shared_ : outer_;
  for (int r = 0; r < rowCount; ++r)
    for (int c = 0; c < columnCount; ++c) {
      const T cell = rows_[r][c];
      if (cell == kMissing) continue;
      isFinite_ = isFinite_ && std::isfinite(cell);
      const std::size_t vector = static_cast<std::size_t>(sharedAlongRows_ ? r : c);
      const std::size_t position = static_cast<std::size_t>(sharedAlongRows_ ? c : r);
      present_[vector * words_ + position / 64] |= std::uint64_t{1} << position % 64;
    }
}

template <class T>
bool ProductFactor<T>::HasPair(int vector, const ProductFactor& other, int otherVector) const {
  const std::uint64_t* mine = present_.data() + words_ * static_cast<std::size_t>(vector);
  const std::uint64_t* others = other.present_.data() + words_ * static_cast<std::size_t>(otherVector);
  for (std::size_t w = 0; w < words_; ++w)
    if (mine[w] & others[w]) return true;
  return false;
}

template <class T>
void ProductFactor<T>::Pack(int firstVector, int count, int firstShared, int depth, int width, double* panels) const {
  for (int done = 0; done < count; done += width, panels += static_cast<std::ptrdiff_t>(depth) * width)
    PackPanel(firstVector + done, std::min(width, count - done), firstShared, depth, width, panels);
}

template <class T>
void ProductFactor<T>::PackPanel(int firstVector, int count, int firstShared, int depth, int width,
                                 double* panel) const {
  if (count < width) std::fill_n(panel, static_cast<std::ptrdiff_t>(depth) * width, 0.0);
  if (sharedAlongRows_) {
    for (int v = 0; v < count; ++v) {
      const T* cells = rows_[firstVector + v] + firstShared;
      for (int k = 0; k < depth; ++k)
        panel[static_cast<std::ptrdiff_t>(k) * width + v] = Packed(cells[k]);
    }
  } else {
    for (int k = 0; k < depth; ++k, panel += width) {
      const T* cells = rows_[firstShared + k] + firstVector;
      for (int v = 0; v < count; ++v) panel[v] = Packed(cells[v]);
    }
  }
}

template class ProductFactor<float>;
template class ProductFactor<double>;

}  // namespace kalmia
