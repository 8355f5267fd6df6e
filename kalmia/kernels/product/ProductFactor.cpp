#include "kalmia/kernels/product/ProductFactor.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "kalmia/kernels/simd/ProductTile.h"

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

namespace {

/// What Packed takes for a hole: nothing equals NaN.
template <class T>
T HoleOf(bool isMarked) {
  return isMarked ? kMissingCell<T> : std::numeric_limits<T>::quiet_NaN();
}

template <class T>
double Packed(T cell, T hole) {
  return cell == hole ? 0.0 : static_cast<double>(cell);
}

}  // namespace

template <class T>
template <int width>
void ProductFactor<T>::Pack(int firstVector, int count, int firstShared, int depth, double* panels) const {
  const int whole = count / width * width;
  const std::ptrdiff_t panelSize = static_cast<std::ptrdiff_t>(depth) * width;
  if (sharedAlongRows_) {
    for (int done = 0; done < whole; done += width)
      PackRows<width>(firstVector + done, firstShared, depth, panels + done / width * panelSize);
  } else {
    PackColumns<width>(firstVector, whole, firstShared, depth, panels);
  }
  if (whole < count)
    PackLast<width>(firstVector + whole, count - whole, firstShared, depth, panels + whole / width * panelSize);
}

/// All whole panels in one pass along the rows, which lie far from each other.
template <class T>
template <int width>
void ProductFactor<T>::PackColumns(int firstVector, int count, int firstShared, int depth, double* panels) const {
  const T hole = HoleOf<T>(isMarked_);
  const std::ptrdiff_t panelSize = static_cast<std::ptrdiff_t>(depth) * width;
  for (int k = 0; k < depth; ++k, panels += width) {
    const T* cells = rows_[firstShared + k] + firstVector;
    double* to = panels;
    for (int done = 0; done < count; done += width, cells += width, to += panelSize)
      for (int v = 0; v < width; ++v) to[v] = Packed(cells[v], hole);
  }
}

template <class T>
template <int width>
void ProductFactor<T>::PackRows(int firstVector, int firstShared, int depth, double* panel) const {
  const T hole = HoleOf<T>(isMarked_);
  const T* cells[width];
  for (int v = 0; v < width; ++v) cells[v] = rows_[firstVector + v] + firstShared;
  for (int k = 0; k < depth; ++k, panel += width)
    for (int v = 0; v < width; ++v) panel[v] = Packed(cells[v][k], hole);
}

/// A panel of fewer vectors than its width.
template <class T>
template <int width>
void ProductFactor<T>::PackLast(int firstVector, int count, int firstShared, int depth, double* panel) const {
  const T hole = HoleOf<T>(isMarked_);
  for (int k = 0; k < depth; ++k, panel += width)
    for (int v = 0; v < width; ++v)
      panel[v] = v < count ? Packed(Cell(firstVector + v, firstShared + k), hole) : 0.0;
}

template class ProductFactor<float>;
template class ProductFactor<double>;
template void ProductFactor<float>::Pack<simd::kTileRows>(int, int, int, int, double*) const;
template void ProductFactor<float>::Pack<simd::kTileColumns>(int, int, int, int, double*) const;
template void ProductFactor<double>::Pack<simd::kTileRows>(int, int, int, int, double*) const;
template void ProductFactor<double>::Pack<simd::kTileColumns>(int, int, int, int, double*) const;

}  // namespace kalmia
