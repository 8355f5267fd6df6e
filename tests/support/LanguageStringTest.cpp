#include "kalmia/support/LanguageString.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

namespace {

using ::testing::ElementsAre;

/// Every id that the library asks for, with the placeholders that it fills.
struct Role {
  unsigned id;
  int integers;
};
std::vector<Role> Roles() {
  std::vector<Role> roles;
  for (const unsigned id : {10041, 10047, 10123}) roles.push_back({id, 1});
  for (const unsigned id : {10157, 10158, 10163}) roles.push_back({id, 2});
  for (const unsigned id : {10100, 10101, 10124, 10147, 10159, 10160, 10161, 10162, 10165, 10374})
    roles.push_back({id, 0});
  for (unsigned id = 10066; id <= 10074; ++id) roles.push_back({id, 0});
  for (unsigned id = 10087; id <= 10099; ++id) roles.push_back({id, 0});
  for (unsigned id = 10106; id <= 10118; ++id) roles.push_back({id, 0});
  return roles;
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

std::vector<std::string> TextsOf(const VexLanguageStringVector& list) {
  std::vector<std::string> texts;
  for (int i = 0; i < list.Size(); ++i) texts.push_back(list[i]);
  return texts;
}

/// Brings a replaced text back at the end of a test.
struct Restore {
  unsigned id;
  ~Restore() { LanguageString::Set(id, nullptr); }
};

TEST(LanguageString, HasATextWithTheRightPlaceholdersForEveryId) {
  for (const Role& role : Roles()) {
    SCOPED_TRACE(role.id);
    const std::string text = LanguageString::Get(role.id);
    EXPECT_FALSE(text.empty());
    EXPECT_EQ(Count(text, "%d"), role.integers);
    EXPECT_EQ(Count(text, "%"), role.integers) << "placeholders are integers";
  }
}

TEST(LanguageString, IsEmptyForAnIdWithoutAText) {
  for (const unsigned id : {0U, 1U, 10042U, 10105U, 10375U, static_cast<unsigned>(-1), static_cast<unsigned>(-2)})
    EXPECT_STREQ(LanguageString::Get(id), "");
}

TEST(LanguageString, CanBeReplacedAndBroughtBack) {
  const Restore restore{10147};
  const std::string builtIn = LanguageString::Get(10147);
  EXPECT_TRUE(LanguageString::Set(10147, "Avbruten"));
  EXPECT_STREQ(LanguageString::Get(10147), "Avbruten");
  EXPECT_TRUE(LanguageString::Set(10147, nullptr));
  EXPECT_EQ(LanguageString::Get(10147), builtIn);
}

TEST(LanguageString, KeepsEveryTextItGaveOut) {
  const Restore restore{10147};
  const char* builtIn = LanguageString::Get(10147);
  const std::string before = builtIn;
  LanguageString::Set(10147, "first");
  const char* first = LanguageString::Get(10147);
  LanguageString::Set(10147, "second");
  LanguageString::Set(10147, nullptr);
  EXPECT_STREQ(first, "first");
  EXPECT_EQ(builtIn, before);
}

TEST(LanguageString, TakesATextForAnIdThatHasNone) {
  const Restore restore{99999};
  EXPECT_TRUE(LanguageString::Set(99999, "mine"));
  EXPECT_STREQ(LanguageString::Get(99999), "mine");
}

TEST(LanguageString, KeepsTheNumbersOfNoTextWithoutOne) {
  for (const unsigned id : {static_cast<unsigned>(-1), static_cast<unsigned>(-2)}) {
    EXPECT_FALSE(LanguageString::Set(id, "mine"));
    EXPECT_FALSE(LanguageString::Set(id, nullptr));
    EXPECT_STREQ(LanguageString::Get(id), "");
  }
  EXPECT_STREQ(kalmia::TransformFormulas()[1], "");
}

TEST(LanguageString, RefusesATextWithOtherPlaceholders) {
  struct Case {
    unsigned id;
    const char* text;
    bool taken;
  };
  const Case cases[] = {{10041, "Komponent %d", true},
                        {10041, "Komponent %3d, 100 %% klar", true},
                        {10041, "Komponent %i", true},
                        {10041, "Komponent %-+5.3d", true},
                        {10041, "Komponent %99.99d", true},
                        {10041, "Komponent %100d", false},
                        {10041, "Komponent %.100d", false},
                        {10041, "Komponent %999999999d", false},
                        {10041, "Komponent %5.999999999d", false},
                        {10041, "Komponent %000000000005d", true},
                        {10041, "Komponent", false},
                        {10041, "Komponent %d %d", false},
                        {10041, "Komponent %s", false},
                        {10041, "Komponent %f", false},
                        {10041, "Komponent %ld", false},
                        {10041, "Komponent %lld", false},
                        {10041, "Komponent %n", false},
                        {10041, "Komponent %*d", false},
                        {10041, "Komponent %1$d", false},
                        {10041, "Komponent %d %", false},
                        {10041, "", false},
                        {10157, "%d/%d", true},
                        {10157, "%d", false},
                        {10157, "%d/%u", false},
                        {10147, "Stopp, 100 %% sure", true},
                        {10147, "Stopp %d", false},
                        {10147, "Stopp %", false},
                        {99999, "%d", false}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const Restore restore{c.id};
    const std::string before = LanguageString::Get(c.id);
    EXPECT_EQ(LanguageString::Set(c.id, c.text), c.taken);
    EXPECT_EQ(LanguageString::Get(c.id), c.taken ? c.text : before);
  }
}

TEST(VexLanguageStringVector, EndsAtTheZero) {
  const VexLanguageStringVector list(static_cast<unsigned>(-1), static_cast<unsigned>(-2), 10066, 10117, 0);
  EXPECT_THAT(TextsOf(list), ElementsAre("", "", LanguageString::Get(10066), LanguageString::Get(10117)));
  EXPECT_STREQ(list[-1], "");
  EXPECT_STREQ(list[4], "");
  EXPECT_EQ(VexLanguageStringVector(0).Size(), 0);
}

TEST(VexLanguageStringVector, FollowsAReplacedText) {
  const Restore restore{10066};
  LanguageString::Set(10066, "Ingen");
  EXPECT_STREQ(kalmia::ScalingNames()[1], "Ingen");
}

TEST(VexLanguageStringVector, NamesScalingsAndTransformsInTheOrderOfTheirEnumerations) {
  EXPECT_THAT(TextsOf(kalmia::ScalingNames()), ElementsAre("", "None", "Centred", "Pareto", "Unit variance"));
  EXPECT_THAT(TextsOf(kalmia::TransformNames()), ElementsAre("", "None", "Linear", "Logarithm", "Negative logarithm",
                                                             "Logit", "Exponential", "Power"));
  EXPECT_THAT(TextsOf(kalmia::TransformFormulas()),
              ElementsAre("", "", "a*x + b", "log10(a*x + b)", "-log10(a*x + b)", "log10((x - a)/(b - x))",
                          "e^(a*x + b)", "(a*x + b)^c"));
}

TEST(VexLanguageStringVector, NamesWaveletsInTheOrderOfTheirEnumerationsAndEachOnce) {
  EXPECT_THAT(TextsOf(kalmia::DetrendNames()), ElementsAre("None", "Mean removed", "Linear trend removed"));
  const auto wavelets = TextsOf(kalmia::WaveletFunctionNames());
  EXPECT_THAT(wavelets, ElementsAre("Beylkin", "Coiflet", "Daubechies", "Symmlet", "Biorthogonal 1", "Biorthogonal 2",
                                    "Biorthogonal 3", "Biorthogonal 4", "Biorthogonal 5", "Biorthogonal 6"));
  // A family is found again by its name.
  EXPECT_EQ(std::set<std::string>(wavelets.begin(), wavelets.end()).size(), wavelets.size());
}

}  // namespace
