// How many components of the model fill a table.
#include <gtest/gtest.h>

#include <bitset>
#include <cmath>
#include <vector>

#include "FillingCase.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "testing/RandomTables.h"

namespace {

using namespace filling;


TEST(PLSMissingValueEstimatorSearch, LeavesOutAComponentThatDoesNotBeatTheLimitOfItsCrossValidation) {
  Tables tables = RelatedTables(40, 6, 2, 2, 0.5F);
  tables.X = WithHoles(tables.X, 0.1, 8);
  Search search{};
  const Table expected = FilledByTwin(tables.X, tables.Y, &search);
  ASSERT_EQ(search.end, End::Q2);
  ASSERT_EQ(search.components, 2);
  EXPECT_EQ(CellsOf(Filled(tables.X, tables.Y)), CellsOf(expected));
}

TEST(PLSMissingValueEstimatorSearch, LeavesOutAComponentThatExplainsTooLittleOfAllAndOfEachColumn) {
  // Q2 of the second component is good, but it explains 2 % of one column and 0.1 % of all.
  const Tables tables = TwoScores(/*share=*/0.02F, /*weight=*/4.5F);
  Search search{};
  const Table expected = FilledByTwin(tables.X, tables.Y, &search);
  ASSERT_EQ(search.end, End::LackOfFit);
  ASSERT_EQ(search.components, 1);
  const Table filled = Filled(tables.X, tables.Y);
  EXPECT_EQ(CellsOf(filled), CellsOf(expected));
  EXPECT_LT(std::abs(filled[8][3]), 0.1F) << "the second score has 0.5 there";
}

TEST(PLSMissingValueEstimatorSearch, KeepsAComponentThatExplainsMoreThanThreePercentOfOneColumn) {
  // 4 % of one column, which is 0.2 % of all: both thresholds have to fail for the component to be left out.
  const Tables tables = TwoScores(/*share=*/0.04F, /*weight=*/4.5F);
  NCPLS model(&tables.X, &tables.Y, 200);
  const Search search = CountComponents(&model, tables.Y);
  ASSERT_GE(search.components, 2);
  const Table filled = Filled(tables.X, tables.Y);
  EXPECT_EQ(CellsOf(filled), CellsOf(FilledBy(model, search.components, tables.X)));
  EXPECT_NE(CellsOf(filled), CellsOf(FilledBy(model, 1, tables.X)));
}

TEST(PLSMissingValueEstimatorSearch, KeepsAComponentThatExplainsOnePercentOfAllThoughLittleOfEachColumn) {
  // 2 % of each column: below 3 %, but more than 1 % of all.
  Tables tables = TwoScores(/*share=*/0.02F, /*weight=*/1.0F);
  for (int i = 1; i <= 120; ++i) tables.Y(i, 1, -tables.Y[i][2]);
  NCPLS model(&tables.X, &tables.Y, 200);
  const Search search = CountComponents(&model, tables.Y);
  ASSERT_GE(search.components, 2);
  EXPECT_EQ(CellsOf(Filled(tables.X, tables.Y)), CellsOf(FilledBy(model, search.components, tables.X)));
}

TEST(PLSMissingValueEstimatorSearch, FillsWithZerosWhereNoComponentCounts) {
  const Table X = WithHoles(RandomMatrix<float>(40, 5, 0, 21), 0.1, 8);
  const Table Y = RandomMatrix<float>(40, 2, 0, 22);
  Search search{};
  FilledByTwin(X, Y, &search);
  ASSERT_EQ(search.components, 0);
  const Table filled = Filled(X, Y);
  for (int i = 1; i <= 40; ++i)
    for (int j = 1; j <= 5; ++j) EXPECT_EQ(filled[i][j], X[i][j] == kMissing ? 0.0F : X[i][j]);
}

/// Four equal columns, cells that are powers of two, and y among them: a first component in exact arithmetic, behind
/// which nothing at all is left, so that a second one cannot be computed.
Tables ExactRankOne() {
  Tables tables{Table(8, 4), Table(8, 1)};
  for (int i = 1; i <= 8; ++i) {
    const float t = i % 2 == 0 ? 1.0F : -1.0F;
    tables.Y(i, 1, t);
    for (int j = 1; j <= 4; ++j) tables.X(i, j, t);
  }
  return tables;
}

TEST(PLSMissingValueEstimatorSearch, KeepsAllComponentsSoFarWhereTheModelCannotGoOn) {
  Tables tables = ExactRankOne();
  tables.X(3, 2, kMissing);
  Search search{};
  FilledByTwin(tables.X, tables.Y, &search);
  ASSERT_EQ(search.end, End::NoComponent);
  ASSERT_EQ(search.components, 1);
  EXPECT_EQ(Filled(tables.X, tables.Y)[3][2], -1.0F);
}

// ---- At the thresholds themselves

/// What a Y column has of four scores at right angles, whose signs change every row, every second, fourth and eighth.
struct Parts {
  float first, second, third, fourth;
};

/// Tables of 128 rows, more than a hundred so that any Q2 above 0 passes, whose components are exact: t_1 is the first
/// score, t_2 the second one, and each takes just its own part out of Y. X has the first score in column 1 and the
/// others nowhere but for the second in columns 2 and 3, which are so small, 2^-40 and 2^-70, that each weight is 1
/// beside the next one and vanishes in the sums. The one hole is in column 3.
Tables ExactScores(const std::vector<Parts>& columns) {
  Tables tables{Table(128, 3), Table(128, static_cast<int>(columns.size()))};
  for (int i = 1; i <= 128; ++i) {
    const std::bitset<4> bits(static_cast<unsigned>(i));
    const auto sign = [&bits](std::size_t which) { return bits[which] ? -1.0F : 1.0F; };
    tables.X(i, 1, sign(0));
    tables.X(i, 2, 0x1p-40F * sign(1));
    tables.X(i, 3, 0x1p-70F * sign(1));
    int j = 0;
    for (const auto& [first, second, third, fourth] : columns)
      tables.Y(i, ++j, first * sign(0) + second * sign(1) + third * sign(2) + fourth * sign(3));
  }
  tables.X(5, 3, kMissing);
  return tables;
}

/// Whether the second component filled the hole: it has 2^-70 there, and the first one as good as nothing.
bool SecondCounts(const Tables& tables) { return std::abs(Filled(tables.X, tables.Y)[5][3]) > 0x1p-71F; }

TEST(PLSMissingValueEstimatorSearch, GoesOnWhereAComponentExplainsJustOnePercentOfAll) {
  // The second score has 1 of 9^2 + 1 + 4^2 + 1 + 1 = 100, and 1 of 82 in its column.
  EXPECT_TRUE(SecondCounts(ExactScores({{9, 1, 0, 0}, {4, 0, 0, 0}, {1, 0, 0, 0}, {1, 0, 0, 0}})));
  EXPECT_FALSE(SecondCounts(ExactScores({{9, 1, 0, 0}, {4, 0, 0, 0}, {1, 0, 0, 0}, {1.125F, 0, 0, 0}})))
      << "a little less of all";
}

TEST(PLSMissingValueEstimatorSearch, RoundsTheTotalToFloat) {
  // As above, 1 of 100, but for another 2^-30: only of 100 itself the second score has all of 1 %.
  EXPECT_TRUE(SecondCounts(
      ExactScores({{9, 1, 0, 0}, {4, 0, 0, 0}, {1, 0, 0, 0}, {1, 0, 0, 0}, {0x1p-15F, 0, 0, 0}})));
}

TEST(PLSMissingValueEstimatorSearch, AddsUpInDoubleWhatIsLeft) {
  // Again 1 of 100. Before it 64 + 2^-18 are left and after it 63 + 2^-18, the former of which is no float: the
  // difference of the two as floats would be less than 1.
  EXPECT_TRUE(SecondCounts(ExactScores({{1, 1, 7, 0}, {5, 0, 3, 0}, {3, 0, 2, 1}, {1, 0, 0x1p-9F, 0}})));
}

TEST(PLSMissingValueEstimatorSearch, EndsWhereAComponentExplainsJustThreePercentOfAColumn) {
  // The second score has 9 of 17^2 + 3^2 + 1 + 1 = 300 in its column, and of all 9 of 1200.
  EXPECT_FALSE(SecondCounts(ExactScores({{30, 0, 0, 0}, {17, 3, 1, 1}})));
  EXPECT_TRUE(SecondCounts(ExactScores({{30, 0, 0, 0}, {17, 3, 1, 0.875F}}))) << "a little more of the column";
}

TEST(PLSMissingValueEstimatorSearch, EndsWithAComponentWhoseQ2IsJustTheLimit) {
  // The rows of each group have a variable of their own: without them it has no weight, so that nothing of them is
  // predicted. That is a Q2 of 0, and beyond a hundred rows the limit.
  Tables tables{Table(105, 7, 0.0F), Table(105, 1)};
  for (int i = 1; i <= 105; ++i) {
    const float sign = i / 7 % 2 == 0 ? 1.0F : -1.0F;
    tables.X(i, 1 + i % 7, sign);
    tables.Y(i, 1, sign);
  }
  tables.X(2, 5, kMissing);
  NCPLS model(&tables.X, &tables.Y, 200);
  model.NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true);
  PLSCrossValidation validation(&model, 7, nullptr);
  const NCDataVector<float> ssY(1, 105.0F);
  validation.NextComponent(&(*model.GetWprim())[1], 200, ssY, nullptr, /*quiet=*/true);
  ASSERT_EQ(validation.GetQ2Tot(), validation.GetQ2Lim());
  ASSERT_NE(FilledBy(model, 1, tables.X)[2][5], 0.0F);
  EXPECT_EQ(Filled(tables.X, tables.Y)[2][5], 0.0F);
}

TEST(PLSMissingValueEstimatorSearch, CountsAColumnOfYWithoutCellsAsMinus99InTheTotal) {
  // The second component explains 0.1 of a total of 102: too little, but not of 102 - 99.
  Tables tables = TwoScores(/*share=*/0.02F, /*weight=*/4.5F);
  tables.Y = tables.Y * 0.2L;
  EXPECT_LT(std::abs(Filled(tables.X, tables.Y)[8][3]), 0.1F);
  tables.Y.InsertColumn(3, NCDataVector<float>(120));
  EXPECT_GT(std::abs(Filled(tables.X, tables.Y)[8][3]), 0.4F) << "the second score has 0.5 there";
}
}  // namespace
