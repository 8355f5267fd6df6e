#include "kalmia/containers/NCDataVector.h"

#include <algorithm>
#include <utility>

#include "kalmia/containers/IntPool.h"
#include "kalmia/containers/internal/AlignedBlock.h"
#include "kalmia/containers/internal/CapacityRule.h"
#include "kalmia/containers/internal/MoveCells.h"
#include "kalmia/containers/internal/SizeLimit.h"

// Life, sharing and access. The other members are defined by theme in NCDataVector*.cpp and in kernels/.

using kalmia::kMissingCell;
using kalmia::MoveCells;

namespace {

int* FreshCount() {
  int* count = IntPool::GetInt();
  *count = 1;
  return count;
}

}  // namespace

template <class T>
VectorDestroyer<T>::~VectorDestroyer() {
  if (owner) delete vector;
}

template <class T>
typename NCDataVector<T>::DerivedStreamableData NCDataVector<T>::MyStreamableData(4, "NCDV");

template <class T>
NCDataVector<T>::NCDataVector() : refCount_(FreshCount()) {}

template <class T>
NCDataVector<T>::NCDataVector(int n) : NCDataVector(n, kMissingCell<T>) {}

template <class T>
NCDataVector<T>::NCDataVector(int n, T value) : NCDataVector() {
  if (n < 1) return;
  data_ = NewVec(n, alignmentOffset_);
  size_ = capacity_ = n;
  std::fill_n(data_ + 1, n, value);
  numMisVal_ = value == kMissingCell<T> ? n : 0;
}

template <class T>
NCDataVector<T>::NCDataVector(const NCDataVector& other)
    : Persistence(),
      alignmentOffset_(other.alignmentOffset_),
      size_(other.size_),
      data_(other.data_),
      refCount_(other.refCount_),
      numMisVal_(other.numMisVal_),
      capacity_(other.capacity_) {
  ++*refCount_;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::operator=(const NCDataVector& other) {
  if (data_ == other.data_) return *this;
  LetGo();
  alignmentOffset_ = other.alignmentOffset_;
  size_ = other.size_;
  data_ = other.data_;
  refCount_ = other.refCount_;
  numMisVal_ = other.numMisVal_;
  capacity_ = other.capacity_;
  ++*refCount_;
  return *this;
}

template <class T>
NCDataVector<T>::~NCDataVector() {
  LetGo();
}

template <class T>
void NCDataVector<T>::LetGo() {
  if (*refCount_ > 1) {
    --*refCount_;
  } else {
    DeleteVec(data_, alignmentOffset_);
    IntPool::ReleaseInt(refCount_);
  }
}

template <class T>
void NCDataVector<T>::Clear() {
  kalmia::AlignedBlock<T> none;
  ReplaceBlock(none, 0);
  size_ = 0;
  numMisVal_ = 0;
}

template <class T>
void NCDataVector<T>::CopyContent(const NCDataVector& other) {
  if (this == &other) return ForceUnlink();
  PrepareToOverwrite(other.size_);
  MoveCells(Cells(), other.begin(), size_);
  numMisVal_ = other.numMisVal_;
}

template <class T>
void NCDataVector<T>::CopyVector(const T* p, int n) {
  CopyZeroBasedVector(n > 0 ? p + 1 : p, n);
}

template <class T>
void NCDataVector<T>::CopyZeroBasedVector(const T* p, int n) {
  PrepareToOverwrite(n);
  MoveCells(Cells(), p, n);  // p may point into this vector
  CountMissing();
}

template <class T>
void NCDataVector<T>::ForceUnlink() {
  if (*refCount_ == 1) return;
  if (size_ < 1) {
    kalmia::AlignedBlock<T> none;
    return ReplaceBlock(none, 0);
  }
  kalmia::AlignedBlock<T> block(size_);
  MoveCells(block.Cells() + 1, begin(), size_);
  ReplaceBlock(block, size_);
}

template <class T>
void NCDataVector<T>::Unlink() {
  if (*refCount_ > 1) ForceUnlink();
}

template <class T>
T* NCDataVector<T>::NewVec(int n, int& offset) {
  kalmia::AlignedBlock<T> block(n);
  offset = block.Offset();
  return block.Release();
}

template <class T>
void NCDataVector<T>::DeleteVec(T* p, int offset) {
  if (p == data_) data_ = nullptr;
  kalmia::AlignedBlock<T>::Free(p, offset);
}

template <class T>
void NCDataVector<T>::ReplaceBlock(kalmia::AlignedBlock<T>& block, int capacity) {
  if (*refCount_ == 1) {
    DeleteVec(data_, alignmentOffset_);
  } else {
    int* fresh = FreshCount();
    --*refCount_;
    refCount_ = fresh;
  }
  alignmentOffset_ = block.Offset();
  data_ = block.Release();
  capacity_ = capacity;
}

template <class T>
void NCDataVector<T>::PrepareToOverwrite(int n) {
  kalmia::RequireVectorSize(n);
  // A shared vector gets the room that it would have after an unlink, without the copy that nobody would read.
  const bool shared = *refCount_ > 1;
  const int capacity = kalmia::GrownCapacity(shared ? size_ : capacity_, n);
  if (shared || capacity != capacity_) {
    if (capacity > 0) {
      kalmia::AlignedBlock<T> block(capacity);
      ReplaceBlock(block, capacity);
    } else {
      Clear();
    }
  }
  size_ = n;
}

template <class T>
void NCDataVector<T>::CountMissing() {
  int holes = 0;  // an int all along: std::count would count in 64 bits, half as many cells to a register
  for (const T* cell = begin(); cell != end(); ++cell) holes += *cell == kMissingCell<T> ? 1 : 0;
  numMisVal_ = holes;
}

template <class T>
T NCDataVector<T>::operator()(int i, T value) {
  SetAndReturn_dMisVal(i, value);
  return value;
}

template <class T>
int NCDataVector<T>::SetAndReturn_dMisVal(int i, T value) {
  Unlink();
  const int change = static_cast<int>(value == kMissingCell<T>) - static_cast<int>(data_[i] == kMissingCell<T>);
  data_[i] = value;
  numMisVal_ += change;
  return change;
}

template <class T>
void NCDataVector<T>::operator()(int first, const T* p, int n) {
  if (n < 1) return;
  Unlink();
  for (int i = 0; i < n; ++i) SetAndReturn_dMisVal(first + i, p[i]);
}

template <class T>
void NCDataVector<T>::SetRange(int first, const T* p, int n) {
  (*this)(first, p, n);
}

template <class T>
void NCDataVector<T>::operator()(int first, const NCDataVector& v, int from, int n) {
  if (n < 1) return;
  Unlink();  // before the pointer is taken: v may be this vector
  (*this)(first, v.data_ + from, n);
}

template <class T>
void NCDataVector<T>::SetRange(int first, const NCDataVector& v, int from, int n) {
  (*this)(first, v, from, n);
}

template <class T>
void NCDataVector<T>::SetAllValues(T value) {
  // Missing or not, the cells are written: the count may be that of a result which left cells of its target alone.
  PrepareToOverwrite(size_);
  // A zero of either sign clears the cells to +0.
  if (size_ > 0) std::fill_n(data_ + 1, size_, value == 0 ? T(0) : value);
  numMisVal_ = value == kMissingCell<T> ? size_ : 0;
}

template <class T>
NCDataVector<T>& NCDataVector<T>::Result(NCDataVector* target) {
  resultTarget_ = target;
  return *this;
}

template <class T>
const NCDataVector<T>& NCDataVector<T>::Result(NCDataVector* target) const {
  resultTarget_ = target;
  return *this;
}

template <class T>
void NCDataVector<T>::GetReturnVector(VectorDestroyer<T>& holder, int n) const {
  if (resultTarget_) {
    NCDataVector* target = std::exchange(resultTarget_, nullptr);
    target->Unlink();
    holder.vector = target;
    holder.owner = false;
  } else {
    holder.vector = n > 0 ? new NCDataVector(n) : new NCDataVector;
  }
}

template struct VectorDestroyer<float>;
template struct VectorDestroyer<double>;
template class NCDataVector<float>;
template class NCDataVector<double>;
