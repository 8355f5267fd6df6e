#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "kalmia/support/ConfigurationSection.h"
#include "signal/TransformStreams.h"
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

TEST(TransformStructSettings, AreNotLoadedByHalves) {
  Settings settings;
  Power().Save(&settings);
  for (const char* missing : {"TransformType", "Constants"}) {
    Settings some = settings;
    some.integers.erase(missing);
    some.arrays.erase(missing);
    TransformStruct transform = TransformOf(T::TransformLog, 5, 6, 7, 8);
    EXPECT_THROW(transform.Load(&some), std::out_of_range) << missing;
    EXPECT_TRUE(transform == TransformOf(T::TransformLog, 5, 6, 7, 8)) << missing;
  }
}

TEST(TransformStructSettings, LeaveConstantsAsTheyAreThatTheSectionDoesNotWrite) {
  struct : Settings {
    void GetFloatArray(const char*, float* values, int) override { values[2] = 9; }
  } settings;
  settings.integers["TransformType"] = T::TransformLog;
  TransformStruct transform = Power();
  transform.Load(&settings);
  EXPECT_TRUE(transform == TransformOf(T::TransformLog, 2, 9, 4, 1));
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

TEST(TransformStructStream, IsNotReadUnderTheMagicOfAnotherClass) {
  TransformStruct transform = Power();
  std::istringstream stream(StreamOf(NCTransform(1)));
  EXPECT_FALSE(stream >> transform);
  EXPECT_TRUE(transform == Power());
}

TEST(TransformStructStream, SurvivesAttacks) {
  StreamAttacks<TransformStruct> attacks;
  const TransformStruct before = TransformOf(T::TransformExp, 6, 7, 8, 5);
  attacks.make = [&before] { return std::make_unique<TransformStruct>(before); };
  attacks.refused = [&before](const TransformStruct& transform) { EXPECT_TRUE(transform == before); };
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

TEST(TransformStructOldRead, TakesAKindThatIsNoneAsItStands) {
  for (const int type : {-1, 8, 70000}) {
    std::ostringstream old;
    const float constants[] = {5, 6, 7};
    WriteFourBytes(&type, 1, old);
    WriteFourBytes(constants, 3, old);
    TransformStruct transform = Power();
    std::istringstream stream(old.str());
    EXPECT_TRUE(transform.OldRead(stream));
    EXPECT_EQ(static_cast<int>(transform.GetTransform()), type);
    ExpectDone(Forward(transform, 3), 3);  // it does nothing
  }
}

TEST(TransformStructOldRead, ChangesNothingWhereTheStreamEndsTooEarly) {
  for (const std::size_t length : {0U, 3U, 4U, 15U}) {
    TransformStruct transform = Power();
    std::istringstream stream(std::string(length, '\1'));
    EXPECT_FALSE(transform.OldRead(stream)) << length;
    EXPECT_TRUE(transform == Power()) << length;
  }
}

}  // namespace
