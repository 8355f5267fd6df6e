#include "kalmia/analysis/figure/internal/Plot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> Labels(double low, double high, int count, bool whole = false) {
  std::vector<std::string> labels;
  for (const Tick& tick : RoundTicks(low, high, count, whole)) labels.push_back(tick.label);
  return labels;
}

TEST(RoundTicks, AreRoundNumbersWithEquallyManyDecimals) {
  EXPECT_THAT(Labels(0, 1, 5), ElementsAre("0.0", "0.2", "0.4", "0.6", "0.8", "1.0"));
  EXPECT_THAT(Labels(-0.07, 0.07, 4), ElementsAre("-0.05", "0.00", "0.05"));
  EXPECT_THAT(Labels(11.97, 12.04, 6), ElementsAre("11.98", "12.00", "12.02", "12.04"));
  EXPECT_THAT(Labels(0, 178, 4), ElementsAre("0", "50", "100", "150"));
}

TEST(RoundTicks, OfCountsAreWhole) {
  EXPECT_THAT(Labels(0.5, 3.5, 8, /*whole=*/true), ElementsAre("1", "2", "3"));
  EXPECT_THAT(Labels(0, 1.05, 8, /*whole=*/true), ElementsAre("0", "1"));
}

TEST(RoundTicks, StayShortForNumbersOfAnySize) {
  EXPECT_THAT(Labels(0, 2e20, 2), ElementsAre("0", "1e+20", "2e+20"));
  EXPECT_THAT(Labels(0, 2e-20, 2), ElementsAre("0", "1e-20", "2e-20"));
}

TEST(RoundTicks, LieWithinTheAxisAndAreNeitherNoneNorTooMany) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> exponent(-30, 30), place(-1, 1);
  for (int i = 0; i < 2000; ++i) {
    const double size = std::pow(10.0, exponent(random)), low = place(random) * size;
    const double high = low + size * (1 + place(random)) / 2 + size * 1e-6;
    const std::vector<Tick> ticks = RoundTicks(low, high, 5, false);
    SCOPED_TRACE(::testing::PrintToString(std::make_pair(low, high)));
    // Steps are at least a fifth of the axis and less than half of it, so that two fit or one at the least.
    EXPECT_GE(ticks.size(), 1U);
    EXPECT_LE(ticks.size(), 6U);
    for (const Tick& tick : ticks) {
      EXPECT_GE(tick.value, low);
      EXPECT_LE(tick.value, high);
    }
  }
}

std::vector<std::string> EdgeLabels(double low, double width, int bins, double pixels) {
  std::vector<std::string> labels;
  for (const Tick& tick : EdgeTicks(low, width, bins, pixels)) labels.push_back(tick.label);
  return labels;
}

TEST(EdgeTicks, StandAtEveryEdgeWhileThereIsRoom) {
  EXPECT_THAT(EdgeLabels(1, 2.5, 4, 600), ElementsAre("1.0", "3.5", "6.0", "8.5", "11.0"));
  EXPECT_THAT(EdgeLabels(6.7, 0.065, 2, 600), ElementsAre("6.700", "6.765", "6.830"));
  EXPECT_THAT(EdgeLabels(-5, 5, 2, 600), ElementsAre("-5", "0", "5"));
}

TEST(EdgeTicks, SkipEdgesInStepsOfOneTwoOrFive) {
  EXPECT_THAT(EdgeLabels(0, 1, 100, 300), ElementsAre("0", "20", "40", "60", "80", "100"));
  for (const int bins : {1, 7, 60, 999, 100000}) {
    const std::vector<Tick> ticks = EdgeTicks(0, 1, bins, 600);
    EXPECT_GE(ticks.size(), 2U) << bins;
    EXPECT_LE(ticks.size(), 40U) << bins;
    for (const Tick& tick : ticks) EXPECT_EQ(tick.value, std::round(tick.value));
  }
}

TEST(EdgeTicks, AreRoundWhereverTheBinsBegin) {
  EXPECT_THAT(EdgeLabels(2.65e-14, 1e-6, 3, 600), ElementsAre("0.000000", "0.000001", "0.000002", "0.000003"));
  EXPECT_THAT(EdgeLabels(-3e-9, 1e-9, 4, 600), ElementsAre("-3e-09", "-2e-09", "-1e-09", "0", "1e-09"));
  EXPECT_THAT(EdgeLabels(6.7, 1, 2, 600), ElementsAre("6.7", "7.7", "8.7"));
}

TEST(EdgeTicks, StayShortForNumbersOfAnySize) {
  EXPECT_THAT(EdgeLabels(0, 1e20, 2, 600), ElementsAre("0", "1e+20", "2e+20"));
  EXPECT_THAT(EdgeLabels(0, 1e-20, 1, 600), ElementsAre("0", "1e-20"));
}

/// Advance widths of Helvetica in thousandths of an em, as its font metrics publish them.
struct Letter {
  const char* text;
  double width;
};
const Letter kHelvetica[] = {{"W", 944}, {"M", 833}, {"m", 833}, {"i", 222}, {"5", 556},  {"%", 889}, {"@", 1015},
                             {"a", 556}, {"O", 778}, {".", 278}, {" ", 278}, {"w", 722},  {"t", 278}, {"J", 500},
                             {"A", 667}, {"-", 333}, {"+", 584}, {"r", 333}, {"\xC3\x84", 667}};

std::string Repeated(const std::string& text, int count) {
  std::string repeated;
  for (int i = 0; i < count; ++i) repeated += text;
  return repeated;
}

TEST(SvgText, IsCutToFitWhateverItsLetters) {
  for (const Letter& letter : kHelvetica) {
    SCOPED_TRACE(letter.text);
    const std::string text = Repeated(letter.text, 2000), cut = Svg::Fitting(text, 300, Svg::Font::Axis);
    ASSERT_EQ(cut.substr(cut.size() - 3), "...");
    const std::size_t bytes = cut.size() - 3, size = std::string(letter.text).size();
    EXPECT_EQ(bytes % size, 0U);  // never within a letter
    const double drawn = (static_cast<double>(bytes / size) * letter.width + 3 * 278) * 12 / 1000;
    EXPECT_LE(drawn, 300);
    EXPECT_GE(drawn, 150);  // nor far too short
  }
  EXPECT_EQ(Svg::Fitting("diameter", 600, Svg::Font::Axis), "diameter");
}

TEST(ValueRange, GrowsToFiniteValuesAloneAndWidensOnBothSides) {
  ValueRange range = {1, 2};
  range.Include(5);
  range.Include(-1);
  range.Include(std::numeric_limits<double>::quiet_NaN());
  range.Include(std::numeric_limits<double>::infinity());
  EXPECT_EQ(range.low, -1);
  EXPECT_EQ(range.high, 5);
  range.Widen(0.5);
  EXPECT_EQ(range.low, -4);
  EXPECT_EQ(range.high, 8);
}

TEST(ValueRange, OfOneValueGetsRoomAroundIt) {
  ValueRange zero = {0, 0}, hundred = {100, 100};
  zero.Widen(0.1);
  hundred.Widen(0.1);
  EXPECT_EQ(zero.low, -1);
  EXPECT_EQ(zero.high, 1);
  EXPECT_EQ(hundred.low, 90);
  EXPECT_EQ(hundred.high, 110);
}

TEST(XmlText, EscapesMarkupControlCharactersAndBytesThatAreNoUtf8) {
  EXPECT_EQ(XmlText("a<b>&\"c\""), "a&lt;b&gt;&amp;&quot;c&quot;");
  EXPECT_EQ(XmlText("a\x1b\n"), "a\\x1b\\n");
  EXPECT_EQ(XmlText("m\xC3\xA4"), "m\xC3\xA4");
  EXPECT_EQ(XmlText("\xE4"), "\xEF\xBF\xBD");
}

TEST(XmlText, HasNoCharactersThatXmlDoesNotKnow) {
  EXPECT_EQ(XmlText("a\xEF\xBF\xBE" "b\xEF\xBF\xBF"), "a\xEF\xBF\xBD" "b\xEF\xBF\xBD");
}

}  // namespace
}  // namespace kalmia::analysis
