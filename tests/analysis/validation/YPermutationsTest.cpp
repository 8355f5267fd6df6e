#include "kalmia/analysis/validation/YPermutations.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/OPLSValidation.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

PLSRecipe RecipeOf(const std::vector<std::string>& y) {
  PLSRecipe recipe;
  recipe.y = y;
  return recipe;
}

RealMatrix CellsOf(const Table& table, int first, int count) {
  RealMatrix cells(static_cast<std::size_t>(table.Rows()), static_cast<std::size_t>(count));
  for (int c = 0; c < count; ++c) {
    const std::vector<double> column = ReadNumbers(table, first + c);
    for (std::size_t i = 0; i < cells.rows; ++i) cells(i, static_cast<std::size_t>(c)) = column[i];
  }
  return cells;
}

RealMatrix InOrder(const RealMatrix& y, const std::vector<std::size_t>& sources) {
  RealMatrix permuted = y;
  for (std::size_t i = 0; i < y.rows; ++i) {
    for (std::size_t j = 0; j < y.columns; ++j) permuted(i, j) = y(sources[i], j);
  }
  return permuted;
}

/// 1 - SSE / SS over all columns, each divided by its variance, of a plain model of all rows.
double PlainR2(const RealMatrix& x, const RealMatrix& y, int components) {
  const PlainPls model = FitPlainPls(x, y, std::vector<bool>(y.rows, true), components);
  const std::vector<double> deviations = ColumnDeviations(y);
  double left = 0.0, whole = 0.0;
  for (std::size_t i = 0; i < y.rows; ++i) {
    for (std::size_t j = 0; j < y.columns; ++j) {
      left += std::pow((y(i, j) - model.predicted.back()(i, j)) / deviations[j], 2);
      whole += std::pow((y(i, j) - model.predicted.front()(i, j)) / deviations[j], 2);
    }
  }
  return 1.0 - left / whole;
}

struct Shape {
  int rows, columns, yColumns;
};

TEST(YPermutations, AreThoseOfPlainRefitsOfEachOrderOfY) {
  for (const Shape& shape : {Shape{14, 40, 1}, {60, 5, 1}, {14, 40, 3}, {60, 5, 2}}) {
    SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.columns));
    const Table table(UnrelatedTable(shape.rows, shape.columns, shape.yColumns, 3), "t.csv");
    std::vector<std::string> names;
    for (int j = 1; j <= shape.yColumns; ++j) names.push_back("y" + std::to_string(j));
    const int first = table.Find("x1");
    const RealMatrix x = CellsOf(table, first, shape.columns);
    const RealMatrix y = CellsOf(table, table.Find("y1"), shape.yColumns);
    FoldRecipe ofFolds;
    ofFolds.groups = 5;
    const Folds folds = MakeFolds(y.rows, ofFolds);
    PLSRecipe recipe = RecipeOf(names);
    recipe.id = first > 0 ? table.ColumnNames().front() : "";
    const PermutationTest test = PermuteY(recipe, table, folds, 2, {12, 7});
    RandomDraws draws(7, RandomUse::Permutations);
    ASSERT_EQ(test.runs.size(), 12U);
    for (std::size_t run = 0; run <= test.runs.size(); ++run) {
      std::vector<std::size_t> sources(y.rows);
      for (std::size_t i = 0; i < y.rows; ++i) sources[i] = i;
      if (run > 0) sources = draws.Order(y.rows);
      const RealMatrix permuted = InOrder(y, sources);
      const PermutationRun& found = run == 0 ? test.original : test.runs[run - 1];
      // Both in double; the twin deflates X and goes by NIPALS, which ends its rounds within 1e-10 where Y has several
      // columns.
      const double tolerance = shape.yColumns == 1 ? 1e-10 : 1e-6;
      EXPECT_NEAR(found.q2, LeftOutErrorsOfPlainPls(x, permuted, folds, 2).q2[2], tolerance) << run;
      EXPECT_NEAR(found.r2, PlainR2(x, permuted, 2), tolerance) << run;
      EXPECT_NEAR(found.correlation, CorrelationWithPermuted(y, sources), 1e-14) << run;  // 1 of the true Y
      EXPECT_TRUE(std::isnan(found.accuracy));
    }
  }
}

TEST(YPermutations, OfTheTrueYHaveTheFiguresOfItsValidation) {
  const std::string text = LinearTable(40, 6, 5);
  PLSRecipe recipe = RecipeOf({"y"});
  recipe.id = "name";
  recipe.components = 2;  // a row with holes may have no more, and then counts for none
  for (const std::string& table : {text, WithHoles(text, 17)}) {
    for (const NCScale::Scaling scaling : {NCScale::ScalingUnitVariance, NCScale::ScalingPareto,
                                           NCScale::ScalingCentre, NCScale::ScalingNone}) {
      recipe.scaling = scaling;
      SCOPED_TRACE(ScalingWord(scaling) + (table == text ? "" : ", holes"));
      const PLSValidation validation = Validate(recipe, Table(table, "t.csv"));
      const PermutationTest test = PermuteY(recipe, Table(table, "t.csv"), validation.folds, 2, {1, 1});
      EXPECT_NEAR(test.original.q2, validation.errors.q2[2], 1e-5);  // cells of models are single precision
    }
  }
}

/// The table with its last column in another order.
std::string WithLastColumnInOrder(const std::string& text, const std::vector<std::size_t>& sources) {
  std::istringstream in(text);
  std::string header;
  std::getline(in, header);
  std::vector<std::string> begins, ends;
  for (std::string line; std::getline(in, line);) {
    begins.push_back(line.substr(0, line.rfind(',') + 1));
    ends.push_back(line.substr(line.rfind(',') + 1));
  }
  std::string permuted = header + "\n";
  for (std::size_t i = 0; i < begins.size(); ++i) permuted += begins[i] + ends[sources[i]] + "\n";
  return permuted;
}

TEST(YPermutations, OfTablesWithHolesAreRefitsOfEachOrder) {
  const std::string text = WithHoles(LinearTable(30, 5, 2), 13);
  PLSRecipe recipe = RecipeOf({"y"});
  recipe.id = "name";
  recipe.components = 2;
  const Folds folds = MakeFolds(30, {});
  const PermutationTest test = PermuteY(recipe, Table(text, "t.csv"), folds, 2, {5, 3});
  RandomDraws draws(3, RandomUse::Permutations);
  for (const PermutationRun& run : test.runs) {
    const Table permuted(WithLastColumnInOrder(text, draws.Order(30)), "t.csv");
    EXPECT_EQ(run.q2, Validate(recipe, permuted).errors.q2[2]);
  }
}

TEST(YPermutations, OfOPLSCountItsComponentsFromThePredictiveOnesOn) {
  OPLSRecipe opls;
  opls.y = {"y"};
  opls.id = "name";
  opls.components = 1;
  PLSRecipe pls = RecipeOf({"y"});
  pls.id = "name";
  const Table complete(LinearTable(30, 5, 2), "t.csv"), holed(WithHoles(LinearTable(30, 5, 2), 13), "t.csv");
  const Folds folds = MakeFolds(30, {});
  const PermutationTest ofOPLS = PermuteY(opls, complete, folds, 2, {5, 3});
  const PermutationTest ofPLS = PermuteY(pls, complete, folds, 2, {5, 3});
  for (std::size_t run = 0; run < 5; ++run) EXPECT_EQ(ofOPLS.runs[run].q2, ofPLS.runs[run].q2);
  RandomDraws draws(3, RandomUse::Permutations);
  for (const PermutationRun& run : PermuteY(opls, holed, folds, 2, {5, 3}).runs) {
    const Table permuted(WithLastColumnInOrder(WithHoles(LinearTable(30, 5, 2), 13), draws.Order(30)), "t.csv");
    EXPECT_EQ(run.q2, Validate(opls, permuted).errors.q2[2]);
  }
}

TEST(YPermutations, OfOPLSWithSeveralColumnsHaveThePredictiveComponentsOfTheTrueY) {
  const Table table(UnrelatedTable(24, 10, 2, 4), "t.csv");
  OPLSRecipe recipe;
  recipe.y = {"y1", "y2"};
  recipe.predictive = 2;
  recipe.components = 1;
  const Folds folds = MakeFolds(24, {});
  const PermutationTest test = PermuteY(recipe, table, folds, 2, {3, 1});
  EXPECT_EQ(test.original.q2, Validate(recipe, table).errors.q2[2]);
  for (const PermutationRun& run : test.runs) EXPECT_TRUE(std::isfinite(run.q2) && run.r2 > 0.0);
}

TEST(YPermutations, KeepRowsOfAGroupTogetherWhereGroupsHaveOneSize) {
  std::string even = "g,x1,x2,y\n", uneven = even;
  for (int i = 0; i < 24; ++i) {
    const std::string cells = "," + std::to_string(i * i % 7) + "," + std::to_string(i * 5 % 11) + "," +
                              std::to_string(i * 3 % 13) + "\n";
    even += std::to_string(i % 6) + cells;
    uneven += std::to_string(std::min(5, i / 3)) + cells;
  }
  PLSRecipe recipe = RecipeOf({"y"});
  recipe.x = {"x1", "x2"};
  recipe.groupColumn = "g";
  const Table evenTable(even, "t.csv"), unevenTable(uneven, "t.csv");
  const RealMatrix y = CellsOf(evenTable, 3, 1);
  const Folds evenFolds = Validate(recipe, evenTable).folds, unevenFolds = Validate(recipe, unevenTable).folds;
  const PermutationTest together = PermuteY(recipe, evenTable, evenFolds, 1, {9, 1});
  const PermutationTest apart = PermuteY(recipe, unevenTable, unevenFolds, 1, {9, 1});
  RandomDraws ofGroups(1, RandomUse::Permutations), ofRows(1, RandomUse::Permutations);
  for (std::size_t run = 0; run < 9; ++run) {
    EXPECT_EQ(together.runs[run].correlation,
              CorrelationWithPermuted(y, PermutedGroups(evenFolds.groupOfRow.front(), &ofGroups)));
    EXPECT_EQ(apart.runs[run].correlation, CorrelationWithPermuted(y, ofRows.Order(24)));
  }
  EXPECT_THAT(together.notes.Lines(), IsEmpty());
  EXPECT_THAT(apart.notes.Lines(),
              ElementsAre("the groups differ in size, so that the permutations take rows out of their groups: where rows "
                          "of a group repeat each other, p is far too small"));
}

TEST(YPermutations, SayHowSmallPCanBeWhereGroupsAreFew) {
  const auto test = [](int groups, int runs) {
    std::string text = "g,x1,x2,y\n";
    for (int i = 0; i < 4 * groups; ++i) {
      text += std::to_string(i % groups) + "," + std::to_string(i * i % 7) + "," + std::to_string(i * 5 % 11) + "," +
              std::to_string(i * i % 7 + i % 3) + "\n";
    }
    PLSRecipe recipe = RecipeOf({"y"});
    recipe.x = {"x1", "x2"};
    recipe.groupColumn = "g";
    const Table table(text, "t.csv");
    return PermuteY(recipe, table, Validate(recipe, table).folds, 1, {runs, 1});
  };
  const PermutationTest few = test(3, 99);
  EXPECT_THAT(few.notes.Lines(),
              ElementsAre("the 3 groups have only 6 orders that differ in Y, of which the true one is one: p of the "
                          "permutations is about 0.17 at the least"));
  // Some 16.5 of 99 runs are the original; six in this many are nearly three standard deviations (3.7) fewer.
  EXPECT_GT(few.judgement.pQ2, 0.06);
  EXPECT_THAT(test(6, 999).notes.Lines().size(), 1U);
  EXPECT_THAT(test(6, 9).notes.Lines(), IsEmpty());  // 720 orders
}

TEST(YPermutations, GiveUniformPsOfNoise) {
  constexpr int kTables = 200, kRuns = 99;
  std::vector<double> ps;
  for (unsigned seed = 1; seed <= kTables; ++seed) {
    const Table table(UnrelatedTable(20, 30, 1, seed), "t.csv");
    PLSRecipe recipe = RecipeOf({"y1"});
    const Folds folds = MakeFolds(20, {});
    ps.push_back(PermuteY(recipe, table, folds, 1, {kRuns, seed}).judgement.pQ2);
  }
  std::sort(ps.begin(), ps.end());
  double distance = 0.0;
  for (int k = 1; k <= kRuns + 1; ++k) {  // of the shares of p up to k / (n + 1), the values that p can have
    const double p = static_cast<double>(k) / (kRuns + 1);
    const auto upTo = std::upper_bound(ps.begin(), ps.end(), p + 1e-12) - ps.begin();
    distance = std::max(distance, std::fabs(static_cast<double>(upTo) / kTables - p));
  }
  // Kolmogorov's distance of 200 uniform numbers is below 1.63 / sqrt(200) for 99 of a hundred seeds, that of discrete
  // ones more often.
  EXPECT_LT(distance, 1.63 / std::sqrt(kTables));
}

TEST(YPermutations, FindThatAModelOfSomethingIsNoChance) {
  PLSRecipe recipe = RecipeOf({"y"});
  recipe.id = "name";
  const PermutationTest test = PermuteY(recipe, Table(LinearTable(30, 5, 1), "t.csv"), MakeFolds(30, {}), 2, {999, 1});
  EXPECT_EQ(test.judgement.pQ2, 0.001);
  EXPECT_EQ(test.judgement.pR2, 0.001);
  EXPECT_LT(test.judgement.interceptQ2, 0.0);
}

TEST(YPermutations, AreTheSameBitsForAnyNumberOfThreads) {
  const Table table(UnrelatedTable(33, 60, 1, 9), "t.csv");
  const Folds folds = MakeFolds(33, {});
  const auto test = [&](int threads) {
    const Threads scope(threads);
    std::vector<double> figures;
    for (const PermutationRun& run : PermuteY(RecipeOf({"y1"}), table, folds, 3, {300, 2}).runs) {
      figures.insert(figures.end(), {run.r2, run.q2, run.correlation});
    }
    return figures;
  };
  const std::vector<double> one = test(1);
  EXPECT_EQ(one.size(), 900U);
  EXPECT_EQ(one, test(2));
  EXPECT_EQ(one, test(3));
}

TEST(YPermutations, EndWithWhatIsLeftOfXAndY) {
  std::string text = "x,y\n";
  for (int i = 0; i < 12; ++i) text += std::to_string(i * i % 5) + "," + std::to_string(2 * (i * i % 5)) + "\n";
  const PermutationTest test = PermuteY(RecipeOf({"y"}), Table(text, "t.csv"), MakeFolds(12, {}), 3, {20, 1});
  EXPECT_NEAR(test.original.q2, 1.0, 1e-12);  // one component reaches all of Y, and the others find nothing
  for (const PermutationRun& run : test.runs) EXPECT_TRUE(std::isfinite(run.q2) && std::isfinite(run.r2));
}

/// 24 rows, of which the last one alone makes the column x5 vary; a hole in the first row where it is asked for.
Table TableOfAColumnThatOneRowMakes(bool hasHole) {
  std::string text = "x1,x2,x3,x4,x5,y\n";
  for (int i = 0; i < 24; ++i) {
    text += (hasHole && i == 0 ? "" : std::to_string(i * i % 23)) + "," + std::to_string(i * 7 % 17) + "," +
            std::to_string(i * 5 % 13) + "," + std::to_string(i * 3 % 11) + "," + (i == 23 ? "1" : "0") + "," +
            std::to_string((i * i * i + 4 * i) % 29) + "\n";
  }
  return {text, "t.csv"};
}

TEST(YPermutations, HaveInAllRoundsTheMostComponentsThatEachCanHave) {
  // The round without the last row has no use for x5, and so four components instead of five.
  FoldRecipe thirds;
  thirds.groups = 3;
  const Folds folds = MakeFolds(24, thirds);
  for (const bool hasHole : {true, false}) {
    SCOPED_TRACE(hasHole);
    const Table table = TableOfAColumnThatOneRowMakes(hasHole);
    const PermutationTest five = PermuteY(RecipeOf({"y"}), table, folds, 5, {20, 1});
    const PermutationTest four = PermuteY(RecipeOf({"y"}), table, folds, 4, {20, 1});
    // With a hole both are refits in single precision. Without one, four components are computed in double for all
    // orders at once, five are refitted: cells of 24 bits move the sums of so few rows by less than 1e-5.
    const double tolerance = hasHole ? 0.0 : 1e-5;
    EXPECT_NEAR(five.original.q2, four.original.q2, tolerance);
    EXPECT_NEAR(five.original.r2, four.original.r2, tolerance);
    for (std::size_t run = 0; run < four.runs.size(); ++run) {
      EXPECT_NEAR(five.runs[run].q2, four.runs[run].q2, tolerance);
      EXPECT_NEAR(five.runs[run].r2, four.runs[run].r2, tolerance);
      EXPECT_EQ(five.runs[run].correlation, four.runs[run].correlation);
    }
  }
}

TEST(YPermutations, HaveNoFiguresWhereARoundHasNoValueOfY) {
  std::string text = "x1,x2,y\n";
  for (int i = 0; i < 8; ++i) {  // two values of Y: in some orders in one group
    const std::string y = i == 1 ? "4" : i == 2 ? "6" : "";
    text += std::to_string(i * i % 7) + "," + std::to_string(i * 3 % 5) + "," + y + "\n";
  }
  FoldRecipe halves;
  halves.groups = 2;
  const PermutationTest test = PermuteY(RecipeOf({"y"}), Table(text, "t.csv"), MakeFolds(8, halves), 1, {40, 1});
  const auto isNone = [](const PermutationRun& run) { return std::isnan(run.q2); };
  EXPECT_FALSE(isNone(test.original));
  EXPECT_GT(std::count_if(test.runs.begin(), test.runs.end(), isNone), 0);
}

TEST(YPermutations, StopWhereTheBarWantsTo) {
  const Table complete(UnrelatedTable(33, 60, 1, 9), "t.csv"), holed(WithHoles(LinearTable(33, 6, 1), 7), "t.csv");
  const auto permute = [&](const Table& table, const std::string& y, NCProgress* bar) {
    PLSRecipe recipe = RecipeOf({y});
    return PermuteY(recipe, table, MakeFolds(33, {}), 1, {50, 1}, bar);
  };
  for (const bool hasHoles : {false, true}) {
    const Table& table = hasHoles ? holed : complete;
    const std::string y = hasHoles ? "y" : "y1";
    ProgressLog whole;
    const auto bar = RecordingBar(&whole);
    permute(table, y, bar.get());
    for (const double share : {0.2, 0.5, 0.95}) {
      ProgressLog log;
      log.stopAt = static_cast<int>(share * static_cast<double>(whole.calls.size()));
      const auto stopping = RecordingBar(&log);
      EXPECT_THROW(permute(table, y, stopping.get()), Stopped);
    }
  }
}

TEST(YPermutations, RefuseWhatMakesNoSense) {
  const Table table(LinearTable(20, 4, 1), "t.csv");
  PLSRecipe recipe = RecipeOf({"y"});
  recipe.id = "name";
  const Folds folds = MakeFolds(20, {});
  EXPECT_EQ(FailureOf<BadRequest>([&] { PermuteY(recipe, table, folds, 0, {}); }),
            "a model without components has nothing to permute");
  for (const int runs : {0, -1, kMostPermutations + 1}) {
    EXPECT_EQ(FailureOf<BadRequest>([&] { PermuteY(recipe, table, folds, 1, {runs, 1}); }),
              "the number of permutations is not between 1 and 1000000");
  }
  EXPECT_EQ(FailureOf<BadRequest>([&] { PermuteY(recipe, table, MakeFolds(19, {}), 1, {}); }),
            "the folds are of another table");
}

}  // namespace
}  // namespace kalmia::analysis
