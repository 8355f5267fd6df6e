#include "kalmia/kernels/regression/VectorPath.h"

#include <gtest/gtest.h>

using kalmia::VectorPath;

namespace {

class VectorPathOfFloats : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(kalmia::simd::HasVectorInstructions()); }
};

TEST_F(VectorPathOfFloats, PaysWithoutHoles) {
  EXPECT_TRUE(VectorPath::LanesPayOff<float>(100, 0, 0, 1));
  EXPECT_TRUE(VectorPath::LanesPayOff<float>(0, 0, 0, 1));
}

TEST_F(VectorPathOfFloats, DoesNotPayWithStridesOfTwoToFour) {
  for (int stride : {2, 3, 4}) EXPECT_FALSE(VectorPath::LanesPayOff<float>(100, 0, 0, stride)) << stride;
  for (int stride : {-1, 0, 1, 5, 7}) EXPECT_TRUE(VectorPath::LanesPayOff<float>(100, 0, 0, stride)) << stride;
}

TEST_F(VectorPathOfFloats, PaysBelowAQuarterOfHolesOnOneSide) {
  EXPECT_TRUE(VectorPath::LanesPayOff<float>(100, 24, 0, 1));
  EXPECT_FALSE(VectorPath::LanesPayOff<float>(100, 25, 0, 1));
  EXPECT_TRUE(VectorPath::LanesPayOff<float>(100, 0, 24, 1));
  EXPECT_FALSE(VectorPath::LanesPayOff<float>(100, 0, 25, 1));
}

TEST_F(VectorPathOfFloats, PaysBelowASumOfThirtyFivePercentOfHolesOnBothSides) {
  EXPECT_TRUE(VectorPath::LanesPayOff<float>(100, 30, 4, 1));
  EXPECT_FALSE(VectorPath::LanesPayOff<float>(100, 30, 5, 1));
  EXPECT_FALSE(VectorPath::LanesPayOff<float>(100, 5, 30, 1));
}

TEST(VectorPathOfDoubles, NeverPays) { EXPECT_FALSE(VectorPath::LanesPayOff<double>(100, 0, 0, 1)); }

}  // namespace
