#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <sstream>
#include <streambuf>
#include <string>

#include "kalmia/support/VexStream.h"
#include "testing/AllocationMeter.h"

/// An input buffer that cannot say how many bytes are to come, as of a pipe.
class PipeBuffer : public std::streambuf {
 public:
  explicit PipeBuffer(std::string bytes);

 private:
  std::string bytes_;
};

/// What operator<< writes of the object; the write has to succeed.
std::string StreamOf(const VexStreamBase& object);

/// Most memory that reading may take of `streamLength` bytes, whatever they say.
std::int64_t MemoryBound(std::size_t streamLength);

/// Attacks on the reader of a class: damaged forms of a good byte string are read from a stream of known length and
/// from a pipe. Each must be refused (a false read, or VexStreamError where `mayThrow`), or accepted as an object that
/// passes `accepted`, writes, and reads back to the same bytes; and no read may take more memory than MemoryBound. Any
/// other exception fails the test. `Object` is a VexStreamBase with a default constructor, or one that `make` replaces.
template <class Object>
struct StreamAttacks {
  std::function<std::unique_ptr<Object>()> make = [] { return std::make_unique<Object>(); };
  std::function<void(const Object&)> accepted = [](const Object&) {};  ///< expectations: the invariants
  std::function<void(const Object&)> refused = [](const Object&) {};   ///< expectations on what a refusal leaves
  bool mayThrow = false;

  void EveryCut(const std::string& good) const;      ///< each proper prefix; all must be refused
  void EveryBitFlip(const std::string& good) const;  ///< each bit turned, one at a time
  /// At each place four bytes overwritten, one number at a time: 0, 1, -1, 2, 255, 65535, the largest and the smallest.
  void EveryNumber(const std::string& good) const;
  /// Reads these bytes both ways; whether they were accepted.
  bool Read(const std::string& bytes) const;

 private:
  bool ReadFrom(std::istream& stream, std::size_t length) const;
};

template <class Object>
bool StreamAttacks<Object>::ReadFrom(std::istream& stream, std::size_t length) const {
  bool isAccepted = false;
  std::unique_ptr<Object> object;
  {
    const PeakBytesDuring meter;
    object = make();
    try {
      isAccepted = static_cast<bool>(stream >> *object);
    } catch (const VexStreamError&) {
      EXPECT_TRUE(mayThrow) << "VexStreamError from a class that promises a false read";
    }
    EXPECT_LE(meter.GetBytes(), MemoryBound(length));
  }
  if (!isAccepted) {
    refused(*object);
    return false;
  }
  accepted(*object);
  const std::string written = StreamOf(*object);
  std::istringstream again(written);
  const std::unique_ptr<Object> twin = make();
  EXPECT_TRUE(again >> *twin) << "what was accepted and written is refused";
  accepted(*twin);
  EXPECT_TRUE(StreamOf(*twin) == written) << "what was accepted changes from one pass to the next";
  return true;
}

template <class Object>
bool StreamAttacks<Object>::Read(const std::string& bytes) const {
  std::istringstream known(bytes);
  const bool isAccepted = ReadFrom(known, bytes.size());
  PipeBuffer buffer(bytes);
  std::istream pipe(&buffer);
  EXPECT_EQ(ReadFrom(pipe, bytes.size()), isAccepted) << "a pipe is read otherwise";
  return isAccepted;
}

template <class Object>
void StreamAttacks<Object>::EveryCut(const std::string& good) const {
  EXPECT_TRUE(Read(good)) << "the whole";
  for (std::size_t length = 0; length < good.size() && !::testing::Test::HasFailure(); ++length) {
    SCOPED_TRACE("cut after " + std::to_string(length) + " of " + std::to_string(good.size()) + " bytes");
    EXPECT_FALSE(Read(good.substr(0, length)));
  }
}

template <class Object>
void StreamAttacks<Object>::EveryBitFlip(const std::string& good) const {
  EXPECT_TRUE(Read(good)) << "the whole";
  std::string bytes = good;
  for (std::size_t bit = 0; bit < 8 * good.size() && !::testing::Test::HasFailure(); ++bit) {
    SCOPED_TRACE("bit " + std::to_string(bit % 8) + " of byte " + std::to_string(bit / 8) + " turned");
    const char mask = static_cast<char>(1 << (bit % 8));
    bytes[bit / 8] = static_cast<char>(bytes[bit / 8] ^ mask);
    Read(bytes);
    bytes[bit / 8] = good[bit / 8];
  }
}

template <class Object>
void StreamAttacks<Object>::EveryNumber(const std::string& good) const {
  const std::uint32_t numbers[] = {0, 1, 0xFFFFFFFF, 2, 255, 65535, 0x7FFFFFFF, 0x80000000};
  for (std::size_t at = 0; at + 4 <= good.size(); ++at)
    for (const std::uint32_t number : numbers) {
      SCOPED_TRACE("the number " + std::to_string(number) + " at byte " + std::to_string(at));
      std::string bytes = good;
      for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<char>(number >> (8 * i) & 0xFF);
      Read(bytes);
      if (::testing::Test::HasFailure()) return;
    }
}
