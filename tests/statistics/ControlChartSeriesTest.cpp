// The running series of charts: cumulative sums, and exponentially weighted means.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "Charts.h"

namespace {

using ::testing::ElementsAre;

TEST(ControlChart, CuSumsAreTheSumsBeyondTheDeadBand) {
  for (const int n : {1, 3}) {
    const ControlChart chart = ChartOf(ControlChart::CuSum, RandomSeries(90, 3), n);
    EXPECT_DOUBLE_EQ(chart.GetDeadBand(), 0.5 * chart.GetMSSD());
    EXPECT_DOUBLE_EQ(chart.GetActionLimit(), 4.5 * chart.GetMSSD());
    ExpectClose(CellsOf(*chart.GetHighCuSum()), DirectCuSum(chart, 0, +1));
    ExpectClose(CellsOf(*chart.GetLowCuSum()), DirectCuSum(chart, 0, -1));
    for (int i = 1; i <= chart.GetMeanVector()->Size(); ++i)
      EXPECT_EQ((*chart.GetDevFromTarget())[i], static_cast<float>((*chart.GetMeanVector())[i] - chart.GetTarget()));
  }
}

TEST(ControlChart, MissingMeansRepeatTheCellsBefore) {
  ControlChart chart = ChartOf(ControlChart::CuSum, {kNone, 5, 9, kNone, kNone, 1}, 1);
  chart.SetPrevious(1.5, 2.5);
  const std::vector<float> high = CellsOf(*chart.GetHighCuSum()), low = CellsOf(*chart.GetLowCuSum());
  EXPECT_EQ(high[0], 2.5F);
  EXPECT_EQ(low[0], 1.5F);
  EXPECT_EQ(high[3], high[2]);
  EXPECT_EQ(high[4], high[2]);
  EXPECT_EQ(low[4], low[2]);
  EXPECT_EQ((*chart.GetDevFromTarget())[1], kNone);
  EXPECT_EQ(chart.GetDevFromTarget()->GetNumMisVal(), 3);
}

TEST(ControlChart, CuSumStartsFromThePreviousSumsAlsoAfterAGetter) {
  const std::vector<float> cells = RandomSeries(30, 4);
  ControlChart chart = ChartOf(ControlChart::CuSum, cells, 1);
  ExpectClose(CellsOf(*chart.GetHighCuSum()), DirectCuSum(chart, 0, +1));
  chart.SetPrevious(0.75, 3.25);
  ExpectClose(CellsOf(*chart.GetHighCuSum()), DirectCuSum(chart, 3.25, +1));
  ExpectClose(CellsOf(*chart.GetLowCuSum()), DirectCuSum(chart, 0.75, -1));
  ControlChart other = ChartOf(ControlChart::EWMA, cells, 1);
  other.SetPrevious(0.75, 3.25);
  EXPECT_EQ((*other.GetHighCuSum())[1], DirectCuSum(other, 0, +1)[0]) << "for the type CuSum alone";
}

TEST(ControlChart, EwmaForecastsEachMeanFromTheOnesBefore) {
  ControlChart chart = ChartOf(ControlChart::EWMA, {4, 8, kNone, 2, 6}, 1);  // target 5
  chart.SetEWMALambda(0.5);
  EXPECT_THAT(CellsOf(*chart.GetEWMA()), ElementsAre(5.0F, 4.5F, 6.25F, 6.25F, 4.125F));
  chart.SetPrevious(9.0);
  EXPECT_THAT(CellsOf(*chart.GetEWMA()), ElementsAre(9.0F, 6.5F, 7.25F, 7.25F, 4.625F));
}

TEST(ControlChart, PreviousEwmaIsForTheTwoEwmaTypesAlone) {
  for (int type = 0; type <= 5; ++type) {
    ControlChart chart = ChartOf(static_cast<ControlChart::ControlType>(type), {4, 6}, 1);
    chart.SetPrevious(9.0);
    chart.SetEWMALambda(0.5);
    EXPECT_EQ((*chart.GetEWMA())[1], type >= 4 ? 9.0F : 5.0F) << type;
  }
}

double ForecastError(const std::vector<float>& cells, double start, double lambda) {
  double sum = 0;
  float v = static_cast<float>(start);
  for (const float x : cells) {
    if (x == kNone) continue;
    sum += (static_cast<double>(x) - v) * (static_cast<double>(x) - v);
    v = static_cast<float>((static_cast<double>(x) - v) * lambda + v);
  }
  return sum;
}

class Lambdas : public ::testing::TestWithParam<unsigned> {};

TEST_P(Lambdas, HaveTheSmallestForecastErrorNearby) {
  std::mt19937 random(GetParam());
  std::normal_distribution<float> noise;
  std::vector<float> cells;
  float level = 0;
  for (int i = 0; i < 200; ++i) cells.push_back((level += 0.3F * noise(random)) + noise(random));
  const ControlChart chart = ChartOf(ControlChart::EWMA, cells, 1);
  const double lambda = chart.GetEWMALambda();
  EXPECT_GE(lambda, 1e-5);
  EXPECT_LE(lambda, 1.0);
  const double error = ForecastError(cells, chart.GetTarget(), lambda);
  // The search ends with steps of about 0.0005: no point two such steps away is better, but for the rounding of the
  // forecasts to float, some 1e-7 of the error.
  for (const double other : {lambda - 0.002, lambda + 0.002})
    EXPECT_LE(error, ForecastError(cells, chart.GetTarget(), other) * (1 + 1e-6)) << lambda;
}

INSTANTIATE_TEST_SUITE_P(ControlChart, Lambdas, ::testing::Range(1U, 13U));

/// The search for the smallest error, step for step.
double SearchLambda(const std::vector<float>& cells, double target, double start, double step) {
  const auto error = [&](double lambda) { return ForecastError(cells, target, lambda); };
  double low = start, high = start, e1 = error(low), e2 = e1;
  while (std::fabs(step) >= 0.0005) {
    high = low + step;
    e2 = error(high);
    if (!(e2 < e1)) {
      step *= 0.5;
      continue;
    }
    while (high < 1.0 && high > 0.0) {
      const double e3 = error(high + step);
      if (e2 <= e3) {
        step *= 0.5;
        break;
      }
      low = high;
      high += step;
      e1 = e2;
      e2 = e3;
    }
    const bool goOn = 1.0 - high > 1.2e-7 && high > 0.0;  // the largest of the two has the exponent of 1
    if (!goOn) step *= 0.5;
  }
  return e1 <= e2 ? low : high;
}

TEST_P(Lambdas, AreThoseOfTheSearchFromBothEnds) {
  std::mt19937 random(GetParam() + 100);
  std::normal_distribution<float> noise;
  std::vector<float> cells;
  float level = 0;
  const float drift = 0.1F * static_cast<float>(GetParam());  // from nearly no weight to nearly all
  for (int i = 0; i < 80; ++i) cells.push_back(i % 9 == 4 ? kNone : (level += drift * noise(random)) + noise(random));
  const ControlChart chart = ChartOf(ControlChart::EWMA, cells, 1);
  const double target = chart.GetTarget();
  const double up = SearchLambda(cells, target, 0.1, 0.1), down = SearchLambda(cells, target, 1.0, -0.1);
  const double found = ForecastError(cells, target, down) < ForecastError(cells, target, up) ? down : up;
  EXPECT_EQ(chart.GetEWMALambda(), found < 1e-5 ? 0.2 : std::fmin(found, 1.0));
}

TEST(ControlChart, LambdaStaysBetweenItsBounds) {
  std::vector<float> alternating, walk;
  for (int i = 0; i < 60; ++i) alternating.push_back(i % 2 == 0 ? 1.0F : -1.0F);
  for (int i = 0; i < 60; ++i) walk.push_back(static_cast<float>(i * i));
  EXPECT_EQ(ChartOf(ControlChart::EWMA, alternating, 1).GetEWMALambda(), 0.2) << "the best weight is 0";
  EXPECT_EQ(ChartOf(ControlChart::EWMA, walk, 1).GetEWMALambda(), 1.0) << "the best weight is above 1";
}

TEST(ControlChart, EwmaLimitsLieThreeStandardDeviationsFromTheTarget) {
  for (const int n : {1, 3}) {
    ControlChart chart = ChartOf(ControlChart::EWMA, RandomSeries(60, 5), n);
    chart.SetEWMALambda(0.3);
    const double expected = std::sqrt(0.3 / 1.7) * (n == 1 ? chart.GetStdDevProcess() : chart.GetMSSD());
    EXPECT_DOUBLE_EQ(chart.GetEWMAStdDev(), expected);
    EXPECT_DOUBLE_EQ(chart.GetEWMAUCL(), chart.GetTarget() + 3 * expected);
    EXPECT_DOUBLE_EQ(chart.GetEWMALCL(), chart.GetTarget() - 3 * expected);
  }
}

TEST(ControlChart, AnotherWeightOrStartAfterAGetterCountsAtOnce) {
  const std::vector<float> cells = RandomSeries(60, 6);
  ControlChart asked = ChartOf(ControlChart::EWMA, cells, 1), fresh = ChartOf(ControlChart::EWMA, cells, 1);
  asked.GetEWMA();
  asked.GetEWMAUCL();
  for (ControlChart* chart : {&asked, &fresh}) chart->SetPrevious(14.0);
  EXPECT_EQ(asked.GetEWMALambda(), fresh.GetEWMALambda());
  EXPECT_EQ(*asked.GetEWMA(), *fresh.GetEWMA());
  EXPECT_EQ(asked.GetEWMAUCL(), fresh.GetEWMAUCL());
  for (ControlChart* chart : {&asked, &fresh}) chart->SetEWMALambda(0.4);
  EXPECT_EQ(*asked.GetEWMA(), *fresh.GetEWMA());
  EXPECT_EQ(asked.GetEWMALCL(), fresh.GetEWMALCL());
  asked.SetPrevious(13.0);
  EXPECT_EQ(asked.GetEWMALambda(), 0.4) << "a weight that was set stays";
}

TEST(ControlChart, AnotherStartLeavesLimitsThatWereImportedAsTheyAre) {
  // The reference knows its process from successive means, the chart of single cells would take another deviation.
  for (const auto type : {ControlChart::EWMA, ControlChart::EWMAStdDev}) {
    const ControlChart reference = ChartOf(type, RandomSeries(80, 10), 4);
    const double upper = reference.GetEWMAUCL(), lower = reference.GetEWMALCL();
    ControlChart chart = ChartOf(type, RandomSeries(40, 11), 1);
    chart.ImportLimits(reference);
    chart.GetEWMA();
    chart.SetPrevious(12.5);
    EXPECT_EQ((*chart.GetEWMA())[1], 12.5F);
    EXPECT_EQ(chart.GetEWMAUCL(), upper);
    EXPECT_EQ(chart.GetEWMALCL(), lower);
  }
  ControlChart moved = ChartOf(ControlChart::EWMAStdDev, RandomSeries(40, 11), 1);
  moved.SetEWMALambda(0.3);
  const double upper = moved.GetEWMAUCL();
  moved.SetTarget(0.0);
  moved.SetPrevious(12.5);
  EXPECT_EQ(moved.GetEWMAUCL(), upper) << "a target does not move the limits of this type, nor does a start";
}

TEST(ControlChart, ImportedWeightThatIsNotKnownIsEstimatedAgainFromAnotherStart) {
  const std::vector<float> cells = RandomSeries(60, 12);
  ControlChart chart = ChartOf(ControlChart::EWMA, cells, 1);
  ControlChart::Limits limits = chart.GetLimits();
  limits.lambda = kUnknown;
  ControlChart fresh = ChartOf(ControlChart::EWMA, cells, 1);
  for (ControlChart* each : {&chart, &fresh}) each->ImportLimits(limits);
  const double before = chart.GetEWMALambda();
  for (ControlChart* each : {&chart, &fresh}) each->SetPrevious(40.0);
  EXPECT_NE(fresh.GetEWMALambda(), before);
  EXPECT_EQ(chart.GetEWMALambda(), fresh.GetEWMALambda());
}

}  // namespace
