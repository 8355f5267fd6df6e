#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {
namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();

TEST(Fixed, HasItsDecimalsAndNoNegativeZero) {
  EXPECT_EQ(Fixed(1.25, 4), "1.2500");
  EXPECT_EQ(Fixed(-0.00001, 4), "0.0000");
  EXPECT_EQ(Fixed(-0.5, 1), "-0.5");
  EXPECT_EQ(Fixed(kNone, 2), "-");
  EXPECT_EQ(Fixed(std::numeric_limits<double>::infinity(), 2, "none"), "none");
}

TEST(Significant, HasItsDigitsWhereverThePointIs) {
  EXPECT_EQ(Significant(0.18423, 5), "0.18423");
  EXPECT_EQ(Significant(0.197, 5), "0.19700");
  EXPECT_EQ(Significant(85.0, 6), "85.0000");
  EXPECT_EQ(Significant(-123456.7, 6), "-123457");
  EXPECT_EQ(Significant(0.0, 4), "0.000");
  EXPECT_EQ(Significant(1.5e-7, 3), "1.50e-07");
  EXPECT_EQ(Significant(2e12, 3), "2.00e+12");
  EXPECT_EQ(Significant(kNone, 3), "-");
}

TEST(Shortest, BringsTheSameValueBackWithTheFewestDigits) {
  EXPECT_EQ(Shortest(0.1), "0.1");
  EXPECT_EQ(Shortest(0.1F), "0.1");
  EXPECT_EQ(Shortest(static_cast<double>(0.1F)), "0.10000000149011612");
  EXPECT_EQ(Shortest(kNone), "");
}

TEST(ShortestDouble, IsTheDoubleThatAFloatsTextNames) {
  EXPECT_EQ(ShortestDouble(0.05F), 0.05);
  EXPECT_EQ(ShortestDouble(-1.0F), -1.0);
  EXPECT_EQ(static_cast<float>(ShortestDouble(0.7F)), 0.7F);
  EXPECT_TRUE(std::isnan(ShortestDouble(std::numeric_limits<float>::quiet_NaN())));
}

}  // namespace
}  // namespace kalmia::analysis
