#include "app/Plot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace kalmia::app {
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

TEST(EdgeTicks, StayShortForNumbersOfAnySize) {
  EXPECT_THAT(EdgeLabels(0, 1e20, 2, 600), ElementsAre("0", "1e+20", "2e+20"));
  EXPECT_THAT(EdgeLabels(0, 1e-20, 1, 600), ElementsAre("0", "1e-20"));
}

TEST(SvgText, IsCutWhereItMightNotFitAndNeverWithinALetter) {
  EXPECT_EQ(Svg::Fitting("diameter", 600, Svg::Font::Axis), "diameter");
  const std::string cut = Svg::Fitting(std::string(200, 'x'), 300, Svg::Font::Axis);
  EXPECT_LE(Svg::WidthOf(cut, Svg::Font::Axis), 300);
  EXPECT_EQ(cut.substr(cut.size() - 3), "...");
  std::string umlauts;
  for (int i = 0; i < 200; ++i) umlauts += "\xC3\xA4";
  const std::string shorter = Svg::Fitting(umlauts, 300, Svg::Font::Axis);
  EXPECT_EQ((shorter.size() - 3) % 2, 0U);
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

}  // namespace
}  // namespace kalmia::app
