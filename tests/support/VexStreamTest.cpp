#include "kalmia/support/VexStream.h"

#include <gtest/gtest.h>

#include <cstring>
#include <sstream>

namespace {

/// An input buffer that cannot say how long it is, as of a pipe.
class Pipe : public std::streambuf {
 public:
  explicit Pipe(std::string bytes) : bytes_(std::move(bytes)) { setg(&bytes_[0], &bytes_[0], &bytes_[0] + bytes_.size()); }

 private:
  std::string bytes_;
};

std::string BytesOf(const std::ostringstream& stream) { return stream.str(); }

TEST(VexStreamBytes, AreLittleEndianOnEveryMachine) {
  std::ostringstream out;
  const std::uint16_t two[] = {0x0102, 0xA0B0};
  const std::uint32_t four = 0x01020304;
  const std::uint64_t eight = 0x0102030405060708;
  EXPECT_TRUE(WriteBytes("ab", 2, out));
  EXPECT_TRUE(WriteTwoBytes(two, 2, out));
  EXPECT_TRUE(WriteFourBytes(&four, 1, out));
  EXPECT_TRUE(WriteArray(&eight, 1, 8, out));
  EXPECT_EQ(BytesOf(out), "ab\x02\x01\xB0\xA0\x04\x03\x02\x01\x08\x07\x06\x05\x04\x03\x02\x01");
}

TEST(VexStreamBytes, ReadBackWhatWasWritten) {
  std::ostringstream out;
  std::vector<double> numbers(3000);
  for (int i = 0; i < 3000; ++i) numbers[static_cast<std::size_t>(i)] = i / 7.0;
  ASSERT_TRUE(WriteArray(numbers.data(), 3000, sizeof(double), out));
  std::istringstream in(out.str());
  std::vector<double> back(3000);
  ASSERT_TRUE(ReadArray(back.data(), 3000, sizeof(double), in));
  EXPECT_EQ(back, numbers);
  EXPECT_FALSE(ReadArray(back.data(), 1, sizeof(double), in));
}

TEST(VexStreamDirectory, NestsWithoutLosingAnEntry) {
  std::ostringstream out;
  {
    OutputStreamDirectory outer(out, 3);
    OutputStreamDirectory inner(outer.GetOutput(1), 2);
    inner.GetOutput(0) << "inside";
    inner.Close();
    outer.GetOutput(1) << "behind";
    outer.GetOutput(0) << "first";
    outer.Close();
  }
  out << "tail";
  for (const bool pipe : {false, true}) {
    std::istringstream whole(out.str());
    Pipe buffer(out.str());
    std::istream piped(&buffer);
    std::istream& in = pipe ? piped : whole;
    InputStreamDirectory outer(in);
    ASSERT_NE(outer.GetInput(2), nullptr);
    EXPECT_EQ(outer.GetInput(2)->peek(), EOF);
    EXPECT_EQ(outer.GetInput(3), nullptr);
    InputStreamDirectory inner(*outer.GetInput(1));
    std::string text;
    *inner.GetInput(0) >> text;
    EXPECT_EQ(text, "inside");
    EXPECT_EQ(kalmia::BytesLeft(*outer.GetInput(1)), 6);
    *outer.GetInput(1) >> text;
    EXPECT_EQ(text, "behind");
    *outer.GetInput(0) >> text;
    EXPECT_EQ(text, "first");
    outer.Close();
    in >> text;
    EXPECT_EQ(text, "tail");
  }
}

}  // namespace
