// What a caller sets on a chart, and limits taken from another one.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "Charts.h"

namespace {

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
