#include "kalmia/analysis/validation/PCAAnalysis.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "TestTables.h"
#include "kalmia/analysis/text/Failure.h"
#include "validation/PlainPls.h"

namespace kalmia::analysis {
namespace {

using ::testing::Each;

PCARecipe WineRecipe(std::optional<int> components = std::nullopt) {
  PCARecipe recipe;
  recipe.id = "sample";
  recipe.exclude = {"cultivar"};
  recipe.components = components;
  return recipe;
}

ValidationRecipe JudgedBy(ValidationMethod method) {
  ValidationRecipe validation;
  validation.method = method;
  return validation;
}

TEST(PCAAnalysis, FitsTheNumberOfComponentsThatRefitsChose) {
  const Table wine = CsvAt(PathOfWine());
  const PCAAnalysis analysis = Analyse(WineRecipe(), wine);
  ASSERT_TRUE(analysis.validation);
  const int chosen = analysis.validation->components;
  EXPECT_GT(chosen, 0);
  EXPECT_EQ(analysis.fit.model.Components(), chosen);
  EXPECT_EQ(analysis.fit.columnQ2, analysis.validation->columnQ2);
  const PCAResult all = Fit(WineRecipe(static_cast<int>(analysis.validation->errors.MostComponents())), wine);
  ASSERT_EQ(analysis.fit.components.size(), all.components.size());
  for (std::size_t a = 0; a < all.components.size(); ++a) {
    EXPECT_EQ(analysis.fit.components[a].r2xCum, all.components[a].r2xCum);
    EXPECT_EQ(analysis.fit.components[a].kept, a < static_cast<std::size_t>(chosen));
    EXPECT_FALSE(analysis.fit.components[a].IsJudged());
  }
  const PCAResult fit = Fit(WineRecipe(chosen), wine);
  for (int a = 1; a <= chosen; ++a) {
    for (int k = 1; k <= 13; ++k) {
      EXPECT_EQ((*analysis.fit.model.pca->GetPprim())[a][k], (*fit.model.pca->GetPprim())[a][k]);
    }
  }
  EXPECT_EQ(analysis.fit.model.pooledDeviation, fit.model.pooledDeviation);
}

TEST(PCAAnalysis, FitsTheMeanWhereNoComponentIsChosen) {
  const PCAAnalysis analysis = Analyse(PCARecipe(), Table(UnrelatedTable(40, 10, 1, 4), "t.csv"));
  ASSERT_EQ(analysis.validation->components, 0);
  EXPECT_FALSE(analysis.fit.AnyKept());
  EXPECT_TRUE(analysis.fit.IsUsable());
  EXPECT_EQ(analysis.fit.rows.size(), 40U);
  EXPECT_NEAR(analysis.fit.model.pooledDeviation, std::sqrt(39.0 / 40.0), 1e-6);  // 11 columns of variance 1
  EXPECT_THAT(analysis.fit.columnR2, Each(0.0));
}

TEST(PCAAnalysis, JudgesAsManyComponentsAsThereAre) {
  const std::string text = "x1,x2,x3,x4\n1,2,3,1\n2,1,3,4\n3,5,8,2\n4,2,6,0\n5,7,12,3\n6,1,7,5\n7,4,11,1\n8,3,11,2\n";
  PCARecipe recipe;  // x3 is x1 + x2: three components
  recipe.components = 4;
  recipe.scaling = NCScale::ScalingCentre;
  const PCAAnalysis analysis = Analyse(recipe, Table(text, "t.csv"));
  EXPECT_EQ(analysis.fit.model.Components(), analysis.validation->components);
}

TEST(PCAAnalysis, ByComponentIsTheFit) {
  const Table wine = CsvAt(PathOfWine());
  const PCAAnalysis analysis = Analyse(WineRecipe(), wine, JudgedBy(ValidationMethod::Component));
  const PCAResult fit = Fit(WineRecipe(), wine);
  EXPECT_FALSE(analysis.validation);
  ASSERT_EQ(analysis.fit.components.size(), fit.components.size());
  EXPECT_EQ(analysis.fit.components.back().q2, fit.components.back().q2);
  EXPECT_EQ(analysis.fit.columnQ2, fit.columnQ2);
}

TEST(PCAAnalysis, WithoutAValidationTakesANumber) {
  const Table wine = CsvAt(PathOfWine());
  const PCAAnalysis analysis = Analyse(WineRecipe(2), wine, JudgedBy(ValidationMethod::None));
  EXPECT_EQ(analysis.fit.model.Components(), 2);
  EXPECT_EQ(analysis.fit.model.groups, 0);
  EXPECT_TRUE(std::isnan(analysis.fit.columnQ2.front()));
  EXPECT_THROW(Analyse(WineRecipe(), wine, JudgedBy(ValidationMethod::None)), BadRequest);
}

}  // namespace
}  // namespace kalmia::analysis
