#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "kalmia/support/MD5.h"

// The frame of all binary files, for tests that damage and forge it: magic, version, length, checksum, content.

namespace framed {

constexpr std::size_t kVersionAt = 8;    ///< where in the file its parts begin
constexpr std::size_t kLengthAt = 12;    ///< of the content, eight bytes
constexpr std::size_t kChecksumAt = 20;  ///< of the content, an MD5 in 32 letters
constexpr std::size_t kContentAt = 52;

/// The file with another version.
inline std::string WithVersion(std::string bytes, int version) {
  bytes[kVersionAt] = static_cast<char>(version);
  return bytes;
}

/// The file that says to have a content of so many bytes.
inline std::string WithLength(std::string bytes, std::uint64_t length) {
  for (std::size_t i = 0; i < 8; ++i) bytes[kLengthAt + i] = static_cast<char>(length >> (8 * i) & 0xFFU);
  return bytes;
}

/// The file with one bit turned.
inline std::string WithBitFlipped(std::string bytes, std::size_t at, unsigned bit) {
  bytes[at] = static_cast<char>(bytes[at] ^ static_cast<char>(1U << bit));
  return bytes;
}

/// The file with a length and a checksum that match its content: what a forger would write.
inline std::string Forged(std::string bytes) {
  const std::size_t length = bytes.size() - kContentAt;
  MD5 md5;
  md5.Update(bytes.data() + kContentAt, length);
  md5.Finalize();
  bytes.replace(kChecksumAt, 32, md5.GetDigest());
  return WithLength(bytes, length);
}

}  // namespace framed
