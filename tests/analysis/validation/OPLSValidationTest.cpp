#include "kalmia/analysis/validation/OPLSValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "TestTables.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/JackKnife.h"
#include "kalmia/analysis/validation/PLSValidation.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"
#include "validation/PlainPls.h"
#include "validation/TableLines.h"

namespace kalmia::analysis {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Table TextTable(const std::string& text) { return Table(text, "t.csv"); }

Table ExampleTable(const std::string& name) {
  return CsvAt((std::filesystem::path(PathOfWine()).parent_path() / name).string());
}

OPLSRecipe OrthogonalRecipe(const std::string& y, std::optional<int> orthogonal = std::nullopt,
                            std::optional<int> predictive = std::nullopt) {
  OPLSRecipe recipe;
  recipe.y = {y};
  recipe.components = orthogonal;
  recipe.predictive = predictive;
  return recipe;
}

OPLSRecipe OctaneByOpls(std::optional<int> orthogonal = std::nullopt) {
  OPLSRecipe recipe = OrthogonalRecipe("octane", orthogonal);
  recipe.id = "sample";
  return recipe;
}

OPLSRecipe DensityByOpls(NCScale::Scaling scaling) {
  OPLSRecipe recipe = OrthogonalRecipe("density");
  recipe.id = "row";
  recipe.scaling = scaling;
  return recipe;
}

/// Both compute the same subspace, along other directions: of the same scaled float cells the predictions differ by
/// what the float weights, loadings and residuals of `components` components round, which is carried from one component
/// to the next: 2^-22 of Y's spread for each, times the some hundred-fold that scores of late components are smaller.
constexpr double RoundingsOf(int components) { return 0x1p-22 * 200 * components; }

TEST(OPLSValidation, WithOneYAndCompleteTablesIsThatOfPls) {
  PLSRecipe pls;
  pls.y = {"octane"};
  pls.id = "sample";
  const PLSValidation expected = Validate(pls, ExampleTable("gasoline.csv"));
  const OPLSValidation found = Validate(OctaneByOpls(), ExampleTable("gasoline.csv"));
  ASSERT_EQ(found.errors.MostComponents(), expected.errors.MostComponents());
  EXPECT_EQ(found.Predictive(), 1);
  EXPECT_EQ(found.components, expected.components);
  EXPECT_EQ(found.components, 5);
  const double spread = found.errors.deviations.front();
  for (std::size_t a = 0; a <= 8; ++a) {
    SCOPED_TRACE(std::to_string(a) + " components");
    const double tolerance = RoundingsOf(static_cast<int>(a)) * spread;
    for (std::size_t i = 0; i < found.rowNames.size(); ++i) {
      EXPECT_NEAR(found.errors.predicted[a](i, 0), expected.errors.predicted[a](i, 0), tolerance) << "row " << i;
    }
    EXPECT_NEAR(found.errors.rmsecv(a, 0), expected.errors.rmsecv(a, 0), tolerance);
  }
  ASSERT_TRUE(found.cvAnova.front());
  EXPECT_EQ(found.cvAnova.front()->df1, expected.cvAnova.front()->df1);
  EXPECT_NEAR(found.cvAnova.front()->f, expected.cvAnova.front()->f, 1e-3 * expected.cvAnova.front()->f);
  for (std::size_t i = 0; i < found.distances.size(); ++i) {
    EXPECT_NEAR(found.distances[i], expected.distances[i], 1e-3 * expected.distances[i]) << "row " << i;
  }
  const std::vector<double>&ours = found.coefficients.front().standardErrors,
                           &theirs = expected.coefficients.front().standardErrors;
  ASSERT_EQ(ours.size(), theirs.size());
  const double largest = *std::max_element(theirs.begin(), theirs.end() - 1);
  for (std::size_t k = 0; k + 1 < ours.size(); ++k) EXPECT_NEAR(ours[k], theirs[k], 1e-3 * largest) << "column " << k;
}

/// Error of the rows of a second table, by the fit of the number that the validation of the first one chose.
double ErrorOfNewRows(OPLSRecipe recipe, const Table& training, const Table& test) {
  const OPLSValidation validation = Validate(recipe, training);
  recipe.components = OPLSValidation::OrthogonalOf(validation.model);
  const PLSPredictions predicted = Predict(Fit(recipe, training).model, test);
  const std::vector<double> measured = NumbersOf(test, "density");
  double sum = 0.0;
  for (std::size_t i = 0; i < measured.size(); ++i) sum += std::pow(predicted.predictions[i].y[0] - measured[i], 2);
  return std::sqrt(sum / static_cast<double>(measured.size()));
}

TEST(OPLSValidation, FindsTheGoodComponentsOfYarn) {
  const Table training = ExampleTable("yarn_train.csv"), test = ExampleTable("yarn_test.csv");
  EXPECT_LT(ErrorOfNewRows(DensityByOpls(NCScale::ScalingUnitVariance), training, test), 0.5);
  EXPECT_LT(ErrorOfNewRows(DensityByOpls(NCScale::ScalingCentre), training, test), 0.5);
}

/// Expects that each left-out row is predicted as a model says that was fitted by the public Fit to a table of the other
/// rows: to the bit with several Y, or holes, where rounds are fitted alone; otherwise they are fitted side by side, as
/// PLS, and Fit rounds cells, weights, scores and loadings to single precision, some 1e-7 of them each. Fit takes the pooled deviation from predictions of the training rows, and a refit from the
/// residuals of the model: the same numbers in another order, on float cells.
void ExpectThePredictionsOfOplsFits(OPLSRecipe recipe, const std::string& text, int orthogonal) {
  const TableLines lines(text);
  recipe.components = orthogonal;
  const OPLSValidation validation = Validate(recipe, TextTable(text));
  const double share = validation.yNames.size() > 1 ? 0.0 : 5e-6;
  ASSERT_EQ(validation.errors.MostComponents(), static_cast<std::size_t>(orthogonal) + 1);
  for (int group = 0; group < validation.folds.groups; ++group) {
    const std::vector<std::size_t> leftOut = RowsOfGroup(validation.folds, 0, group);
    const Table rest = lines.SmallTable(RowsOutsideGroup(validation.folds, 0, group)), rows = lines.SmallTable(leftOut);
    for (int o = 0; o <= orthogonal; ++o) {
      recipe.components = o;
      recipe.predictive = validation.Predictive();
      const OPLSResult fit = Fit(recipe, rest);
      const PLSPredictions predicted = Predict(fit.model, rows);
      for (std::size_t i = 0; i < leftOut.size(); ++i) {
        for (std::size_t j = 0; j < validation.yNames.size(); ++j) {
          const double expected = predicted.predictions[i].y[j];
          EXPECT_NEAR(validation.errors.predicted[static_cast<std::size_t>(o) + 1](leftOut[i], j), expected,
                      share * (std::fabs(expected) + validation.errors.deviations[j]))
              << "row " << leftOut[i] << ", " << o << " orthogonal components";
        }
        if (o < orthogonal) continue;
        const double expected = DistanceToModel(fit.model, fit.model.Components(), predicted.predictions[i]);
        EXPECT_NEAR(validation.distances[leftOut[i]], expected, 1e-4 * expected);
      }
    }
  }
}

TEST(OPLSValidation, PredictsAsAFitToATableOfTheOtherRows) {
  for (const auto scaling : {NCScale::ScalingUnitVariance, NCScale::ScalingPareto, NCScale::ScalingCentre,
                             NCScale::ScalingNone}) {
    OPLSRecipe recipe = OrthogonalRecipe("y");
    recipe.scaling = scaling;
    ExpectThePredictionsOfOplsFits(recipe, LinearTable(30, 6, 3), 3);
  }
}

TEST(OPLSValidation, PredictsRowsWithHolesAsAFitDoes) {
  ExpectThePredictionsOfOplsFits(OrthogonalRecipe("y1..y2"), WithHoles(UnrelatedTable(30, 8, 2, 4), 19), 2);
}

TEST(OPLSValidation, CountsPredictiveAndOrthogonalComponentsTogether) {
  const Table table = TextTable(UnrelatedTable(30, 8, 3, 4));
  const OPLSValidation validation = Validate(OrthogonalRecipe("y1..y3", 2, 2), table);
  EXPECT_EQ(validation.Predictive(), 2);
  EXPECT_EQ(validation.model, 3U);
  EXPECT_EQ(validation.components, 4);
  EXPECT_EQ(validation.ComponentsOf(0), 0);
  EXPECT_EQ(validation.ComponentsOf(1), 2);
  EXPECT_EQ(validation.OrthogonalOf(1), 0);
  EXPECT_EQ(validation.cvAnova.front()->df1, 8);
  EXPECT_EQ(validation.cvAnova.front()->df2, 21);
  const OPLSValidation most = Validate(OrthogonalRecipe("y1..y3", std::nullopt, 2), table);
  EXPECT_EQ(most.errors.MostComponents(), 7U);  // 2 + 6 components of 8 columns
}

TEST(OPLSValidation, FindsThePredictiveNumberOfAllRows) {
  const Table oil = ExampleTable("oliveoil.csv");
  OPLSRecipe recipe = OrthogonalRecipe("yellow..syrup", 1);
  recipe.id = "sample";
  const OPLSResult fit = Fit(recipe, oil);
  const OPLSValidation found = Validate(recipe, oil);
  EXPECT_GT(found.Predictive(), 1);
  EXPECT_EQ(found.Predictive(), fit.model.Predictive());
}

TEST(OPLSValidation, JudgesTheMeanAloneWhereARoundCannotHaveThePredictiveComponents) {
  // y2 is 4 in the last rows, which are all that the first block is predicted from.
  const std::string text = "x1,x2,y1,y2\n1,2,1,3\n2,2,2,1\n3,1,4,2\n2,5,3,5\n4,4,5,4\n5,1,8,4\n6,2,7,4\n7,7,9,4\n";
  const OPLSValidation validation =
      ValidateBy(FoldScheme::Blocks, 2, OrthogonalRecipe("y1..y2", 0, 2), TextTable(text));
  EXPECT_EQ(validation.errors.MostComponents(), 0U);
  EXPECT_EQ(validation.components, 2);
  EXPECT_FALSE(validation.IsJudged());
  EXPECT_THAT(validation.cvAnova, IsEmpty());
  EXPECT_THAT(validation.notes.Lines(), Contains(HasSubstr("ends at 0 components")));
}

TEST(OPLSValidation, CutsPredictiveComponentsToTheColumnsOfY) {
  EXPECT_EQ(Validate(OrthogonalRecipe("y", 1, 4), TextTable(LinearTable(20, 4, 6))).Predictive(), 1);
}

/// The middle of an interval is the coefficient of the model of all rows.
TEST(OPLSValidation, HasCoefficientsInTheUnitsOfTheTable) {
  const std::string text = UnrelatedTable(25, 6, 2, 8);
  for (const int predictive : {1, 2}) {
    for (const int orthogonal : {0, 1, 3}) {
      const OPLSRecipe recipe = OrthogonalRecipe("y1..y2", orthogonal, predictive);
      const OPLSValidation validation = Validate(recipe, TextTable(text));
      const OPLSResult fit = Fit(recipe, TextTable(text));
      for (std::size_t j = 0; j < 2; ++j) {
        const JackKnifeResult& b = validation.coefficients[j];
        const auto coefficient = [&b](std::size_t k) { return (b.lower[k] + b.upper[k]) / 2; };
        for (int row = 0; row < 25; ++row) {
          double y = coefficient(6);
          for (std::size_t k = 0; k < 6; ++k) {
            y += coefficient(k) * NumbersOf(TextTable(text), validation.xNames[k])[static_cast<std::size_t>(row)];
          }
          // Columns are of size 1; predictions round some dozen times to float on the way.
          EXPECT_NEAR(y, fit.fitted[static_cast<std::size_t>(row)].y[j], 1e-5)
              << predictive << " + " << orthogonal << ", row " << row;
        }
      }
    }
  }
}

/// Expects the jack-knife about the VIP of the fit, by fits to tables of the other rows.
void ExpectTheJackKnifeOfImportances(const std::string& text) {
  const OPLSRecipe recipe = OrthogonalRecipe("y", 2, 1);
  const OPLSValidation validation = Validate(recipe, TextTable(text));
  ASSERT_EQ(validation.importances.size(), 2U);
  const auto importances = [&recipe](const Table& table) {
    const StoredOPLS model = Fit(recipe, table).model;
    return std::vector<std::vector<double>>{PredictiveImportance(model), OrthogonalImportance(model)};
  };
  const std::vector<std::vector<double>> whole = importances(TextTable(text));
  for (std::size_t kind = 0; kind < 2; ++kind) {
    JackKnife jackKnife(whole[kind], 7);
    for (int group = 0; group < 7; ++group) {
      const std::vector<std::size_t> rows = RowsOutsideGroup(validation.folds, 0, group);
      jackKnife.AddRound(importances(TableLines(text).SmallTable(rows))[kind]);
    }
    const JackKnifeResult expected = jackKnife.Result(0.95, /*least=*/0.0);
    const JackKnifeResult& found = validation.importances[kind];
    for (std::size_t k = 0; k < expected.lower.size(); ++k) {  // fits round weights and loadings to single precision
      EXPECT_NEAR(found.standardErrors[k], expected.standardErrors[k], 2e-6) << kind;
      EXPECT_NEAR(found.lower[k], expected.lower[k], 1e-5) << kind;
      EXPECT_NEAR(found.upper[k], expected.upper[k], 1e-5) << kind;
    }
  }
}

TEST(OPLSValidation, PutsTheJackKnifeAboutTheImportancesOfTheFit) {
  ExpectTheJackKnifeOfImportances(LinearTable(21, 5, 8));
  ExpectTheJackKnifeOfImportances(WithHoles(LinearTable(21, 5, 8), 13));
}

TEST(OPLSValidation, NestedChoosesInEachRoundByTheRowsThatStayIn) {
  const std::string text = LinearTable(30, 6, 3);
  ValidationRecipe rounds;
  rounds.nested = true;
  const OPLSValidation validation = Validate(OrthogonalRecipe("y"), TextTable(text), rounds);
  ASSERT_TRUE(validation.nested);
  ASSERT_EQ(validation.nested->models.size(), 7U);
  for (int group = 0; group < 7; ++group) {
    const Table rest = TableLines(text).SmallTable(RowsOutsideGroup(validation.folds, 0, group));
    EXPECT_EQ(validation.nested->models[static_cast<std::size_t>(group)],
              Validate(OrthogonalRecipe("y"), rest).model);
  }
  EXPECT_FALSE(Validate(OrthogonalRecipe("y", 1), TextTable(text), rounds).nested);
}

TEST(OPLSValidation, PredictsNoRowWithFewerCellsThanComponents) {
  const TableLines lines(UnrelatedTable(24, 5, 1, 4));
  std::string text = lines.header + "\n";
  for (std::size_t row = 0; row < lines.rows.size(); ++row) {
    text += row == 3 ? "0.5,,,,-0.25," + lines.rows[row].substr(lines.rows[row].rfind(',') + 1) + "\n"
                     : lines.rows[row] + "\n";
  }
  const OPLSRecipe recipe = OrthogonalRecipe("y1", 2, 1);
  const Table table = TextTable(text);
  EXPECT_TRUE(std::isnan(Validate(recipe, table).predicted(3, 0)));
  const auto predicted = PredictRows(Fit(recipe, table).model, Fit(recipe, table).data.x);
  EXPECT_THAT(predicted[3].reason, HasSubstr("too few for 3 components"));
  EXPECT_EQ(predicted[4].reason, "");
}

TEST(OPLSValidation, GivesTheSameBitsOnAnyNumberOfThreads) {
  std::vector<OPLSValidation> runs;
  for (const int threads : {1, 3}) {
    const Threads team(threads);
    runs.push_back(Validate(OctaneByOpls(), ExampleTable("gasoline.csv")));
  }
  EXPECT_EQ(runs[0].errors.rowErrors.cells, runs[1].errors.rowErrors.cells);
  EXPECT_EQ(runs[0].coefficients[0].lower, runs[1].coefficients[0].lower);
  EXPECT_EQ(runs[0].distances, runs[1].distances);
}

TEST(OPLSValidation, StopsWhereverTheBarWantsToStop) {
  const Table table = TextTable(LinearTable(20, 4, 6));
  ProgressLog whole;
  Validate(OrthogonalRecipe("y"), table, {}, RecordingBar(&whole).get());
  const auto calls = static_cast<int>(whole.calls.size()) - 1;  // the last one closes the bar
  for (int stopAt = 1; stopAt < calls; stopAt += 7) {
    ProgressLog log;
    log.stopAt = stopAt;
    EXPECT_THROW(Validate(OrthogonalRecipe("y"), table, {}, RecordingBar(&log).get()), Stopped) << "call " << stopAt;
  }
}

}  // namespace
}  // namespace kalmia::analysis
