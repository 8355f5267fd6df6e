#include "kalmia/containers/BoolVector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "testing/StreamAttacks.h"

namespace {

using ::testing::ElementsAre;
using Base = NCIntegralVector<bool, 0>;

BoolVector Table() {
  const bool flags[] = {true, false, true};
  return BoolVector(flags, 3);
}

BoolVector Before() { return BoolVector(2, true); }

/// The record of the class, then the base as a whole; version 3 has a directory without entries behind it.
std::string StreamWithBase(short version, Base base, unsigned short entries = 0) {
  std::ostringstream stream;
  VexStreamableData(version, "BoolVector").Write(stream);
  stream << base;
  if (version != 3) return stream.str();
  OutputStreamDirectory directory(stream, entries);
  for (unsigned short i = 0; i < entries; ++i) WriteBinaryString("of the future", directory.GetOutput(i));
  directory.Close();
  return stream.str();
}

std::string Version1(int size, const std::string& cells) {
  std::ostringstream stream;
  VexStreamableData(1, "BoolVector").Write(stream);
  WriteFourBytes(&size, 1, stream);
  stream << cells;
  return stream.str();
}

bool ReadInto(BoolVector* v, const std::string& bytes) {
  std::istringstream stream(bytes);
  return static_cast<bool>(stream >> *v);
}

bool IsRefused(const std::string& bytes) {
  BoolVector v = Before();
  const bool refused = !ReadInto(&v, bytes);
  EXPECT_TRUE(!refused || v.empty()) << "something is left of a vector whose read failed";
  return refused;
}

StreamAttacks<BoolVector> Attacks() {
  StreamAttacks<BoolVector> attacks;
  attacks.make = [] { return std::make_unique<BoolVector>(Before()); };
  attacks.refused = [](const BoolVector& v) { EXPECT_TRUE(v.empty() || v == Before()); };
  return attacks;
}

TEST(BoolVector, IsAVectorOfFlags) {
  EXPECT_TRUE(BoolVector().empty());
  EXPECT_THAT(BoolVector(2), ElementsAre(false, false));
  EXPECT_THAT(BoolVector(2, true), ElementsAre(true, true));
  EXPECT_THAT(Table(), ElementsAre(true, false, true));
  EXPECT_EQ(Table().GetSum(), 2);
}

TEST(BoolVector, SharesWithCopiesAndWithItsBase) {
  const Base base(2, true);
  BoolVector a = base, b(a), c;
  c = b;
  EXPECT_EQ(a.GetPtr(), base.GetPtr());
  EXPECT_EQ(c.GetPtr(), base.GetPtr());
  a(1) = false;
  EXPECT_THAT(a, ElementsAre(false, true));
  EXPECT_THAT(base, ElementsAre(true, true));
}

TEST(BoolVector, ReadsBackWhatItWrote) {
  for (const BoolVector& v : {BoolVector(), Table(), BoolVector(5000, true)}) {
    BoolVector back = Before();
    ASSERT_TRUE(ReadInto(&back, StreamOf(v)));
    EXPECT_TRUE(back == v);
  }
}

TEST(BoolVector, WritesItsRecordItsBaseAndADirectoryWithoutEntries) {
  EXPECT_EQ(StreamOf(Table()), StreamWithBase(3, Table()));
  EXPECT_EQ(StreamOf(BoolVector()), StreamWithBase(3, Base()));
  EXPECT_EQ(BoolVector().GetMyVexStreamVersionNumber(), 3);
}

TEST(BoolVector, WritesTheSameInEachPass) {
  const BoolVector v = Table();
  std::stringstream stream;
  stream << v << v;
  BoolVector first, second;
  ASSERT_TRUE(stream >> first >> second);
  EXPECT_TRUE(first == v);
  EXPECT_TRUE(second == v);
}

TEST(BoolVector, IsWrittenAndReadOnceInAPass) {
  struct Open : BoolVector {
    using BoolVector::BoolVector;
    using BoolVector::VexStreamableReset;
    using BoolVector::VexStreamableStartRead;
    using BoolVector::VexStreamableStartWrite;
  };
  Open v(3, true);
  std::stringstream stream;
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_TRUE(v.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), StreamOf(BoolVector(3, true)));
  v.Clear();
  v.VexStreamableReset();
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_TRUE(v.VexStreamableStartRead(stream));
  EXPECT_THAT(v, ElementsAre(true, true, true));
}

TEST(BoolVector, ReadsVersion2WithoutADirectory) {
  BoolVector v = Before();
  ASSERT_TRUE(ReadInto(&v, StreamWithBase(2, Table())));
  EXPECT_TRUE(v == Table());
  EXPECT_EQ(v.GetVexStreamVersionNumber(), 2);
}

TEST(BoolVector, ReadsVersion1WithAnyByteButZeroAsTrue) {
  BoolVector v = Before(), twin(v);
  ASSERT_TRUE(ReadInto(&v, Version1(4, std::string("\0\1\2\xff", 4))));
  EXPECT_THAT(v, ElementsAre(false, true, true, true));
  EXPECT_THAT(twin, ElementsAre(true, true));
  ASSERT_TRUE(ReadInto(&v, Version1(0, "")));
  EXPECT_TRUE(v.empty());
}

TEST(BoolVector, AnUnknownVersionIsRefused) {
  for (short version : {0, 4, -1}) EXPECT_TRUE(IsRefused(StreamWithBase(version, Table()))) << version;
}

TEST(BoolVector, TheRecordOfItsBaseAloneIsRefusedAndChangesNothing) {
  BoolVector v = Before();
  EXPECT_FALSE(ReadInto(&v, StreamOf(Base(3, true))));
  EXPECT_THAT(v, ElementsAre(true, true));
}

TEST(BoolVector, RefusesALieAboutItsSize) {
  for (int size : {-1, 4, 2147483647, -2147483647 - 1}) EXPECT_TRUE(IsRefused(Version1(size, "abc"))) << size;
}

TEST(BoolVector, PassesOverEntriesOfLaterVersionsOfItself) {
  std::stringstream stream(StreamWithBase(3, Table(), /*entries=*/2) + StreamOf(BoolVector(5, true)));
  BoolVector first = Before(), second;
  ASSERT_TRUE(stream >> first >> second);
  EXPECT_TRUE(first == Table());
  EXPECT_TRUE(second == BoolVector(5, true));
}

TEST(BoolVector, FailsOnAStreamThatFails) {
  std::ostringstream stream;
  stream.setstate(std::ios_base::badbit);
  EXPECT_FALSE(stream << Table());
  BoolVector v = Table();
  EXPECT_FALSE(v.VexStreamableWrite(stream));
}

TEST(BoolVector, TakesNoMoreMemoryForALargeVectorThanItsBound) {
  EXPECT_TRUE(Attacks().Read(StreamOf(BoolVector(200000, true))));
  EXPECT_TRUE(Attacks().Read(Version1(200000, std::string(200000, '\1'))));
}

TEST(BoolVector, StandsEveryCut) {
  for (const std::string& good : {StreamWithBase(3, Table()), StreamWithBase(2, Table()), Version1(3, "abc")})
    Attacks().EveryCut(good);
}

TEST(BoolVector, StandsEveryBitTurned) {
  for (const std::string& good : {StreamWithBase(3, Table()), StreamWithBase(2, Table()), Version1(3, "abc")})
    Attacks().EveryBitFlip(good);
}

TEST(BoolVector, StandsEveryNumberOverwritten) {
  for (const std::string& good : {StreamWithBase(3, Table()), StreamWithBase(2, Table()), Version1(3, "abc")})
    Attacks().EveryNumber(good);
}

}  // namespace
