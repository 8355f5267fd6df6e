// Types of charts, their texts and factors, their subgroups.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "Charts.h"
#include "kalmia/statistics/ControlChartFactors.h"

namespace {

using ::testing::ElementsAre;

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

}  // namespace
