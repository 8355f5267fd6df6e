#include "kalmia/analysis/validation/CvAnova.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "validation/LeftOutGasoline.h"

namespace kalmia::analysis {
namespace {

TEST(CvAnova, OfGasolineIsThatOfAnIndependentComputation) {  // left_out_gasoline.py, scipy 1.10.1
  const LeftOutGasoline gasoline = ReadLeftOutGasoline("uv");
  const auto anova = ComputeCvAnova(gasoline.octane, gasoline.errors.squaredErrors[3].cells, 3);
  ASSERT_TRUE(anova);
  EXPECT_NEAR(anova->f / 340.41753515831596, 1.0, 1e-9);  // the file has twelve digits
  EXPECT_EQ(anova->df1, 6);
  EXPECT_EQ(anova->df2, 53);
  EXPECT_NEAR(anova->p / 1.7818648895257673e-40, 1.0, 1e-7);  // some thirty times as far off as F
}

TEST(CvAnova, TakesRowsThatHaveAValueAndAnError) {
  // Of 1 2 3 4 5 SS is 10 and PRESS 5, one component: F = (5 / 2) / (5 / 2). With 2 and 2 degrees half of F is above 1.
  const double none = kNotANumber;
  const auto anova = ComputeCvAnova({1, 2, none, 3, 4, 9, 5}, {1, 1, 7, 1, 1, none, 1}, 1);
  ASSERT_TRUE(anova);
  EXPECT_DOUBLE_EQ(anova->f, 1.0);
  EXPECT_EQ(anova->df2, 2);
  EXPECT_DOUBLE_EQ(anova->p, 0.5);
}

TEST(CvAnova, OfAModelWorseThanTheMeanHasANegativeFAndThePOfOne) {
  const auto anova = ComputeCvAnova({1, 2, 3, 4, 5}, {4, 4, 4, 4, 4}, 1);
  ASSERT_TRUE(anova);
  EXPECT_DOUBLE_EQ(anova->f, ((10.0 - 20.0) / 2) / (20.0 / 2));
  EXPECT_EQ(anova->p, 1.0);
}

TEST(CvAnova, OfErrorsOfZeroIsCertain) {
  const auto anova = ComputeCvAnova({1, 2, 3, 4, 5}, {0, 0, 0, 0, 0}, 1);
  ASSERT_TRUE(anova);
  EXPECT_EQ(anova->f, std::numeric_limits<double>::infinity());
  EXPECT_EQ(anova->p, 0.0);
}

TEST(CvAnova, IsNothingWithoutDegreesComponentsOrVariance) {
  EXPECT_FALSE(ComputeCvAnova({1, 2, 3, 4, 5}, {1, 1, 1, 1, 1}, 0));
  EXPECT_TRUE(ComputeCvAnova({1, 2, 3, 4}, {1, 1, 1, 1}, 1));
  EXPECT_FALSE(ComputeCvAnova({1, 2, 3}, {1, 1, 1}, 1));
  EXPECT_FALSE(ComputeCvAnova(std::vector<double>(10, 0.1), std::vector<double>(10, 1.0), 1));  // their mean is not 0.1
  EXPECT_FALSE(ComputeCvAnova({kNotANumber}, {1}, 1));
}

}  // namespace
}  // namespace kalmia::analysis
