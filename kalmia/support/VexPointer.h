#pragma once

#include <memory>
#include <utility>

#include "kalmia/support/Export.h"

namespace kalmia {

/// The base of the two pointers below: the last holder passes the object to a `Deleter`. The use count is not atomic,
/// so two threads must not copy or release the same object at the same time. Self-assignment is safe.
template <class T, class Deleter>
class KALMIA_EXPORT CountedPointer {
 public:
  /// Owns `object` from the call on: it is deleted if memory for the use count lacks and std::bad_alloc is thrown.
  explicit CountedPointer(T* object) try : count_(new int(1)), object_(object) {
  } catch (...) {
    Deleter()(object);
    throw;
  }
  CountedPointer(const CountedPointer& other) : count_(other.count_), object_(other.object_) { ++*count_; }
  CountedPointer& operator=(CountedPointer other) noexcept {
    swap(other);
    return *this;
  }
  ~CountedPointer() {
    if (--*count_ == 0) {
      Deleter()(object_);
      delete count_;
    }
  }

  T* Get() const { return object_; }
  int UseCount() const { return *count_; }
  void swap(CountedPointer& other) noexcept {
    std::swap(count_, other.count_);
    std::swap(object_, other.object_);
  }

 private:
  int* count_;
  T* object_;
};

}  // namespace kalmia

/// Shared ownership of one heap object; the last holder deletes it.
template <class T>
class KALMIA_EXPORT VexPointer : public kalmia::CountedPointer<T, std::default_delete<T>> {
 public:
  explicit VexPointer(T* object = nullptr) : kalmia::CountedPointer<T, std::default_delete<T>>(object) {}

  T* operator->() const { return this->Get(); }
  T& operator*() const { return *this->Get(); }
};

/// The same for an array from array-new.
template <class T>
class KALMIA_EXPORT VexVecPointer : public kalmia::CountedPointer<T, std::default_delete<T[]>> {
 public:
  explicit VexVecPointer(T* array = nullptr) : kalmia::CountedPointer<T, std::default_delete<T[]>>(array) {}

  T& operator[](int i) const { return this->Get()[i]; }  ///< i is not checked
};
