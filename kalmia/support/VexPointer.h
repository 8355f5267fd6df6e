#pragma once

#include <utility>

/// Shared ownership of one heap object; the last holder deletes it. The use count is plain memory: not to be copied
/// or released by two threads at once.
template <class T>
class VexPointer {
 public:
  /// Takes the object over at once: it is deleted, too, where there is no memory for its count.
  explicit VexPointer(T* object = nullptr) try : count_(new int(1)), object_(object) {
  } catch (...) {
    delete object;
    throw;
  }
  VexPointer(const VexPointer& other) : count_(other.count_), object_(other.object_) { ++*count_; }
  VexPointer& operator=(VexPointer other) noexcept {
    swap(other);
    return *this;
  }
  ~VexPointer() {
    if (--*count_ == 0) {
      delete object_;
      delete count_;
    }
  }

  T* Get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  int UseCount() const { return *count_; }
  void swap(VexPointer& other) noexcept {
    std::swap(count_, other.count_);
    std::swap(object_, other.object_);
  }

 private:
  int* count_;
  T* object_;
};

/// The same for an array from array-new.
template <class T>
class VexVecPointer {
 public:
  explicit VexVecPointer(T* array = nullptr) try : count_(new int(1)), array_(array) {
  } catch (...) {
    delete[] array;
    throw;
  }
  VexVecPointer(const VexVecPointer& other) : count_(other.count_), array_(other.array_) { ++*count_; }
  VexVecPointer& operator=(VexVecPointer other) noexcept {
    swap(other);
    return *this;
  }
  ~VexVecPointer() {
    if (--*count_ == 0) {
      delete[] array_;
      delete count_;
    }
  }

  T* Get() const { return array_; }
  T& operator[](int i) const { return array_[i]; }
  int UseCount() const { return *count_; }
  void swap(VexVecPointer& other) noexcept {
    std::swap(count_, other.count_);
    std::swap(array_, other.array_);
  }

 private:
  int* count_;
  T* array_;
};
