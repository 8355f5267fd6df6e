// How many components a fit takes at most.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "TestTables.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/fit/internal/SelectData.h"

namespace {

using kalmia::analysis::ModelData;
using kalmia::analysis::MostComponents;
using kalmia::analysis::Notes;
using kalmia::analysis::OPLSRecipe;
using kalmia::analysis::OPLSResult;
using kalmia::analysis::PLSRecipe;
using kalmia::analysis::PLSResult;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

int MostOf(int rows, int columns, const std::optional<int>& asked, Notes* notes) {
  ModelData data;
  data.x = NCDataMatrix<float>(rows, columns, 1.0F);
  return MostComponents(data, asked, notes);
}

TEST(MostComponents, AreTheRowsLessOneOrTheColumnsButNoMoreThan15WhereNoneAreAskedFor) {
  Notes notes;
  EXPECT_EQ(MostOf(8, 30, std::nullopt, &notes), 7);
  EXPECT_EQ(MostOf(30, 8, std::nullopt, &notes), 8);
  EXPECT_EQ(MostOf(15, 30, std::nullopt, &notes), 14);
  EXPECT_EQ(MostOf(16, 30, std::nullopt, &notes), 15);
  EXPECT_EQ(MostOf(40, 30, std::nullopt, &notes), 15);
  EXPECT_THAT(notes.Lines(), IsEmpty());
}

TEST(MostComponents, AreAsManyAsAskedForWhereTheTableCarriesThem) {
  Notes notes;
  EXPECT_EQ(MostOf(40, 30, 1, &notes), 1);
  EXPECT_EQ(MostOf(40, 30, 30, &notes), 30);
  EXPECT_THAT(notes.Lines(), IsEmpty());
  EXPECT_EQ(MostOf(40, 30, 31, &notes), 30);
  EXPECT_THAT(notes.Lines(), ElementsAre("31 components are cut to 30: there are 40 rows and 30 X columns"));
}

/// A fit of a table in which each of 20 components tells something of y.
template <class Recipe>
auto FitOfMany(const std::optional<int>& components) {
  Recipe recipe;
  recipe.y = {"y"};
  recipe.scaling = NCScale::ScalingCentre;
  recipe.components = components;
  return Fit(recipe, kalmia::analysis::Table(FadingTable(140, 20, 1), "t.csv"));
}

TEST(MostComponents, OfPLSAre15UnlessMoreAreAskedFor) {
  const PLSResult fit = FitOfMany<PLSRecipe>(std::nullopt);
  EXPECT_EQ(fit.model.Components(), 15);
  ASSERT_EQ(fit.components.size(), 15U);
  EXPECT_TRUE(fit.components.back().significant) << "it is not Q2 that ends the search";
  EXPECT_EQ(FitOfMany<PLSRecipe>(17).model.Components(), 17);
}

TEST(MostComponents, OfOPLSAre15OrthogonalOnesUnlessMoreAreAskedFor) {
  const OPLSResult fit = FitOfMany<OPLSRecipe>(std::nullopt);
  EXPECT_EQ(fit.model.Orthogonal(), 15);
  ASSERT_EQ(fit.components.size(), 16U);
  EXPECT_TRUE(fit.components.back().significant) << "it is not Q2 that ends the search";
  EXPECT_EQ(FitOfMany<OPLSRecipe>(17).model.Orthogonal(), 17);
}

}  // namespace
