#pragma once

#include <memory>

namespace kalmia {

/// The object that an operation fills: the caller's `out` or, where that is null, a new one.
template <class T>
class OutOrNew {
 public:
  explicit OutOrNew(T* out) : made_(out ? nullptr : std::make_unique<T>()), object_(out ? out : made_.get()) {}

  T& operator*() const { return *object_; }
  T* operator->() const { return object_; }
  T* HandOver() {  ///< a new object is the caller's from here on
    static_cast<void>(made_.release());
    return object_;
  }

 private:
  std::unique_ptr<T> made_;
  T* object_;
};

}  // namespace kalmia
