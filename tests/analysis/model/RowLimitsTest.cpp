#include "kalmia/analysis/model/RowLimits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"

namespace kalmia::analysis {
namespace {

constexpr double kDigits = 1e-10;  ///< of the quantiles

TEST(T2Limits, OfSixtyRowsAndThreeComponentsAreThoseOfScipy) {  // left_out_gasoline.py, scipy 1.10.1
  EXPECT_NEAR(*T2LimitOfTrainingRows(60, 3, 0.95) / 7.495447830455982, 1.0, kDigits);
  EXPECT_NEAR(*T2LimitOfTrainingRows(60, 3, 0.99) / 10.556375178053347, 1.0, kDigits);
  EXPECT_NEAR(*T2LimitOfNewRows(60, 3, 0.95) / 8.733693065332806, 1.0, kDigits);
  EXPECT_NEAR(*T2LimitOfNewRows(60, 3, 0.99) / 13.086047452694222, 1.0, kDigits);
}

TEST(T2Limits, OfOneComponentAreThoseOfStudent) {
  // T2 of a training row is at most (N - 1)^2 / N. With N - 2 degrees, t^2 = (N - 2) B / (1 - B) has F(1, N - 2).
  // t(0.95; 8) = 2.306004135204166 and t(0.95; 9) = 2.262157162854099, of either sign, by scipy 1.10.1.
  const double t8 = 2.306004135204166, t9 = 2.262157162854099;
  const double beta = t8 * t8 / (8.0 + t8 * t8);
  EXPECT_NEAR(*T2LimitOfTrainingRows(10, 1, 0.95) / (8.1 * beta), 1.0, kDigits);
  EXPECT_NEAR(*T2LimitOfNewRows(10, 1, 0.95) / (t9 * t9 * 99.0 / 90.0), 1.0, kDigits);
}

TEST(T2Limits, AreNothingWithoutComponentsOrWithTooFewRows) {
  EXPECT_FALSE(T2LimitOfTrainingRows(60, 0, 0.95));
  EXPECT_FALSE(T2LimitOfNewRows(60, 0, 0.95));
  EXPECT_FALSE(T2LimitOfTrainingRows(4, 3, 0.95));
  EXPECT_TRUE(T2LimitOfTrainingRows(5, 3, 0.95));
  EXPECT_FALSE(T2LimitOfNewRows(3, 3, 0.95));
  EXPECT_TRUE(T2LimitOfNewRows(4, 3, 0.95));
}

TEST(T2Limits, FlagTheirShareOfNormalRows) {
  // One score, 20 training rows and 20 new ones in each of 2000 tables. The mean rates lie within four
  // standard deviations of 5 %, those of 40000 rows, doubled since rows of one table share mean and variance.
  std::mt19937 generator(1);
  std::normal_distribution<double> normal;
  const double training = *T2LimitOfTrainingRows(20, 1, 0.95), fresh = *T2LimitOfNewRows(20, 1, 0.95);
  int trainingFlags = 0, newFlags = 0;
  for (int table = 0; table < 2000; ++table) {
    std::vector<double> scores(20);
    double sum = 0.0, squares = 0.0;
    for (double& score : scores) sum += score = normal(generator);
    const double mean = sum / 20;
    for (const double score : scores) squares += (score - mean) * (score - mean);
    const double variance = squares / 19;
    for (const double score : scores) {
      if ((score - mean) * (score - mean) / variance > training) ++trainingFlags;
      const double other = normal(generator) - mean;
      if (other * other / variance > fresh) ++newFlags;
    }
  }
  EXPECT_NEAR(trainingFlags / 40000.0, 0.05, 0.0087);
  EXPECT_NEAR(newFlags / 40000.0, 0.05, 0.0087);
}

TEST(DistanceLimit, FollowsFromTheMomentsOfSquaredDistances) {
  // v = 1, 2, 3: mean 2, variance 1, degrees 8; chi2(0.95; 8) = 15.507313055865453 by scipy 1.10.1.
  const auto moments = MomentsOfDistances({1.0, std::sqrt(2.0), kNotANumber, std::sqrt(3.0)});
  ASSERT_TRUE(moments);
  EXPECT_EQ(moments->rows, 3U);
  EXPECT_DOUBLE_EQ(moments->mean, 2.0);
  EXPECT_NEAR(moments->degrees, 8.0, 1e-14);  // roots of 2 and 3 squared
  EXPECT_NEAR(DistanceLimit(*moments, 0.95) / std::sqrt(2.0 * 15.507313055865453 / 8.0), 1.0, kDigits);
}

TEST(DistanceLimit, HasOneDegreeOfFreedomAtLeast) {
  std::vector<double> distances(19, 0.0);
  distances.push_back(10.0);  // v = 100 once: mean 5, variance 500, 2 25 / 500 = 0.1
  const auto moments = MomentsOfDistances(distances);
  ASSERT_TRUE(moments);
  EXPECT_EQ(moments->degrees, 1.0);
  EXPECT_NEAR(DistanceLimit(*moments, 0.99) / std::sqrt(5.0 * 6.6348966010212145), 1.0, kDigits);  // scipy 1.10.1
}

TEST(DistanceLimit, IsNothingWhereDistancesAreAlikeOrNotThere) {
  EXPECT_FALSE(MomentsOfDistances({0.1, 0.1, 0.1}));
  EXPECT_FALSE(MomentsOfDistances({1.0, kNotANumber}));
  EXPECT_FALSE(MomentsOfDistances({kNotANumber, kNotANumber}));
  EXPECT_FALSE(MomentsOfDistances({}));
}

TEST(DistanceLimit, FlagsItsShareOfRowsWhoseColumnsAreNotIndependent) {
  // Each squared distance is of four independent directions, one of which counts as much as all the others, as in
  // spectra; a limit for that many columns as there are would be near 1. Of 200 tables with 50 rows 5 % +- 0.9 %: four
  // standard deviations of 10000 rows; the approximation itself costs another 1 %.
  std::mt19937 generator(2);
  std::normal_distribution<double> normal;
  int flags = 0;
  for (int table = 0; table < 200; ++table) {
    std::vector<double> distances(50);
    for (double& distance : distances) {
      double v = 0.0;
      for (const double weight : {0.5, 0.2, 0.2, 0.1}) v += weight * std::pow(normal(generator), 2);
      distance = std::sqrt(v);
    }
    const double limit = DistanceLimit(*MomentsOfDistances(distances), 0.95);
    for (const double distance : distances) flags += distance > limit ? 1 : 0;
  }
  EXPECT_NEAR(flags / 10000.0, 0.05, 0.019);
}

TEST(DistanceLimit, WithoutRefitsIsWidenedByTheDegreesThatTheModelTook) {
  EXPECT_DOUBLE_EQ(*DistanceLimitWithoutRefits(1.5, 20, 3), 1.5 * std::sqrt(20.0 / 16));
  EXPECT_TRUE(DistanceLimitWithoutRefits(1.5, 5, 3));
  EXPECT_FALSE(DistanceLimitWithoutRefits(1.5, 4, 3));
}

}  // namespace
}  // namespace kalmia::analysis
