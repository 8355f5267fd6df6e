#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace kalmia {

/// Cells 1 to n of a data vector lie from a 16-byte boundary on; cell 0 stands in front of it and is never used.
constexpr std::size_t kCellAlignment = 16;

static_assert(__STDCPP_DEFAULT_NEW_ALIGNMENT__ >= kCellAlignment,
              "the distance from a block to its cells is a constant only if every block starts on a boundary");

/// Bytes from the start of an allocation at `address` to cell 0, 0 to 15, such that cell 1 lies on a boundary.
template <class T>
constexpr int AlignmentOffset(std::uintptr_t address) {
  const std::uintptr_t beyond = (address + sizeof(T)) % kCellAlignment;
  return beyond == 0 ? 0 : static_cast<int>(kCellAlignment - beyond);
}

/// Block of n cells (n >= 0) in the storage form of a data vector, owned until it is released. The cells are not
/// initialised. Throws std::bad_alloc.
template <class T>
class AlignedBlock {
 public:
  AlignedBlock() = default;
  explicit AlignedBlock(int n) {
    const std::size_t cells = static_cast<std::size_t>(n) + 1;  // with cell 0
    char* raw = static_cast<char*>(::operator new(cells * sizeof(T) + kCellAlignment));
    offset_ = AlignmentOffset<T>(reinterpret_cast<std::uintptr_t>(raw));
    cells_ = reinterpret_cast<T*>(raw + offset_);
  }
  AlignedBlock(const AlignedBlock&) = delete;
  AlignedBlock& operator=(const AlignedBlock&) = delete;
  ~AlignedBlock() { Free(cells_, offset_); }

  T* Cells() const { return cells_; }     ///< 1-based: cell i at [i]; null in a default-made block
  int Offset() const { return offset_; }  ///< bytes from the start of the allocation to Cells()
  T* Release() { return std::exchange(cells_, nullptr); }  ///< the caller frees the cells

  static void Free(T* cells, int offset) {
    if (cells) ::operator delete(reinterpret_cast<char*>(cells) - offset);
  }
  /// For cells that were given away as a bare pointer, without their offset.
  static void Free(T* cells) { Free(cells, AlignmentOffset<T>(0)); }

 private:
  T* cells_ = nullptr;
  int offset_ = 0;
};

}  // namespace kalmia
