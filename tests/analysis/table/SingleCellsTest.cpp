#include "kalmia/analysis/table/internal/SingleCells.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "kalmia/analysis/table/ColumnMoments.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const double kNaN = std::nan("");

TEST(ShiftOf, IsTheMeanWhereItIsMoreThanAThousandDeviationsFromZero) {
  EXPECT_EQ(ShiftOf({1000.9, 999.1, kNaN}), 0.0) << "s = 1.27, mean 1000";
  EXPECT_EQ(ShiftOf({2000.5, 1999.5, kNaN}), 2000.0) << "s = 0.71";
  EXPECT_EQ(ShiftOf({-2000.5, -1999.5}), -2000.0);
  EXPECT_TRUE(LosesDigits({2000.5, 1999.5}));
}

TEST(ShiftOf, AsksForAThousandDeviationsHoweverTheCellsLie) {
  std::mt19937 random(1);
  std::normal_distribution<double> normal;
  for (int n = 2; n < 40; ++n) {
    for (const double deviations : {300.0, 700.0, 990.0, 1010.0, 1400.0, 5000.0}) {
      std::vector<double> cells(static_cast<std::size_t>(n));
      for (double& cell : cells) cell = normal(random);
      const ColumnMoments moments = MomentsOf(cells);
      for (double& cell : cells) cell += deviations * moments.standardDeviation - moments.mean;
      EXPECT_EQ(LosesDigits(cells), deviations > 1000.0) << n << " cells, " << deviations;
      cells.push_back(kNaN);
      EXPECT_EQ(LosesDigits(cells), deviations > 1000.0) << n << " cells and a hole, " << deviations;
    }
  }
}

TEST(ShiftOf, IsNoneOfAColumnWithoutVarianceOrWithRoundingAlone) {
  EXPECT_EQ(ShiftOf({1e6, 1e6, 1e6}), 0.0);
  EXPECT_EQ(ShiftOf({5.0}), 0.0);
  EXPECT_EQ(ShiftOf({kNaN, kNaN}), 0.0);
  EXPECT_EQ(ShiftOf({}), 0.0);
  EXPECT_EQ(ShiftOf({0.1 + 0.2, 0.3, 0.3}), 0.0) << "the last digit of a calculated number says nothing";
  EXPECT_NE(ShiftOf({1.0 + 1e-11, 1.0, 1.0}), 0.0);
}

TEST(ShiftOf, IsNoneOfALongConstantColumnWhoseMeanIsRounded) {
  EXPECT_EQ(ShiftOf(std::vector<double>(100000, 0.1)), 0.0);
}

TEST(LargestRatioWithoutShift, LeavesNoColumnThatLosesDigits) {
  for (const int n : {2, 3, 10, 1000, 100000}) {
    SCOPED_TRACE(n);
    // The least deviation of a column whose least and largest cells lie 2 apart: all others are half-way.
    const double largest = 0.999 * 2.0 * LargestRatioWithoutShift(n);
    std::vector<double> cells(static_cast<std::size_t>(n), largest - 1.0);
    cells.front() = largest;
    cells.back() = largest - 2.0;
    EXPECT_FALSE(LosesDigits(cells));
    // 2 % further from zero, the hundredth that is allowed for rounding is used up.
    for (double& cell : cells) cell += 0.02 * largest + 1.0;
    EXPECT_TRUE(LosesDigits(cells));
  }
}

TEST(SingleCells, AreInfiniteBeyondSinglePrecision) {
  int moved = 0;
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  EXPECT_THAT(SingleCells({3.3e38, -3.3e38, 1.0}, -3.3e38, &moved), ElementsAre(kInfinity, 0.0F, 3.3e38F));
  EXPECT_THAT(SingleCells({-3.3e38}, 3.3e38, &moved), ElementsAre(-kInfinity));
}

TEST(SingleCells, KeepTheDigitsThatAShiftSets) {
  int moved = 0;
  const std::vector<double> cells = {16777217.0, kNaN, 16777216.0, 16777219.0};
  EXPECT_THAT(SingleCells(cells, 0.0, &moved), ElementsAre(16777216.0F, -99.0F, 16777216.0F, 16777220.0F));
  EXPECT_THAT(SingleCells(cells, 16777217.0, &moved), ElementsAre(0.0F, -99.0F, -1.0F, 2.0F));
  EXPECT_EQ(moved, 0);
}

TEST(SingleCells, MoveACellOffMinus99AndCountTheMeasuredOnesAlone) {
  int moved = 0;
  EXPECT_THAT(SingleCells({-99.0, -98.0}, 0.0, &moved), ElementsAre(std::nextafter(-99.0F, -100.0F), -98.0F));
  EXPECT_EQ(moved, 1);
  EXPECT_THAT(SingleCells({999901.0}, 1e6, &moved), ElementsAre(std::nextafter(-99.0F, -100.0F)));
  EXPECT_EQ(moved, 1) << "nobody has measured it";
  Notes notes;
  NoteMovedCells(moved, &notes);
  EXPECT_THAT(notes.Lines(), ElementsAre(HasSubstr("1 cell measured as -99 is taken as -99.0000076")));
}

TEST(InUnitsOfTable, NamesACellByTheFewestDigitsThatBringItBack) {
  EXPECT_EQ(InUnitsOfTable(0.1F, 0.0), 0.1);
  EXPECT_EQ(InUnitsOfTable(0.25F, 1e6), 1000000.25);
  for (const double measured : {10000003.5979, 9999998.6, 1e7}) {
    const double shift = 10000001.234567;
    EXPECT_EQ(InUnitsOfTable(static_cast<float>(measured - shift), shift), measured);
  }
}

}  // namespace
}  // namespace kalmia::analysis
