#include "kalmia/containers/NDimensionalMatrix.h"

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <unordered_map>

#include "kalmia/support/Exception.h"

namespace {

struct IndexHash {
  /// Fowler, Noll and Vo's hash (FNV-1a, 64 bits), over whole numbers instead of bytes.
  std::size_t operator()(const std::vector<int>& index) const {
    std::uint64_t hash = 14695981039346656037U;
    for (const int i : index) hash = (hash ^ static_cast<std::uint32_t>(i)) * 1099511628211U;
    return static_cast<std::size_t>(hash ^ (hash >> 32));
  }
};

std::vector<int> FirstOf(const std::vector<int>& numbers, int count) {
  if (count < 1 || static_cast<std::size_t>(count) > numbers.size()) throw Exception("dimension error");
  return std::vector<int>(numbers.begin(), numbers.begin() + count);
}

}  // namespace

template <class T>
struct NDimensionalMatrix<T>::Cells {
  std::vector<int> sizes;
  T value;  ///< of every cell that was not written
  std::unordered_map<std::vector<int>, T, IndexHash> written;
};

template <class T>
NDimensionalMatrix<T>::NDimensionalMatrix(const std::vector<int>& sizes, T value, int level)
    : cells_(std::make_shared<Cells>()) {
  cells_->sizes = FirstOf(sizes, level < 1 ? static_cast<int>(sizes.size()) : level);
  cells_->value = value;
  for (const int size : cells_->sizes)
    if (size < 0) throw std::length_error("NDimensionalMatrix: negative size");
}

template <class T>
NDimensionalMatrix<T>::NDimensionalMatrix(const NDimensionalMatrix& other) = default;
template <class T>
NDimensionalMatrix<T>& NDimensionalMatrix<T>::operator=(const NDimensionalMatrix& other) = default;
template <class T>
NDimensionalMatrix<T>::~NDimensionalMatrix() = default;

/// The index of one cell of this matrix, or an exception.
template <class T>
std::vector<int> NDimensionalMatrix<T>::Key(const std::vector<int>& index, int level) const {
  std::vector<int> key = FirstOf(index, level < 0 ? static_cast<int>(index.size()) : level);
  const std::vector<int>& sizes = cells_->sizes;
  if (key.size() != sizes.size()) throw Exception("dimension error");
  for (std::size_t k = 0; k < key.size(); ++k)
    if (key[k] < 1 || key[k] > sizes[k]) throw std::out_of_range("NDimensionalMatrix: index outside the sizes");
  return key;
}

template <class T>
void NDimensionalMatrix<T>::Set(const std::vector<int>& index, T value, int level) {
  cells_->written[Key(index, level)] = value;
}

template <class T>
T NDimensionalMatrix<T>::Get(const std::vector<int>& index, int level) const {
  const auto found = cells_->written.find(Key(index, level));
  return found == cells_->written.end() ? cells_->value : found->second;
}

template class NDimensionalMatrix<int>;
