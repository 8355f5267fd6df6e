#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "kalmia/support/ConfigurationSection.h"
#include "signal/Transforms.h"
#include "testing/StreamAttacks.h"

namespace {

using T = TransformE;

/// Settings that keep what they are told, and in which order.
class Settings : public ConfigurationSection {
 public:
  void SetInteger(const char* key, int value) override {
    calls.push_back(std::string("set ") + key);
    integers[key] = value;
  }
  void SetFloatArray(const char* key, const float* values, int length) override {
    calls.push_back(std::string("set ") + key);
    arrays[key].assign(values, values + length);
  }
  int GetInteger(const char* key) override {
    calls.push_back(std::string("get ") + key);
    return integers.at(key);
  }
  void GetFloatArray(const char* key, float* values, int length) override {
    calls.push_back(std::string("get ") + key);
    std::memcpy(values, arrays.at(key).data(), static_cast<std::size_t>(length) * sizeof(float));
  }

  std::vector<std::string> calls;
  std::map<std::string, int> integers;
  std::map<std::string, std::vector<float>> arrays;
};

TransformStruct Power() { return TransformOf(T::TransformPower, 2, 3, 4, 1); }

NCTransform TwoColumns() {
  NCTransform transform(2);
  transform[1] = TransformOf(T::TransformLog, 2, -3, -99, 8);
  transform[2] = Power();
  return transform;
}

/// A TransformStruct with so many entries, of this version, with so many constants.
std::string StructStream(unsigned short entries, short version = 1, int constants = 4, int typeBytes = 2) {
  std::ostringstream stream;
  VexStreamableData(version, "TS").Write(stream);
  OutputStreamDirectory directory(stream, 2);
  const short type = T::TransformLog;
  const float numbers[] = {1, 2, 3, 4};
  if (entries & 1) WriteBytes(&type, typeBytes, directory.GetOutput(0));
  if (entries & 2) WriteFourBytes(numbers, constants, directory.GetOutput(1));
  directory.Close();
  return stream.str();
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

/// What a reading of these bytes throws; "" if nothing.
template <class Object>
std::string ErrorOf(const std::string& bytes, Object& object) try {
  std::istringstream stream(bytes);
  stream >> object;
  return "";
} catch (const VexStreamError& error) {
  return static_cast<const char*>(error.GetMessage());
}

bool IsRefused(const std::string& bytes) {
  NCTransform transform(7);
  std::istringstream stream(bytes);
  if (stream >> transform) return false;
  ExpectEmpty(transform);
  return true;
}

TEST(TransformStructSettings, SavesAndLoadsKindAndConstantsInThisOrder) {
  Settings settings;
  Power().Save(&settings);
  EXPECT_EQ(settings.calls, (std::vector<std::string>{"set TransformType", "set Constants"}));
  EXPECT_EQ(settings.integers["TransformType"], 7);
  EXPECT_EQ(settings.arrays["Constants"], (std::vector<float>{1, 2, 3, 4}));

  settings.calls.clear();
  TransformStruct loaded;
  loaded.Load(&settings);
  EXPECT_EQ(settings.calls, (std::vector<std::string>{"get TransformType", "get Constants"}));
  EXPECT_TRUE(loaded == Power());
}

TEST(TransformStructStream, ReadsBackWhatItWrote) {
  TransformStruct read;
  std::istringstream stream(StreamOf(Power()));
  ASSERT_TRUE(stream >> read);
  EXPECT_TRUE(read == Power());
  EXPECT_EQ(read.GetVexStreamVersionNumber(), 1);
  EXPECT_EQ(read.GetMyVexStreamVersionNumber(), 1);
}

TEST(TransformStructStream, HasTheKindInTwoBytesAndFourConstants) {
  std::istringstream stream(StreamOf(Power()));
  VexStreamableData record(0, "TS");
  ASSERT_TRUE(record.Check(stream));
  EXPECT_EQ(record.GetVexStreamVersionNumber(), 1);
  InputStreamDirectory directory(stream);
  ASSERT_NE(directory.GetInput(0), nullptr);
  ASSERT_NE(directory.GetInput(1), nullptr);
  EXPECT_EQ(directory.GetInput(2), nullptr);
  EXPECT_EQ(kalmia::BytesLeft(*directory.GetInput(0)), 2);
  EXPECT_EQ(kalmia::BytesLeft(*directory.GetInput(1)), 16);
  short type = 0;
  float constants[4] = {};
  ASSERT_TRUE(ReadTwoBytes(&type, 1, *directory.GetInput(0)));
  ASSERT_TRUE(ReadFourBytes(constants, 4, *directory.GetInput(1)));
  EXPECT_EQ(type, 7);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(constants[i], i + 1.0F);
}

TEST(TransformStructStream, KeepsAKindOfTwoBytesAndDropsALargerOne) {
  const int smallest = std::numeric_limits<int>::min();
  const std::pair<int, int> kinds[] = {{-1, -1},   {8, 8},      {32767, 32767}, {-32768, -32768},
                                       {32768, 0}, {-32769, 0}, {65538, 0},     {smallest, 0}};
  for (const auto& [written, expected] : kinds) {
    TransformStruct read;
    std::istringstream stream(StreamOf(TransformOf(T::Transform(written), 1, 2)));
    ASSERT_TRUE(stream >> read);
    EXPECT_EQ(static_cast<int>(read.GetTransform()), expected) << written;
  }
}

TEST(TransformStructStream, SaysWhatIsWanting) {
  const TransformStruct before = Power();
  TransformStruct transform = before;
  EXPECT_EQ(ErrorOf(StructStream(/*entries=*/2), transform), "ReadFromStreamDir failed");
  EXPECT_EQ(ErrorOf(StructStream(/*entries=*/1), transform), "ReadFromStreamDir failed");
  EXPECT_EQ(ErrorOf(StructStream(3, 1, /*constants=*/4, /*typeBytes=*/1), transform), "ReadFromStreamDir failed");
  EXPECT_EQ(ErrorOf(StructStream(3, 1, /*constants=*/3), transform), "Error when reading from stream");
  EXPECT_TRUE(transform == before) << "a refused read changes nothing";
  EXPECT_EQ(ErrorOf(StructStream(3), transform), "");
  EXPECT_TRUE(transform == TransformOf(T::TransformLog, 2, 3, 4, 1));
}

TEST(TransformStructStream, RefusesVersionsThatItDoesNotKnow) {
  for (const short version : {0, 2, -1}) {
    TransformStruct transform = Power();
    std::istringstream stream(StructStream(3, version));
    EXPECT_FALSE(stream >> transform) << version;
    EXPECT_TRUE(transform == Power());
  }
}

TEST(TransformStructStream, SurvivesAttacks) {
  StreamAttacks<TransformStruct> attacks;
  attacks.mayThrow = true;
  attacks.EveryCut(StreamOf(Power()));
  attacks.EveryBitFlip(StreamOf(Power()));
  attacks.EveryNumber(StreamOf(Power()));
}

TEST(TransformStructOldRead, ReadsKindAndThreeConstants) {
  std::ostringstream old;
  const int type = T::TransformExp;
  const float constants[] = {5, 6, 7};
  WriteFourBytes(&type, 1, old);
  WriteFourBytes(constants, 3, old);
  TransformStruct transform = Power();
  std::istringstream stream(old.str() + "rest");
  EXPECT_EQ(&transform.OldRead(stream), &stream);
  EXPECT_TRUE(stream);
  EXPECT_TRUE(transform == TransformOf(T::TransformExp, 5, 6, 7, /*unread=*/1));
  EXPECT_EQ(kalmia::BytesLeft(stream), 4);
}

TEST(TransformStructOldRead, ChangesNothingWhereTheStreamEndsTooEarly) {
  for (const std::size_t length : {0U, 3U, 4U, 15U}) {
    TransformStruct transform = Power();
    std::istringstream stream(std::string(length, '\1'));
    EXPECT_FALSE(transform.OldRead(stream)) << length;
    EXPECT_TRUE(transform == Power()) << length;
  }
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
