// A recipe, a table and a bar are all that a fit takes.

#include "kalmia/analysis/fit/FitRecipes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestTables.h"
#include "kalmia/analysis/fit/FillResult.h"
#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"

namespace kalmia::analysis {
namespace {

CsvTable Table() { return CsvTable(LinearTable(30, 5, 1), "t.csv"); }

TEST(FitRecipes, AsTheyAreMadeTakeAllColumnsAtUnitVarianceSevenGroupsAndTheComponentsOfCrossValidation) {
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"y"};
  const PLSResult pls = Fit(recipe, Table());
  EXPECT_EQ(pls.data.xNames.size(), 5U);
  EXPECT_EQ(pls.data.rounds, 7);
  EXPECT_EQ(pls.model.scaling, NCScale::ScalingUnitVariance);
  EXPECT_TRUE(pls.AnyKept());
  EXPECT_FALSE(pls.components.back().kept) << "cross-validation ended the search";
}

TEST(FitRecipes, HoldTheStepsThemselvesWhichTheModelKeepsAsLearnt) {
  PCARecipe recipe;
  recipe.id = "name";
  recipe.exclude = {"y"};
  recipe.components = 1;
  recipe.steps = GivenSteps{"the steps", ParseSteps("snv,linear:2:1", "the steps"), {}};
  const PCAResult pca = Fit(recipe, Table());
  ASSERT_EQ(pca.model.chain.steps.size(), 2U);
  EXPECT_EQ(pca.model.chain.steps[1].step.kind, StepKind::Linear);
  EXPECT_EQ(pca.model.chain.inputNames, pca.data.xNames);
}

TEST(FitRecipes, SayHowManyComponentsThereAreOfEachKind) {
  const TwoBlocks blocks = SharedBlocks(60, 1);
  O2PLSRecipe recipe;
  recipe.id = "name";
  recipe.numbers = O2PLSNumbers{1, 1, 1};
  const O2PLSResult o2pls =
      Fit(recipe, CsvTable(blocks.x, "x.csv"), CsvTable(blocks.y, "y.csv"));
  EXPECT_EQ(o2pls.model.Joint(), 1);
  EXPECT_EQ(o2pls.model.XUnique(), 1);
  EXPECT_EQ(o2pls.components.size(), 3U);

  OPLSRecipe opls;
  opls.id = "name";
  opls.y = {"y"};
  opls.components = 2;
  EXPECT_EQ(Fit(opls, Table()).model.Orthogonal(), 2);
}

TEST(FitRecipes, OfAFilterAndOfAFillingTakeAndFillWhatTheyName) {
  FilterRecipe filter;
  filter.id = "name";
  filter.y = {"y"};
  filter.components = 1;
  const FilterResult filtered = Fit(filter, Table());
  EXPECT_EQ(filtered.filter.components.size(), 1U);
  EXPECT_EQ(filtered.filtered.cells.SizeColumns(), 5);

  FillRecipe fill;
  fill.id = "name";
  fill.components = 1;
  const CsvTable holed(WithHoles(LinearTable(30, 5, 1), 7), "h.csv");
  const FillResult filled = Fit(fill, holed);
  EXPECT_GT(filled.filledCells, 0);
  EXPECT_EQ(filled.filledCells, filled.missing);
  EXPECT_FALSE(filled.trial) << "nobody asked for one";
}

}  // namespace
}  // namespace kalmia::analysis
