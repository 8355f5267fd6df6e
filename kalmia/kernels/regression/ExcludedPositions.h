#pragma once

#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"

namespace kalmia {

/// The cells of a vector with some positions left out, as cross-validation does: a position left out is a hole in a
/// copy, so that it never enters a sum and no sum has to know of the rule. Without a rule the vector's own cells are
/// used. Vectors of up to kCellsOnStack cells take no memory from the heap.
///
/// A vector whose count says that it has no holes may have cells of -99, which are numbers then. It is copied as one
/// without holes, with 0 at the positions left out: that changes no bit of a sum, unless an infinity or a NaN stands
/// opposite.
template <class T>
class VectorWithExclusions {
 public:
  /// Nothing is left out.
  explicit VectorWithExclusions(const NCDataVector<T>& v)
      : cells_(v.begin()), size_(v.Size()), hasHoles_(v.GetNumMisVal() > 0) {}

  /// Leaves out position i (from 1) where i mod stride is `start`; a stride below 2 leaves out nothing.
  VectorWithExclusions(const NCDataVector<T>& v, int start, int stride) : VectorWithExclusions(v) {
    if (stride < 2) return;
    T* copy = Copy();
    int counter = 1;
    for (int i = 0; i < size_; ++i) {
      if (counter == start) copy[i] = leftOut_;
      if (++counter == stride) counter = 0;
    }
  }

  /// Leaves out the positions whose cell of `groups` is `group`.
  VectorWithExclusions(const NCDataVector<T>& v, const NCIntegralVector<int, -99>& groups, int group)
      : VectorWithExclusions(v) {
    T* copy = Copy();
    for (int i = 0; i < size_; ++i)
      if (groups[i + 1] == group) copy[i] = leftOut_;
  }

  VectorWithExclusions(const VectorWithExclusions&) = delete;
  VectorWithExclusions& operator=(const VectorWithExclusions&) = delete;

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
    bool foundHole = false;
    for (int i = 0; i < size_; ++i) {
      copy[i] = cells_[i];
      foundHole |= copy[i] == kMissing;
    }
    const bool numbersLikeHoles = foundHole && !hasHoles_;
    leftOut_ = numbersLikeHoles ? T(0) : kMissingCell<T>;
    hasHoles_ = !numbersLikeHoles;
    cells_ = copy;
    return copy;
  }

  const T* cells_;
  int size_;
  bool hasHoles_;
  T leftOut_ = 0;  ///< what stands in the copy at the positions left out
  std::vector<T> heap_;
  T stack_[kCellsOnStack];
};

}  // namespace kalmia
