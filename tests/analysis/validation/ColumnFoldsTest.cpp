#include "kalmia/analysis/validation/ColumnFolds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kalmia/analysis/validation/RandomDraws.h"

namespace kalmia::analysis {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;

TEST(ColumnFolds, InterleaveTheColumnsInAsManyGroupsAsTheRowsHave) {
  const ColumnFolds folds = MakeColumnFolds(5, 3);
  EXPECT_EQ(folds.groups, 3);
  EXPECT_THAT(folds.groupOfColumn, ElementsAre(1, 2, 0, 1, 2));
}

TEST(ColumnFolds, AreNoMoreThanTheColumns) {
  const ColumnFolds folds = MakeColumnFolds(2, 7);
  EXPECT_EQ(folds.groups, 2);
  EXPECT_THAT(folds.groupOfColumn, ElementsAre(1, 0));
}

TEST(ColumnFolds, LeaveMoreColumnsThanComponents) {
  EXPECT_EQ(MostComponentsOfColumns(10, 3), 5);  // 4 columns in the largest group: fewer than 6 components
  EXPECT_EQ(MostComponentsOfColumns(4, 7), 2);   // seven groups would have a column at most
  EXPECT_EQ(MostComponentsOfColumns(2, 2), 0);
  EXPECT_EQ(MostComponentsOfColumns(1, 1), 0);
}

TEST(RowsToPredict, LeaveOutATenthOfTheRowsAtMost) {
  std::vector<int> cells(20, 9);
  cells[3] = 2;
  cells[5] = 4;
  const PredictableRows two = RowsToPredict(cells, 8);  // both may leave
  EXPECT_EQ(two.mostComponents, 8);
  EXPECT_EQ(std::count(two.takesPart.begin(), two.takesPart.end(), false), 2);
  EXPECT_FALSE(two.takesPart[3] || two.takesPart[5]);
  cells[7] = 6;
  const PredictableRows three = RowsToPredict(cells, 8);  // the one with 6 cells has to stay
  EXPECT_EQ(three.mostComponents, 5);
  EXPECT_TRUE(three.takesPart[7]);
  EXPECT_FALSE(three.takesPart[3] || three.takesPart[5]);
}

TEST(RowsToPredict, FallToNoComponentWhereRowsHaveTooFewCells) {
  const PredictableRows rows = RowsToPredict({1, 1, 5}, 3);
  EXPECT_EQ(rows.mostComponents, 0);
  EXPECT_THAT(rows.takesPart, Each(true));
  EXPECT_EQ(RowsToPredict({0, 0, 5}, 3).mostComponents, 0);
  EXPECT_THAT(RowsToPredict({0, 0, 5}, 3).takesPart, ElementsAre(false, false, true));
}

/// Lowers the number one by one.
int PlainMost(const std::vector<int>& cells, int most) {
  const auto leave = [&](int a) {
    return std::count_if(cells.begin(), cells.end(), [=](int outside) { return outside <= a; });
  };
  while (most > 0 && leave(most) * 10 > static_cast<std::ptrdiff_t>(cells.size())) --most;
  return most;
}

TEST(RowsToPredict, KeepTheLargestNumberThatTheRuleAllows) {
  RandomDraws draws(1);
  for (int table = 0; table < 200; ++table) {
    std::vector<int> cells(1 + draws.Below(40));
    for (int& outside : cells) outside = static_cast<int>(draws.Below(12));
    EXPECT_EQ(RowsToPredict(cells, 8).mostComponents, PlainMost(cells, 8));
  }
}

}  // namespace
}  // namespace kalmia::analysis
