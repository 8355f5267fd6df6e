#pragma once

#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia {

/// The cells of a vector with some positions left out, as cross-validation does: a position left out is a hole in a
/// copy, so that it never enters a sum and no sum has to know of the rule. Without a rule the vector's own cells are
/// used. Vectors of up to kCellsOnStack cells take no memory from the heap.
template <class T>
class WithExcluded {
 public:
  /// Nothing is left out.
  explicit WithExcluded(const NCDataVector<T>& v)
      : cells_(v.begin()), size_(v.Size()), hasHoles_(v.GetNumMisVal() > 0) {}

  /// Leaves out position i (from 1) where i mod stride is `start`; a stride below 2 leaves out nothing.
  WithExcluded(const NCDataVector<T>& v, int start, int stride) : WithExcluded(v) {
    if (stride < 2) return;
    T* copy = Copy();
    int counter = 1;
    for (int i = 0; i < size_; ++i) {
      if (counter == start) copy[i] = static_cast<T>(kMissing);
      if (++counter == stride) counter = 0;
    }
  }

  /// Leaves out the positions whose cell of `groups` is `group`.
  WithExcluded(const NCDataVector<T>& v, const NCIntegralVector<int, -99>& groups, int group) : WithExcluded(v) {
    T* copy = Copy();
    for (int i = 0; i < size_; ++i)
      if (groups[i + 1] == group) copy[i] = static_cast<T>(kMissing);
  }

  WithExcluded(const WithExcluded&) = delete;
  WithExcluded& operator=(const WithExcluded&) = delete;

  const T* begin() const { return cells_; }
  int Size() const { return size_; }
  bool HasHoles() const { return hasHoles_; }  ///< the vector's own, or positions left out

 private:
  static constexpr int kCellsOnStack = 1024;

  T* Copy() {
    T* copy = stack_;
    if (size_ > kCellsOnStack) {
      heap_.resize(size_);
      copy = heap_.data();
    }
    for (int i = 0; i < size_; ++i) copy[i] = cells_[i];
    cells_ = copy;
    hasHoles_ = true;
    return copy;
  }

  const T* cells_;
  int size_;
  bool hasHoles_;
  std::vector<T> heap_;
  T stack_[kCellsOnStack];
};

}  // namespace kalmia
