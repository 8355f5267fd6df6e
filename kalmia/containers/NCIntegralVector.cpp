#include "kalmia/containers/NCIntegralVector.h"

#include <algorithm>
#include <cstdint>

#include "kalmia/containers/internal/CapacityRule.h"
#include "kalmia/containers/internal/MoveCells.h"
#include "kalmia/containers/internal/SizeLimit.h"

// Life, sharing, access and structure. Order and search are in NCIntegralVectorOrder.cpp, the stream form in
// NCIntegralVectorStream.cpp.

using kalmia::MoveCells;

namespace {

/// Array for cells 1 to `capacity`, undefined; null where there are none.
template <class T>
VexVecPointer<T> NewCells(int capacity) {
  return VexVecPointer<T>(capacity > 0 ? new T[static_cast<std::size_t>(capacity) + 1] : nullptr);
}

}  // namespace

template <class T, int M>
typename NCIntegralVector<T, M>::DerivedStreamableData NCIntegralVector<T, M>::MyStreamableData(4, "NCIV");

template <class T, int M>
NCIntegralVector<T, M>::NCIntegralVector(int n, T value) {
  SetNumValues(n, value);
}

template <class T, int M>
NCIntegralVector<T, M>::NCIntegralVector(const T* p, int n) : size_(n), capacity_(n), storage_(NewCells<T>(n)) {
  kalmia::RequireVectorSize(n);
  MoveCells(storage_.Get() ? storage_.Get() + 1 : nullptr, p, n);
}

template <class T, int M>
NCIntegralVector<T, M>::NCIntegralVector(const NCIntegralVector& other)
    : Persistence(), size_(other.size_), capacity_(other.capacity_), storage_(other.storage_) {}

template <class T, int M>
NCIntegralVector<T, M>& NCIntegralVector<T, M>::operator=(const NCIntegralVector& other) {
  size_ = other.size_;
  capacity_ = other.capacity_;
  storage_ = other.storage_;
  return *this;
}

template <class T, int M>
NCIntegralVector<T, M>::~NCIntegralVector() = default;

template <class T, int M>
void NCIntegralVector<T, M>::UnLinkVecPointer(VexVecPointer<T>& storage, int capacity) {
  if (storage.UseCount() == 1) return;
  VexVecPointer<T> own = NewCells<T>(capacity);
  if (capacity > 0) MoveCells(own.Get() + 1, storage.Get() + 1, capacity);
  storage.swap(own);
}

template <class T, int M>
void NCIntegralVector<T, M>::ForceUnlink() {
  UnLinkVecPointer(storage_, capacity_);
}

template <class T, int M>
T& NCIntegralVector<T, M>::operator()(int i) {
  ForceUnlink();
  return storage_[i];
}

template <class T, int M>
void NCIntegralVector<T, M>::Clear() {
  *this = NCIntegralVector();
}

template <class T, int M>
void NCIntegralVector<T, M>::CopyContent(const NCIntegralVector& other) {
  SetSize(other.size_);
  ForceUnlink();
  if (size_ > 0) MoveCells(storage_.Get() + 1, other.begin(), size_);
}

template <class T, int M>
void NCIntegralVector<T, M>::SetSize(int n) {
  if (n == size_) return;
  kalmia::RequireVectorSize(n);
  const int capacity = kalmia::GrownCapacity(capacity_, n);
  if (capacity != capacity_) {
    storage_ = NewCells<T>(capacity);
    capacity_ = capacity;
  } else {
    ForceUnlink();
  }
  size_ = n;
}

template <class T, int M>
void NCIntegralVector<T, M>::SetNumValues(int n, T value) {
  kalmia::RequireVectorSize(n);
  storage_ = NewCells<T>(n);
  size_ = capacity_ = n;
  SetAllValues(value);
}

template <class T, int M>
void NCIntegralVector<T, M>::SetAllValues(T value) {
  SetRange(1, size_, value);
}

template <class T, int M>
void NCIntegralVector<T, M>::SetRange(int at, int n, T value) {
  if (size_ == 0) return;
  ForceUnlink();
  std::fill_n(storage_.Get() + at, n, value);
}

template <class T, int M>
void NCIntegralVector<T, M>::GenerateIndex(int first, int step) {
  if (size_ == 0) return;
  ForceUnlink();
  for (int i = 1; i <= size_; ++i)
    storage_[i] = static_cast<T>(first + static_cast<std::int64_t>(i - 1) * step);
}

template <class T, int M>
void NCIntegralVector<T, M>::Reserve(int n) {
  if (n <= capacity_) return;
  VexVecPointer<T> larger = NewCells<T>(n);
  if (size_ > 0) MoveCells(larger.Get() + 1, begin(), size_);
  storage_.swap(larger);
  capacity_ = n;
}

template <class T, int M>
void NCIntegralVector<T, M>::Insert(int at, int n) {
  kalmia::RequireVectorSize(n);
  kalmia::RequireVectorSize(std::int64_t{size_} + n);
  const int behind = size_ - at + 1;
  const int capacity = kalmia::GrownCapacity(capacity_, size_ + n);
  if (capacity != capacity_) {
    VexVecPointer<T> larger = NewCells<T>(capacity);
    if (size_ > 0) {
      MoveCells(larger.Get() + 1, begin(), at - 1);
      MoveCells(larger.Get() + at + n, storage_.Get() + at, behind);
    }
    storage_.swap(larger);
    capacity_ = capacity;
  } else {
    ForceUnlink();
    std::copy_backward(storage_.Get() + at, storage_.Get() + at + behind, storage_.Get() + at + behind + n);
  }
  size_ += n;
}

template <class T, int M>
void NCIntegralVector<T, M>::InsertValues(int at, int n, T value) {
  if (n == 0) return;
  at = std::min(at, size_ + 1);
  Insert(at, n);
  std::fill_n(storage_.Get() + at, n, value);
}

template <class T, int M>
void NCIntegralVector<T, M>::InsertValues(int at, const NCIntegralVector& v) {
  if (v.size_ == 0) return;
  at = std::min(at, size_ + 1);
  NCIntegralVector held;  // keeps the cells where v is this vector; no share of any other in passing
  if (this == &v) held = v;
  const NCIntegralVector& source = this == &v ? held : v;
  Insert(at, source.size_);
  MoveCells(storage_.Get() + at, source.begin(), source.size_);
}

template <class T, int M>
void NCIntegralVector<T, M>::Concat(const NCIntegralVector& v) {
  InsertValues(size_ + 1, v);
}

template <class T, int M>
void NCIntegralVector<T, M>::push_back(T value) {
  InsertValues(size_ + 1, 1, value);
}

template <class T, int M>
T* NCIntegralVector<T, M>::insert(const T* at, T value) {
  const int index = storage_.Get() ? static_cast<int>(at - storage_.Get()) : 1;
  InsertValues(index, 1, value);
  return storage_.Get() + index;
}

template <class T, int M>
T* NCIntegralVector<T, M>::erase(const T* at) {
  return erase(at, at + 1);
}

template <class T, int M>
T* NCIntegralVector<T, M>::erase(const T* first, const T* last) {
  if (!storage_.Get()) return nullptr;
  const int index = static_cast<int>(first - storage_.Get());
  ForceUnlink();  // the caller may write through what comes back
  RemoveValues(index, static_cast<int>(last - first));
  return storage_.Get() + index;
}

template <class T, int M>
NCIntegralVector<T, M>& NCIntegralVector<T, M>::Resize(int n, T fill) {
  kalmia::RequireVectorSize(n);
  if (n < size_) {
    RemoveValues(n + 1, size_ - n);
  } else {
    InsertValues(size_ + 1, n - size_, fill);
  }
  return *this;
}

template <class T, int M>
void NCIntegralVector<T, M>::RemoveValues(int at, int n) {
  if (n == 0) return;
  ForceUnlink();
  std::copy(storage_.Get() + at + n, storage_.Get() + size_ + 1, storage_.Get() + at);
  size_ -= n;
}

template <class T, int M>
void NCIntegralVector<T, M>::Remove(const NCIntegralVector<int, -99>& indices) {
  NCIntegralVector<int, -99> held;  // keeps the list where it is this vector; no share of any other in passing
  const bool isThis = static_cast<const void*>(this) == &indices;
  if (isThis) held = indices;
  const NCIntegralVector<int, -99>& listed = isThis ? held : indices;
  ForceUnlink();
  int kept = 0;
  for (int i = 1; i <= size_; ++i)
    if (std::find(listed.begin(), listed.end(), i) == listed.end()) storage_[++kept] = storage_[i];
  size_ = kept;
}

template <class T, int M>
void NCIntegralVector<T, M>::Reduce(const NCIntegralVector<int, -99>& indices) {
  const int n = indices.Size();
  VexVecPointer<T> chosen = NewCells<T>(n);
  for (int i = 1; i <= n; ++i) chosen[i] = storage_[indices[i]];
  storage_.swap(chosen);
  size_ = capacity_ = n;
}

template <class T, int M>
NCIntegralVector<T, M>& NCIntegralVector<T, M>::operator+=(T) {
  ForceUnlink();
  return *this;
}

template class NCIntegralVector<int, -99>;
template class NCIntegralVector<bool, 0>;
template class NCIntegralVector<unsigned long, 0>;
