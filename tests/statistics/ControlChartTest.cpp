#include "kalmia/statistics/ControlChart.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "kalmia/statistics/ControlChartFactors.h"
#include "testing/RandomTables.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;

constexpr float kNone = kHole<float>;
constexpr double kUnknown = -99.0;

NCDataVector<float> VectorOf(const std::vector<float>& cells) {
  NCDataVector<float> v;
  v.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return v;
}

ControlChart ChartOf(ControlChart::ControlType type, const std::vector<float>& cells, int n) {
  return ControlChart(type, VectorOf(cells), n);
}

std::vector<float> RandomSeries(int size, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<float> noise(10.0F, 1.0F);
  std::vector<float> cells;
  for (int i = 0; i < size; ++i) cells.push_back(noise(random) + static_cast<float>(i) * 0.02F);
  return cells;
}

const std::vector<float> kTwelve{2, 4, 6, 8, 3, 5, 7, 5, 1, 9, 4, 6};  // by four: means 5, 5, 5; ranges 6, 4, 8

// ---- Types and their texts

TEST(ControlChart, TypesHaveTheirTexts) {
  EXPECT_STREQ(ControlChart::FromControlType(ControlChart::Individual), "Individual");
  EXPECT_STREQ(ControlChart::FromControlType(ControlChart::MeanRange), "Mean/Range");
  EXPECT_STREQ(ControlChart::FromControlType(ControlChart::MeanStdDev), "Mean/StdDev");
  EXPECT_STREQ(ControlChart::FromControlType(ControlChart::CuSum), "CuSum");
  EXPECT_STREQ(ControlChart::FromControlType(ControlChart::EWMA), "Individual");
  EXPECT_STREQ(ControlChart::FromControlType(ControlChart::EWMAStdDev), "Individual");
  EXPECT_STREQ(ControlChart::FromControlType(static_cast<ControlChart::ControlType>(77)), "Individual");
}

TEST(ControlChart, TextsGiveTheirTypesExactlyAndAnyOtherTextTheIndividualOne) {
  for (const auto type :
       {ControlChart::Individual, ControlChart::MeanRange, ControlChart::MeanStdDev, ControlChart::CuSum})
    EXPECT_EQ(ControlChart::ToControlType(ControlChart::FromControlType(type)), type);
  for (const char* text : {"", "mean/range", "Mean/Range ", "EWMA", "EWMAStdDev", "CUSUM"})
    EXPECT_EQ(ControlChart::ToControlType(text), ControlChart::Individual) << text;
  EXPECT_EQ(ControlChart::ToControlType(nullptr), ControlChart::Individual);
}

// ---- Factors

TEST(ControlChartFactors, AreThePublishedOnes) {
  struct { int n; kalmia::ControlChartFactors factors; } const published[] = {  // A2 A3 B3 B4 c4 d2 D3 D4
      {2, {1.88F, 2.659F, 0, 3.267F, 0.7979F, 1.128F, 0, 3.267F}},
      {3, {1.023F, 1.954F, 0, 2.568F, 0.8862F, 1.693F, 0, 2.574F}},
      {5, {0.577F, 1.427F, 0, 2.089F, 0.94F, 2.326F, 0, 2.114F}},
      {7, {0.419F, 1.182F, 0.118F, 1.882F, 0.9594F, 2.704F, 0.076F, 1.924F}},
      {10, {0.308F, 0.975F, 0.284F, 1.716F, 0.9727F, 3.078F, 0.223F, 1.777F}},
      {25, {0.153F, 0.606F, 0.565F, 1.435F, 0.9896F, 3.931F, 0.459F, 1.541F}}};
  for (const auto& row : published) {
    const auto* found = kalmia::FindControlChartFactors(row.n);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(std::memcmp(found, &row.factors, sizeof row.factors), 0) << row.n;  // eight floats, without gaps
  }
}

TEST(ControlChartFactors, SatisfyTheirDefinitions) {
  for (int n = 2; n <= 25; ++n) {
    SCOPED_TRACE(n);
    const auto* f = kalmia::FindControlChartFactors(n);
    ASSERT_NE(f, nullptr);
    // c4 = sqrt(2 / (n - 1)) Gamma(n / 2) / Gamma((n - 1) / 2), printed to four decimals; the others follow from c4
    // and d2, printed to three. Half a unit in the last place, and for what is derived from rounded factors about one
    // more.
    const double c4 = std::sqrt(2.0 / (n - 1)) * std::exp(std::lgamma(n / 2.0) - std::lgamma((n - 1) / 2.0));
    EXPECT_NEAR(f->c4, c4, 0.5e-4 + 1e-6);
    EXPECT_NEAR(f->a3, 3 / (c4 * std::sqrt(n)), 0.5e-3 + 1e-6);
    const double width = 3 * std::sqrt(1 - c4 * c4) / c4;
    EXPECT_NEAR(f->b4, 1 + width, 0.5e-3 + 1e-4);
    EXPECT_NEAR(f->b3, std::fmax(0, 1 - width), 0.5e-3 + 1e-4);
    EXPECT_NEAR(f->a2, 3 / (f->d2 * std::sqrt(n)), 1.1e-3);
    const double d3 = f->d3 > 0 ? f->d3 : 2.0 - f->d4;  // cut at 0 for small subgroups
    EXPECT_NEAR(d3 + f->d4, 2.0, 1e-3 + 1e-6) << "symmetric about the mean range";
  }
}

TEST(ControlChartFactors, DoNotExistOutsideTheTable) {
  for (const int n : {-2147483647 - 1, -1, 0, 1, 26, 2147483647})
    EXPECT_EQ(kalmia::FindControlChartFactors(n), nullptr);
}

// ---- Subgroups

TEST(ControlChart, LastIncompleteSubgroupIsLeftOut) {
  const ControlChart chart = ChartOf(ControlChart::MeanRange, {1, 2, 3, 4, 5, 6, 7, 8, 100, 200}, 4);
  EXPECT_THAT(CellsOf(*chart.GetMeanVector()), ElementsAre(2.5F, 6.5F));
  EXPECT_THAT(CellsOf(*chart.GetRangeVector()), ElementsAre(3.0F, 3.0F));
  EXPECT_EQ(chart.GetTarget(), 4.5);
}

TEST(ControlChart, MissingCellsAreLeftOutOfTheirSubgroup) {
  const std::vector<float> cells{1, kNone, 4, kNone, kNone, kNone, kNone, 7, kNone, 2, 4, 9};
  const ControlChart ranges = ChartOf(ControlChart::MeanRange, cells, 3);
  EXPECT_THAT(CellsOf(*ranges.GetMeanVector()), ElementsAre(2.5F, kNone, 7.0F, 5.0F));
  EXPECT_THAT(CellsOf(*ranges.GetRangeVector()), ElementsAre(3.0F, kNone, 0.0F, 7.0F));
  EXPECT_EQ(ranges.GetMeanVector()->GetNumMisVal(), 1);
  EXPECT_DOUBLE_EQ(ranges.GetTarget(), 14.5 / 3) << "the empty subgroup does not count";
  EXPECT_DOUBLE_EQ(ranges.GetRangeMean(), 10.0 / 3);
  const ControlChart deviations = ChartOf(ControlChart::MeanStdDev, cells, 3);
  ASSERT_EQ(deviations.GetStdDevVector()->Size(), 4);
  EXPECT_FLOAT_EQ((*deviations.GetStdDevVector())[1], static_cast<float>(std::sqrt(4.5)));
  EXPECT_EQ((*deviations.GetStdDevVector())[2], kNone);
  EXPECT_EQ((*deviations.GetStdDevVector())[3], kNone) << "one cell has no standard deviation";
  EXPECT_FLOAT_EQ((*deviations.GetStdDevVector())[4], static_cast<float>(std::sqrt(13.0)));
}

TEST(ControlChart, EqualCellsHaveNoStandardDeviationWhateverTheRounding) {
  const float large = 1e6F + 0.1F;
  const ControlChart chart = ChartOf(ControlChart::MeanStdDev, {0.1F, 0.1F, 0.1F, large, large, large}, 3);
  for (const float s : CellsOf(*chart.GetStdDevVector())) {
    EXPECT_FALSE(std::isnan(s));
    EXPECT_NEAR(s, 0.0F, 1e-2F);  // sums of squares near 1e12 leave sqrt(1e12 * 2^-52)
  }
}

TEST(ControlChart, TargetIsTheMeanOfTheRoundedSubgroupMeans) {
  // 1/3 rounds to float; the mean of the cells would be another double.
  const ControlChart chart = ChartOf(ControlChart::MeanRange, {0, 0, 1, 0, 0, 1}, 3);
  EXPECT_EQ(chart.GetTarget(), static_cast<double>(1.0F / 3.0F));
}

TEST(ControlChart, MeanOfNothingButZeroGivesATargetOfExactlyZero) {
  const ControlChart chart = ChartOf(ControlChart::Individual, {-1, 1, -2, 2}, 2);
  EXPECT_EQ(chart.GetTarget(), 0.0);
  EXPECT_FALSE(std::signbit(chart.GetTarget()));
  EXPECT_EQ(ChartOf(ControlChart::Individual, {1e-30F, 1e-30F}, 1).GetTarget(), static_cast<double>(1e-30F))
      << "the tolerance is relative: nothing but 0 is as good as 0";
}

// ---- Limits by type

TEST(ControlChart, IndividualChartKnowsTheStandardDeviationOfTheCellsAlone) {
  const ControlChart chart = ChartOf(ControlChart::Individual, {1, 2, 3, 4, 5}, 1);
  EXPECT_EQ(chart.GetTarget(), 3.0);
  EXPECT_DOUBLE_EQ(chart.GetStdDevIndividual(), std::sqrt(2.5));
  EXPECT_EQ(chart.GetStdDevProcess(), kUnknown);
  for (const double value : {chart.GetMeanUCL(), chart.GetMeanLCL(), chart.GetRangeMean(), chart.GetStdDevMean()})
    EXPECT_EQ(value, kUnknown);
  EXPECT_EQ(chart.GetRangeVector()->Size(), 0);
  EXPECT_EQ(chart.GetStdDevVector()->Size(), 0);
}

TEST(ControlChart, UnknownTypeIsTreatedAsIndividual) {
  const ControlChart chart = ChartOf(static_cast<ControlChart::ControlType>(9), kTwelve, 4);
  EXPECT_EQ(chart.GetTarget(), 5.0);
  EXPECT_EQ(chart.GetStdDevProcess(), kUnknown);
}

TEST(ControlChart, MeanAndRangeLimitsFollowFromTheMeanRange) {
  const ControlChart chart = ChartOf(ControlChart::MeanRange, kTwelve, 4);
  EXPECT_EQ(chart.GetRangeMean(), 6.0);
  EXPECT_DOUBLE_EQ(chart.GetMeanUCL(), 5.0 + 6.0 * static_cast<double>(0.729F));
  EXPECT_DOUBLE_EQ(chart.GetMeanLCL(), 5.0 - 6.0 * static_cast<double>(0.729F));
  EXPECT_DOUBLE_EQ(chart.GetRangeUCL(), 6.0 * static_cast<double>(2.282F));
  EXPECT_EQ(chart.GetRangeLCL(), 0.0);
  EXPECT_DOUBLE_EQ(chart.GetStdDevProcess(), 6.0 / static_cast<double>(2.059F));
}

TEST(ControlChart, MeanAndStandardDeviationLimitsFollowFromTheMeanStandardDeviation) {
  const ControlChart chart = ChartOf(ControlChart::MeanStdDev, kTwelve, 4);
  double sum = 0;
  for (const double squares : {20.0, 8.0, 34.0}) sum += static_cast<float>(std::sqrt(squares / 3));
  const double s = sum / 3;
  EXPECT_DOUBLE_EQ(chart.GetStdDevMean(), s);
  EXPECT_DOUBLE_EQ(chart.GetStdDevUCL(), s * static_cast<double>(2.266F));
  EXPECT_EQ(chart.GetStdDevLCL(), 0.0);
  EXPECT_DOUBLE_EQ(chart.GetMeanUCL(), 5.0 + s * static_cast<double>(1.628F));
  EXPECT_DOUBLE_EQ(chart.GetMeanLCL(), 5.0 - s * static_cast<double>(1.628F));
  EXPECT_DOUBLE_EQ(chart.GetStdDevProcess(), s / static_cast<double>(0.9213F));
}

TEST(ControlChart, ProcessDeviationOfCuSumAndEwmaComesFromSuccessiveMeansOrTheCells) {
  const std::vector<float> cells = RandomSeries(60, 1);
  for (const auto type : {ControlChart::CuSum, ControlChart::EWMA}) {
    const ControlChart single = ChartOf(type, cells, 1);
    EXPECT_EQ(single.GetStdDevProcess(), single.GetStdDevIndividual());
    EXPECT_EQ(single.GetMSSD(), single.GetStdDevProcess());
    const ControlChart grouped = ChartOf(type, cells, 4);
    EXPECT_EQ(grouped.GetStdDevProcess(), grouped.GetMSSD());
  }
  const ControlChart plain = ChartOf(ControlChart::EWMAStdDev, cells, 4);
  EXPECT_EQ(plain.GetStdDevProcess(), plain.GetStdDevIndividual());
  const ControlChart cuSum = ChartOf(ControlChart::CuSum, cells, 4);
  EXPECT_EQ(cuSum.GetStdDevMean(), static_cast<double>(cuSum.GetStdDevVector()->GetMean()));
  EXPECT_EQ(cuSum.GetStdDevUCL(), kUnknown);
}

TEST(ControlChart, SuccessiveDifferencesAreNotBridgedAcrossGapsButAllPresentMeansCount) {
  const ControlChart chart = ChartOf(ControlChart::CuSum, {1, 1, 4, 4, kNone, kNone, 6, 6, 7, 7}, 2);
  // Differences 3 and 1; four present means: sqrt((9 + 1) / (2 * 4 - 2)).
  EXPECT_DOUBLE_EQ(chart.GetMSSD(), std::sqrt(10.0 / 6.0));
}

TEST(ControlChart, SizesWithoutFactorsGiveUnknownNumbers) {
  const std::vector<float> cells = RandomSeries(120, 2);
  for (const int n : {1, 26, 60}) {
    SCOPED_TRACE(n);
    for (const auto type : {ControlChart::MeanRange, ControlChart::MeanStdDev}) {
      ControlChart chart = ChartOf(type, cells, n);
      for (int round = 0; round < 3; ++round) {
        for (const double value : {chart.GetMeanUCL(), chart.GetMeanLCL(), chart.GetRangeUCL(), chart.GetRangeLCL(),
                                   chart.GetStdDevUCL(), chart.GetStdDevLCL(), chart.GetStdDevProcess()})
          EXPECT_EQ(value, kUnknown);
        if (round == 0) chart.SetTarget(3.0);
        if (round == 1) chart.SetStdDevSubgroup(2.0);
      }
      EXPECT_EQ(chart.GetTarget(), 3.0);
    }
  }
}

TEST(ControlChart, SizesBelowOneGiveEmptySeries) {
  for (const int n : {0, -1, -2147483647 - 1}) {
    for (int type = 0; type <= 5; ++type) {
      const ControlChart chart = ChartOf(static_cast<ControlChart::ControlType>(type), kTwelve, n);
      EXPECT_EQ(chart.GetTarget(), kUnknown);
      EXPECT_EQ(chart.GetMSSD(), kUnknown);
      EXPECT_EQ(chart.GetMeanVector()->Size(), 0);
      EXPECT_EQ(chart.GetEWMA()->Size(), 0);
      EXPECT_EQ(chart.GetHighCuSum()->Size(), 0);
      EXPECT_EQ(chart.GetActionLimit(), kUnknown);
      EXPECT_EQ(chart.GetEWMAUCL(), kUnknown);
    }
  }
}

TEST(ControlChart, SeriesWithoutCellsGivesUnknownNumbers) {
  for (int type = 0; type <= 5; ++type) {
    for (const auto& cells : {std::vector<float>{}, std::vector<float>(8, kNone)}) {
      const ControlChart chart = ChartOf(static_cast<ControlChart::ControlType>(type), cells, 4);
      for (const double value : {chart.GetTarget(), chart.GetMeanUCL(), chart.GetMeanLCL(), chart.GetRangeMean(),
                                 chart.GetStdDevProcess(), chart.GetMSSD(), chart.GetActionLimit(), chart.GetDeadBand(),
                                 chart.GetEWMAStdDev(), chart.GetEWMALCL()})
        EXPECT_EQ(value, kUnknown) << type;
      EXPECT_THAT(CellsOf(*chart.GetHighCuSum()), Each(kNone));
    }
  }
}

TEST(ControlChart, OneSubgroupHasNoSuccession) {
  const ControlChart chart = ChartOf(ControlChart::CuSum, {1, 2, 3, 4}, 4);
  EXPECT_EQ(chart.GetMSSD(), kUnknown);
  EXPECT_EQ(chart.GetDeadBand(), kUnknown);
  EXPECT_THAT(CellsOf(*chart.GetDevFromTarget()), ElementsAre(0.0F));
}

// ---- CuSum

std::vector<float> DirectCuSum(const ControlChart& chart, double start, int sign) {
  std::vector<float> sums;
  double sum = start;
  for (const float x : CellsOf(*chart.GetMeanVector())) {
    const double k = chart.GetDeadBand();
    if (x != kNone) sum = static_cast<float>(std::fmax(0.0, sum + sign * (x - chart.GetTarget()) - k));
    sums.push_back(static_cast<float>(sum));
  }
  return sums;
}

void ExpectClose(const std::vector<float>& found, const std::vector<float>& expected) {
  ASSERT_EQ(found.size(), expected.size());
  // The same sums in another order of terms: a rounding of double each, which may tip a float by one unit.
  for (std::size_t i = 0; i < found.size(); ++i)
    EXPECT_NEAR(found[i], expected[i], 0x1p-22F * std::fabs(expected[i])) << i;
}

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

// ---- EWMA

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

// ---- Setters

TEST(ControlChart, SetTargetMovesTheLimitsOfTheMeans) {
  ControlChart ranges = ChartOf(ControlChart::MeanRange, kTwelve, 4);
  const double process = ranges.GetStdDevProcess();
  ranges.SetTarget(7.0);
  EXPECT_EQ(ranges.GetTarget(), 7.0);
  EXPECT_DOUBLE_EQ(ranges.GetMeanUCL(), 7.0 + 6.0 * static_cast<double>(0.729F));
  EXPECT_DOUBLE_EQ(ranges.GetMeanLCL(), 7.0 - 6.0 * static_cast<double>(0.729F));
  EXPECT_EQ(ranges.GetStdDevProcess(), process);
  ControlChart deviations = ChartOf(ControlChart::MeanStdDev, kTwelve, 4);
  deviations.SetTarget(7.0);
  EXPECT_DOUBLE_EQ(deviations.GetMeanUCL(), 7.0 + static_cast<double>(1.628F) * deviations.GetStdDevMean());
}

TEST(ControlChart, SetTargetComputesTheCuSumAndTheEwmaLimitsAfreshButNotThoseOfEwmaStdDev) {
  const std::vector<float> cells = RandomSeries(40, 7);
  ControlChart cuSum = ChartOf(ControlChart::CuSum, cells, 1);
  cuSum.GetHighCuSum();
  cuSum.SetTarget(9.0);
  ExpectClose(CellsOf(*cuSum.GetHighCuSum()), DirectCuSum(cuSum, 0, +1));
  ControlChart ewma = ChartOf(ControlChart::EWMA, cells, 1);
  const double width = ewma.GetEWMAUCL() - ewma.GetTarget();
  ewma.GetEWMA();
  ewma.SetTarget(9.0);
  EXPECT_DOUBLE_EQ(ewma.GetEWMAUCL(), 9.0 + width);
  EXPECT_EQ((*ewma.GetEWMA())[1], 9.0F);
  ControlChart kept = ChartOf(ControlChart::EWMAStdDev, cells, 1);
  const double upper = kept.GetEWMAUCL();
  const float first = (*kept.GetEWMA())[1];
  kept.SetTarget(9.0);
  EXPECT_EQ(kept.GetTarget(), 9.0);
  EXPECT_EQ(kept.GetEWMAUCL(), upper);
  EXPECT_EQ((*kept.GetEWMA())[1], first);
}

TEST(ControlChart, UnknownTargetAndDeviationArePassedOver) {
  for (int type = 0; type <= 5; ++type) {
    ControlChart chart = ChartOf(static_cast<ControlChart::ControlType>(type), kTwelve, 4);
    const double target = chart.GetTarget(), process = chart.GetStdDevProcess(), upper = chart.GetMeanUCL();
    chart.SetTarget(kUnknown);
    chart.SetStdDevSubgroup(kUnknown);
    EXPECT_EQ(chart.GetTarget(), target);
    EXPECT_EQ(chart.GetStdDevProcess(), process);
    EXPECT_EQ(chart.GetMeanUCL(), upper);
  }
}

TEST(ControlChart, SetStdDevSubgroupSetsTheProcessFromOutside) {
  const double c4 = static_cast<double>(0.9213F), d2 = static_cast<double>(2.059F);
  ControlChart individual = ChartOf(ControlChart::Individual, kTwelve, 4);
  individual.SetStdDevSubgroup(2.0);
  EXPECT_EQ(individual.GetStdDevProcess(), 2.0);
  ControlChart ranges = ChartOf(ControlChart::MeanRange, kTwelve, 4);
  ranges.SetStdDevSubgroup(2.0);
  EXPECT_DOUBLE_EQ(ranges.GetRangeMean(), 2.0 * d2);
  EXPECT_DOUBLE_EQ(ranges.GetStdDevProcess(), 2.0);
  ControlChart deviations = ChartOf(ControlChart::MeanStdDev, kTwelve, 4);
  deviations.SetStdDevSubgroup(2.0);
  EXPECT_DOUBLE_EQ(deviations.GetStdDevMean(), 2.0 * c4);
  EXPECT_DOUBLE_EQ(deviations.GetStdDevUCL(), 2.0 * c4 * static_cast<double>(2.266F));
  ControlChart cuSum = ChartOf(ControlChart::CuSum, kTwelve, 4);
  cuSum.GetHighCuSum();
  cuSum.SetStdDevSubgroup(2.0);
  EXPECT_DOUBLE_EQ(cuSum.GetMSSD(), 2.0 * c4);
  EXPECT_DOUBLE_EQ(cuSum.GetDeadBand(), c4);
  EXPECT_DOUBLE_EQ(cuSum.GetActionLimit(), 9.0 * c4);
  ExpectClose(CellsOf(*cuSum.GetHighCuSum()), DirectCuSum(cuSum, 0, +1));
  for (const auto type : {ControlChart::EWMA, ControlChart::EWMAStdDev}) {
    ControlChart ewma = ChartOf(type, kTwelve, 4);
    ewma.SetEWMALambda(1.0);
    ewma.GetEWMAUCL();
    ewma.SetStdDevSubgroup(2.0);
    EXPECT_DOUBLE_EQ(ewma.GetMSSD(), 2.0 * c4);
    EXPECT_EQ(ewma.GetStdDevProcess(), 2.0);
    EXPECT_DOUBLE_EQ(ewma.GetEWMAStdDev(), 2.0 * c4) << "computed afresh";
  }
}

TEST(ControlChart, SetStdDevSubgroupOfSizesWithoutFactorsLeavesWhatNeedsThemUnknown) {
  const std::vector<float> cells = RandomSeries(120, 13);
  for (const auto type : {ControlChart::CuSum, ControlChart::EWMA, ControlChart::EWMAStdDev}) {
    ControlChart chart = ChartOf(type, cells, 26);
    chart.SetStdDevSubgroup(2.0);
    for (const double value : {chart.GetStdDevMean(), chart.GetStdDevUCL(), chart.GetStdDevLCL(), chart.GetMeanUCL(),
                               chart.GetMeanLCL()})
      EXPECT_EQ(value, kUnknown);
    EXPECT_EQ(chart.GetStdDevProcess(), type == ControlChart::CuSum ? kUnknown : 2.0);
    EXPECT_EQ(chart.GetMSSD(), ChartOf(type, cells, 26).GetMSSD()) << "that of the means, which needs no factor";
  }
}

TEST(ControlChart, LimitsRoundAnUnknownTargetAreUnknown) {
  for (int type = 1; type <= 5; ++type) {
    ControlChart chart = ChartOf(static_cast<ControlChart::ControlType>(type), std::vector<float>(8, kNone), 4);
    chart.SetStdDevSubgroup(2.0);
    EXPECT_EQ(chart.GetTarget(), kUnknown);
    EXPECT_DOUBLE_EQ(chart.GetStdDevProcess(), 2.0);
    for (const double limit : {chart.GetMeanUCL(), chart.GetMeanLCL(), chart.GetEWMAUCL(), chart.GetEWMALCL()})
      EXPECT_EQ(limit, kUnknown) << type;
  }
}

TEST(ControlChart, SetStdDevSubgroupOfSingleCellsTakesTheDeviationAsItIs) {
  ControlChart cuSum = ChartOf(ControlChart::CuSum, kTwelve, 1);
  cuSum.SetStdDevSubgroup(2.0);
  EXPECT_EQ(cuSum.GetStdDevProcess(), 2.0);
  EXPECT_EQ(cuSum.GetMSSD(), 2.0);
  EXPECT_EQ(cuSum.GetActionLimit(), 9.0);
  EXPECT_EQ(cuSum.GetStdDevMean(), 2.0);
  ControlChart ewma = ChartOf(ControlChart::EWMAStdDev, kTwelve, 1);
  ewma.SetStdDevSubgroup(2.0);
  ewma.SetEWMALambda(1.0);
  EXPECT_EQ(ewma.GetStdDevProcess(), 2.0);
  EXPECT_EQ(ewma.GetEWMAStdDev(), 2.0);
}

TEST(ControlChart, ImportTakesTheLimitsOfAReferenceButNotItsSeries) {
  for (int type = 0; type <= 5; ++type) {
    SCOPED_TRACE(type);
    const auto kind = static_cast<ControlChart::ControlType>(type);
    const ControlChart reference = ChartOf(kind, RandomSeries(80, 8), 4);
    reference.GetEWMAUCL();
    reference.GetHighCuSum();
    ControlChart chart = ChartOf(kind, RandomSeries(40, 9), 4);
    const std::vector<float> means = CellsOf(*chart.GetMeanVector());
    chart.GetHighCuSum();
    chart.GetEWMA();
    chart.ImportLimits(reference);
    EXPECT_EQ(CellsOf(*chart.GetMeanVector()), means);
    using Getter = double (ControlChart::*)() const;
    for (const Getter get : {&ControlChart::GetTarget, &ControlChart::GetMeanUCL, &ControlChart::GetMeanLCL,
                             &ControlChart::GetRangeMean, &ControlChart::GetRangeUCL, &ControlChart::GetRangeLCL,
                             &ControlChart::GetStdDevProcess, &ControlChart::GetStdDevIndividual,
                             &ControlChart::GetStdDevMean, &ControlChart::GetStdDevUCL, &ControlChart::GetStdDevLCL,
                             &ControlChart::GetActionLimit, &ControlChart::GetDeadBand, &ControlChart::GetEWMALambda,
                             &ControlChart::GetEWMAUCL, &ControlChart::GetEWMALCL, &ControlChart::GetEWMAStdDev,
                             &ControlChart::GetMSSD})
      EXPECT_EQ((chart.*get)(), (reference.*get)());
    ExpectClose(CellsOf(*chart.GetHighCuSum()), DirectCuSum(chart, 0, +1));
  }
}

TEST(ControlChart, KeptLimitsServeLikeTheChartThatTheyWereTakenFrom) {
  for (int type = 0; type <= 5; ++type) {
    SCOPED_TRACE(type);
    const auto kind = static_cast<ControlChart::ControlType>(type);
    const ControlChart reference = ChartOf(kind, RandomSeries(80, 8), 4);
    reference.GetEWMAUCL();
    reference.GetHighCuSum();
    const ControlChart::Limits kept = reference.GetLimits();
    ControlChart chart = ChartOf(kind, RandomSeries(40, 9), 4);
    ControlChart twin = chart;
    chart.ImportLimits(kept);
    twin.ImportLimits(reference);
    const ControlChart::Limits taken = twin.GetLimits();
    EXPECT_EQ(std::memcmp(&kept, &taken, sizeof kept), 0);  // eighteen doubles, without a gap between them
    EXPECT_EQ(CellsOf(*chart.GetHighCuSum()), CellsOf(*twin.GetHighCuSum()));
    EXPECT_EQ(CellsOf(*chart.GetEWMA()), CellsOf(*twin.GetEWMA()));
    EXPECT_EQ(chart.GetMeanUCL(), twin.GetMeanUCL());
    EXPECT_EQ(chart.GetEWMALCL(), twin.GetEWMALCL());
  }
}

TEST(ControlChart, CopiesGoTheirOwnWay) {
  ControlChart chart = ChartOf(ControlChart::CuSum, kTwelve, 1);
  const ControlChart copy = chart;
  const std::vector<float> before = CellsOf(*copy.GetHighCuSum());
  chart.SetTarget(1.0);
  EXPECT_NE(CellsOf(*chart.GetHighCuSum()), before);
  EXPECT_EQ(CellsOf(*copy.GetHighCuSum()), before);
  chart = copy;
  EXPECT_EQ(CellsOf(*chart.GetHighCuSum()), before);
}

}  // namespace
