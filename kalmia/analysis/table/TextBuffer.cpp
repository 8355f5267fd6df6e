#include "kalmia/analysis/table/TextBuffer.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "kalmia/support/LargePages.h"

namespace kalmia::analysis {

void TextBuffer::Reserve(std::size_t room) {
  if (room <= room_) return;
  void* const grown = std::realloc(bytes_.get(), room);
  if (grown == nullptr) throw std::bad_alloc();
  static_cast<void>(bytes_.release());
  bytes_.reset(static_cast<char*>(grown));
  room_ = room;
  PreferLargePages(Free(), FreeRoom());
}

void TextBuffer::Append(std::string_view text) {
  Reserve(size_ + text.size());
  std::copy(text.begin(), text.end(), Free());
  Grow(text.size());
}

void TextBuffer::Release::operator()(char* bytes) const { std::free(bytes); }

}  // namespace kalmia::analysis
