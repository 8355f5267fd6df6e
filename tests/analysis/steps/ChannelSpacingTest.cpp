// The distance of channels that the names of their columns tell.

#include <gtest/gtest.h>

#include <ctime>

#include "kalmia/analysis/steps/internal/ChannelSpacing.h"

namespace {

using kalmia::analysis::ChannelSpacing;
using Names = std::vector<std::string>;

TEST(ChannelSpacing, IsThatOfTheNumbersInTheNames) {
  EXPECT_EQ(ChannelSpacing({"900nm", "902nm", "904nm"}), 2.0);
  EXPECT_EQ(ChannelSpacing({"x1", "x2", "x3", "x4"}), 1.0);
  EXPECT_EQ(ChannelSpacing({"1100.5", "1101", "1101.5"}), 0.5);
  EXPECT_EQ(ChannelSpacing({"-10", "-5", "0", "5"}), 5.0);
  EXPECT_EQ(ChannelSpacing({"7", "9"}), 2.0);
}

TEST(ChannelSpacing, ReadsPointsAndExponentsAsTheCellsOfATableHaveThem) {
  EXPECT_EQ(ChannelSpacing({"1e3", "2e3", "3e3", "4e3"}), 1000.0);
  EXPECT_EQ(ChannelSpacing({"1.0E+03Hz", "1.1E+03Hz", "1.2E+03Hz"}), 100.0);
  EXPECT_EQ(ChannelSpacing({"5e-1", "1", "15e-1"}), 0.5);
  EXPECT_EQ(ChannelSpacing({".25", ".5", ".75"}), 0.25);
  EXPECT_EQ(ChannelSpacing({"wl .25", "wl .5", "wl .75"}), 0.25);
  EXPECT_EQ(ChannelSpacing({"5.", "6.", "7."}), 1.0);
  EXPECT_EQ(ChannelSpacing({"x.8", "x.9", "x.10", "x.11"}), 1.0);  // behind a word a point is none
  EXPECT_EQ(ChannelSpacing({"nm..8", "nm..9", "nm..10"}), 1.0);
  EXPECT_EQ(ChannelSpacing({"1em", "2em"}), 1.0);
}

TEST(ChannelSpacing, TakesACommaForAPointInTablesThatHaveCommas) {
  const Names names = {"900,0 nm", "900,5 nm", "901,0 nm"};
  EXPECT_EQ(ChannelSpacing(names, true), 0.5);
  EXPECT_EQ(ChannelSpacing(names, false), std::nullopt);
  EXPECT_EQ(ChannelSpacing({"1,000", "1,002", "1,004"}, false), 2.0);
}

TEST(ChannelSpacing, TakesASignWhereNoLetterOrDigitStandsBeforeIt) {
  EXPECT_EQ(ChannelSpacing({"wl -5", "wl -4", "wl -3"}), 1.0);
  EXPECT_EQ(ChannelSpacing({"wl -1", "wl 0", "wl 1"}), 1.0);
  EXPECT_EQ(ChannelSpacing({"(-.5)", "(0)", "(+.5)"}), 0.5);
  EXPECT_EQ(ChannelSpacing({"x-5", "x-4", "x-3"}), -1.0);
  EXPECT_EQ(ChannelSpacing({"\u03BB-5", "\u03BB-4", "\u03BB-3"}), -1.0);
  EXPECT_EQ(ChannelSpacing({"2020-05", "2020-06", "2020-07"}), 1.0);
}

TEST(ChannelSpacing, IsThatOfTheNumberThatDiffers) {
  EXPECT_EQ(ChannelSpacing({"t1_900", "t1_902", "t1_904"}), 2.0);
  EXPECT_EQ(ChannelSpacing({"900nm_1", "902nm_1", "904nm_1"}), 2.0);
  EXPECT_EQ(ChannelSpacing({"1_900", "2_902", "3_904"}), std::nullopt);
}

TEST(ChannelSpacing, IsExactForLongNumbers) {
  EXPECT_EQ(ChannelSpacing({"1700000000", "1700000060", "1700000120"}), 60.0);
  EXPECT_EQ(ChannelSpacing({"20000001", "20000002", "20000003", "20000004"}), 1.0);
}

TEST(ChannelSpacing, IsReadInATimeThatGrowsWithTheLengthOfTheNames) {
  std::string numbers;
  for (int i = 0; i < 300000; ++i) numbers += "1 ";
  const std::clock_t begin = std::clock();
  EXPECT_EQ(ChannelSpacing({numbers + "1", numbers + "2", numbers + "3"}), 1.0);
  EXPECT_LT(std::clock() - begin, 20 * CLOCKS_PER_SEC);  // a fraction of a second; minutes if it grew with the square
}

TEST(ChannelSpacing, IsNegativeWhereTheNumbersFall) {
  EXPECT_EQ(ChannelSpacing({"4000 1/cm", "3998 1/cm", "3996 1/cm"}), -2.0);
  EXPECT_EQ(ChannelSpacing({"w4000", "w3998", "w3996"}), -2.0);
}

TEST(ChannelSpacing, AllowsForNamesThatAreRounded) {
  EXPECT_EQ(ChannelSpacing({"4000", "3996", "3992", "3988", "3985", "3981"}), -3.8);  // each 3.86 from the next
  EXPECT_EQ(ChannelSpacing({"0", "0.33", "0.67", "1"}), 1.0 / 3.0);
  EXPECT_EQ(ChannelSpacing({"10", "21", "31"}), std::nullopt);
  EXPECT_EQ(ChannelSpacing({"100", "201", "301"}), 100.5);
}

TEST(ChannelSpacing, TakesFewNamesOfFewUnitsForUnequalNotForRounded) {
  EXPECT_EQ(ChannelSpacing({"1", "3", "6"}), std::nullopt);
  EXPECT_EQ(ChannelSpacing({"1", "5", "10"}), std::nullopt);
  EXPECT_EQ(ChannelSpacing({"0", "4", "9", "13"}), std::nullopt);
  EXPECT_EQ(ChannelSpacing({"0", "4", "9", "13", "17", "22", "26"}), 26.0 / 6.0);
}

TEST(ChannelSpacing, ReadsTheMinusOfTypesettersAsThatOfKeyboards) {
  EXPECT_EQ(ChannelSpacing({"\u22125", "\u22124", "\u22123"}), 1.0);
  EXPECT_EQ(ChannelSpacing({"wl \u22120,5", "wl 0", "wl 0,5"}, true), 0.5);
  EXPECT_EQ(ChannelSpacing({"x\u22125", "x\u22124", "x\u22123"}), -1.0);
}

TEST(ChannelSpacing, IsNoneWhereNumbersAreMissingUnequalOrElsewhere) {
  for (const Names& names : std::vector<Names>{{"900nm", "902nm", "904nm", "908nm"},
                                               {"900nm", "902nm", "906nm", "908nm"},
                                               {"900", "904", "906", "908", "910", "912"},
                                               {"1", "2", "4"},
                                               {"1", "2", "4", "5"},
                                               {"100", "1000", "10000"},
                                               {"900nm", "902nm", "904"},
                                               {"a900", "b902", "a904"},
                                               {"low", "middle", "high"},
                                               {"1", "1.1.2", "3"},
                                               {"1.2.2020", "1.3.2020", "1.4.2020"},
                                               {"...1", "...2.3.4"},
                                               {"1e300", "2e300", "3e300"},
                                               {"-1e308", "1e308"},
                                               {"1e-300", "2e-300"},
                                               {"1e999", "2e999"},
                                               {"5x", "5y", "5z"},
                                               {"5", "5"},
                                               {"900"},
                                               {}}) {
    EXPECT_EQ(ChannelSpacing(names), std::nullopt) << (names.empty() ? "" : names.front()) << ' ' << names.size();
  }
}

}  // namespace
