#include <gtest/gtest.h>

#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "signal/TransformStreams.h"
#include "signal/Transforms.h"
#include "testing/StreamAttacks.h"

namespace {

using T = TransformE;

NCTransform TwoColumns() {
  NCTransform transform(2);
  transform[1] = TransformOf(T::TransformLog, 2, -3, -99, 8);
  transform[2] = Power();
  return transform;
}

std::string VersionOneStream(int count, const NCTransform& transform) {
  std::ostringstream stream;
  VexStreamableData(1, "NCT").Write(stream);
  WriteFourBytes(&count, 1, stream);
  for (int c = 1; c <= transform.Size(); ++c) {
    const int type = transform[c].GetTransform();
    WriteFourBytes(&type, 1, stream);
    WriteFourBytes(transform[c].GetConstants(), 4, stream);
  }
  return stream.str();
}

/// A version 2 stream that promises so many elements and has those given.
std::string VersionTwoStream(int count, const std::vector<TransformStruct>& elements, short version = 2,
                             bool entry = true) {
  std::ostringstream stream;
  VexStreamableData(version, "NCT").Write(stream);
  OutputStreamDirectory directory(stream, 1);
  if (entry) WriteFourBytes(&count, 1, directory.GetOutput(0));
  for (const TransformStruct& element : elements) directory.GetOutput(0) << element;
  directory.Close();
  return stream.str();
}

void ExpectEqual(const NCTransform& read, const NCTransform& written) {
  ASSERT_EQ(read.Size(), written.Size());
  for (int c = 1; c <= read.Size(); ++c) EXPECT_TRUE(read[c] == written[c]) << "column " << c;
}

void ExpectEmpty(const NCTransform& transform) { EXPECT_EQ(transform.Size(), 0); }

bool IsRefused(const std::string& bytes) {
  NCTransform transform(7);
  std::istringstream stream(bytes);
  if (stream >> transform) return false;
  ExpectEmpty(transform);
  return true;
}

TEST(NCTransformStream, ReadsBackWhatItWrote) {
  for (const NCTransform& written : {TwoColumns(), NCTransform(0), NCTransform()}) {
    NCTransform read(3);
    std::istringstream stream(StreamOf(written));
    ASSERT_TRUE(stream >> read);
    ExpectEqual(read, written);
    EXPECT_EQ(read.GetVexStreamVersionNumber(), 2);
    EXPECT_EQ(read.GetMyVexStreamVersionNumber(), 2);
    EXPECT_EQ(StreamOf(read), StreamOf(written)) << "the filler too";
  }
}

TEST(NCTransformStream, CountsTheFillerAmongItsElements) {
  const std::string written = StreamOf(TwoColumns());
  EXPECT_EQ(written, VersionTwoStream(3, {TransformStruct(), TwoColumns()[1], TwoColumns()[2]}));
  EXPECT_EQ(StreamOf(NCTransform(0)), VersionTwoStream(1, {TransformStruct()}));
}

TEST(NCTransformStream, ReadsVersionOneWhoseCountIsOfColumns) {
  NCTransform read(5);
  std::istringstream stream(VersionOneStream(2, TwoColumns()) + "rest");
  ASSERT_TRUE(stream >> read);
  ExpectEqual(read, TwoColumns());
  EXPECT_EQ(read.GetVexStreamVersionNumber(), 1);
  EXPECT_EQ(kalmia::BytesLeft(stream), 4);
  std::istringstream none(VersionOneStream(0, NCTransform(0)));
  ASSERT_TRUE(none >> read);
  ExpectEmpty(read);
  EXPECT_EQ(StreamOf(read), StreamOf(NCTransform(0))) << "the filler keeps its default";
}

TEST(NCTransformStream, RefusesCountsThatAreNotThere) {
  const std::vector<TransformStruct> two(2);
  for (const int count : {-1, 3, 65536, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    EXPECT_TRUE(IsRefused(VersionTwoStream(count, two))) << count;
    EXPECT_TRUE(IsRefused(VersionOneStream(count, TwoColumns()))) << count;
  }
  EXPECT_FALSE(IsRefused(VersionTwoStream(2, two)));
}

TEST(NCTransformStream, RefusesAMissingEntryAndVersionsThatItDoesNotKnow) {
  EXPECT_TRUE(IsRefused(VersionTwoStream(0, {}, 2, /*entry=*/false)));
  for (const short version : {0, 3, -1}) EXPECT_TRUE(IsRefused(VersionTwoStream(1, {TransformStruct()}, version)));
}

TEST(NCTransformStream, RefusesACountThatIsCutOff) {
  for (const int bytes : {0, 1, 3}) {
    std::ostringstream stream;
    VexStreamableData(2, "NCT").Write(stream);
    OutputStreamDirectory directory(stream, 1);
    const int count = 0;
    WriteBytes(&count, bytes, directory.GetOutput(0));
    directory.Close();
    EXPECT_TRUE(IsRefused(stream.str())) << bytes;
  }
}

TEST(NCTransformStream, PassesOnTheErrorOfAnElementAndIsEmptyThen) {
  std::ostringstream stream;
  VexStreamableData(2, "NCT").Write(stream);
  OutputStreamDirectory directory(stream, 1);
  const int count = 1;
  WriteFourBytes(&count, 1, directory.GetOutput(0));
  directory.GetOutput(0) << StructStream(/*entries=*/1);
  directory.Close();
  NCTransform transform = TwoColumns();
  EXPECT_EQ(ErrorOf(stream.str(), transform), "ReadFromStreamDir failed");
  ExpectEmpty(transform);
}

TEST(NCTransformStream, LeavesTheObjectAsItIsWhenTheMagicIsAnothers) {
  NCTransform transform = TwoColumns();
  std::istringstream stream(StreamOf(Power()));
  EXPECT_FALSE(stream >> transform);
  ExpectEqual(transform, TwoColumns());
}

TEST(NCTransformStream, StandsBehindTheObjectAfterItWasRead) {
  std::istringstream stream(StreamOf(TwoColumns()) + StreamOf(NCTransform(4)));
  NCTransform first, second;
  ASSERT_TRUE(stream >> first >> second);
  EXPECT_EQ(first.Size(), 2);
  EXPECT_EQ(second.Size(), 4);
}

template <class Object>
struct Opened : Object {
  using Object::VexStreamableReset;
  using Object::VexStreamableStartRead;
  using Object::VexStreamableStartWrite;
};

template <class Object>
void ExpectOneVisitInAPass() {
  Opened<Object> object;
  std::ostringstream stream;
  object.VexStreamableReset();
  EXPECT_TRUE(object.VexStreamableStartWrite(stream));
  const std::string once = stream.str();
  EXPECT_TRUE(object.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once);
  std::istringstream nothing;
  EXPECT_TRUE(object.VexStreamableStartRead(nothing)) << "visited already: nothing is read";
}

TEST(NCTransformStream, WritesNothingASecondTimeInOnePass) {
  ExpectOneVisitInAPass<TransformStruct>();
  ExpectOneVisitInAPass<NCTransform>();
}

StreamAttacks<NCTransform> Attacks() {
  StreamAttacks<NCTransform> attacks;
  attacks.accepted = [](const NCTransform& transform) {
    for (int c = 1; c <= transform.Size(); ++c) transform[c].GetTransform();  // there: the sanitizers see
  };
  attacks.refused = ExpectEmpty;
  attacks.mayThrow = true;
  return attacks;
}

TEST(NCTransformStream, ReadsManyColumnsWithoutTakingMoreMemoryThanTheyNeed) {
  const NCTransform many(5000);
  EXPECT_TRUE(Attacks().Read(StreamOf(many)));
  EXPECT_TRUE(Attacks().Read(VersionOneStream(5000, many)));
  EXPECT_FALSE(Attacks().Read(VersionOneStream(5001, many)));
}

TEST(NCTransformStream, SurvivesACutAtEveryByte) {
  Attacks().EveryCut(StreamOf(TwoColumns()));
  Attacks().EveryCut(VersionOneStream(2, TwoColumns()));
}

TEST(NCTransformStream, SurvivesEveryTurnedBit) {
  Attacks().EveryBitFlip(StreamOf(TwoColumns()));
  Attacks().EveryBitFlip(VersionOneStream(2, TwoColumns()));
}

TEST(NCTransformStream, SurvivesEveryLieAboutANumber) {
  Attacks().EveryNumber(StreamOf(TwoColumns()));
  Attacks().EveryNumber(VersionOneStream(2, TwoColumns()));
}

}  // namespace
