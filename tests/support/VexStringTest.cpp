#include "kalmia/support/VexString.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

TEST(VexString, PrintsIntoABufferAndCounts) {
  char buffer[64];
  EXPECT_EQ(VexString::lsprintf(buffer, "round %d of %d", 3, 7), 12);
  EXPECT_STREQ(buffer, "round 3 of 7");
}

TEST(VexString, TakesEveryDecimalNumber) {
  struct Number {
    const char* text;
    float value;
  };
  const Number numbers[] = {{"0", 0},          {"10", 10},        {"-3", -3},          {"+4", 4},
                            {"1.5", 1.5f},     {".5", .5f},       {"2.", 2},           {"-.25", -.25f},
                            {"1e3", 1000},     {"1E3", 1000},     {"1.5e-3", 1.5e-3f}, {"1e+3", 1000},
                            {"007", 7},        {"0.1", 0.1f},     {"3.4028235e38", std::numeric_limits<float>::max()},
                            {"1e-45", std::numeric_limits<float>::denorm_min()},
                            {"16777217", 16777216}};
  for (const Number& number : numbers) {
    SCOPED_TRACE(number.text);
    float value = -1;
    EXPECT_TRUE(VexString::ToFloat(number.text, value));
    EXPECT_EQ(value, number.value);
  }
}

TEST(VexString, KeepsTheSignOfZero) {
  float value = 1;
  EXPECT_TRUE(VexString::ToFloat("-0", value));
  EXPECT_TRUE(std::signbit(value));
}

TEST(VexString, TakesNothingElseForANumberAndLeavesTheValue) {
  const char* const texts[] = {"",     " ",     "x",   "1x",  "x1",   " 1",   "1 ",   "1 2",  "1,5",    "--1",   "+-1",
                               "-+1",  "+",     "-",   ".",   "e5",   "1e",   "1e+",  "0x10", "inf",    "-inf",  "nan",
                               "-nan", "infinity", "1.2.3", "1e5.0", "1e39", "-1e39", "1e-50", "1e99999", "1e-99999"};
  for (const char* text : texts) {
    SCOPED_TRACE(text);
    float value = 5;
    EXPECT_FALSE(VexString::ToFloat(text, value));
    EXPECT_EQ(value, 5);
  }
  float value = 5;
  EXPECT_FALSE(VexString::ToFloat(nullptr, value));
}

TEST(VexString, ComparesWithoutCase) {
  EXPECT_EQ(VexString::CompareWithoutCase("Alpha", "aLPHA"), 0);
  EXPECT_LT(VexString::CompareWithoutCase("alpha", "BETA"), 0);
  EXPECT_GT(VexString::CompareWithoutCase("BETA", "alpha"), 0);
  EXPECT_LT(VexString::CompareWithoutCase("Alp", "alpha"), 0);
  EXPECT_LT(VexString::CompareWithoutCase("_", "A"), 0) << "between the cases a letter counts as the small one";
  EXPECT_GT(VexString::CompareWithoutCase("\xE4", "z"), 0) << "bytes above 127 are no negative numbers";
  EXPECT_NE(VexString::CompareWithoutCase("\xC4", "\xE4"), 0) << "no other letter has a case";
  EXPECT_EQ(VexString::CompareWithoutCase(nullptr, ""), 0);
}

TEST(VexString, ReadsAPointWhateverTheLocale) {
  const std::string before = std::setlocale(LC_NUMERIC, nullptr);
  // Where the machine has none of these the test still holds, for the locale that it has.
  for (const char* comma : {"de_DE.UTF-8", "sv_SE.UTF-8", "fr_FR.UTF-8"}) std::setlocale(LC_NUMERIC, comma);
  float value = 0;
  EXPECT_TRUE(VexString::ToFloat("1.5", value));
  EXPECT_FALSE(VexString::ToFloat("1,5", value));
  EXPECT_EQ(value, 1.5f);
  std::setlocale(LC_NUMERIC, before.c_str());
}

}  // namespace
