#include "kalmia/o2pls/PLSMissingValueEstimator.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "FillingCase.h"
#include "kalmia/support/LanguageString.h"
#include "testing/MessageOf.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

namespace {

using namespace filling;


// ---- Which table is filled from which

TEST(PLSMissingValueEstimator, RefusesTablesOfDifferentNumbersOfRowsWhateverIsToBeFilledAndChangesNothing) {
  const Table filled = RandomMatrix<float>(9, 4, 0.2, 1);
  const Table complete = RandomMatrix<float>(9, 4, 0, 1);
  for (const Table& other :
       {RandomMatrix<float>(8, 2, 0.2, 2), RandomMatrix<float>(10, 2, 0.2, 2), Table(0, 2), Table()})
    for (const bool both : {false, true}) {
      SCOPED_TRACE(std::to_string(other.SizeRows()) + (both ? " rows, both" : " rows"));
      for (const Table& table : {filled, complete}) {
        Table X = table, Y = other;
        EXPECT_EQ(MessageOf([&] { PLSMissingValueEstimator(X, Y, both); }),
                  "The two tables have not the same number of rows.");
        EXPECT_EQ(CellsOf(X), CellsOf(table));
        EXPECT_EQ(CellsOf(Y), CellsOf(other));
      }
    }
}

TEST(PLSMissingValueEstimator, HasNoFirstComponentWithoutYColumns) {
  const Table filled = RandomMatrix<float>(9, 4, 0.2, 1);
  Table X = filled, Y(9, 0);
  try {
    PLSMissingValueEstimator(X, Y, /*both=*/true);
    ADD_FAILURE() << "filled from nothing";
  } catch (const NCError& error) {
    EXPECT_EQ(error.GetLevel(), NCError::Level1);
    EXPECT_STREQ(error.GetMessage(), LanguageString::Get(10159));
  }
  EXPECT_EQ(CellsOf(X), CellsOf(filled));
}

TEST(PLSMissingValueEstimator, DoesNothingToCompleteTables) {
  const Tables tables = RelatedTables(12, 4, 2, 2, 0.1F);
  for (const bool both : {false, true}) {
    Table X = tables.X, Y = tables.Y;
    ProgressLog log;
    const RecordOwnBars bars(&log);
    PLSMissingValueEstimator(X, Y, both);
    EXPECT_EQ(CellsOf(X), CellsOf(tables.X));
    EXPECT_EQ(CellsOf(Y), CellsOf(tables.Y));
    EXPECT_EQ(log.Joined(), "") << "no model is made";
  }
}

TEST(PLSMissingValueEstimator, LeavesTheHolesOfYWhereOnlyXIsToBeFilled) {
  const Tables tables = RelatedTables(20, 5, 3, 2, 0.1F);
  const Table Y = WithHoles(tables.Y, 0.1, 8);
  ASSERT_GT(Y.GetNumMisVal(), 0);
  for (const double holesOfX : {0.0, 0.1}) {
    Table X = WithHoles(tables.X, holesOfX, 9), sameY = Y;
    PLSMissingValueEstimator(X, sameY, /*both=*/false);
    EXPECT_EQ(X.GetNumMisVal(), 0);
    EXPECT_EQ(CellsOf(sameY), CellsOf(Y));
  }
}

TEST(PLSMissingValueEstimator, FillsYFromACompleteXWhereBothAreToBeFilled) {
  const Tables tables = RelatedTables(20, 5, 3, 2, 0.1F);
  const Table holed = WithHoles(tables.Y, 0.1, 8);
  Table X = tables.X, Y = holed;
  PLSMissingValueEstimator(X, Y, /*both=*/true);
  EXPECT_EQ(CellsOf(X), CellsOf(tables.X));
  EXPECT_EQ(CellsOf(Y), CellsOf(FilledByTwin(holed, tables.X)));
  EXPECT_EQ(Y.GetNumMisVal(), 0);
}

TEST(PLSMissingValueEstimator, FillsYFromTheXThatItHasJustCompleted) {
  const Tables tables = RelatedTables(30, 6, 3, 2, 0.1F);
  const Table holedX = WithHoles(tables.X, 0.1, 8), holedY = WithHoles(tables.Y, 0.1, 9);
  Table X = holedX, Y = holedY;
  PLSMissingValueEstimator(X, Y, /*both=*/true);
  const Table expectedX = FilledByTwin(holedX, holedY);
  EXPECT_EQ(CellsOf(X), CellsOf(expectedX));
  EXPECT_EQ(CellsOf(Y), CellsOf(FilledByTwin(holedY, expectedX)));
  EXPECT_NE(CellsOf(Y), CellsOf(FilledByTwin(holedY, holedX))) << "the test would not tell";
  EXPECT_TRUE(HasExactCounts(X));
  EXPECT_TRUE(HasExactCounts(Y));
  EXPECT_EQ(X.GetNumMisVal() + Y.GetNumMisVal(), 0);
}

TEST(PLSMissingValueEstimator, TouchesNoCellThatHeldAValueAndNoCopy) {
  const Tables tables = RelatedTables(20, 5, 2, 2, 0.1F);
  Table X = WithHoles(tables.X, 0.2, 8), Y = tables.Y;
  const Table copy = X;
  const auto before = CellsOf(X);
  PLSMissingValueEstimator(X, Y, /*both=*/false);
  EXPECT_EQ(CellsOf(copy), before);
  for (std::size_t i = 0; i < before.size(); ++i)
    for (std::size_t j = 0; j < before[i].size(); ++j)
      if (before[i][j] != kMissing) {
        EXPECT_EQ(CellsOf(X)[i][j], before[i][j]);
      }
}

// ---- What a cell is filled with

TEST(PLSMissingValueEstimator, GivesTheCellsOfATableOfRankOneBack) {
  // x_ij = t_i p_j and y_i = 2 t_i, with one hole in each of three columns: every regression over pairs is exact, as
  // none of the denominators falls to a third.
  const float t[] = {3, -2, 1, 4, -1, -3, 2, -4};
  const float p[] = {1, -2, 0.5F, 3};
  Table X(8, 4), Y(8, 1);
  for (int i = 1; i <= 8; ++i) {
    Y(i, 1, 2 * t[i - 1]);
    for (int j = 1; j <= 4; ++j) X(i, j, t[i - 1] * p[j - 1]);
  }
  const Table whole = X;
  X(1, 1, kMissing);
  X(4, 2, kMissing);
  X(6, 3, kMissing);
  PLSMissingValueEstimator(X, Y, /*both=*/false);
  // w, t and p are each rounded to float, and each is a sum of few terms in double: three roundings of 2^-24, relative,
  // and one of the product; the sums pass them on at most once each.
  for (const auto& [i, j] : {std::pair{1, 1}, {4, 2}, {6, 3}})
    EXPECT_NEAR(X[i][j], whole[i][j], 8 * 0x1p-24 * std::abs(whole[i][j]));
}

struct Shape {
  const char* name;
  int rows, xVariables, yVariables, latent;
  double holes;
};

class PLSMissingValueEstimatorOnTables : public ::testing::TestWithParam<Shape> {};

const Shape kShapes[] = {{"OneY", 30, 6, 1, 2, 0.1},      {"ThreeY", 30, 6, 3, 3, 0.1},
                         {"Wide", 20, 40, 2, 2, 0.2},     {"ManyHoles", 40, 10, 3, 3, 0.3},
                         {"FewRows", 6, 4, 2, 1, 0.1},    {"MoreThanAHundredRows", 120, 8, 4, 4, 0.1}};

INSTANTIATE_TEST_SUITE_P(, PLSMissingValueEstimatorOnTables, ::testing::ValuesIn(kShapes),
                         [](const ::testing::TestParamInfo<Shape>& info) { return info.param.name; });

TEST_P(PLSMissingValueEstimatorOnTables, FillsWithTheTwinsReconstructionToTheBit) {
  const Shape& s = GetParam();
  const Tables tables = RelatedTables(s.rows, s.xVariables, s.yVariables, s.latent, 0.1F);
  const Table X = WithHoles(tables.X, s.holes, 8), Y = WithHoles(tables.Y, s.holes, 9);
  Search search{};
  const Table expected = FilledByTwin(X, Y, &search);
  RecordProperty("components", search.components);
  ASSERT_GE(search.components, 1);
  EXPECT_EQ(CellsOf(Filled(X, Y)), CellsOf(expected));
}

TEST_P(PLSMissingValueEstimatorOnTables, ComesCloserToTheTruthThanTheMeanWhichIsZero) {
  const Shape& s = GetParam();
  const Tables tables = RelatedTables(s.rows, s.xVariables, s.yVariables, s.latent, 0.1F);
  const Table X = WithHoles(tables.X, s.holes, 8);
  const Table filled = Filled(X, tables.Y);
  double errors = 0.0, squares = 0.0;
  for (int i = 1; i <= X.SizeRows(); ++i)
    for (int j = 1; j <= X.SizeColumns(); ++j)
      if (X[i][j] == kMissing) {
        const double truth = tables.X[i][j];
        errors += (filled[i][j] - truth) * (filled[i][j] - truth);
        squares += truth * truth;
      }
  EXPECT_LT(errors, squares / 2) << "the directions in common hold far more than half of X";
}

TEST(PLSMissingValueEstimator, GivesTheSameBitsFromAnyNumberOfThreads) {
  const Tables tables = RelatedTables(400, 301, 2, 3, 0.3F);  // cells enough for a team to pay
  const Table X = WithHoles(tables.X, 0.1, 8);
  std::vector<std::vector<std::vector<float>>> results;
  for (const int threads : {1, 2, 3}) {
    const Threads some(threads);
    EXPECT_EQ(TeamReallyGot(std::int64_t{X.SizeRows()} * X.SizeColumns()), threads);
    results.push_back(CellsOf(Filled(X, tables.Y)));
  }
  EXPECT_TRUE(results[1] == results[0]);
  EXPECT_TRUE(results[2] == results[0]);
}

TEST(PLSMissingValueEstimator, FillsWithZeroWhereARowOrAColumnHasNothing) {
  const Tables tables = RelatedTables(20, 5, 1, 1, 0.05F);
  Table X = tables.X, Y = tables.Y;
  X.SetRow(3, kMissing);
  for (int i = 1; i <= 20; ++i) X(i, 2, kMissing);
  X(7, 4, kMissing);
  PLSMissingValueEstimator(X, Y, /*both=*/false);
  for (int j = 1; j <= 5; ++j) EXPECT_EQ(X[3][j], 0.0F);
  for (int i = 1; i <= 20; ++i) EXPECT_EQ(X[i][2], 0.0F);
  EXPECT_NE(X[7][4], 0.0F);
}

// ---- Tables with hardly anything in them

TEST(PLSMissingValueEstimator, FailsUnchangedWhereThereIsNoFirstComponent) {
  const Table X = WithHoles(RandomMatrix<float>(10, 4, 0, 1), 0.2, 8);
  struct Case {
    const char* what;
    Table X, Y;
  };
  Table infinite = X, nan = X;
  infinite(2, 2, std::numeric_limits<float>::infinity());
  nan(2, 2, std::nanf(""));
  const Table y = RandomMatrix<float>(10, 2, 0, 2);
  const Case cases[] = {{"Y is zero", X, Table(10, 2, 0.0F)},
                        {"Y is empty", X, Table(10, 2)},
                        {"X is empty", Table(10, 4), y},
                        {"X has an infinite cell", infinite, y},
                        {"X has a cell that is not a number", nan, y},
                        {"Y has no columns", X, Table(10, 0)}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    Table tableX = c.X, tableY = c.Y;
    EXPECT_EQ(LevelOf([&] { PLSMissingValueEstimator(tableX, tableY, /*both=*/true); }), NCError::Level1);
    EXPECT_TRUE(tableX == c.X);
    EXPECT_TRUE(tableY == c.Y);
  }
}

TEST(PLSMissingValueEstimator, ManagesTablesWithHardlyAnyRows) {
  Table none(0, 3), noneY(0, 1);
  EXPECT_NO_THROW(PLSMissingValueEstimator(none, noneY, /*both=*/true));
  // One row: the one round of cross-validation has nothing to fit, and no component beats it.
  Table one = MatrixOf<float>({{1, kMissing, 2}}), oneY = MatrixOf<float>({{3}});
  PLSMissingValueEstimator(one, oneY, /*both=*/true);
  EXPECT_EQ(CellsOf(one), CellsOf(MatrixOf<float>({{1, 0, 2}})));
  Table two = MatrixOf<float>({{1, kMissing}, {-1, 2}}), twoY = MatrixOf<float>({{1}, {-1}});
  EXPECT_NO_THROW(PLSMissingValueEstimator(two, twoY, /*both=*/true));
  EXPECT_EQ(two.GetNumMisVal(), 0);
}

}  // namespace
