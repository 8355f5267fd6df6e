// The byte helpers: numbers become little-endian bytes by shifts, the same code on every machine; compilers turn it
// into plain copies where the machine is little-endian itself.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include "kalmia/support/VexStream.h"

namespace {

bool Refuse(std::ios& stream) {
  stream.setstate(std::ios_base::failbit);
  return false;
}

template <class Number>
void ToLittleEndian(const char* numbers, std::size_t bytes, char* out) {
  for (std::size_t at = 0; at < bytes; at += sizeof(Number)) {
    Number number;
    std::memcpy(&number, numbers + at, sizeof(Number));
    for (std::size_t i = 0; i < sizeof(Number); ++i) out[at + i] = static_cast<char>((number >> (8 * i)) & 0xFF);
  }
}

template <class Number>
void FromLittleEndian(char* inOut, std::size_t bytes) {
  for (std::size_t at = 0; at < bytes; at += sizeof(Number)) {
    Number number = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i)
      number = static_cast<Number>(number | static_cast<Number>(static_cast<unsigned char>(inOut[at + i])) << (8 * i));
    std::memcpy(inOut + at, &number, sizeof(Number));
  }
}

void ToLittleEndian(const char* items, std::size_t bytes, int itemSize, char* out) {
  switch (itemSize) {
    case 2: return ToLittleEndian<std::uint16_t>(items, bytes, out);
    case 4: return ToLittleEndian<std::uint32_t>(items, bytes, out);
    case 8: return ToLittleEndian<std::uint64_t>(items, bytes, out);
    default: std::memcpy(out, items, bytes);
  }
}

void FromLittleEndian(char* items, std::size_t bytes, int itemSize) {
  switch (itemSize) {
    case 2: return FromLittleEndian<std::uint16_t>(items, bytes);
    case 4: return FromLittleEndian<std::uint32_t>(items, bytes);
    case 8: return FromLittleEndian<std::uint64_t>(items, bytes);
    default: return;
  }
}

/// A text of a length that the stream promises, as an array closed by a zero byte.
bool ReadText(std::vector<char>& text, std::istream& stream) {
  int length = 0;
  if (!ReadFourBytes(&length, 1, stream) || !kalmia::ReadCells(stream, length, text)) return Refuse(stream);
  if (!text.empty() && std::memchr(text.data(), 0, text.size())) return Refuse(stream);
  text.push_back('\0');
  return true;
}

constexpr std::int64_t kUnknownLength = -1;
constexpr std::streamoff kNowhere = -1;

/// Where the buffer stands after the seek, kNowhere where it cannot seek so; what it throws says no more. By offset,
/// for there are buffers that do not know positions; on the buffer, for the stream's own seekg sets and clears state
/// bits.
std::streamoff Seek(std::streambuf* buffer, std::streamoff offset, std::ios_base::seekdir from) try {
  return buffer->pubseekoff(offset, from, std::ios_base::in);
} catch (...) {
  return kNowhere;
}

}  // namespace

bool WriteArray(const void* items, int count, int itemSize, std::ostream& stream) {
  if (count < 0 || itemSize <= 0) return Refuse(stream);
  char piece[4096];
  const std::size_t size = static_cast<std::size_t>(itemSize);
  const std::size_t total = static_cast<std::size_t>(count) * size;
  // A piece holds whole numbers, for 4096 is a multiple of every size that is turned.
  for (std::size_t done = 0; done < total && stream.good();) {
    const std::size_t bytes = std::min(sizeof piece, total - done);
    ToLittleEndian(static_cast<const char*>(items) + done, bytes, itemSize, piece);
    stream.write(piece, static_cast<std::streamsize>(bytes));
    done += bytes;
  }
  return stream.good();
}

bool ReadArray(void* items, int count, int itemSize, std::istream& stream) {
  if (count < 0 || itemSize <= 0) return Refuse(stream);
  const std::size_t total = static_cast<std::size_t>(count) * static_cast<std::size_t>(itemSize);
  if (total == 0) return !stream.fail();
  stream.read(static_cast<char*>(items), static_cast<std::streamsize>(total));
  if (stream.fail()) return false;
  FromLittleEndian(static_cast<char*>(items), total, itemSize);
  return true;
}

bool WriteBytes(const void* items, int count, std::ostream& stream) { return WriteArray(items, count, 1, stream); }
bool ReadBytes(void* items, int count, std::istream& stream) { return ReadArray(items, count, 1, stream); }
bool WriteTwoBytes(const void* items, int count, std::ostream& stream) { return WriteArray(items, count, 2, stream); }
bool ReadTwoBytes(void* items, int count, std::istream& stream) { return ReadArray(items, count, 2, stream); }
bool WriteFourBytes(const void* items, int count, std::ostream& stream) { return WriteArray(items, count, 4, stream); }
bool ReadFourBytes(void* items, int count, std::istream& stream) { return ReadArray(items, count, 4, stream); }

bool WriteBinaryString(const char* text, std::ostream& stream) {
  const std::size_t length = text ? std::strlen(text) : 0;
  if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) return Refuse(stream);
  const int count = static_cast<int>(length);
  return WriteFourBytes(&count, 1, stream) && WriteBytes(text, count, stream);
}

bool ReadBinaryString(char** text, std::istream& stream) {
  *text = nullptr;
  std::vector<char> read;
  if (!ReadText(read, stream)) return false;
  *text = new char[read.size()];
  std::memcpy(*text, read.data(), read.size());
  return true;
}

bool ReadBinaryString(CString& text, std::istream& stream) {
  std::vector<char> read;
  if (!ReadText(read, stream)) return false;
  text = CString(read.data());
  return true;
}

std::int64_t kalmia::BytesLeft(std::istream& stream) {
  if (!stream.good()) return 0;
  std::streambuf& buffer = *stream.rdbuf();
  const std::streamoff here = Seek(&buffer, 0, std::ios_base::cur);
  if (here == kNowhere) return kUnknownLength;
  const std::streamoff end = Seek(&buffer, 0, std::ios_base::end);
  // A buffer that only tells where it stands has not moved. One that went to its end and does not come back is lost.
  if (Seek(&buffer, here, std::ios_base::beg) != here && Seek(&buffer, 0, std::ios_base::cur) != here) {
    stream.setstate(std::ios_base::badbit);
    return 0;
  }
  if (end == kNowhere) return kUnknownLength;
  return end < here ? 0 : static_cast<std::int64_t>(end - here);
}

bool kalmia::HasBytesFor(std::istream& stream, std::int64_t count, int itemSize) {
  if (count < 0 || itemSize <= 0) return false;
  const std::int64_t left = BytesLeft(stream);
  return left < 0 || count <= left / itemSize;
}
