#include "kalmia/analysis/table/internal/Gunzip.h"

#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr std::string_view kMagic = "\x1F\x8B";
constexpr int kGzipWindow = 15 + 16;  ///< the largest window, and the gzip form alone

[[noreturn]] void Refuse(const std::string& message) { throw BadData(message); }

/// Unpacks the members of a file.
class Unpacker {
 public:
  Unpacker(std::string_view bytes, const std::string& name, const MemoryLeft& memoryLeft)
      : bytes_(bytes), name_(name), memoryLeft_(memoryLeft) {
    if (inflateInit2(&stream_, kGzipWindow) != Z_OK) throw std::bad_alloc();
  }
  ~Unpacker() { inflateEnd(&stream_); }
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;

  /// Unpacks one more piece. False at the end of the file.
  bool Step() {
    if (atMemberEnd_ && !BeginMember()) return false;
    MakeRoom();
    const std::size_t in = std::min<std::size_t>(bytes_.size() - at_, std::numeric_limits<uInt>::max());
    const std::size_t out = std::min(text_.FreeRoom(), kGunzipPiece);
    stream_.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes_.data() + at_));
    stream_.avail_in = static_cast<uInt>(in);
    stream_.next_out = reinterpret_cast<Bytef*>(text_.Free());
    stream_.avail_out = static_cast<uInt>(out);
    const int result = inflate(&stream_, Z_NO_FLUSH);
    at_ += in - stream_.avail_in;
    text_.Grow(out - stream_.avail_out);
    if (result == Z_MEM_ERROR) throw std::bad_alloc();
    if (result == Z_BUF_ERROR || (result == Z_OK && at_ == bytes_.size() && stream_.avail_out > 0)) {
      Refuse(name_ + " is a gzip file that ends early: it was cut short");
    }
    if (result != Z_OK && result != Z_STREAM_END) Refuse(name_ + " is a damaged gzip file");
    atMemberEnd_ = result == Z_STREAM_END;
    return true;
  }

  double Share() const { return static_cast<double>(at_) / static_cast<double>(bytes_.size()); }
  TextBuffer Text() { return std::move(text_); }

 private:
  /// False where nothing but zeros is left.
  bool BeginMember() {
    if (bytes_.find_first_not_of('\0', at_) == std::string_view::npos) return false;
    const std::string_view rest = bytes_.substr(at_);
    if (!IsGzip(rest) && rest != kMagic.substr(0, 1)) {
      Refuse(name_ + " is a gzip file with other bytes behind its end: unpack it with gzip, which passes them over");
    }
    if (inflateReset(&stream_) != Z_OK) throw std::logic_error("a stream that has come to its end is in order");
    atMemberEnd_ = false;
    return true;
  }

  /// Doubles the room, or takes what memory is left.
  void MakeRoom() {
    if (text_.FreeRoom() > 0) return;
    const std::uint64_t left = memoryLeft_();
    if (left < kGunzipPiece) Refuse(name_ + " holds more than there is memory for, unpacked");
    const std::uint64_t more = std::min<std::uint64_t>(std::max(text_.Size(), kGunzipPiece), left);
    text_.Reserve(text_.Size() + static_cast<std::size_t>(more));
  }

  std::string_view bytes_;
  const std::string& name_;
  const MemoryLeft& memoryLeft_;
  z_stream stream_ = {};
  std::size_t at_ = 0;  ///< of the bytes
  bool atMemberEnd_ = false;
  TextBuffer text_;
};

}  // namespace

bool IsGzip(std::string_view bytes) { return bytes.substr(0, kMagic.size()) == kMagic; }

TextBuffer Gunzip(std::string_view bytes, const std::string& name, NCProgress* progress, const MemoryLeft& memoryLeft) {
  Unpacker unpacker(bytes, name, memoryLeft);
  while (unpacker.Step()) {
    if (progress == nullptr || progress->SetValue(static_cast<float>(unpacker.Share()))) continue;
    throw Stopped("stopped");
  }
  return unpacker.Text();
}

}  // namespace kalmia::analysis
