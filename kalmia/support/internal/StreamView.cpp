#include "kalmia/support/internal/StreamView.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <istream>

namespace kalmia {

StreamView::StreamView(Bytes bytes, std::size_t first, std::size_t length) : bytes_(std::move(bytes)) {
  char* begin = bytes_->data() + first;
  setg(begin, begin, begin + length);
}

bool StreamView::ReadFourBytes(int& number) {
  if (GetBytesLeft() < 4) return false;
  std::uint32_t bits = 0;
  for (int i = 0; i < 4; ++i) bits |= static_cast<std::uint32_t>(static_cast<unsigned char>(gptr()[i])) << (8 * i);
  std::memcpy(&number, &bits, sizeof number);
  Skip(4);
  return true;
}

StreamView::pos_type StreamView::seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) {
  const off_type length = egptr() - eback();
  off_type start = 0;
  if (from == std::ios_base::cur) start = gptr() - eback();
  if (from == std::ios_base::end) start = length;
  const bool inside = offset >= -start && offset <= length - start;
  if (!inside || !(which & std::ios_base::in)) return pos_type(off_type(-1));
  setg(eback(), eback() + (start + offset), egptr());
  return pos_type(start + offset);
}

StreamView::pos_type StreamView::seekpos(pos_type position, std::ios_base::openmode which) {
  return seekoff(off_type(position), std::ios_base::beg, which);
}

std::streamsize StreamView::xsgetn(char* target, std::streamsize count) {
  const std::streamsize taken = std::min<std::streamsize>(count, egptr() - gptr());
  if (taken <= 0) return 0;
  std::memcpy(target, gptr(), static_cast<std::size_t>(taken));
  Skip(static_cast<std::size_t>(taken));
  return taken;
}

}  // namespace kalmia
