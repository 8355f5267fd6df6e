// The distance of channels that the names of their columns tell.

#include <gtest/gtest.h>

#include "app/ChannelSpacing.h"

namespace {

using kalmia::app::ChannelSpacing;
using Names = std::vector<std::string>;

TEST(ChannelSpacing, IsThatOfTheNumbersInTheNames) {
  EXPECT_EQ(ChannelSpacing({"900nm", "902nm", "904nm"}), 2.0);
  EXPECT_EQ(ChannelSpacing({"x1", "x2", "x3", "x4"}), 1.0);
  EXPECT_EQ(ChannelSpacing({"1100.5", "1101", "1101.5"}), 0.5);
  EXPECT_EQ(ChannelSpacing({"-10", "-5", "0", "5"}), 5.0);
  EXPECT_EQ(ChannelSpacing({"7", "9"}), 2.0);
}

TEST(ChannelSpacing, IsNegativeWhereTheNumbersFall) {
  EXPECT_EQ(ChannelSpacing({"4000 1/cm", "3998 1/cm", "3996 1/cm"}), -2.0);
  EXPECT_EQ(ChannelSpacing({"w4000", "w3998", "w3996"}), -2.0);
}

TEST(ChannelSpacing, AllowsForNamesThatAreRounded) {
  EXPECT_EQ(ChannelSpacing({"4000", "3996", "3992", "3988", "3985", "3981"}), -3.8);  // each 3.86 from the next
  EXPECT_EQ(ChannelSpacing({"0", "0.33", "0.67", "1"}), 1.0 / 3.0);
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
                                               {"5x", "5y", "5z"},
                                               {"5", "5"},
                                               {"900"},
                                               {}}) {
    EXPECT_EQ(ChannelSpacing(names), std::nullopt) << (names.empty() ? "" : names.front()) << ' ' << names.size();
  }
}

}  // namespace
