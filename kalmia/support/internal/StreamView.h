#pragma once

#include <cstddef>
#include <memory>
#include <streambuf>
#include <utility>
#include <vector>

namespace kalmia {

/// Bytes in memory as a seekable input buffer. The bytes are shared, so that a buffer made from a part of another one
/// copies nothing and may outlive it.
class StreamView : public std::streambuf {
 public:
  using Bytes = std::shared_ptr<std::vector<char>>;

  /// The `length` bytes from `first` on; first + length <= bytes->size() is not checked.
  StreamView(Bytes bytes, std::size_t first, std::size_t length);

  const Bytes& GetBytes() const { return bytes_; }
  /// Where the next byte lies in GetBytes().
  std::size_t GetPosition() const { return static_cast<std::size_t>(gptr() - bytes_->data()); }
  std::size_t GetBytesLeft() const { return static_cast<std::size_t>(egptr() - gptr()); }
  /// Passes over `count` bytes; count <= GetBytesLeft() is not checked.
  void Skip(std::size_t count) { setg(eback(), gptr() + count, egptr()); }
  /// The next four bytes as a little-endian number; false, and nothing is changed, where there are fewer.
  bool ReadFourBytes(int& number);

 protected:
  pos_type seekoff(off_type offset, std::ios_base::seekdir from, std::ios_base::openmode which) override;
  pos_type seekpos(pos_type position, std::ios_base::openmode which) override;
  std::streamsize xsgetn(char* target, std::streamsize count) override;

 private:
  Bytes bytes_;
};

}  // namespace kalmia
