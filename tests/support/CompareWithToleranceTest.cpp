#include "kalmia/support/CompareWithTolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

TEST(CompareWithTolerance, ScalesWithTheBinaryExponentOfTheLarger) {
  // 1 = 0.5 * 2^1, so the tolerance counts twice; 0.75 = 0.75 * 2^0; 1024 = 0.5 * 2^11.
  EXPECT_EQ(CompareWithTolerance(1.0, 1.0 - 0.25, 0.125), 0);
  EXPECT_EQ(CompareWithTolerance(1.0, 1.0 - 0.26, 0.125), 1);
  EXPECT_EQ(CompareWithTolerance(0.75, 0.75 - 0.125, 0.125), 0);
  EXPECT_EQ(CompareWithTolerance(0.75, 0.75 - 0.126, 0.125), 1);
  EXPECT_EQ(CompareWithTolerance(1024.0, 1024.0 - 256.0, 0.125), 0);
  EXPECT_EQ(CompareWithTolerance(1024.0, 1024.0 - 257.0, 0.125), 1);
}

TEST(CompareWithTolerance, TakesTheLargerMagnitudeWhateverItsSign) {
  EXPECT_EQ(CompareWithTolerance(-1024.0, -768.0, 0.125), 0);
  EXPECT_EQ(CompareWithTolerance(-1024.0, -767.0, 0.125), -1);
  EXPECT_EQ(CompareWithTolerance(-767.0, -1024.0, 0.125), 1);
  EXPECT_EQ(CompareWithTolerance(3.0, -4.0, 1.0), 0);  // 4 = 0.5 * 2^3: anything within 8
}

TEST(CompareWithTolerance, HoldsZerosToTheToleranceItself) {
  EXPECT_EQ(CompareWithTolerance(0.0, 0.0, 0.1), 0);
  EXPECT_EQ(CompareWithTolerance(0.0, -0.0, 0.0), 0);
  EXPECT_EQ(CompareWithTolerance(1e-300, 0.0, 1e-7), 1) << "a tiny number is far above 0, relatively";
  EXPECT_EQ(CompareWithTolerance(0.0, 1e-300, 1e-7), -1);
}

TEST(CompareWithTolerance, TellsNeighboursApartWithoutATolerance) {
  const double next = std::nextafter(1.0, 2.0);
  EXPECT_EQ(CompareWithTolerance(next, 1.0, 0.0), 1);
  EXPECT_EQ(CompareWithTolerance(1.0, next, 0.0), -1);
  EXPECT_EQ(CompareWithTolerance(1.0, next, std::numeric_limits<double>::epsilon()), 0);
}

TEST(CompareWithTolerance, PutsInfinitiesBeyondEveryNumber) {
  const double infinity = std::numeric_limits<double>::infinity(), largest = std::numeric_limits<double>::max();
  EXPECT_EQ(CompareWithTolerance(infinity, largest, 0.1), 1);
  EXPECT_EQ(CompareWithTolerance(largest, infinity, 0.1), -1);
  EXPECT_EQ(CompareWithTolerance(-infinity, 0.0, 0.1), -1);
  EXPECT_EQ(CompareWithTolerance(infinity, -infinity, 0.1), 1);
  EXPECT_EQ(CompareWithTolerance(-infinity, infinity, 0.1), -1);
  EXPECT_EQ(CompareWithTolerance(infinity, infinity, 0.1), 0);
  EXPECT_EQ(CompareWithTolerance(-infinity, -infinity, 0.0), 0);
}

TEST(CompareWithTolerance, WorksUpToTheEndOfTheRange) {
  const double largest = std::numeric_limits<double>::max();  // just below 1 * 2^1024
  EXPECT_EQ(CompareWithTolerance(largest, -largest, 0.125), 1) << "their difference is beyond the range";
  EXPECT_EQ(CompareWithTolerance(-largest, largest, 0.125), -1);
  EXPECT_EQ(CompareWithTolerance(largest, largest - 0x1p1020, 0.125), 0) << "2^1020 is within 2^1021";
  EXPECT_EQ(CompareWithTolerance(largest, largest - 0x1p1022, 0.125), 1);
  EXPECT_EQ(CompareWithTolerance(largest, -largest, 1.0), 0) << "a delta of 2^1024 is beyond the range itself";
}

TEST(CompareWithTolerance, FindsANaNNeitherAboveNorBelow) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(CompareWithTolerance(nan, 1.0, 0.1), 0);
  EXPECT_EQ(CompareWithTolerance(1.0, nan, 0.1), 0);
}

TEST(CompareWithTolerance, HasNoLowerEnd) {
  const double tiniest = std::numeric_limits<double>::denorm_min();  // 0.5 * 2^-1073
  EXPECT_EQ(CompareWithTolerance(tiniest, 0.0, 0.5), 0) << "half of 2^-1073 is the tiniest number itself";
  EXPECT_EQ(CompareWithTolerance(tiniest, 0.0, 0.25), 1) << "a quarter of it is 0";
  EXPECT_EQ(CompareWithTolerance(0.0, tiniest, 0.25), -1);
}

TEST(CompareWithTolerance, FindsEqualNumbersAboveEachOtherWithANegativeTolerance) {
  EXPECT_EQ(CompareWithTolerance(1.0, 1.0, -0.125), 1);
  EXPECT_EQ(CompareWithTolerance(1.0, 2.0, -0.125), -1);
}

}  // namespace
