// The limits of each type of chart.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "Charts.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;

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

}  // namespace
