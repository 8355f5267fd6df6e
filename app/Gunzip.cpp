#include "app/Gunzip.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <vector>

#include "app/Failure.h"
#include "kalmia/support/AvailableMemory.h"

namespace kalmia::app {

namespace {

constexpr std::size_t kPiece = std::size_t{1} << 18U;
constexpr int kGzipWindow = 15 + 16;  ///< the largest window, and the gzip form alone

[[noreturn]] void Refuse(const std::string& message) { throw Failure(ExitCode::BadData, message); }

/// Unpacks the members of a file.
class Unpacker {
 public:
  Unpacker(std::string_view bytes, const std::string& name) : bytes_(bytes), name_(name), piece_(kPiece) {
    if (inflateInit2(&stream_, kGzipWindow) != Z_OK) throw std::bad_alloc();
  }
  ~Unpacker() { inflateEnd(&stream_); }
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;

  /// Unpacks one more piece. False at the end of the file.
  bool Step() {
    if (atMemberEnd_ && !BeginMember()) return false;
    const std::size_t in = std::min<std::size_t>(bytes_.size() - at_, std::numeric_limits<uInt>::max());
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes_.data() + at_));
    stream_.avail_in = static_cast<uInt>(in);
    stream_.next_out = piece_.data();
    stream_.avail_out = static_cast<uInt>(piece_.size());
    const int result = inflate(&stream_, Z_NO_FLUSH);
    at_ += in - stream_.avail_in;
    Take(piece_.size() - stream_.avail_out);
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result == Z_BUF_ERROR || (result == Z_OK && at_ == bytes_.size() && stream_.avail_out > 0)) {
      Refuse(name_ + " is a gzip file that ends early: it was cut short");
    }
    if (result != Z_OK && result != Z_STREAM_END) Refuse(name_ + " is a damaged gzip file");
    atMemberEnd_ = result == Z_STREAM_END;
    return true;
  }

  double Share() const { return static_cast<double>(at_) / static_cast<double>(bytes_.size()); }
  std::string Text() { return std::move(text_); }

 private:
  /// False where nothing but zeros is left.
  bool BeginMember() {
    if (bytes_.find_first_not_of('\0', at_) == std::string_view::npos) return false;
    atMemberEnd_ = false;
    return inflateReset(&stream_) == Z_OK;
  }

  void Take(std::size_t count) {
    const std::size_t needed = text_.size() + count;
    if (needed > text_.capacity()) {
      const std::size_t room = std::max(needed, 2 * text_.capacity());
      if (room > AvailableMemory()) Refuse(name_ + " holds more than there is memory for, unpacked");
      text_.reserve(room);
    }
    text_.append(reinterpret_cast<const char*>(piece_.data()), count);
  }

  std::string_view bytes_;
  const std::string& name_;
  std::vector<Bytef> piece_;
  z_stream stream_ = {};
  std::size_t at_ = 0;  ///< of the bytes
  bool atMemberEnd_ = false;
  std::string text_;
};

}  // namespace

bool IsGzip(std::string_view bytes) { return bytes.substr(0, 2) == "\x1F\x8B"; }

std::string Gunzip(std::string_view bytes, const std::string& name, NCProgress* progress) {
  Unpacker unpacker(bytes, name);
  while (unpacker.Step()) {
    if (progress == nullptr || progress->SetValue(static_cast<float>(unpacker.Share()))) continue;
    throw Failure(ExitCode::Stopped, "stopped");
  }
  return unpacker.Text();
}

}  // namespace kalmia::app
