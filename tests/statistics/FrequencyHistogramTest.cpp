#include "kalmia/statistics/FrequencyHistogram.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "testing/RandomTables.h"

namespace {

using ::testing::ElementsAre;
using Info = FrequencyHistogram::HistogramInfo;

constexpr float kNone = kHole<float>;

NCDataVector<float> VectorOf(const std::vector<float>& cells) {
  NCDataVector<float> v;
  v.CopyZeroBasedVector(cells.data(), static_cast<int>(cells.size()));
  return v;
}

Info HistogramOf(const std::vector<float>& cells) {
  Info info;
  FrequencyHistogram().CreateHistogram(VectorOf(cells), info);
  return info;
}

double WidthOf(const std::vector<float>& cells, double minimum, double maximum) {
  return FrequencyHistogram().binwidth(minimum, maximum, VectorOf(cells));
}

// ---- The width of the bins

TEST(FrequencyHistogram, WidthIsTheRangeOverTheRootOfTheCountRoundedDownToOneDigitOrOneAndAHalf) {
  const std::vector<float> four{0, 1, 2, 3};  // gaps of 1 stay below every width here
  EXPECT_DOUBLE_EQ(WidthOf(four, 0, 6.4), 3.0);     // 3.2
  EXPECT_DOUBLE_EQ(WidthOf(four, 0, 7.4), 3.5);     // 3.7
  EXPECT_DOUBLE_EQ(WidthOf(four, 0, 7.0), 3.5);     // 3.5 itself
  EXPECT_DOUBLE_EQ(WidthOf(four, 0, 2000.0), 1000.0);
  EXPECT_DOUBLE_EQ(WidthOf(four, 0, 3800.0), 1500.0);  // 1900
  EXPECT_DOUBLE_EQ(WidthOf({1, 2, 3, 4, 5, 6, 7, 8, 9}, 1, 9), 2.5) << "8 / 3";
}

TEST(FrequencyHistogram, WidthOfEqualLimitsIsOne) { EXPECT_EQ(WidthOf({5, 5, 5}, 5, 5), 1.0); }

TEST(FrequencyHistogram, WidthCountsThePresentCellsAlone) {
  EXPECT_DOUBLE_EQ(WidthOf({0, 1, 2, 3, kNone, kNone, kNone}, 0, 6.4), 3.0);
}

TEST(FrequencyHistogram, GapsBelowTheWidthLeaveItAlone) {
  EXPECT_DOUBLE_EQ(WidthOf({0, 10, 20}, 0, 20), 10.0) << "20 / sqrt(3) = 11.5 rounds to 10";
}

TEST(FrequencyHistogram, WidthGrowsToTheSmallestGapOfDiscreteData) {
  std::vector<float> cells;
  for (int i = 0; i < 100; ++i) cells.push_back(static_cast<float>(i % 5) * 4);  // 0, 4, 8, 12, 16: range / 10 = 1.6
  EXPECT_DOUBLE_EQ(WidthOf(cells, 0, 16), 4.0);
  for (float& x : cells) x = x == 16 ? 15 : x;  // the last gap is 3
  EXPECT_DOUBLE_EQ(WidthOf(cells, 0, 15), 3.0);
}

TEST(FrequencyHistogram, GapBehindTheSecondDistinctValueTakesNoPart) {
  std::vector<float> cells;
  for (std::size_t i = 0; i < 100; ++i) cells.push_back(std::vector<float>{0, 8, 9, 17}[i % 4]);
  EXPECT_DOUBLE_EQ(WidthOf(cells, 0, 17), 8.0) << "gaps 8, (1), 8; 1.7 without them";
  for (std::size_t i = 0; i < cells.size(); ++i) cells[i] = std::vector<float>{0, 8, 9}[i % 3];
  EXPECT_DOUBLE_EQ(WidthOf(cells, 0, 9), 8.0) << "three distinct values: only the first gap counts";
}

TEST(FrequencyHistogram, GapsAreThoseOfTheRawDataEvenWithScaledLimits) {
  // 0.1 and 0.4, four times each, scaled by 10: range 3, n = 8, width 1.06; the raw gap of 0.3 is below that.
  EXPECT_DOUBLE_EQ(WidthOf({0.1F, 0.4F, 0.1F, 0.4F, 0.1F, 0.4F, 0.1F, 0.4F}, 1, 4), 1.0);
}

TEST(FrequencyHistogram, WidthOfLimitsTheWrongWayRoundOrWithoutTwoDistinctValuesReadsNoGap) {
  EXPECT_EQ(WidthOf({5, 5}, 10, 0), -10 / std::sqrt(2.0)) << "one distinct value has no gap";
  EXPECT_EQ(WidthOf({kNone, kNone}, 10, 0), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(WidthOf({1, 4}, 10, 0), 3.0) << "a gap is wider than a negative width";
}

TEST(FrequencyHistogram, NaNsTakeNoPartInTheGaps) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  std::vector<float> cells;
  for (std::size_t i = 0; i < 100; ++i) cells.push_back(std::vector<float>{16, nan, 0, 4, 8}[i % 5]);
  EXPECT_DOUBLE_EQ(WidthOf(cells, 0, 16), 4.0);
  EXPECT_DOUBLE_EQ(WidthOf(std::vector<float>(100, nan), 0, 16), 1.5) << "16 / 10";
}

// ---- The bin of a value

TEST(FrequencyHistogram, BinOfAValueWithinToleranceOfTheNextLimitIsTheNext) {
  const FrequencyHistogram histogram;
  EXPECT_EQ(histogram.bindex(10.0, 10.0, 2.0, 9), 0);
  EXPECT_EQ(histogram.bindex(10.0 + 1e-6, 10.0, 2.0, 9), 0);
  EXPECT_EQ(histogram.bindex(11.9, 10.0, 2.0, 9), 0);
  EXPECT_EQ(histogram.bindex(12.0, 10.0, 2.0, 9), 1);
  EXPECT_EQ(histogram.bindex(12.0 - 2e-6, 10.0, 2.0, 9), 1) << "1 - 1e-6 is within 5e-6 of 1";
  EXPECT_EQ(histogram.bindex(12.0 - 4e-5, 10.0, 2.0, 9), 0);
  EXPECT_EQ(histogram.bindex(99.0, 10.0, 2.0, 9), 9) << "limited to the last bin";
}

TEST(FrequencyHistogram, MaximumOnALimitThatIsAWholeMultipleOfTheWidthStaysInTheLastBin) {
  const FrequencyHistogram histogram;
  EXPECT_EQ(histogram.bindex(6.0, 0.0, 2.0, -1), 2);
  EXPECT_EQ(histogram.bindex(6.0, 0.0, 2.0, 9), 3);
  EXPECT_EQ(histogram.bindex(7.0, 1.0, 2.0, -1), 3) << "7 / 2 is not whole, though (7 - 1) / 2 is";
  EXPECT_EQ(histogram.bindex(6.5, 0.0, 2.0, -1), 3);
}

TEST(FrequencyHistogram, BinOfNonsenseIsDefined) {
  const FrequencyHistogram histogram;
  EXPECT_EQ(histogram.bindex(1e300, 0.0, 1.0, 9), 9);
  EXPECT_EQ(histogram.bindex(1.0, 0.0, 0.0, 5), 5);
  EXPECT_EQ(histogram.bindex(0.0, 0.0, 0.0, 5), 0);
  EXPECT_EQ(histogram.bindex(std::numeric_limits<double>::quiet_NaN(), 0.0, 1.0, 5), 0);
}

// ---- Whole histograms

TEST(FrequencyHistogram, EqualWholeNumbersGiveOneBinOfWidthOne) {
  const Info info = HistogramOf({4, 4, 4, 4});
  EXPECT_THAT(CellsOf(info.counts), ElementsAre(4.0F));
  EXPECT_THAT(CellsOf(info.centres), ElementsAre(4.5F));
  EXPECT_THAT(info.members, ElementsAre(ElementsAre(1, 2, 3, 4)));
}

TEST(FrequencyHistogram, EqualValuesThatAreNotWholeBeginAtTheirFloor) {
  const Info info = HistogramOf({7.31F});  // 7 to 7.31 over one value: bins of 0.3
  EXPECT_THAT(CellsOf(info.counts), ElementsAre(0.0F, 1.0F));
  EXPECT_FLOAT_EQ(info.centres[1], 7.15F);
  EXPECT_FLOAT_EQ(info.centres[2], 7.45F);
}

TEST(FrequencyHistogram, HolesEnterNoBin) {
  const Info info = HistogramOf({1, kNone, 2, 3, kNone, 4});
  float total = 0;
  std::size_t members = 0;
  for (int i = 1; i <= info.counts.Size(); ++i) {
    total += info.counts[i];
    members += info.members[static_cast<std::size_t>(i - 1)].size();
    EXPECT_EQ(info.members[static_cast<std::size_t>(i - 1)].count(2), 0U);
    EXPECT_EQ(info.members[static_cast<std::size_t>(i - 1)].count(5), 0U);
  }
  EXPECT_EQ(total, 4.0F);
  EXPECT_EQ(members, 4U);
}

TEST(FrequencyHistogram, LargestValueFallsIntoTheLastBin) {
  const Info info = HistogramOf({0, 1, 2, 3, 4, 5, 6, 7, 8});  // 8 / 3 -> 2.5: bins from 0, 2.5, 5, 7.5
  EXPECT_THAT(CellsOf(info.counts), ElementsAre(3.0F, 2.0F, 3.0F, 1.0F));
  EXPECT_EQ(info.members.back().count(9), 1U);
  const Info onLimit = HistogramOf({0, 1, 2, 4});  // 4 / 2 = 2: 4 lies on the limit behind the second bin
  EXPECT_THAT(CellsOf(onLimit.counts), ElementsAre(2.0F, 2.0F));
}

TEST(FrequencyHistogram, NarrowRangesAreScaledUpAndReportedInTheirOwnUnit) {
  const Info info = HistogramOf({0.001F, 0.002F, 0.003F, 0.004F});
  // Scaled by 10^ceil(|log10 0.003|) = 1000 to 1 .. 4: width 3 / 2 = 1.5, bins from 1 and 2.5 and 4.
  EXPECT_THAT(CellsOf(info.counts), ElementsAre(2.0F, 1.0F, 1.0F));
  EXPECT_FLOAT_EQ(info.centres[1], 0.00175F);
  EXPECT_FLOAT_EQ(info.centres[2], 0.00325F);
}

TEST(FrequencyHistogram, NoValueGivesOneEmptyBin) {
  for (const auto& cells : {std::vector<float>{}, {kNone}, {kNone, kNone, kNone}}) {
    const Info info = HistogramOf(cells);
    EXPECT_THAT(CellsOf(info.counts), ElementsAre(0.0F));
    EXPECT_THAT(CellsOf(info.centres), ElementsAre(-98.5F));
    EXPECT_THAT(info.members, ElementsAre(::testing::IsEmpty()));
  }
}

TEST(FrequencyHistogram, InfiniteValuesAndNaNsAreRefusedLikeNoData) {
  for (const float bad : {std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                          std::numeric_limits<float>::quiet_NaN()}) {
    const Info info = HistogramOf({1, 2, bad, 4});
    EXPECT_THAT(CellsOf(info.counts), ElementsAre(0.0F));
    EXPECT_THAT(CellsOf(info.centres), ElementsAre(-98.5F));
  }
}

TEST(FrequencyHistogram, OldContentsAreReplaced) {
  Info info = HistogramOf({1, 2, 3, 4, 5, 6, 7, 8, 9, 10});
  FrequencyHistogram().CreateHistogram(VectorOf({4, 4}), info);
  EXPECT_THAT(CellsOf(info.counts), ElementsAre(2.0F));
  EXPECT_THAT(info.members, ElementsAre(ElementsAre(1, 2)));
}

TEST(FrequencyHistogram, DataMayBeTheCountsOrTheCentresOfTheInfoItself) {
  for (const auto which : {&Info::counts, &Info::centres}) {
    Info info;
    info.*which = VectorOf({1, 2, 3, 4, 5, 6, 7, 8, 9});
    FrequencyHistogram().CreateHistogram(info.*which, info);
    const Info expected = HistogramOf({1, 2, 3, 4, 5, 6, 7, 8, 9});
    EXPECT_EQ(info.counts, expected.counts);
    EXPECT_EQ(info.centres, expected.centres);
    EXPECT_EQ(info.members, expected.members);
  }
}

class Histograms : public ::testing::TestWithParam<int> {};

TEST_P(Histograms, CountEveryValueOnceWithinTheBordersOfItsBin) {
  std::mt19937 random(static_cast<unsigned>(GetParam()));
  const int n = 1 + static_cast<int>(random() % 500);
  const float spread = std::pow(10.0F, static_cast<float>(static_cast<int>(random() % 9) - 4));
  const float centre = spread * static_cast<float>(static_cast<int>(random() % 20) - 10);
  std::normal_distribution<float> normal(centre, spread);
  std::vector<float> cells;
  for (int i = 0; i < n; ++i) cells.push_back(i % 7 == 3 ? kNone : normal(random));
  const Info info = HistogramOf(cells);
  std::vector<int> seen(cells.size(), 0);
  for (int b = 1; b <= info.counts.Size(); ++b) {
    const auto& members = info.members[static_cast<std::size_t>(b - 1)];
    EXPECT_EQ(info.counts[b], static_cast<float>(members.size()));
    // The tolerance at a limit is 5e-6 of the number of bins below it, rounded up to a power of two; a centre is
    // stored in float.
    const double width = info.counts.Size() > 1 ? (static_cast<double>(info.centres[info.counts.Size()]) -
                                                   info.centres[1]) / (info.counts.Size() - 1) : 1.0;
    const double slack = width * 1e-5 * info.counts.Size() + std::fabs(centre) * 1e-5;
    for (const int p : members) {
      ++seen[static_cast<std::size_t>(p - 1)];
      if (info.counts.Size() == 1) continue;
      EXPECT_LE(std::fabs(cells[static_cast<std::size_t>(p - 1)] - info.centres[b]), width / 2 + slack);
    }
  }
  for (std::size_t i = 0; i < cells.size(); ++i) EXPECT_EQ(seen[i], cells[i] == kNone ? 0 : 1);
}

INSTANTIATE_TEST_SUITE_P(OfRandomData, Histograms, ::testing::Range(1, 41));

}  // namespace
