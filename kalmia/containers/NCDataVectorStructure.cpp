#include <algorithm>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/AlignedBlock.h"
#include "kalmia/containers/internal/CapacityRule.h"
#include "kalmia/containers/internal/MoveCells.h"
#include "kalmia/containers/internal/SizeLimit.h"

// Size, insertion, removal.

using kalmia::kMissingCell;
using kalmia::MoveCells;

namespace {

template <class T>
int CountHoles(const T* first, int n) {
  return static_cast<int>(std::count(first, first + n, kMissingCell<T>));
}

}  // namespace

template <class T>
void NCDataVector<T>::Reserve(int n) {
  if (n <= capacity_) return;
  kalmia::AlignedBlock<T> block(n);
  MoveCells(block.Cells() + 1, begin(), size_);
  ReplaceBlock(block, n);
}

template <class T>
void NCDataVector<T>::SetSize(int n) {
  if (n == size_) return;
  PrepareToOverwrite(n);
  if (n > 0) std::fill_n(data_ + 1, n, kMissingCell<T>);
  numMisVal_ = n;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::Resize(int n, T fill) {
  kalmia::RequireVectorSize(n);
  if (n < size_) {
    RemoveValues(n + 1, size_ - n);
  } else {
    InsertValues(size_ + 1, n - size_, fill);
  }
  return *this;
}

template <class T>
void NCDataVector<T>::UnInitialisedInsert(int at, int n) {
  kalmia::RequireVectorSize(n);
  kalmia::RequireVectorSize(std::int64_t{size_} + n);
  const bool shared = *refCount_ > 1;
  const int behind = size_ - at + 1;
  const int capacity = kalmia::GrownCapacity(shared ? size_ : capacity_, size_ + n);
  if (shared || capacity != capacity_) {
    kalmia::AlignedBlock<T> block(capacity);
    if (size_ > 0) {
      MoveCells(block.Cells() + 1, data_ + 1, at - 1);
      MoveCells(block.Cells() + at + n, data_ + at, behind);
    }
    ReplaceBlock(block, capacity);
  } else {
    MoveCells(data_ + at + n, data_ + at, behind);
  }
  size_ += n;
}

template <class T>
void NCDataVector<T>::InsertValues(int at, int n, T value) {
  if (n == 0) return;
  at = std::min(at, size_ + 1);
  UnInitialisedInsert(at, n);
  std::fill_n(data_ + at, n, value);
  if (value == kMissingCell<T>) numMisVal_ += n;
}

template <class T>
void NCDataVector<T>::InsertValues(int at, const NCDataVector& v) {
  if (v.size_ == 0) return;
  at = std::min(at, size_ + 1);
  const int n = v.size_, holes = v.numMisVal_;
  UnInitialisedInsert(at, n);
  if (this == &v) {
    const int before = at - 1;  // cells that stand in front of the gap; the others moved behind it
    MoveCells(data_ + at, data_ + 1, before);
    MoveCells(data_ + at + before, data_ + at + n, n - before);
  } else {
    MoveCells(data_ + at, v.data_ + 1, n);
  }
  numMisVal_ += holes;
}

template <class T>
void NCDataVector<T>::RemoveValues(int at, int n) {
  if (n == 0) return;
  Unlink();
  numMisVal_ -= CountHoles(data_ + at, n);
  MoveCells(data_ + at, data_ + at + n, size_ - at + 1 - n);
  size_ -= n;
}

template <class T>
void NCDataVector<T>::Remove(const NCIntegralVector<int, -99>& indices) {
  int kept = 0;
  for (int i = 1; i <= size_; ++i)
    if (std::find(indices.begin(), indices.end(), i) == indices.end()) data_[++kept] = data_[i];
  size_ = kept;
}

template <class T>
void NCDataVector<T>::Remove(T value) {
  const bool holes = value == kMissingCell<T>;
  if (holes && numMisVal_ == 0) return;
  Unlink();
  if (holes) numMisVal_ = 0;
  int kept = 0;  // no std::remove: the cells that stay behind the kept ones are counted, and it promises none
  for (int i = 1; i <= size_; ++i)
    if (data_[i] != value) data_[++kept] = data_[i];
  RemoveValues(kept + 1, size_ - kept);
}

template <class T>
void NCDataVector<T>::Reduce(const NCIntegralVector<int, -99>& indices) {
  const int n = indices.Size();
  if (n == 0) return Clear();
  kalmia::AlignedBlock<T> block(n);
  for (int i = 1; i <= n; ++i) block.Cells()[i] = data_[indices[i]];
  ReplaceBlock(block, n);
  size_ = n;
  if (numMisVal_ > 0) CountMissing();
}

template <class T>
void NCDataVector<T>::push_back(T value) {
  InsertValues(size_ + 1, 1, kMissingCell<T>);
  (*this)(size_, value);
}

template <class T>
T* NCDataVector<T>::insert(const T* at, T value) {
  const int index = data_ ? static_cast<int>(at - data_) : 1;
  InsertValues(index, 1, value);
  return data_ + index;
}

template <class T>
T* NCDataVector<T>::erase(const T* at) {
  return erase(at, at + 1);
}

template <class T>
T* NCDataVector<T>::erase(const T* first, const T* last) {
  if (!data_) return nullptr;
  const int index = static_cast<int>(first - data_);
  Unlink();  // the caller may write through what comes back
  RemoveValues(index, static_cast<int>(last - first));
  return data_ ? data_ + index : nullptr;
}

#define KALMIA_INSTANTIATE(T)                                                                  \
  template void NCDataVector<T>::Reserve(int);                                                 \
  template void NCDataVector<T>::SetSize(int);                                                 \
  template NCDataVector<T>& NCDataVector<T>::Resize(int, T);                                   \
  template void NCDataVector<T>::UnInitialisedInsert(int, int);                                \
  template void NCDataVector<T>::InsertValues(int, int, T);                                    \
  template void NCDataVector<T>::InsertValues(int, const NCDataVector<T>&);                    \
  template void NCDataVector<T>::RemoveValues(int, int);                                       \
  template void NCDataVector<T>::Remove(const NCIntegralVector<int, -99>&);                    \
  template void NCDataVector<T>::Remove(T);                                                    \
  template void NCDataVector<T>::Reduce(const NCIntegralVector<int, -99>&);                    \
  template void NCDataVector<T>::push_back(T);                                                 \
  template T* NCDataVector<T>::insert(const T*, T);                                            \
  template T* NCDataVector<T>::erase(const T*);                                                \
  template T* NCDataVector<T>::erase(const T*, const T*);
KALMIA_INSTANTIATE(float)
KALMIA_INSTANTIATE(double)
#undef KALMIA_INSTANTIATE
