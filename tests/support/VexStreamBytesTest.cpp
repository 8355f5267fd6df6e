#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <limits>
#include <sstream>

#include "kalmia/support/TempFile.h"
#include "kalmia/support/VexStream.h"
#include "testing/AllocationMeter.h"
#include "testing/OddBuffers.h"
#include "testing/StreamAttacks.h"

namespace {

std::string Bytes(std::initializer_list<int> bytes) {
  std::string text;
  for (const int byte : bytes) text.push_back(static_cast<char>(byte));
  return text;
}

TEST(VexStreamBytes, AreLittleEndianOnEveryMachine) {
  std::ostringstream out;
  const std::uint16_t two[] = {0x0102, 0xA0B0};
  const std::uint32_t four = 0x01020304;
  const std::uint64_t eight = 0x0102030405060708;
  const float half = 0.5f;  // IEEE 754: 0x3F000000
  EXPECT_TRUE(WriteBytes("ab", 2, out));
  EXPECT_TRUE(WriteTwoBytes(two, 2, out));
  EXPECT_TRUE(WriteFourBytes(&four, 1, out));
  EXPECT_TRUE(WriteArray(&eight, 1, 8, out));
  EXPECT_TRUE(WriteArray(&half, 1, 4, out));
  EXPECT_EQ(out.str(), Bytes({'a', 'b', 2, 1, 0xB0, 0xA0, 4, 3, 2, 1, 8, 7, 6, 5, 4, 3, 2, 1, 0, 0, 0, 0x3F}));
}

TEST(VexStreamBytes, ReadBackWhatWasWrittenWhateverTheItemSize) {
  std::vector<char> items(3 * 4096 + 24);
  for (std::size_t i = 0; i < items.size(); ++i) items[i] = static_cast<char>(i * 37);
  for (const int itemSize : {1, 2, 3, 4, 8, 12}) {
    SCOPED_TRACE(itemSize);
    const int count = static_cast<int>(items.size()) / itemSize;
    std::ostringstream out;
    ASSERT_TRUE(WriteArray(items.data(), count, itemSize, out));
    std::istringstream in(out.str());
    std::vector<char> back(items.size());
    ASSERT_TRUE(ReadArray(back.data(), count, itemSize, in));
    EXPECT_EQ(back, items);
    EXPECT_FALSE(ReadArray(back.data(), 1, itemSize, in));
  }
}

TEST(VexStreamBytes, RefuseANegativeCount) {
  int four = 7;
  std::ostringstream out;
  EXPECT_FALSE(WriteFourBytes(&four, -1, out));
  EXPECT_TRUE(out.fail());
  EXPECT_EQ(out.str(), "");
  std::istringstream in("12345678");
  EXPECT_FALSE(ReadFourBytes(&four, -1, in));
  EXPECT_TRUE(in.fail());
  EXPECT_EQ(four, 7);
}

TEST(VexStreamBytes, RefuseItemsWithoutASize) {
  for (const int itemSize : {0, -1, std::numeric_limits<int>::min()}) {
    SCOPED_TRACE(itemSize);
    char item = 'x';
    std::ostringstream out;
    EXPECT_FALSE(WriteArray(&item, 1, itemSize, out));
    EXPECT_TRUE(out.fail());
    EXPECT_EQ(out.str(), "");
    std::istringstream in("abcd");
    EXPECT_FALSE(ReadArray(&item, 1, itemSize, in));
    EXPECT_TRUE(in.fail());
    EXPECT_EQ(item, 'x');
  }
}

TEST(VexStreamBytes, MoveNoItemsThroughANullPointer) {
  std::ostringstream out;
  EXPECT_TRUE(WriteArray(nullptr, 0, 4, out));
  std::istringstream in("");
  EXPECT_TRUE(ReadArray(nullptr, 0, 4, in));
}

TEST(VexStreamBytes, FailOnAFailedStream) {
  std::ostringstream out;
  out.setstate(std::ios_base::badbit);
  EXPECT_FALSE(WriteBytes("a", 1, out));
  std::istringstream in("abc");
  in.setstate(std::ios_base::failbit);
  char c = 'x';
  EXPECT_FALSE(ReadBytes(&c, 1, in));
  EXPECT_EQ(c, 'x');
}

TEST(VexStreamBytes, FailAtTheEndOfTheStream) {
  std::istringstream in("abc");
  int four = 0;
  EXPECT_FALSE(ReadFourBytes(&four, 1, in));
  EXPECT_TRUE(in.fail());
}

TEST(BinaryString, IsItsLengthAndItsBytes) {
  std::ostringstream out;
  EXPECT_TRUE(WriteBinaryString("abc", out));
  EXPECT_TRUE(WriteBinaryString("", out));
  EXPECT_TRUE(WriteBinaryString(nullptr, out));
  EXPECT_EQ(out.str(), Bytes({3, 0, 0, 0, 'a', 'b', 'c', 0, 0, 0, 0, 0, 0, 0, 0}));
  std::istringstream in(out.str());
  CString text;
  EXPECT_TRUE(ReadBinaryString(text, in));
  EXPECT_STREQ(text, "abc");
  char* array = nullptr;
  EXPECT_TRUE(ReadBinaryString(&array, in));
  const std::unique_ptr<char[]> owner(array);
  EXPECT_STREQ(array, "");
}

TEST(BinaryString, RefusesALieBeforeTakingMemoryForIt) {
  struct Lie {
    const char* what;
    std::string bytes;
  };
  const Lie lies[] = {{"nothing at all", ""},
                      {"half a length", Bytes({3, 0})},
                      {"a negative length", Bytes({0xFF, 0xFF, 0xFF, 0xFF, 'a'})},
                      {"one byte fewer than promised", Bytes({3, 0, 0, 0, 'a', 'b'})},
                      {"two gigabytes promised", Bytes({0xFF, 0xFF, 0xFF, 0x7F, 'a', 'b'})},
                      {"a zero byte inside", Bytes({3, 0, 0, 0, 'a', 0, 'b'})}};
  for (const Lie& lie : lies)
    for (const bool isPipe : {false, true}) {
      SCOPED_TRACE(lie.what + std::string(isPipe ? ", from a pipe" : ""));
      std::istringstream known(lie.bytes);
      PipeBuffer buffer(lie.bytes);
      std::istream pipe(&buffer);
      std::istream& in = isPipe ? pipe : known;
      const PeakBytesDuring meter;
      CString text("before");
      EXPECT_FALSE(ReadBinaryString(text, in));
      EXPECT_TRUE(in.fail());
      EXPECT_STREQ(text, "before");
      char* array = nullptr;
      EXPECT_FALSE(ReadBinaryString(&array, in));
      EXPECT_EQ(array, nullptr);
      EXPECT_LE(meter.GetBytes(), MemoryBound(lie.bytes.size()));
    }
}

TEST(BinaryString, IsReadFromAPipeHoweverLong) {
  const std::string longText(100000, 'x');
  std::ostringstream out;
  ASSERT_TRUE(WriteBinaryString(longText.c_str(), out));
  PipeBuffer buffer(out.str());
  std::istream in(&buffer);
  CString text;
  const PeakBytesDuring meter;
  EXPECT_TRUE(ReadBinaryString(text, in));
  EXPECT_LE(meter.GetBytes(), MemoryBound(out.str().size()));
  EXPECT_EQ(std::string(text), longText);
}

TEST(BinaryString, LeavesNothingBehindWhenTheStreamThrows) {
  std::istringstream in(Bytes({3, 0, 0, 0, 'a'}));
  in.exceptions(std::ios_base::failbit);
  const PeakBytesDuring meter;
  char* array = nullptr;
  EXPECT_THROW(ReadBinaryString(&array, in), std::ios_base::failure);
  EXPECT_EQ(array, nullptr);
}

TEST(BytesLeft, IsExactWhereTheLengthIsKnown) {
  std::istringstream in("abcdefgh");
  EXPECT_EQ(kalmia::BytesLeft(in), 8);
  in.get();
  EXPECT_EQ(kalmia::BytesLeft(in), 7);
  EXPECT_EQ(in.get(), 'b') << "the position has to stay";
  EXPECT_TRUE(in.good());
  in.ignore(100);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(kalmia::BytesLeft(in), 0);
  EXPECT_TRUE(in.eof() && !in.fail()) << "the state has to stay";
}

TEST(BytesLeft, IsUnknownForAPipeAndNoneForAFailedStream) {
  PipeBuffer buffer("abc");
  std::istream pipe(&buffer);
  EXPECT_EQ(kalmia::BytesLeft(pipe), -1);
  EXPECT_TRUE(pipe.good());
  std::istringstream failed("abc");
  failed.setstate(std::ios_base::failbit);
  EXPECT_EQ(kalmia::BytesLeft(failed), 0);
}

TEST(BytesLeft, IsExactForAFile) {
  const std::string path(VexGetTempFileName(nullptr, "kalmia-test-", "bin"));
  std::ofstream(path, std::ios::binary) << std::string(20000, 'x');
  std::ifstream in(path, std::ios::binary);
  in.ignore(5);
  EXPECT_EQ(kalmia::BytesLeft(in), 19995);
  EXPECT_EQ(in.tellg(), std::streampos(5));
  std::remove(path.c_str());
}

template <class Buffer>
struct BytesLeftOfABufferWithoutALength : ::testing::Test {};
using WithoutLength = ::testing::Types<PipeBuffer, ThrowingBuffer, TellingBuffer, QuietBuffer, RunningBuffer>;
TYPED_TEST_SUITE(BytesLeftOfABufferWithoutALength, WithoutLength);

TYPED_TEST(BytesLeftOfABufferWithoutALength, AreUnknownAndNothingIsHeardOfIt) {
  TypeParam buffer("abcdefgh");
  std::istream in(&buffer);
  in.exceptions(std::ios_base::badbit | std::ios_base::failbit);
  in.get();
  EXPECT_EQ(kalmia::BytesLeft(in), -1);
  EXPECT_TRUE(in.good());
  EXPECT_EQ(in.get(), 'b') << "the position has to stay";
}

TYPED_TEST(BytesLeftOfABufferWithoutALength, ArriveInADirectoryAsFromAPipe) {
  std::ostringstream out;
  OutputStreamDirectory written(out, 1);
  const std::string text(100000, 'x');
  WriteBinaryString(text.c_str(), written.GetOutput(0));
  written.Close();
  TypeParam buffer(out.str());
  std::istream in(&buffer);
  const PeakBytesDuring meter;
  InputStreamDirectory read(in);
  ASSERT_NE(read.GetInput(0), nullptr);
  EXPECT_LE(meter.GetBytes(), MemoryBound(out.str().size()));
  CString back;
  EXPECT_TRUE(ReadBinaryString(back, *read.GetInput(0)));
  EXPECT_EQ(std::string(back), text);
}

TEST(BytesLeft, IsExactForABufferThatKnowsOffsetsAlone) {
  OffsetBuffer buffer("abcdefgh");
  std::istream in(&buffer);
  in.get();
  EXPECT_EQ(kalmia::BytesLeft(in), 7);
  EXPECT_TRUE(in.good());
  EXPECT_EQ(in.get(), 'b') << "the position has to stay";
}

TEST(BytesLeft, IsNoneOfABufferThatDoesNotComeBackFromItsEndWhichIsBad) {
  OneWayBuffer buffer("abcdefgh");
  std::istream in(&buffer);
  in.get();
  EXPECT_EQ(kalmia::BytesLeft(in), 0);
  EXPECT_TRUE(in.bad());
}

TEST(HasBytesFor, CountsInWholeItemsWithoutOverflow) {
  std::istringstream in("abcdefgh");
  EXPECT_TRUE(kalmia::HasBytesFor(in, 2, 4));
  EXPECT_FALSE(kalmia::HasBytesFor(in, 3, 4));
  EXPECT_TRUE(kalmia::HasBytesFor(in, 0, 4));
  EXPECT_FALSE(kalmia::HasBytesFor(in, -1, 4));
  EXPECT_FALSE(kalmia::HasBytesFor(in, std::numeric_limits<std::int64_t>::max(), 8));
  PipeBuffer buffer("abc");
  std::istream pipe(&buffer);
  EXPECT_TRUE(kalmia::HasBytesFor(pipe, std::numeric_limits<std::int64_t>::max(), 8));
  EXPECT_FALSE(kalmia::HasBytesFor(pipe, -1, 8));
}

TEST(ReadCells, TakesMemoryAsTheBytesArrive) {
  const std::string bytes(40000, 'x');
  for (const std::int64_t count : {std::int64_t(10001), std::int64_t(1) << 31, std::int64_t(1) << 62}) {
    SCOPED_TRACE(count);
    PipeBuffer buffer(bytes);
    std::istream pipe(&buffer);
    std::vector<float> cells(5);
    const PeakBytesDuring meter;
    EXPECT_FALSE(kalmia::ReadCells(pipe, count, cells));
    EXPECT_TRUE(cells.empty());
    EXPECT_TRUE(pipe.fail());
    EXPECT_LE(meter.GetBytes(), MemoryBound(bytes.size()));
  }
}

TEST(ReadCells, ReadsTheSameFromAPipeAsFromAStreamOfKnownLength) {
  std::vector<double> numbers(5000);
  for (std::size_t i = 0; i < numbers.size(); ++i) numbers[i] = 1.0 / static_cast<double>(i + 1);
  std::ostringstream out;
  ASSERT_TRUE(WriteArray(numbers.data(), 5000, sizeof(double), out));
  std::istringstream known(out.str());
  PipeBuffer buffer(out.str());
  std::istream pipe(&buffer);
  std::vector<double> fromKnown, fromPipe;
  EXPECT_TRUE(kalmia::ReadCells(known, 5000, fromKnown));
  EXPECT_TRUE(kalmia::ReadCells(pipe, 5000, fromPipe));
  EXPECT_EQ(fromKnown, numbers);
  EXPECT_EQ(fromPipe, numbers);
}

TEST(ReadCells, OfNoneSucceedsWithNone) {
  std::istringstream in("");
  std::vector<int> cells(3);
  EXPECT_TRUE(kalmia::ReadCells(in, 0, cells));
  EXPECT_TRUE(cells.empty());
}

}  // namespace
