#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "kalmia/pcapls/NCScale.h"
#include "testing/RandomTables.h"
#include "testing/StreamAttacks.h"

namespace {

using ::testing::ElementsAre;

/// Three variables of three types, fitted; the second one is not centred, so that holes are on the stream too.
NCScale FittedScale() {
  NCScale scale(3);
  scale.SetType(1, NCScale::ScalingUnitVariance);
  scale.SetType(3, NCScale::ScalingPareto);
  NCDataMatrix<float> matrix = RandomMatrix<float>(5, 3, 0.0, 1);
  scale.ScaleMatrix(&matrix, /*newModel=*/true);
  return scale;
}

struct Directory {
  NCDataVector<float> centres;
  NCDataVector<float> scales;
  std::vector<int> types;
  unsigned short entries = 3;
  short version = 2;
};

/// The stream of these fields, which need not agree.
std::string StreamOf(const Directory& fields) {
  std::ostringstream stream;
  VexStreamableData(fields.version, "NCS").Write(stream);
  OutputStreamDirectory directory(stream, fields.entries);
  if (fields.entries > 0) directory.GetOutput(0) << fields.centres;
  if (fields.entries > 1) directory.GetOutput(1) << fields.scales;
  if (fields.entries > 2)
    WriteFourBytes(fields.types.data(), static_cast<int>(fields.types.size()), directory.GetOutput(2));
  directory.Close();
  return stream.str();
}

std::string VersionOneStreamOf(const NCScale& scale) {
  std::ostringstream stream;
  VexStreamableData(1, "NCS").Write(stream);
  stream << *scale.GetCentres() << *scale.GetScales();
  for (int j = 1; j <= scale.GetVariables(); ++j) {
    const int type = scale.GetScaleType(j);
    WriteFourBytes(&type, 1, stream);
  }
  return stream.str();
}

void ExpectEqual(const NCScale& read, const NCScale& written) {
  ASSERT_EQ(read.GetVariables(), written.GetVariables());
  EXPECT_EQ(CellsOf(*read.GetCentres()), CellsOf(*written.GetCentres()));
  EXPECT_EQ(CellsOf(*read.GetScales()), CellsOf(*written.GetScales()));
  EXPECT_TRUE(HasExactCounts(*read.GetCentres()));
  EXPECT_TRUE(HasExactCounts(*read.GetScales()));
  for (int j = 1; j <= read.GetVariables(); ++j) EXPECT_EQ(read.GetScaleType(j), written.GetScaleType(j));
}

void ExpectInvariants(const NCScale& scale) {
  EXPECT_EQ(scale.GetCentres()->Size(), scale.GetVariables());
  EXPECT_EQ(scale.GetScales()->Size(), scale.GetVariables());
  EXPECT_TRUE(HasExactCounts(*scale.GetCentres()));
  EXPECT_TRUE(HasExactCounts(*scale.GetScales()));
  for (int j = 1; j <= scale.GetVariables(); ++j) scale.GetScaleType(j);  // there is one for each: the sanitizers see
}

void ExpectEmpty(const NCScale& scale) {
  EXPECT_EQ(scale.GetVariables(), 0);
  ExpectInvariants(scale);
}

StreamAttacks<NCScale> Attacks() {
  StreamAttacks<NCScale> attacks;
  attacks.accepted = ExpectInvariants;
  attacks.refused = ExpectEmpty;
  return attacks;
}

/// Whether a scaling that had other content refuses these bytes and is empty then.
bool IsRefused(const std::string& bytes) {
  NCScale scale(7);
  std::istringstream stream(bytes);
  if (stream >> scale) return false;
  ExpectEmpty(scale);
  return true;
}

TEST(NCScaleStream, ReadsBackWhatItWrote) {
  const NCScale written = FittedScale();
  NCScale read(1);
  std::istringstream stream(StreamOf(written));
  ASSERT_TRUE(stream >> read);
  ExpectEqual(read, written);
  EXPECT_EQ(read.GetVexStreamVersionNumber(), 2);
  EXPECT_EQ(read.GetMyVexStreamVersionNumber(), 2);
}

TEST(NCScaleStream, ReadsBackAScalingWithoutVariables) {
  NCScale read(2);
  std::istringstream stream(StreamOf(NCScale()));
  ASSERT_TRUE(stream >> read);
  ExpectEmpty(read);
}

TEST(NCScaleStream, ReadsVersionOne) {
  const NCScale written = FittedScale();
  NCScale read;
  std::istringstream stream(VersionOneStreamOf(written));
  ASSERT_TRUE(stream >> read);
  ExpectEqual(read, written);
  EXPECT_EQ(read.GetVexStreamVersionNumber(), 1);
}

TEST(NCScaleStream, KeepsTypesOfAnyValue) {
  for (const int type : {-1, 5, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    NCScale written(1);
    written.SetType(1, static_cast<NCScale::Scaling>(type));
    NCScale read;
    std::istringstream stream(StreamOf(written));
    ASSERT_TRUE(stream >> read);
    EXPECT_EQ(static_cast<int>(read.GetScaleType(1)), type);
  }
}

TEST(NCScaleStream, StandsBehindTheObjectAfterItWasRead) {
  std::istringstream stream(StreamOf(FittedScale()) + StreamOf(NCScale(2)));
  NCScale first;
  NCScale second;
  ASSERT_TRUE(stream >> first >> second);
  EXPECT_EQ(first.GetVariables(), 3);
  EXPECT_EQ(second.GetVariables(), 2);
}

TEST(NCScaleStream, EndsTheSharingOfAnAssignedScaling) {
  NCScale original = FittedScale();
  NCScale assigned;
  assigned = original;
  std::istringstream stream(StreamOf(NCScale(5)));
  ASSERT_TRUE(stream >> assigned);
  EXPECT_EQ(assigned.GetVariables(), 5);
  ExpectEqual(original, FittedScale());
}

TEST(NCScaleStream, WritesNothingASecondTimeInOnePass) {
  struct Opened : NCScale {
    using NCScale::VexStreamableReset;
    using NCScale::VexStreamableStartRead;
    using NCScale::VexStreamableStartWrite;
  };
  Opened scale;
  std::ostringstream stream;
  scale.VexStreamableReset();
  EXPECT_TRUE(scale.VexStreamableStartWrite(stream));
  const std::string once = stream.str();
  EXPECT_TRUE(scale.VexStreamableStartWrite(stream));
  EXPECT_EQ(stream.str(), once);
  std::istringstream nothing;
  EXPECT_TRUE(scale.VexStreamableStartRead(nothing)) << "visited already: nothing is read";
}

TEST(NCScaleStream, RefusesFieldsThatDisagreeOrAreNotThere) {
  const NCDataVector<float> two(2, 1.0F);
  const NCDataVector<float> three(3, 1.0F);
  const std::vector<int> types = {1, 2, 3};
  EXPECT_TRUE(IsRefused(StreamOf(Directory{two, three, types}))) << "fewer centres than factors";
  EXPECT_TRUE(IsRefused(StreamOf(Directory{three, two, types}))) << "fewer factors than centres";
  EXPECT_TRUE(IsRefused(StreamOf(Directory{three, three, {1, 2}}))) << "fewer types than variables";
  for (unsigned short entries = 0; entries < 3; ++entries)
    EXPECT_TRUE(IsRefused(StreamOf(Directory{three, three, types, entries}))) << "no entry " << entries;
  EXPECT_FALSE(IsRefused(StreamOf(Directory{three, three, types})));
}

TEST(NCScaleStream, RefusesVersionsThatItDoesNotKnow) {
  for (const short version : {0, 3, -1}) {
    SCOPED_TRACE(version);
    const NCDataVector<float> one(1, 1.0F);
    EXPECT_TRUE(IsRefused(StreamOf(Directory{one, one, {1}, 3, version})));
  }
}

TEST(NCScaleStream, LeavesTheObjectAsItIsWhenTheMagicIsAnothers) {
  NCScale scale = FittedScale();
  std::ostringstream other;
  VexStreamableData(2, "NCT").Write(other);
  std::istringstream stream(other.str());
  EXPECT_FALSE(stream >> scale);
  ExpectEqual(scale, FittedScale());
}

TEST(NCScaleStream, SurvivesACutAtEveryByte) {
  Attacks().EveryCut(StreamOf(FittedScale()));
  Attacks().EveryCut(VersionOneStreamOf(FittedScale()));
}

TEST(NCScaleStream, SurvivesEveryTurnedBit) {
  Attacks().EveryBitFlip(StreamOf(FittedScale()));
  Attacks().EveryBitFlip(VersionOneStreamOf(FittedScale()));
}

TEST(NCScaleStream, SurvivesEveryLieAboutANumber) {
  Attacks().EveryNumber(StreamOf(FittedScale()));
  Attacks().EveryNumber(VersionOneStreamOf(FittedScale()));
}

}  // namespace
