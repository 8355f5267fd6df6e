#include "kalmia/analysis/validation/Analysis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::Optional;

Table TableOf(const std::string& text) { return Table(text, "t.csv"); }

PLSRecipe RecipeOf(std::vector<std::string> y, std::optional<int> components = std::nullopt) {
  PLSRecipe recipe;
  recipe.y = std::move(y);
  recipe.components = components;
  return recipe;
}

ValidationRecipe By(ValidationMethod method) {
  ValidationRecipe validation;
  validation.method = method;
  return validation;
}

/// Matrices of a model, to the bit.
std::vector<float> CellsOf(const NCDataMatrix<float>& matrix) {
  std::vector<float> cells;
  for (int r = 1; r <= matrix.SizeRows(); ++r) {
    for (int c = 1; c <= matrix.SizeColumns(); ++c) cells.push_back(matrix[r][c]);
  }
  return cells;
}

TEST(Analysis, FitsTheNumberOfComponentsThatRefitsChose) {
  const Table table = TableOf(LinearTable(30, 6, 3));
  const PLSAnalysis analysis = Analyse(RecipeOf({"y"}), table);
  ASSERT_TRUE(analysis.validation);
  const int chosen = analysis.validation->components;
  ASSERT_GT(chosen, 0);
  EXPECT_EQ(analysis.fit.model.Components(), chosen);
  const PLSResult fit = Fit(RecipeOf({"y"}, chosen), table);
  EXPECT_EQ(CellsOf(*analysis.fit.model.pls->GetWprim()), CellsOf(*fit.model.pls->GetWprim()));
  EXPECT_EQ(CellsOf(*analysis.fit.model.pls->GetXResiduals()), CellsOf(*fit.model.pls->GetXResiduals()));
  EXPECT_EQ(analysis.fit.model.quality.front().rmsee, fit.model.quality.front().rmsee);
  EXPECT_EQ(analysis.fit.model.quality.front().rmsecv,
            analysis.validation->errors.rmsecv(static_cast<std::size_t>(chosen), 0));
}

TEST(Analysis, DescribesFurtherComponentsAsFarAsTheValidationGoes) {
  const Table table = TableOf(LinearTable(30, 6, 3));
  const PLSAnalysis analysis = Analyse(RecipeOf({"y"}), table);
  const std::vector<ComponentRecord>& records = analysis.fit.components;
  ASSERT_EQ(records.size(), analysis.validation->errors.MostComponents());
  const PLSResult all = Fit(RecipeOf({"y"}, static_cast<int>(records.size())), table);
  for (std::size_t a = 0; a < records.size(); ++a) {
    EXPECT_EQ(records[a].r2xCum, all.components[a].r2xCum);
    EXPECT_EQ(records[a].y.r2Cum, all.components[a].y.r2Cum);
    EXPECT_EQ(records[a].kept, a < static_cast<std::size_t>(analysis.fit.model.Components()));
    EXPECT_FALSE(records[a].IsJudged());
    EXPECT_FALSE(records[a].significant);
  }
}

TEST(Analysis, ByComponentIsTheFit) {
  const Table table = TableOf(LinearTable(30, 6, 3));
  const PLSAnalysis analysis = Analyse(RecipeOf({"y"}), table, By(ValidationMethod::Component));
  const PLSResult fit = Fit(RecipeOf({"y"}), table);
  EXPECT_FALSE(analysis.validation);
  ASSERT_EQ(analysis.fit.components.size(), fit.components.size());
  EXPECT_EQ(analysis.fit.components.back().y.q2, fit.components.back().y.q2);
  EXPECT_EQ(analysis.fit.model.quality.front().rmsecv, fit.model.quality.front().rmsecv);
}

TEST(Analysis, WithoutAValidationTakesANumberAndHasNoErrorOfLeftOutRows) {
  const Table table = TableOf(LinearTable(30, 6, 3));
  const PLSAnalysis analysis = Analyse(RecipeOf({"y"}, 2), table, By(ValidationMethod::None));
  EXPECT_EQ(analysis.fit.model.Components(), 2);
  EXPECT_TRUE(std::isnan(analysis.fit.model.quality.front().rmsecv));
  EXPECT_EQ(analysis.fit.model.groups, 0);
  EXPECT_THAT(FailureOf<BadRequest>([&] { Analyse(RecipeOf({"y"}), table, By(ValidationMethod::None)); }),
              Optional(HasSubstr("nothing can choose the number of components")));
}

TEST(Analysis, ByComponentTakesNoOtherGroups) {
  ValidationRecipe blocks = By(ValidationMethod::Component);
  blocks.folds.scheme = FoldScheme::Blocks;
  EXPECT_THROW(Analyse(RecipeOf({"y"}), TableOf(LinearTable(30, 6, 3)), blocks), BadRequest);
}

TEST(Analysis, FitsTheMeanWhereNoComponentIsChosenOrAskedFor) {
  const Table table = TableOf(UnrelatedTable(30, 6, 2, 5));
  const PLSAnalysis chosen = Analyse(RecipeOf({"y1", "y2"}), table);
  const PLSAnalysis given = Analyse(RecipeOf({"y1", "y2"}, 0), table, By(ValidationMethod::None));
  EXPECT_EQ(chosen.validation->components, 0);
  for (const PLSAnalysis* analysis : {&chosen, &given}) {
    const StoredPLS& model = analysis->fit.model;
    EXPECT_TRUE(analysis->fit.IsUsable());
    EXPECT_EQ(model.Components(), 0);
    EXPECT_EQ(model.pls->GetWprim()->SizeRows(), 0);
    ASSERT_EQ(model.quality.size(), 2U);
    for (int j = 1; j <= 2; ++j) {
      const std::vector<double> y = NumbersOf(table, "y" + std::to_string(j));
      double mean = 0.0, squares = 0.0;
      for (const double value : y) mean += value / 30;
      for (const double value : y) squares += (value - mean) * (value - mean);
      EXPECT_EQ(analysis->fit.fitted.front().y[static_cast<std::size_t>(j - 1)], CentreOf(model.yScaling, j));
      // The centre is a float, the error is about it.
      EXPECT_NEAR(model.quality[static_cast<std::size_t>(j - 1)].rmsee, std::sqrt(squares / 29), 1e-6);
    }
    // Of 30 complete rows of 6 columns of unit variance there are 29 * 6 of 30 * 6.
    EXPECT_NEAR(model.pooledDeviation, std::sqrt(29.0 / 30), 1e-6);
  }
}

TEST(Analysis, KeepsTheMeanOfTablesWithoutACommonComponent) {
  const Table table = TableOf("x,y\n1,1\n1.5,2\n1,3\n1.5,2\n");  // unrelated, exactly
  const PLSAnalysis analysis = Analyse(RecipeOf({"y"}), table);
  EXPECT_EQ(analysis.validation->components, 0);
  EXPECT_TRUE(analysis.fit.IsUsable());
  EXPECT_THAT(analysis.fit.components, IsEmpty());
}

TEST(Analysis, SaysNothingOfStepsThatLearnOfAllRowsWhereRefitsLearnThemAnew) {
  PLSRecipe recipe = RecipeOf({"y"});
  recipe.steps = GivenSteps{"s", ParseSteps("snv,wavelet-compress:4:daubechies:4", "s"), {}};
  const Table table = TableOf(LinearTable(30, 8, 5));
  EXPECT_THAT(Analyse(recipe, table).fit.notes.Lines(), Each(Not(HasSubstr("chosen from all rows"))));
  EXPECT_THAT(Analyse(recipe, table, By(ValidationMethod::Component)).fit.notes.Lines(),
              ::testing::Contains(HasSubstr("chosen from all rows")));
}

TEST(Analysis, NotesACutOfTheGroupsOnce) {
  const std::vector<std::string> notes = Analyse(RecipeOf({"y"}, 1), TableOf(LinearTable(5, 2, 3))).fit.notes.Lines();
  EXPECT_EQ(std::count(notes.begin(), notes.end(), "7 groups are cut to 5, the number of rows"), 1);
}

TEST(Analysis, HasNoErrorOfANumberThatNotAllRoundsCanHave) {
  PLSRecipe recipe = RecipeOf({"y1"}, 5);
  recipe.groups = 2;
  const PLSAnalysis analysis = Analyse(recipe, TableOf(UnrelatedTable(6, 8, 1, 2)));
  EXPECT_EQ(analysis.fit.model.Components(), 5);
  EXPECT_TRUE(std::isnan(analysis.fit.model.quality.front().rmsecv));
}

TEST(Analysis, StopsWhereverTheBarWantsToStop) {
  const Table table = TableOf(LinearTable(20, 4, 6));
  ProgressLog whole;
  Analyse(RecipeOf({"y"}), table, {}, RecordingBar(&whole).get());
  const auto calls = static_cast<int>(whole.calls.size()) - 1;  // the last one closes the bar
  for (int stopAt = 1; stopAt < calls; stopAt += 7) {
    ProgressLog log;
    log.stopAt = stopAt;
    EXPECT_THROW(Analyse(RecipeOf({"y"}), table, {}, RecordingBar(&log).get()), Stopped) << "call " << stopAt;
  }
}

TEST(ValidationMethod, HasAWordForEach) {
  for (const std::string& word : ValidationMethodWords()) {
    EXPECT_EQ(WordOfValidationMethod(*ValidationMethodOfWord(word)), word);
  }
  EXPECT_FALSE(ValidationMethodOfWord("loo"));
}

}  // namespace
}  // namespace kalmia::analysis
