#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <sstream>

#include "kalmia/support/VexStream.h"
#include "testing/AllocationMeter.h"
#include "testing/StreamAttacks.h"

namespace {

std::string Table(std::initializer_list<std::uint64_t> lengths) {
  std::ostringstream out;
  const auto count = static_cast<std::uint16_t>(lengths.size());
  WriteTwoBytes(&count, 1, out);
  WriteArray(lengths.begin(), count, 8, out);
  return out.str();
}

std::string TextOf(std::istream* entry) {
  return entry ? std::string(std::istreambuf_iterator<char>(*entry), {}) : std::string("absent");
}

/// A directory around another one around another one: `depth` of them, each in entry 1 of 3.
std::string Nested(int depth, const std::string& innermost) {
  if (depth == 0) return innermost;
  std::ostringstream out;
  OutputStreamDirectory directory(out, 3);
  directory.GetOutput(1) << Nested(depth - 1, innermost);
  directory.Close();
  return out.str();
}

TEST(VexStreamDirectory, IsACountATableOfLengthsAndTheEntries) {
  std::ostringstream out;
  OutputStreamDirectory directory(out, 3);
  directory.GetOutput(2) << "xyz";
  directory.GetOutput(0) << "a";
  directory.GetOutput(1);
  EXPECT_EQ(out.str(), "") << "nothing before Close";
  directory.Close();
  EXPECT_EQ(out.str(), Table({1, 0, 3}) + "axyz");
  directory.Close();
  EXPECT_EQ(out.str(), Table({1, 0, 3}) + "axyz") << "a second Close writes nothing";
}

TEST(VexStreamDirectory, MayHaveNoEntries) {
  std::ostringstream out;
  OutputStreamDirectory(out, 0).Close();
  EXPECT_EQ(out.str(), Table({}));
  std::istringstream in(out.str());
  InputStreamDirectory directory(in);
  EXPECT_TRUE(in.good());
  EXPECT_EQ(directory.GetInput(0), nullptr);
}

TEST(VexStreamDirectory, WithoutACloseWritesNothing) {
  std::ostringstream out;
  { OutputStreamDirectory(out, 2).GetOutput(0) << "lost"; }
  EXPECT_EQ(out.str(), "");
}

TEST(VexStreamDirectory, HasNoOutputBehindItsLastEntry) {
  std::ostringstream out;
  OutputStreamDirectory directory(out, 2);
  EXPECT_THROW(directory.GetOutput(2), std::out_of_range);
}

TEST(VexStreamDirectory, PassesTheFailureOfAnEntryOnAndWritesNothing) {
  std::ostringstream out;
  OutputStreamDirectory directory(out, 2);
  directory.GetOutput(0) << "good";
  directory.GetOutput(1).setstate(std::ios_base::failbit);
  directory.Close();
  EXPECT_TRUE(out.fail());
  EXPECT_EQ(out.str(), "");
}

TEST(VexStreamDirectory, TellsAnEmptyEntryFromAnAbsentOne) {
  std::istringstream in(Table({0, 1}) + "a");
  InputStreamDirectory directory(in);
  EXPECT_EQ(TextOf(directory.GetInput(0)), "");
  EXPECT_EQ(TextOf(directory.GetInput(1)), "a");
  EXPECT_EQ(directory.GetInput(2), nullptr);
  EXPECT_EQ(directory.GetInput(65535), nullptr);
}

TEST(VexStreamDirectory, LeavesOutAnEntryThatNobodyAskedFor) {
  std::stringstream stream;
  OutputStreamDirectory written(stream, 4);
  written.GetOutput(1);
  written.GetOutput(2) << "two";
  written.Close();
  InputStreamDirectory directory(stream);
  EXPECT_EQ(directory.GetInput(0), nullptr);
  EXPECT_EQ(TextOf(directory.GetInput(1)), "") << "asked for: there, and empty";
  EXPECT_EQ(TextOf(directory.GetInput(2)), "two");
  EXPECT_EQ(directory.GetInput(3), nullptr);
  int number = 7;
  EXPECT_FALSE(ReadFromStreamDir(number, directory, 0, /*must=*/false));
  EXPECT_THROW(ReadFromStreamDir(number, directory, 3, /*must=*/true), VexStreamError);
}

TEST(VexStreamDirectory, LetsAReaderPassOverWhatItDoesNotAskFor) {
  for (const bool isPipe : {false, true}) {
    SCOPED_TRACE(isPipe ? "from a pipe" : "from a stream of known length");
    const std::string bytes = Table({3, 4, 2}) + "onefourtw" + "tail";
    std::istringstream known(bytes);
    PipeBuffer buffer(bytes);
    std::istream pipe(&buffer);
    std::istream& in = isPipe ? pipe : known;
    InputStreamDirectory directory(in);
    EXPECT_EQ(TextOf(directory.GetInput(1)), "four") << "an entry ends where the next begins";
    directory.Close();
    EXPECT_EQ(directory.GetInput(0), nullptr) << "closed";
    EXPECT_EQ(TextOf(&in), "tail");
  }
}

TEST(VexStreamDirectory, GivesTheSameStreamWhereItStandsEachTime) {
  std::istringstream in(Table({3}) + "abc");
  InputStreamDirectory directory(in);
  EXPECT_EQ(directory.GetInput(0)->get(), 'a');
  EXPECT_EQ(directory.GetInput(0)->get(), 'b');
}

TEST(VexStreamDirectory, EntriesCanBeSearched) {
  std::istringstream in(Table({6}) + "abcdef");
  InputStreamDirectory directory(in);
  std::istream& entry = *directory.GetInput(0);
  entry.seekg(-2, std::ios_base::end);
  EXPECT_EQ(entry.tellg(), std::streampos(4));
  EXPECT_EQ(entry.get(), 'e');
  entry.seekg(1);
  EXPECT_EQ(entry.get(), 'b');
  entry.seekg(2, std::ios_base::cur);
  EXPECT_EQ(entry.get(), 'e');
  EXPECT_EQ(kalmia::BytesLeft(entry), 1);
  entry.seekg(7);
  EXPECT_TRUE(entry.fail()) << "behind the end";
}

TEST(VexStreamDirectory, NestsWithoutLosingAnEntry) {
  for (const bool isPipe : {false, true}) {
    const std::string bytes = Nested(5, "innermost") + "tail";
    std::istringstream known(bytes);
    PipeBuffer buffer(bytes);
    std::istream pipe(&buffer);
    std::istream* in = isPipe ? &pipe : &known;
    std::vector<std::unique_ptr<InputStreamDirectory>> directories;
    std::istream* entry = in;
    for (int depth = 0; depth < 5; ++depth) {
      directories.push_back(std::make_unique<InputStreamDirectory>(*entry));
      EXPECT_EQ(directories.back()->GetInput(0), nullptr);
      EXPECT_EQ(directories.back()->GetInput(2), nullptr);
      entry = directories.back()->GetInput(1);
      ASSERT_NE(entry, nullptr);
    }
    EXPECT_EQ(TextOf(entry), "innermost");
    EXPECT_EQ(TextOf(in), "tail");
  }
}

TEST(VexStreamDirectory, InsideAnEntryReadsWithoutACopy) {
  const std::size_t large = 1000000;
  const std::string bytes = Nested(50, std::string(large, 'x'));
  std::istringstream in(bytes);
  std::vector<std::unique_ptr<InputStreamDirectory>> directories;
  std::istream* entry = &in;
  const PeakBytesDuring meter;
  for (int depth = 0; depth < 50; ++depth) {
    directories.push_back(std::make_unique<InputStreamDirectory>(*entry));
    entry = directories.back()->GetInput(1);
    ASSERT_NE(entry, nullptr);
  }
  EXPECT_EQ(kalmia::BytesLeft(*entry), static_cast<std::int64_t>(large));
  // The bytes once, and beside them less than a kilobyte of streams and tables a level.
  EXPECT_LE(meter.GetBytes(), static_cast<std::int64_t>(bytes.size()) + 50 * 1024);
}

TEST(VexStreamDirectory, OutlivedByAnInnerOneLeavesItsBytes) {
  std::istringstream in(Nested(2, "text"));
  auto outer = std::make_unique<InputStreamDirectory>(in);
  InputStreamDirectory inner(*outer->GetInput(1));
  outer.reset();
  EXPECT_EQ(TextOf(inner.GetInput(1)), "text");
}

TEST(VexStreamDirectory, RefusesALieBeforeTakingMemoryForIt) {
  struct Lie {
    const char* what;
    std::string bytes;
  };
  const std::uint64_t huge = std::numeric_limits<std::uint64_t>::max() - 1;  // one more says: absent
  const Lie lies[] = {{"nothing at all", ""},
                      {"half a count", "a"},
                      {"65535 entries without a table", "\xFF\xFF"},
                      {"a table cut off", Table({1, 1}).substr(0, 17)},
                      {"one byte fewer than promised", Table({1, 3}) + "abc"},
                      {"a terabyte", Table({std::uint64_t(1) << 40}) + "abc"},
                      {"a length beyond what a stream can have", Table({huge}) + "abc"},
                      {"lengths whose sum comes round to 3", Table({huge, 5}) + "abc"},
                      {"lengths whose sum comes round to 3, each of them possible",
                       Table({huge / 2, huge / 2, 5}) + "abc"}};
  for (const Lie& lie : lies)
    for (const int kind : {0, 1, 2}) {
      SCOPED_TRACE(lie.what + std::string(kind == 0 ? "" : kind == 1 ? ", from a pipe" : ", inside an entry"));
      std::istringstream known(lie.bytes);
      PipeBuffer buffer(lie.bytes);
      std::istream pipe(&buffer);
      std::istringstream around(Nested(1, lie.bytes));
      InputStreamDirectory outer(around);
      std::istream& in = kind == 0 ? known : kind == 1 ? pipe : *outer.GetInput(1);
      const PeakBytesDuring meter;
      InputStreamDirectory directory(in);
      EXPECT_TRUE(in.fail());
      EXPECT_EQ(directory.GetInput(0), nullptr);
      EXPECT_LE(meter.GetBytes(), MemoryBound(lie.bytes.size()));
    }
}

TEST(VexStreamDirectory, OfVeryManyEntriesStaysWithinTheMemoryBound) {
  std::ostringstream out;
  OutputStreamDirectory written(out, 65535);
  written.GetOutput(65534);
  written.Close();
  const std::string bytes = out.str();
  for (const bool isPipe : {false, true}) {
    SCOPED_TRACE(isPipe ? "from a pipe" : "from a stream of known length");
    std::istringstream known(bytes);
    PipeBuffer buffer(bytes);
    std::istream pipe(&buffer);
    const PeakBytesDuring meter;
    InputStreamDirectory directory(isPipe ? pipe : known);
    EXPECT_EQ(TextOf(directory.GetInput(65534)), "");
    EXPECT_LE(meter.GetBytes(), MemoryBound(bytes.size()));
  }
}

TEST(VexStreamDirectory, OnAFailedStreamHasNoEntries) {
  std::istringstream in(Table({1}) + "a");
  in.setstate(std::ios_base::failbit);
  InputStreamDirectory directory(in);
  EXPECT_EQ(directory.GetInput(0), nullptr);
}

TEST(VexStreamDirectory, LetsAThrowingStreamThrowAndLeaksNothing) {
  std::istringstream in(Table({3}) + "ab");
  in.exceptions(std::ios_base::failbit);
  EXPECT_THROW(InputStreamDirectory directory(in), std::ios_base::failure);
}

TEST(WriteDirectory, WritesTheBytesOfADirectoryWithStreams) {
  const std::int32_t size = 2, none = 0;
  const double cells[] = {1.5, -99};
  std::ostringstream withStreams, without;
  OutputStreamDirectory directory(withStreams, 4);
  WriteFourBytes(&size, 1, directory.GetOutput(0));
  WriteFourBytes(&none, 1, directory.GetOutput(1));
  WriteArray(cells, size, sizeof(double), directory.GetOutput(2));
  directory.Close();
  EXPECT_TRUE(kalmia::WriteDirectory(
      without, {{&size, 1, 4}, {&none, 1, 4}, {cells, size, sizeof(double)}, {nullptr, 0, sizeof(double)}}));
  EXPECT_EQ(without.str(), withStreams.str());
}

TEST(WriteDirectory, FailsOnAFailedStream) {
  std::ostringstream out;
  out.setstate(std::ios_base::badbit);
  EXPECT_FALSE(kalmia::WriteDirectory(out, {{"abc", 3, 1}}));
}

// The two reading helpers.

TEST(ReadFromStreamDir, ReadsAField) {
  std::istringstream in(Table({4}) + std::string("\x2A\0\0\0", 4));
  InputStreamDirectory directory(in);
  int value = 0;
  EXPECT_TRUE(ReadFromStreamDir(value, directory, 0, /*must=*/true));
  EXPECT_EQ(value, 42);
}

TEST(ReadFromStreamDir, GoesOnInAnEntryWhereTheLastReadEnded) {
  std::istringstream in(Table({12}) + std::string("\x01\0\0\0\xFE\xFF\xFF\xFF\0\0\0\x80", 12));
  InputStreamDirectory directory(in);
  int value = 0;
  EXPECT_TRUE(ReadFromStreamDir(value, directory, 0, /*must=*/true));
  EXPECT_EQ(value, 1);
  EXPECT_EQ(kalmia::BytesLeft(*directory.GetInput(0)), 8);
  EXPECT_TRUE(ReadFourBytes(&value, 1, *directory.GetInput(0)));
  EXPECT_EQ(value, -2);
  EXPECT_TRUE(ReadFromStreamDir(value, directory, 0, /*must=*/true)) << "once there is a stream, from that";
  EXPECT_EQ(value, std::numeric_limits<int>::min());
  EXPECT_FALSE(ReadFromStreamDir(value, directory, 0, /*must=*/false)) << "at the end";
  EXPECT_TRUE(directory.GetInput(0)->fail());
}

TEST(ReadFromStreamDir, FindsNothingInAFailedEntryOrAClosedDirectory) {
  std::istringstream in(Table({4}) + "abcd");
  InputStreamDirectory directory(in);
  directory.GetInput(0)->setstate(std::ios_base::failbit);
  int value = 5;
  EXPECT_FALSE(ReadFromStreamDir(value, directory, 0, /*must=*/false));
  directory.Close();
  EXPECT_FALSE(ReadFromStreamDir(value, directory, 0, /*must=*/false));
  EXPECT_EQ(value, 5);
}

TEST(ReadFromStreamDir, TellsOfAnAbsentEntry) {
  std::istringstream in(Table({}));
  InputStreamDirectory directory(in);
  int value = 5;
  EXPECT_FALSE(ReadFromStreamDir(value, directory, 0, /*must=*/false));
  try {
    ReadFromStreamDir(value, directory, 0, /*must=*/true);
    FAIL() << "no exception";
  } catch (const VexStreamError& error) {
    EXPECT_STREQ(error.GetMessage(), "ReadFromStreamDir failed");
  }
  EXPECT_EQ(value, 5);
}

TEST(ReadFromStreamDir, TellsOfAFieldCutOff) {
  for (const bool must : {false, true}) {
    std::istringstream in(Table({3}) + "abc");
    InputStreamDirectory directory(in);
    int value = 5;
    try {
      EXPECT_FALSE(ReadFromStreamDir(value, directory, 0, must));
      EXPECT_FALSE(must) << "no exception";
    } catch (const VexStreamError& error) {
      EXPECT_TRUE(must);
      EXPECT_STREQ(error.GetMessage(), "Error when reading from stream");
    }
    EXPECT_EQ(value, 5);
  }
}

}  // namespace
