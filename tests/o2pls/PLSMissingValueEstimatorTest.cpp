#include "kalmia/o2pls/PLSMissingValueEstimator.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/PLSCrossValidation.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

namespace {

using Table = NCDataMatrix<float>;

constexpr float kMissing = kHole<float>;

struct Tables {
  Table X;
  Table Y;
};

/// `latent` directions that X and Y have in common, each weaker than the one before, and noise of this size.
Tables RelatedTables(int rows, int xVariables, int yVariables, int latent, float noise) {
  NCDataMatrix<float> scores = RandomMatrix<float>(latent, rows, 0, 1);
  for (int a = 2; a <= latent; ++a) scores.MultiplyRow(a, std::pow(0.6F, static_cast<float>(a - 1)));
  const auto table = [&](int columns, unsigned seed) {
    Table product = scores.MatrixMultiply(RandomMatrix<float>(latent, columns, 0, seed), true, false);
    return product += RandomMatrix<float>(rows, columns, 0, seed + 1) * static_cast<long double>(noise);
  };
  return {table(xVariables, 2), table(yVariables, 4)};
}

/// The table with these holes, a share `holes` of the cells, always the same for the same seed.
Table WithHoles(Table table, double holes, unsigned seed) {
  const Table mask = RandomMatrix<float>(table.SizeRows(), table.SizeColumns(), holes, seed);
  for (int i = 1; i <= table.SizeRows(); ++i)
    for (int j = 1; j <= table.SizeColumns(); ++j)
      if (mask[i][j] == kMissing) table(i, j, kMissing);
  return table;
}

/// What ended the search for the number of components.
enum class End { Q2, LackOfFit, NoComponent };

struct Search {
  int components;
  End end;
};

/// The model's components that count, found in the plainest way: each rule as it is said, with sums of its own.
Search CountComponents(NCPLS* model, const Table& Y) {
  const auto next = [model] { model->NextComponent(nullptr, nullptr, /*quiet=*/true, /*strict=*/true); };
  NCDataVector<float> start(Y.SizeColumns());
  double total = 0.0;
  for (int j = 1; j <= Y.SizeColumns(); ++j) {
    start(j, static_cast<float>(Y.GetColumnSS(j, 0)));
    total += static_cast<double>(start[j]);
  }
  next();
  PLSCrossValidation validation(model, 7, nullptr);
  for (int a = 1;; ++a) {
    validation.NextComponent(&(*model->GetWprim())[a], 200, start, nullptr, /*quiet=*/true);
    if (!(validation.GetQ2Tot() > validation.GetQ2Lim())) return {a - 1, End::Q2};
    const Table before = *model->GetYResiduals();
    model->CalculateResiduals();
    double explained = 0.0;
    bool oneColumn = false;
    for (int j = 1; j <= Y.SizeColumns(); ++j) {
      const double ofColumn =
          static_cast<double>(before.GetColumnSS(j, 0) - model->GetYResiduals()->GetColumnSS(j, 0));
      explained += ofColumn;
      oneColumn = oneColumn || ofColumn > 0.03 * static_cast<double>(start[j]);
    }
    if (explained < 0.01 * total && !oneColumn) return {a - 1, End::LackOfFit};
    try {
      next();
    } catch (const NCError&) {
      return {a, End::NoComponent};
    }
  }
}

/// X filled by the model's first components.
Table FilledBy(const NCPLS& model, int components, Table X) {
  for (int i = 1; i <= X.SizeRows(); ++i)
    for (int j = 1; j <= X.SizeColumns(); ++j) {
      if (X[i][j] != kMissing) continue;
      double sum = 0.0;
      for (int a = 1; a <= components; ++a) {
        const double t = (*model.GetTprim())[a][i], p = (*model.GetPprim())[a][j];
        if (t != kMissing && p != kMissing) sum += t * p;
      }
      X(i, j, static_cast<float>(sum));
    }
  return X;
}

Table FilledByTwin(const Table& X, const Table& Y, Search* search = nullptr) {
  NCPLS model(&X, &Y, 200);
  const Search found = CountComponents(&model, Y);
  if (search) *search = found;
  return FilledBy(model, found.components, X);
}

Table Filled(Table X, Table Y) {
  PLSMissingValueEstimator(X, Y, /*both=*/false);
  return X;
}

/// The level of the NCError that the call ends with; none where it ends well.
template <class Call>
std::optional<NCError::Level> LevelOf(const Call& call) {
  try {
    call();
  } catch (const NCError& error) {
    return error.GetLevel();
  }
  return std::nullopt;
}

// ---- Which table is filled from which

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

// ---- How many components count

/// 120 rows, so that any Q2 above 0 passes, and two scores at right angles whose signs change every row and every
/// second row. X has each of them in two columns; of Y's two columns `share` of the second's sum of squares is due to
/// the second score, and the first column is `weight` times as large as the second.
Tables TwoScores(float share, float weight) {
  Tables tables{Table(120, 4), Table(120, 2)};
  for (int i = 1; i <= 120; ++i) {
    const float first = i % 2 == 0 ? 1.0F : -1.0F;
    const float second = i / 2 % 2 == 0 ? 1.0F : -1.0F;
    const float cells[] = {first, first, second / 2, second / 2};
    for (int j = 1; j <= 4; ++j) tables.X(i, j, cells[j - 1]);
    tables.Y(i, 1, weight * first);
    tables.Y(i, 2, std::sqrt(1 - share) * first + std::sqrt(share) * second);
  }
  tables.X(5, 1, kMissing);
  tables.X(8, 3, kMissing);
  return tables;
}

TEST(PLSMissingValueEstimator, LeavesOutAComponentThatDoesNotBeatTheLimitOfItsCrossValidation) {
  Tables tables = RelatedTables(40, 6, 2, 2, 0.5F);
  tables.X = WithHoles(tables.X, 0.1, 8);
  Search search{};
  const Table expected = FilledByTwin(tables.X, tables.Y, &search);
  ASSERT_EQ(search.end, End::Q2);
  ASSERT_EQ(search.components, 2);
  EXPECT_EQ(CellsOf(Filled(tables.X, tables.Y)), CellsOf(expected));
}

TEST(PLSMissingValueEstimator, LeavesOutAComponentThatExplainsTooLittleOfAllAndOfEachColumn) {
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

TEST(PLSMissingValueEstimator, KeepsAComponentThatExplainsMoreThanThreePercentOfOneColumn) {
  // 4 % of one column, which is 0.2 % of all: both thresholds have to fail for the component to be left out.
  const Tables tables = TwoScores(/*share=*/0.04F, /*weight=*/4.5F);
  NCPLS model(&tables.X, &tables.Y, 200);
  const Search search = CountComponents(&model, tables.Y);
  ASSERT_GE(search.components, 2);
  const Table filled = Filled(tables.X, tables.Y);
  EXPECT_EQ(CellsOf(filled), CellsOf(FilledBy(model, search.components, tables.X)));
  EXPECT_NE(CellsOf(filled), CellsOf(FilledBy(model, 1, tables.X)));
}

TEST(PLSMissingValueEstimator, KeepsAComponentThatExplainsOnePercentOfAllThoughLittleOfEachColumn) {
  // 2 % of each column: below 3 %, but more than 1 % of all.
  Tables tables = TwoScores(/*share=*/0.02F, /*weight=*/1.0F);
  for (int i = 1; i <= 120; ++i) tables.Y(i, 1, -tables.Y[i][2]);
  NCPLS model(&tables.X, &tables.Y, 200);
  const Search search = CountComponents(&model, tables.Y);
  ASSERT_GE(search.components, 2);
  EXPECT_EQ(CellsOf(Filled(tables.X, tables.Y)), CellsOf(FilledBy(model, search.components, tables.X)));
}

TEST(PLSMissingValueEstimator, FillsWithZerosWhereNoComponentCounts) {
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

TEST(PLSMissingValueEstimator, KeepsAllComponentsSoFarWhereTheModelCannotGoOn) {
  Tables tables = ExactRankOne();
  tables.X(3, 2, kMissing);
  Search search{};
  FilledByTwin(tables.X, tables.Y, &search);
  ASSERT_EQ(search.end, End::NoComponent);
  ASSERT_EQ(search.components, 1);
  EXPECT_EQ(Filled(tables.X, tables.Y)[3][2], -1.0F);
}

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

// ---- Progress, a stop, memory

TEST(PLSMissingValueEstimator, OpensABarForEachComponentAndEachCrossValidation) {
  const Tables tables = TwoScores(/*share=*/0.02F, /*weight=*/4.5F);
  ProgressLog log;
  {
    const RecordOwnBars bars(&log);
    Filled(tables.X, tables.Y);
  }
  CString title;
  title.Format(LanguageString::Get(10047), 2);
  EXPECT_EQ(log.Count("open"), 4) << log.Joined();
  EXPECT_THAT(log.Joined(), ::testing::HasSubstr(std::string("open ") + static_cast<const char*>(title)));
  EXPECT_EQ(log.Count("~"), 4);
}

TEST(PLSMissingValueEstimator, PassesAStopOnWithTheTableInHandAsItWas) {
  const Tables tables = RelatedTables(20, 5, 3, 2, 0.1F);
  const Table holedX = WithHoles(tables.X, 0.1, 8), holedY = WithHoles(tables.Y, 0.1, 9);
  const Table filledX = Filled(holedX, holedY);
  constexpr int kNone = -1;
  std::vector<int> outcomes;  // per call the level of the error
  bool whileFillingY = false;
  while (outcomes.empty() || outcomes.back() != kNone) {
    SCOPED_TRACE("stop at call " + std::to_string(outcomes.size() + 1));
    ProgressLog log;
    log.stopAt = static_cast<int>(outcomes.size()) + 1;
    const RecordOwnBars bars(&log);
    Table X = holedX, Y = holedY;
    const auto level = LevelOf([&] { PLSMissingValueEstimator(X, Y, /*both=*/true); });
    outcomes.push_back(level ? static_cast<int>(*level) : kNone);
    EXPECT_EQ(log.Count("open"), log.Count("~")) << "every bar is closed";
    if (!level) {  // the last question is over, only bars of the last cross-validation are to come
      EXPECT_EQ(Y.GetNumMisVal(), 0);
      continue;
    }
    EXPECT_TRUE(Y == holedY);
    EXPECT_EQ(Y.GetNumMisVal(), holedY.GetNumMisVal());
    if (X.GetNumMisVal() == 0) whileFillingY = true;
    EXPECT_EQ(CellsOf(X), CellsOf(whileFillingY ? filledX : holedX));
  }
  EXPECT_THAT(outcomes, ::testing::Contains(2)) << "while a component iterates";
  EXPECT_THAT(outcomes, ::testing::Contains(0)) << "at the end of one";
  EXPECT_THAT(outcomes, ::testing::Not(::testing::Contains(1)));
  EXPECT_TRUE(whileFillingY);
}

TEST(PLSMissingValueEstimator, LeavesTheTableAsItWasWheneverMemoryRunsOut) {
  const Tables tables = RelatedTables(8, 3, 1, 1, 0.1F);
  const Table holed = WithHoles(tables.X, 0.1, 8);
  ASSERT_GT(holed.GetNumMisVal(), 0);
  bool failed = true;
  int which = 0;
  while (failed) {
    SCOPED_TRACE("allocation " + std::to_string(++which));
    Table X = holed, Y = tables.Y;
    {
      const FailAllocation failure(which);
      try {
        PLSMissingValueEstimator(X, Y, /*both=*/false);
      } catch (const std::bad_alloc&) {
        EXPECT_TRUE(X == holed);
      }
      failed = failure.HasFailed();
    }
    EXPECT_EQ(X.GetNumMisVal() > 0, failed);
  }
  EXPECT_GT(which, 50) << "there is more to allocate than that";
}

}  // namespace
