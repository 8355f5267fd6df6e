#include "kalmia/analysis/validation/PLSValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <random>
#include <sstream>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"
#include "validation/PlainPls.h"
#include "validation/TableLines.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

Table TableOf(const std::string& text) { return Table(text, "t.csv"); }

PLSRecipe RecipeOf(const std::string& y, NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  PLSRecipe recipe;
  recipe.y = {y};
  recipe.scaling = scaling;
  return recipe;
}

Table Gasoline() {
  return CsvAt((std::filesystem::path(PathOfWine()).parent_path() / "gasoline.csv").string());
}

PLSRecipe OctaneRecipe(NCScale::Scaling scaling = NCScale::ScalingUnitVariance) {
  PLSRecipe recipe = RecipeOf("octane", scaling);
  recipe.id = "sample";
  return recipe;
}

/// RMSECV of the one Y column as far as figures are given, which have four decimals. They come from refits in double
/// precision; cells are single, which moves them by less than 1e-4 of themselves.
void ExpectRmsecv(const PLSValidation& validation, const std::vector<double>& figures) {
  ASSERT_GE(validation.errors.MostComponents() + 1, figures.size());
  for (std::size_t a = 0; a < figures.size(); ++a) {
    EXPECT_NEAR(validation.errors.rmsecv(a, 0), figures[a], 0.5e-4 + 1e-4 * figures[a]) << a << " components";
  }
}

// R pls 2.8-1 plsr(scale = TRUE or FALSE, validation = "CV", segments = the same groups) gives these from 1 component
// on; NumPy 1.24.2, once a round, all of them.
TEST(PLSValidation, HasThePublishedErrorsOfGasolineAndChoosesByOneStandardError) {
  const PLSValidation uv = Validate(OctaneRecipe(), Gasoline());
  ExpectRmsecv(uv, {1.5481, 1.3274, 0.7458, 0.2413, 0.2396, 0.2165, 0.2220});
  EXPECT_EQ(uv.components, 5);
  const PLSValidation centred = Validate(OctaneRecipe(NCScale::ScalingCentre), Gasoline());
  ExpectRmsecv(centred, {1.5481, 1.3269, 0.4087, 0.2642, 0.2450, 0.2374, 0.2288});
  EXPECT_EQ(centred.components, 4);
}

TEST(PLSValidation, JudgesAGivenNumberOfComponents) {
  PLSRecipe recipe = OctaneRecipe();
  recipe.components = 3;
  const PLSValidation groups = Validate(recipe, Gasoline());
  EXPECT_FALSE(groups.choice);
  EXPECT_EQ(groups.errors.MostComponents(), 3U);
  ASSERT_TRUE(groups.cvAnova.front());
  EXPECT_NEAR(groups.cvAnova.front()->f, 340.42, 0.005 + 340.42 * 2e-4);  // twice the relative error of a squared one
  EXPECT_EQ(groups.cvAnova.front()->df1, 6);
  EXPECT_EQ(groups.cvAnova.front()->df2, 53);
  const PLSValidation rows = ValidateBy(FoldScheme::LeaveOneOut, 7, recipe, Gasoline());
  EXPECT_NEAR(rows.errors.rmsecv(3, 0), 0.2518, 1e-4);
  const PLSValidation blocks = ValidateBy(FoldScheme::Blocks, 5, recipe, Gasoline());
  EXPECT_NEAR(blocks.errors.rmsecv(3, 0), 0.3033, 1e-4);
}

TEST(PLSValidation, HasTheErrorsOfAlcoholInWine) {
  PLSRecipe recipe = RecipeOf("alcohol");
  recipe.id = "sample";
  recipe.exclude = {"cultivar"};
  ExpectRmsecv(Validate(recipe, CsvAt(PathOfWine())), {0.8105, 0.6096, 0.5626, 0.5516});
}

/// Independent normal numbers: columns x1, x2, ... and y.
std::string NoiseText(int rows, int columns, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<float> normal;
  std::ostringstream text;
  for (int k = 1; k <= columns; ++k) text << "x" << k << ',';
  text << "y\n";
  for (int i = 0; i < rows; ++i) {
    for (int k = 0; k < columns; ++k) text << normal(random) << ',';
    text << normal(random) << '\n';
  }
  return text.str();
}

struct NoiseKind {
  int rows, columns;
};

TEST(PLSValidation, KeepsNoComponentOfNoise) {
  constexpr int kTables = 200;  // of each kind, seeds 1 to 200
  int none = 0;
  for (const NoiseKind& kind : {NoiseKind{12, 2000}, {20, 1000}, {60, 50}, {12, 200}}) {
    SCOPED_TRACE(std::to_string(kind.rows) + " x " + std::to_string(kind.columns));
    int noneOfKind = 0;
    double q2 = 0.0;
    for (unsigned seed = 1; seed <= kTables; ++seed) {
      const PLSValidation validation =
          Validate(RecipeOf("y"), TableOf(NoiseText(kind.rows, kind.columns, seed)));
      noneOfKind += validation.components == 0 ? 1 : 0;
      EXPECT_TRUE(validation.components > 0 || !validation.cvAnova.front());
      q2 += validation.errors.q2[1] / kTables;
    }
    EXPECT_GE(noneOfKind, 0.92 * kTables);
    EXPECT_LT(q2, 0.0);
    none += noneOfKind;
  }
  EXPECT_GE(none, 0.95 * 4 * kTables);
}

/// Whether a validation fits its rounds one by one, as Fit does, or side by side, in another order of sums.
enum class Rounds { Alone, SideBySide };

/// Expects that each left-out row is predicted as a model says that was fitted by the public Fit to a table of the
/// other rows, to the bit where rounds are fitted alone; `components` from 1 on.
void ExpectThePredictionsOfFits(PLSRecipe recipe, const std::string& text, int components,
                                Rounds rounds = Rounds::SideBySide) {
  // Fit rounds cells, scores and loadings to single precision, some 1e-7 of them each.
  const double share = rounds == Rounds::Alone ? 0.0 : 2e-6;
  const TableLines lines(text);
  recipe.components = components;
  const PLSValidation validation = Validate(recipe, TableOf(text));
  ASSERT_EQ(validation.errors.MostComponents(), static_cast<std::size_t>(components));
  for (int group = 0; group < validation.folds.groups; ++group) {
    const std::vector<std::size_t> leftOut = RowsOfGroup(validation.folds, 0, group);
    const Table rest = lines.SmallTable(RowsOutsideGroup(validation.folds, 0, group)), rows = lines.SmallTable(leftOut);
    for (int a = 1; a <= components; ++a) {
      recipe.components = a;
      const PLSResult fit = Fit(recipe, rest);
      const PLSPredictions predicted = Predict(fit.model, rows);
      for (std::size_t i = 0; i < leftOut.size(); ++i) {
        for (std::size_t j = 0; j < validation.yNames.size(); ++j) {
          const double expected = predicted.predictions[i].y[j];
          EXPECT_NEAR(validation.errors.predicted[static_cast<std::size_t>(a)](leftOut[i], j), expected,
                      share * (std::fabs(expected) + validation.errors.deviations[j]))
              << "row " << leftOut[i] << ", " << a << " components";
        }
        if (a == components) {
          const double expected = DistanceToModel(fit.model, a, predicted.predictions[i]);
          // What is left of a cell is a tenth of it and less, and has its rounding.
          EXPECT_NEAR(validation.distances[leftOut[i]], expected, 10 * share * expected);
        }
      }
    }
  }
}

TEST(PLSValidation, PredictsAsAFitToATableOfTheOtherRows) {
  for (const auto scaling : {NCScale::ScalingUnitVariance, NCScale::ScalingPareto, NCScale::ScalingCentre,
                             NCScale::ScalingNone}) {
    ExpectThePredictionsOfFits(RecipeOf("y", scaling), LinearTable(30, 6, 3), 4);
  }
}

TEST(PLSValidation, PredictsRowsWithHolesAsAFitDoes) {
  PLSRecipe recipe = RecipeOf("y1..y2");
  ExpectThePredictionsOfFits(recipe, WithHoles(UnrelatedTable(30, 8, 2, 4), 19), 3, Rounds::Alone);  // y1 has holes too
}

/// Columns x1 to x4 near `offset` and y, in 24 rows; x4 differs from its fellows in rows 3 and 10 alone, both of which
/// are in the same of 7 groups.
std::string NearlyConstantColumn(double offset) {
  std::mt19937 random(9);
  std::normal_distribution<double> normal;
  std::ostringstream text;
  text.precision(12);
  text << "x1,x2,x3,x4,y\n";
  for (int i = 0; i < 24; ++i) {
    const double x[] = {normal(random), normal(random), normal(random)};
    text << offset + x[0] << ',' << offset + x[1] << ',' << offset + x[2] << ',' << offset + (i % 7 == 2 ? i : 1) << ','
         << offset + x[0] - x[1] + 0.1 * normal(random) << '\n';
  }
  return text.str();
}

TEST(PLSValidation, GivesAColumnThatIsConstantInARoundNoSayThere) {
  for (const double offset : {0.0, 1e7}) {  // far from zero cells are shifted, by the mean of the round's own rows
    const std::string text = NearlyConstantColumn(offset);
    ExpectThePredictionsOfFits(RecipeOf("y"), text, 2);
    EXPECT_THAT(Validate(RecipeOf("y"), TableOf(text)).notes.Lines(), Contains(HasSubstr("1 X column (x4)")));
  }
}

TEST(PLSValidation, ShiftsNoColumnThatIsNotCentred) {
  ExpectThePredictionsOfFits(RecipeOf("y", NCScale::ScalingNone), NearlyConstantColumn(1e5), 2);
}

TEST(PLSValidation, LearnsStepsInEachRound) {
  PLSRecipe recipe = RecipeOf("y");
  // A half of the coefficients is kept; which ones depends on the rows.
  recipe.steps = GivenSteps{"s", ParseSteps("snv,wavelet-compress:4:daubechies:4", "s"), {}};
  ExpectThePredictionsOfFits(recipe, LinearTable(30, 8, 5), 2, Rounds::Alone);
  recipe.steps = GivenSteps{"s", ParseSteps("snv,derivative:1:3", "s"), {}};
  ExpectThePredictionsOfFits(recipe, LinearTable(30, 8, 5), 2);
}

TEST(PLSValidation, TakesTheMeanOfTheOtherRowsForNoComponent) {
  const std::string text = LinearTable(10, 3, 1);
  const PLSValidation validation = ValidateBy(FoldScheme::Blocks, 2, RecipeOf("y"), TableOf(text));
  const std::vector<double> y = NumbersOf(TableOf(text), "y");
  double mean = 0.0;
  for (std::size_t i = 5; i < 10; ++i) mean += y[i] / 5;
  EXPECT_NEAR(validation.errors.predicted[0](0, 0), mean, 1e-6 * std::abs(mean));  // a centre is a float
}

TEST(PLSValidation, PutsTheJackKnifeAboutTheCoefficientsOfTheFit) {
  const std::string text = LinearTable(21, 4, 8);
  PLSRecipe recipe = RecipeOf("y");
  recipe.components = 2;
  const PLSValidation validation = Validate(recipe, TableOf(text));
  const auto coefficients = [&recipe](const Table& table) {
    const PLSResult fit = Fit(recipe, table);
    const Coefficients numbers =
        CoefficientsInOriginalUnits(*fit.model.pls, fit.model.xScaling, fit.model.yScaling);
    std::vector<double> all;
    for (const std::vector<double>& slope : numbers.slopes) all.push_back(slope.front());
    all.push_back(numbers.intercepts.front());
    return all;
  };
  const std::vector<double> whole = coefficients(TableOf(text));
  JackKnife jackKnife(whole, 7);
  for (int group = 0; group < 7; ++group) {
    jackKnife.AddRound(coefficients(TableLines(text).SmallTable(RowsOutsideGroup(validation.folds, 0, group))));
  }
  const JackKnifeResult expected = jackKnife.Result();
  ASSERT_EQ(validation.coefficients.size(), 1U);
  const JackKnifeResult& found = validation.coefficients.front();
  ASSERT_EQ(found.standardErrors.size(), whole.size());
  for (std::size_t k = 0; k < whole.size(); ++k) {
    // Coefficients are floats there, of up to some 10, and s is of the size of their differences.
    EXPECT_NEAR(found.standardErrors[k], expected.standardErrors[k], 1e-4 * expected.standardErrors[k] + 1e-5) << k;
    EXPECT_LT(found.lower[k], whole[k]);
    EXPECT_GT(found.upper[k], whole[k]);
  }
}

TEST(PLSValidation, PutsTheJackKnifeAboutTheImportanceOfTheFit) {
  const std::string text = LinearTable(21, 4, 8);
  PLSRecipe recipe = RecipeOf("y");
  recipe.components = 2;
  const PLSValidation validation = Validate(recipe, TableOf(text));
  const auto importance = [&recipe](const Table& table) { return VariableImportance(*Fit(recipe, table).model.pls); };
  JackKnife jackKnife(importance(TableOf(text)), 7);
  for (int group = 0; group < 7; ++group) {
    jackKnife.AddRound(importance(TableLines(text).SmallTable(RowsOutsideGroup(validation.folds, 0, group))));
  }
  const JackKnifeResult expected = jackKnife.Result(0.95, /*least=*/0.0);
  ASSERT_EQ(validation.importances.size(), 1U);
  const JackKnifeResult& found = validation.importances.front();
  for (std::size_t k = 0; k < expected.lower.size(); ++k) {  // Fit rounds weights to single precision
    EXPECT_NEAR(found.standardErrors[k], expected.standardErrors[k], 1e-6);
    EXPECT_NEAR(found.lower[k], expected.lower[k], 5e-6);
    EXPECT_NEAR(found.upper[k], expected.upper[k], 5e-6);
  }
  recipe.components = 0;
  EXPECT_THAT(Validate(recipe, TableOf(text)).importances, IsEmpty());
}

TEST(PLSValidation, NestedTakesTwoRowsOrGroupsInEachRoundOfTheRowsThatTheModelSees) {
  // The fourth row has no X, so that there is no third group, and of two groups one has all rows but one.
  const Table table = TableOf("y,g,a,b\n1,u,1,2\n2,u,3,1\n4,v,2,5\n3,w,,\n");
  PLSRecipe recipe = RecipeOf("y");
  ValidationRecipe rounds;
  rounds.nested = true;
  const auto failure = [&] { return FailureOf<BadData>([&] { Validate(recipe, table, rounds); }); };
  recipe.exclude = {"g"};
  recipe.groups = 2;
  EXPECT_THAT(failure(),
              Optional(HasSubstr("takes two of them or more in each round: there are 3 rows in 2 groups")));
  recipe.exclude.clear();
  recipe.groupColumn = "g";
  EXPECT_THAT(failure(), Optional(HasSubstr("takes three groups or more, and column 'g' makes two")));
}

TEST(PLSValidation, NestedChoosesInEachRoundByTheRowsThatStayIn) {
  const std::string text = LinearTable(30, 6, 3);
  const PLSRecipe recipe = RecipeOf("y");
  ValidationRecipe rounds;
  rounds.nested = true;
  rounds.selection.rule = SelectionRule::Min;
  const PLSValidation validation = Validate(recipe, TableOf(text), rounds);
  ASSERT_TRUE(validation.nested);
  ASSERT_EQ(validation.nested->models.size(), 7U);
  const std::vector<double> y = NumbersOf(TableOf(text), "y");
  ValidationRecipe plain = rounds;
  plain.nested = false;
  double squares = 0.0;
  for (int group = 0; group < 7; ++group) {
    const Table rest = TableLines(text).SmallTable(RowsOutsideGroup(validation.folds, 0, group));
    const auto own = static_cast<std::size_t>(Validate(recipe, rest, plain).components);
    EXPECT_EQ(validation.nested->models[static_cast<std::size_t>(group)], own);
    for (const std::size_t row : RowsOfGroup(validation.folds, 0, group)) {
      squares += std::pow(y[row] - validation.errors.predicted[own](row, 0), 2);
    }
  }
  EXPECT_NEAR(validation.nested->rmsecv[0], std::sqrt(squares / 30), 1e-12 * std::sqrt(squares));
  PLSRecipe given = recipe;
  given.components = 2;
  EXPECT_FALSE(Validate(given, TableOf(text), rounds).nested);
}

TEST(PLSValidation, EndsAtTheMostComponentsOfAllRounds) {
  PLSRecipe recipe = RecipeOf("y1");
  recipe.components = 5;
  const PLSValidation validation = ValidateBy(FoldScheme::Blocks, 2, recipe, TableOf(UnrelatedTable(6, 8, 1, 2)));
  EXPECT_EQ(validation.errors.MostComponents(), 2U);  // 3 rows in each round
  EXPECT_EQ(validation.components, 5);
  EXPECT_FALSE(validation.IsJudged());
  EXPECT_THAT(validation.cvAnova, IsEmpty());
  EXPECT_THAT(validation.coefficients, IsEmpty());
  EXPECT_EQ(validation.predicted.rows, 0U);
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("ends at 2 components")));
}

TEST(PLSValidation, CountsRowsThatCannotBePredictedForNoNumberOfComponents) {
  // The second row has a cell of x3 alone, which is constant in the first block and so has no say there.
  const std::string text = "x1,x2,x3,y\n1,2,7,1\n,,8,2\n3,1,7,4\n2,5,7,3\n4,4,6,5\n5,1,6,8\n6,2,6,7\n7,7,6,9\n";
  PLSRecipe recipe = RecipeOf("y");
  recipe.components = 1;
  const PLSValidation validation = ValidateBy(FoldScheme::Blocks, 2, recipe, TableOf(text));
  EXPECT_EQ(validation.errors.unpredictedRows, 1U);
  EXPECT_TRUE(std::isnan(validation.errors.squaredErrors[0](1, 0)));
  EXPECT_TRUE(std::isnan(validation.predicted(1, 0)));
  EXPECT_TRUE(std::isnan(validation.distances[1]));
  EXPECT_THAT(validation.notes.Lines(),
              Contains(HasSubstr("by 1 component, for want of cells, and so in no PRESS, Q2 and RMSECV: 1 row")));
}

/// 40 rows of six columns: in so many rows all cells but two are empty.
std::string TableWithPoorRows(int poor) {
  const Table whole(LinearTable(40, 6, 5), "t.csv");
  std::string text = "x1,x2,x3,x4,x5,x6,y\n";
  for (int row = 0; row < whole.Rows(); ++row) {
    const bool isPoor = row % 7 == 3 && row / 7 < poor;
    for (int k = 1; k <= 6; ++k) {
      text += (isPoor && k > 2 ? "" : whole.Cell(row, whole.Find("x" + std::to_string(k)))) + ",";
    }
    text += whole.Cell(row, whole.Find("y")) + "\n";
  }
  return text;
}

TEST(PLSValidation, LosesATenthOfTheRowsToLargerModelsAtMost) {
  const PLSValidation four = Validate(RecipeOf("y"), TableOf(TableWithPoorRows(4)));
  EXPECT_EQ(four.errors.MostComponents(), 6U);
  EXPECT_EQ(four.errors.unpredictedRows, 4U);
  const PLSValidation five = Validate(RecipeOf("y"), TableOf(TableWithPoorRows(5)));
  EXPECT_EQ(five.errors.MostComponents(), 2U);
  EXPECT_EQ(five.errors.unpredictedRows, 0U);
  EXPECT_THAT(five.notes.Lines(),
              Contains(HasSubstr("the validation ends at 2 components: with more, more than a tenth")));
  PLSRecipe given = RecipeOf("y");
  given.components = 4;
  EXPECT_EQ(Validate(given, TableOf(TableWithPoorRows(5))).errors.MostComponents(), 4U);
}

TEST(PLSValidation, PredictsAYColumnByTheOneValueItHasInARound) {
  // y2 is 4 in the last rows, which are all that the first block is predicted from.
  const std::string text = "x1,x2,y1,y2\n1,2,1,3\n2,2,2,1\n3,1,4,2\n2,5,3,\n4,4,5,4\n5,1,8,4\n6,2,7,\n7,7,9,4\n";
  PLSRecipe recipe = RecipeOf("y1..y2");
  recipe.components = 1;
  const PLSValidation validation = ValidateBy(FoldScheme::Blocks, 2, recipe, TableOf(text));
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(validation.errors.predicted[0](i, 1), 4.0);
    EXPECT_EQ(validation.errors.predicted[1](i, 1), 4.0);
    EXPECT_NE(validation.errors.predicted[0](i, 0), validation.errors.predicted[1](i, 0));
  }
  EXPECT_TRUE(std::isnan(validation.errors.squaredErrors[1](3, 1)));
}

TEST(PLSValidation, RefusesAYColumnWithoutAValueInARound) {
  const std::string text = "x,g,y\n1,a,1\n2,a,3\n3,b,\n5,b,\n";
  PLSRecipe recipe = RecipeOf("y");
  recipe.groupColumn = "g";
  EXPECT_THAT(FailureOf<BadData>([&] { Validate(recipe, TableOf(text)); }),
              Optional(HasSubstr("while group 'a' is left out: the Y column 'y' has no value")));
  recipe.groupColumn.clear();
  EXPECT_THAT(FailureOf<BadData>([&] { ValidateBy(FoldScheme::Blocks, 2, recipe, TableOf(text)); }),
              Optional(HasSubstr("while group 1 is left out: the Y column 'y' has no value")));
}

TEST(PLSValidation, LeavesRowsOfOneLabelOutTogether) {
  std::string text = LinearTable(12, 3, 6);
  const TableLines lines(text);
  text = lines.header + ",batch\n";
  for (std::size_t i = 0; i < lines.rows.size(); ++i) text += lines.rows[i] + "," + "ABC"[i / 4] + "\n";
  PLSRecipe recipe = RecipeOf("y");
  recipe.groupColumn = "batch";
  recipe.components = 2;
  const PLSValidation labels = Validate(recipe, TableOf(text));
  EXPECT_THAT(labels.folds.names, ElementsAre("A", "B", "C"));
  recipe.groupColumn.clear();
  const PLSValidation blocks = ValidateBy(FoldScheme::Blocks, 3, recipe, TableOf(text));
  EXPECT_EQ(labels.errors.press, blocks.errors.press);
  EXPECT_THAT(labels.jackKnifeNotes.Lines(), Contains(HasSubstr("2 degrees of freedom")));
}

TEST(PLSValidation, RefusesFoldsThatMakeNoSense) {
  const Table table = TableOf(LinearTable(12, 3, 6));
  EXPECT_THROW(ValidateBy(FoldScheme::Interleaved, 1, RecipeOf("y"), table), BadRequest);
  ValidationRecipe repeats;
  repeats.folds.repeats = 2;
  EXPECT_THROW(Validate(RecipeOf("y"), table, repeats), BadRequest);
  PLSRecipe recipe = RecipeOf("y");
  recipe.groupColumn = "g";
  EXPECT_THROW(Validate(recipe, TableOf("x,g,y\n1,a,1\n2,a,3\n3,a,2\n")), BadData);
  EXPECT_THAT(ValidateBy(FoldScheme::Interleaved, 20, RecipeOf("y"), table).notes.Lines(),
              Contains("20 groups are cut to 12, the number of rows"));
}

TEST(PLSValidation, AveragesSquaredErrorsOverRepeats) {
  const Table table = TableOf(LinearTable(20, 3, 6));
  PLSRecipe recipe = RecipeOf("y");
  recipe.groups = 4;
  ValidationRecipe one, two;
  one.folds.scheme = two.folds.scheme = FoldScheme::Random;
  two.folds.repeats = 2;
  const PLSValidation first = Validate(recipe, table, one), both = Validate(recipe, table, two);
  EXPECT_EQ(both.folds.groupOfRow.front(), first.folds.groupOfRow.front());
  EXPECT_NE(both.errors.press, first.errors.press);
  EXPECT_EQ(both.distances.size(), 40U);
}

TEST(PLSValidation, GivesTheSameBitsOnAnyNumberOfThreads) {
  std::vector<PLSValidation> runs;
  for (const int threads : {1, 3}) {
    const Threads team(threads);
    runs.push_back(Validate(OctaneRecipe(), Gasoline()));
  }
  EXPECT_EQ(runs[0].errors.rowErrors.cells, runs[1].errors.rowErrors.cells);
  EXPECT_EQ(runs[0].coefficients[0].lower, runs[1].coefficients[0].lower);
}

TEST(PLSValidation, StopsWhereverTheBarWantsToStop) {
  const Table table = TableOf(LinearTable(20, 4, 6));
  ProgressLog whole;
  Validate(RecipeOf("y"), table, {}, RecordingBar(&whole).get());
  const auto calls = static_cast<int>(whole.calls.size()) - 1;  // the last one closes the bar
  for (int stopAt = 1; stopAt < calls; stopAt += 7) {
    ProgressLog log;
    log.stopAt = stopAt;
    EXPECT_THROW(Validate(RecipeOf("y"), table, {}, RecordingBar(&log).get()), Stopped) << "call " << stopAt;
  }
}

}  // namespace
}  // namespace kalmia::analysis
