#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The bytes of a long text. Its memory is not cleared before bytes come in, and while it grows most systems move it
/// rather than copy it, so that it never takes twice the room.
class KALMIA_EXPORT TextBuffer {
 public:
  TextBuffer() = default;
  TextBuffer(TextBuffer&& other) noexcept { *this = std::move(other); }
  TextBuffer& operator=(TextBuffer&& other) noexcept {
    bytes_ = std::move(other.bytes_);
    size_ = std::exchange(other.size_, 0);
    room_ = std::exchange(other.room_, 0);
    return *this;
  }
  /// A copy of a text; without `explicit`, as a text is one.
  template <class Text, class = std::enable_if_t<std::is_convertible_v<const Text&, std::string_view>>>
  TextBuffer(const Text& text) {
    Append(text);
  }

  std::string_view View() const { return {bytes_.get(), size_}; }
  std::size_t Size() const { return size_; }

  /// Sees to it that there is room for so many bytes in all. Throws std::bad_alloc; the text then is what it was.
  void Reserve(std::size_t room);
  /// Where the next bytes come in, and how many.
  char* Free() { return bytes_.get() + size_; }
  std::size_t FreeRoom() const { return room_ - size_; }
  /// So many bytes have been written to Free().
  void Grow(std::size_t count) { size_ += count; }

 private:
  struct Release {
    void operator()(char* bytes) const;
  };
  void Append(std::string_view text);

  std::unique_ptr<char, Release> bytes_;
  std::size_t size_ = 0;
  std::size_t room_ = 0;
};

}  // namespace kalmia::analysis
