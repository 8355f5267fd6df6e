#include "kalmia/analysis/model/PredictionInterval.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "validation/LeftOutGasoline.h"

namespace kalmia::analysis {
namespace {

using ::testing::IsNan;

TEST(PredictionInterval, OfGasolineIsThatOfAnIndependentComputation) {  // left_out_gasoline.py, scipy 1.10.1
  const LeftOutGasoline gasoline = ReadLeftOutGasoline("uv");
  const auto terms = IntervalTermsOf(gasoline.errors.squaredErrors[3].cells, gasoline.t2, 60, 3);
  ASSERT_TRUE(terms);
  EXPECT_EQ(terms->rows, 60U);
  EXPECT_EQ(terms->degrees, 56);
  EXPECT_NEAR(terms->s / 0.23393986998569175, 1.0, 1e-9);  // the file has twelve digits
  EXPECT_NEAR(IntervalHalfWidth(*terms, 0.95).At(gasoline.t2[0]) / 0.4883621509555287, 1.0, 1e-9);
}

TEST(PredictionInterval, TakesFromEachErrorWhatItsPlaceAdds) {
  // N = 5, A = 1: 1 + 1/5 + T2 / 4 is 1.2, 1.7, 2.2; errors squared are 1.2, 6.8 and none.
  const auto terms = IntervalTermsOf({1.2, 6.8, kNotANumber, 9.0, kNotANumber}, {0, 2, 4, kNotANumber, 1}, 5, 1);
  ASSERT_TRUE(terms);
  EXPECT_EQ(terms->degrees, 3);
  EXPECT_DOUBLE_EQ(terms->s, std::sqrt((1.0 + 4.0) / 2));
  // t(0.95; 3) = 3.182446305284263, of either sign, by scipy 1.10.1
  EXPECT_NEAR(IntervalHalfWidth(*terms, 0.95).At(4.0) / (3.182446305284263 * terms->s * std::sqrt(2.2)), 1.0, 1e-10);
  EXPECT_THAT(IntervalHalfWidth(*terms, 0.95).At(kNotANumber), IsNan());
}

TEST(PredictionInterval, OfNoComponentIsThatOfAMean) {
  const auto terms = IntervalTermsOf({1.25, 1.25, 1.25, 1.25}, {0, 0, 0, 0}, 4, 0);
  ASSERT_TRUE(terms);
  EXPECT_EQ(terms->degrees, 3);
  EXPECT_DOUBLE_EQ(terms->s, 1.0);
}

TEST(PredictionInterval, IsNothingWithoutDegreesOrErrors) {
  const std::vector<double> errors = {1, 1, 1}, t2 = {1, 1, 1}, none(3, kNotANumber);
  EXPECT_TRUE(IntervalTermsOf(errors, t2, 3, 1));
  EXPECT_FALSE(IntervalTermsOf(errors, t2, 3, 2));
  EXPECT_FALSE(IntervalTermsOf(none, t2, 3, 1));
  EXPECT_FALSE(IntervalTermsOf(errors, none, 3, 1));
}

TEST(PredictionInterval, CoversItsShareOfNewValues) {
  // The mean of 15 normal values as a model of no component: leaving one out, e = (y - mean) 15 / 14. 2000 tables with
  // a new value each; four standard deviations of the rate are 2 %. The rounds' models lack a row, by which s is larger
  // than sigma: sqrt(15 / 14 / (16 / 15)), 0.2 %, which takes the rate to 0.951.
  std::mt19937 generator(3);
  std::normal_distribution<double> normal;
  int covered = 0;
  constexpr int kRows = 15, kTables = 2000;
  for (int table = 0; table < kTables; ++table) {
    std::vector<double> y(kRows), squares;
    double sum = 0.0;
    for (double& value : y) sum += value = normal(generator);
    for (const double value : y) squares.push_back(std::pow((value - sum / kRows) * kRows / (kRows - 1.0), 2));
    const auto terms = IntervalTermsOf(squares, std::vector<double>(kRows, 0.0), kRows, 0);
    if (std::fabs(normal(generator) - sum / kRows) <= IntervalHalfWidth(*terms, 0.95).At(0.0)) ++covered;
  }
  EXPECT_NEAR(covered / static_cast<double>(kTables), 0.951, 0.02);
}

TEST(ScoreMoments, AreThoseOfRowsWithAllScoresThatTakePart) {
  RealMatrix scores(5, 2);
  scores.cells = {1, 10, 2, kNotANumber, 3, 30, 5, 50, 100, 100};
  const ScoreMoments all = MomentsOfScores(scores);
  EXPECT_EQ(all.rows, 4U);
  const std::vector<bool> takesPart = {true, true, true, true, false};
  const ScoreMoments moments = MomentsOfScores(scores, &takesPart);
  EXPECT_EQ(moments.rows, 3U);
  EXPECT_DOUBLE_EQ(moments.means[0], 3.0);
  EXPECT_DOUBLE_EQ(moments.means[1], 30.0);
  EXPECT_DOUBLE_EQ(moments.variances[0], 4.0);
  EXPECT_DOUBLE_EQ(moments.variances[1], 400.0);
  EXPECT_DOUBLE_EQ(T2OfScores(moments, &scores.cells[0]), 1.0 + 1.0);
  EXPECT_DOUBLE_EQ(T2OfScores(moments, &scores.cells[4]), 0.0);
  EXPECT_THAT(T2OfScores(moments, &scores.cells[2]), IsNan());
}

TEST(ScoreMoments, T2OfTrainingRowsSumsToComponentsTimesRowsLessOne) {
  std::mt19937 generator(4);
  std::normal_distribution<double> normal;
  RealMatrix scores(30, 3);
  for (double& score : scores.cells) score = 5.0 + normal(generator);
  const ScoreMoments moments = MomentsOfScores(scores);
  double sum = 0.0;
  for (std::size_t i = 0; i < scores.rows; ++i) sum += T2OfScores(moments, &scores.cells[3 * i]);
  EXPECT_NEAR(sum, 3.0 * 29.0, 1e-12);  // ninety terms near 1
}

TEST(ScoreMoments, OfOneRowHaveNoVariance) {
  const ScoreMoments moments = MomentsOfScores(RealMatrix(1, 1, 2.0));
  EXPECT_EQ(moments.means[0], 2.0);
  EXPECT_THAT(moments.variances[0], IsNan());
}

}  // namespace
}  // namespace kalmia::analysis
