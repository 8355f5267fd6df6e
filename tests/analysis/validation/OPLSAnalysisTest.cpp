#include "kalmia/analysis/validation/OPLSAnalysis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Optional;

Table OrthogonalTable(const std::string& text) { return {text, "t.csv"}; }

OPLSRecipe ByOrthogonal(std::optional<int> components = std::nullopt) {
  OPLSRecipe recipe;
  recipe.y = {"y"};
  recipe.components = components;
  return recipe;
}

ValidationRecipe ByMethod(ValidationMethod method) {
  ValidationRecipe validation;
  validation.method = method;
  return validation;
}

TEST(OPLSAnalysis, FitsTheNumberOfComponentsThatRefitsChose) {
  const Table table = OrthogonalTable(LinearTable(30, 6, 3));
  const OPLSAnalysis analysis = Analyse(ByOrthogonal(), table);
  ASSERT_TRUE(analysis.validation);
  const OPLSValidation& validation = *analysis.validation;
  ASSERT_GT(validation.model, 0U);
  EXPECT_EQ(analysis.fit.model.Predictive(), 1);
  EXPECT_EQ(analysis.fit.model.Orthogonal(), OPLSValidation::OrthogonalOf(validation.model));
  EXPECT_EQ(analysis.fit.model.quality.front().rmsecv, validation.errors.rmsecv(validation.model, 0));
  EXPECT_EQ(analysis.fit.model.quality.front().rmsee,
            Fit(ByOrthogonal(analysis.fit.model.Orthogonal()), table).model.quality.front().rmsee);
  for (const OPLSComponentRecord& record : analysis.fit.components) {
    EXPECT_FALSE(record.IsJudged());
    EXPECT_TRUE(record.kept);
  }
}

TEST(OPLSAnalysis, TellsWhatEachModelDescribes) {
  const Table table = OrthogonalTable(LinearTable(30, 6, 3));
  const OPLSAnalysis analysis = Analyse(ByOrthogonal(2), table);
  const OPLSValidation& validation = *analysis.validation;
  ASSERT_EQ(validation.r2x.size(), validation.errors.press.size());
  double r2x = 0.0, r2y = 0.0;
  for (const OPLSComponentRecord& record : analysis.fit.components) {
    r2x += record.r2x;
    r2y += record.r2y;
  }
  // Sums of squares of float cells: of the components taken off one by one, and of what all of them leave.
  EXPECT_NEAR(validation.r2x[validation.model], r2x, 1e-6);
  EXPECT_NEAR(validation.r2y[validation.model], r2y, 1e-6);
  EXPECT_EQ(validation.r2x[0], 0.0);
}

TEST(OPLSAnalysis, FitsTheMeanWhereNoComponentIsChosen) {
  OPLSRecipe recipe = ByOrthogonal();
  recipe.y = {"y1", "y2"};
  const Table table = OrthogonalTable(UnrelatedTable(30, 6, 2, 5));
  const OPLSAnalysis analysis = Analyse(recipe, table);
  ASSERT_EQ(analysis.validation->model, 0U);
  EXPECT_EQ(analysis.fit.model.Components(), 0);
  EXPECT_THAT(analysis.fit.components, IsEmpty());
  const std::vector<double> y = NumbersOf(table, "y1");
  double mean = 0.0, squares = 0.0;
  for (const double cell : y) mean += cell / 30;
  for (const double cell : y) squares += (cell - mean) * (cell - mean);
  EXPECT_NEAR(analysis.fit.fitted.front().y[0], mean, 1e-6);
  EXPECT_NEAR(analysis.fit.model.quality[0].rmsee, std::sqrt(squares / 29), 1e-6);
  EXPECT_EQ(analysis.fit.model.quality[0].rmsecv, analysis.validation->errors.rmsecv(0, 0));
}

TEST(OPLSAnalysis, ByComponentIsTheFit) {
  const Table table = OrthogonalTable(LinearTable(30, 6, 3));
  const OPLSAnalysis analysis = Analyse(ByOrthogonal(), table, ByMethod(ValidationMethod::Component));
  const OPLSResult fit = Fit(ByOrthogonal(), table);
  EXPECT_FALSE(analysis.validation);
  ASSERT_EQ(analysis.fit.components.size(), fit.components.size());
  EXPECT_EQ(analysis.fit.components.back().q2, fit.components.back().q2);
  const OPLSAnalysis resumed =
      Analyse(ByOrthogonal(2), table, ByMethod(ValidationMethod::Component), nullptr, &fit.validation);
  EXPECT_EQ(resumed.fit.model.Orthogonal(), 2);
  EXPECT_THAT(FailureOf<BadRequest>([&] { Analyse(ByOrthogonal(2), table, {}, nullptr, &fit.validation); }),
              Optional(HasSubstr("only a validation by component")));
}

TEST(OPLSAnalysis, WithoutAValidationTakesANumberAndHasNoErrorOfLeftOutRows) {
  const Table table = OrthogonalTable(LinearTable(30, 6, 3));
  const OPLSAnalysis analysis = Analyse(ByOrthogonal(2), table, ByMethod(ValidationMethod::None));
  EXPECT_EQ(analysis.fit.model.Orthogonal(), 2);
  EXPECT_TRUE(std::isnan(analysis.fit.model.quality.front().rmsecv));
  EXPECT_EQ(analysis.fit.model.groups, 0);
  EXPECT_THROW(Analyse(ByOrthogonal(), table, ByMethod(ValidationMethod::None)), BadRequest);
}

}  // namespace
}  // namespace kalmia::analysis
