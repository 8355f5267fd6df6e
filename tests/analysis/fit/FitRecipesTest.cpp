// A recipe, a table and a bar are all that a fit takes.

#include "kalmia/analysis/fit/FitRecipes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FailureOf.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/FillResult.h"
#include "kalmia/analysis/fit/FilterResult.h"
#include "kalmia/analysis/fit/O2PLSResult.h"
#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

Table SmallTable() { return Table(LinearTable(30, 5, 1), "t.csv"); }

TEST(FitRecipes, AsTheyAreMadeTakeAllColumnsAtUnitVarianceSevenGroupsAndTheComponentsOfCrossValidation) {
  PLSRecipe recipe;
  recipe.id = "name";
  recipe.y = {"y"};
  const PLSResult pls = Fit(recipe, SmallTable());
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
  const PCAResult pca = Fit(recipe, SmallTable());
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
      Fit(recipe, Table(blocks.x, "x.csv"), Table(blocks.y, "y.csv"));
  EXPECT_EQ(o2pls.model.Joint(), 1);
  EXPECT_EQ(o2pls.model.XUnique(), 1);
  EXPECT_EQ(o2pls.components.size(), 3U);

  OPLSRecipe opls;
  opls.id = "name";
  opls.y = {"y"};
  opls.components = 2;
  EXPECT_EQ(Fit(opls, SmallTable()).model.Orthogonal(), 2);
}

TEST(FitRecipes, OfAFilterAndOfAFillingTakeAndFillWhatTheyName) {
  FilterRecipe filter;
  filter.id = "name";
  filter.y = {"y"};
  filter.components = 1;
  const FilterResult filtered = Fit(filter, SmallTable());
  EXPECT_EQ(filtered.filter.components.size(), 1U);
  EXPECT_EQ(filtered.filtered.cells.Columns(), 5);

  FillRecipe fill;
  fill.id = "name";
  fill.components = 1;
  const Table holed(WithHoles(LinearTable(30, 5, 1), 7), "h.csv");
  const FillResult filled = Fit(fill, holed);
  EXPECT_GT(filled.filledCells, 0);
  EXPECT_EQ(filled.filledCells, filled.missing);
  EXPECT_FALSE(filled.trial) << "nobody asked for one";
}

template <class Recipe>
Recipe OfTheTable() {
  Recipe recipe;
  recipe.id = "name";
  return recipe;
}

template <class Recipe>
Recipe WithY() {
  Recipe recipe = OfTheTable<Recipe>();
  recipe.y = {"y"};
  return recipe;
}

TEST(FitRecipes, ThatMakeNoSenseAreRefusedWithTheNumberThatDoesNot) {
  const Table table = SmallTable();
  PLSRecipe pls = WithY<PLSRecipe>();
  pls.groups = 1;
  EXPECT_EQ(FailureOf<BadRequest>([&] { Fit(pls, table); }),
            "the number of cross-validation groups is 1, less than 2");
  pls.groups = 7;
  pls.components = -1;  // 0 are the mean
  EXPECT_THROW(Fit(pls, table), BadRequest);
  pls.components.reset();
  pls.judgeComponents = false;
  EXPECT_THROW(Fit(pls, table), BadRequest);
  PCARecipe pca = OfTheTable<PCARecipe>();
  pca.x = {"x1"};
  pca.exclude = {"x2"};
  EXPECT_THROW(Fit(pca, table), BadRequest);
  OPLSRecipe opls = WithY<OPLSRecipe>();
  opls.predictive = -1;
  EXPECT_THROW(Fit(opls, table), BadRequest);
  opls.predictive = 0;  // the mean, which has no orthogonal components either
  opls.components = 1;
  EXPECT_THROW(Fit(opls, table), BadRequest);
  O2PLSRecipe o2pls;
  o2pls.numbers = O2PLSNumbers{0, 0, 0};
  EXPECT_THROW(Fit(o2pls, table, table), BadRequest);
  FilterRecipe filter = WithY<FilterRecipe>();
  filter.components = 0;
  EXPECT_THROW(Fit(filter, table), BadRequest);
  FillRecipe fill;
  fill.components = -1;
  EXPECT_THROW(Fit(fill, table), BadRequest);
}

// No scaling is undefined once it is learnt; the search for a scale that keeps every cell would not end.
TEST(FitRecipes, OfNoKnownScalingAreRefused) {
  PLSRecipe pls = WithY<PLSRecipe>();
  O2PLSRecipe o2pls;
  o2pls.x = {"x1..x3"};
  o2pls.y = {"x4..y"};
  for (const int scaling : {0, 5}) {
    pls.scaling = static_cast<NCScale::Scaling>(scaling);
    EXPECT_THROW(Fit(pls, SmallTable()), BadRequest) << scaling;
    o2pls.scaling = pls.scaling;
    EXPECT_THROW(Fit(o2pls, SmallTable(), SmallTable()), BadRequest) << scaling;
  }
}

TEST(FitRecipes, WithStepsThatCannotBeAreRefused) {
  PLSRecipe recipe = WithY<PLSRecipe>();
  const Step restore = ParseSteps("wavelet-compress:2:daubechies:4,wavelet-restore", "s").back();
  for (const Step& step : {Step{}, Step{StepKind::Derivative, {1.0}}, restore}) {
    recipe.steps = GivenSteps{"s", {step}, {}};
    EXPECT_THROW(Fit(recipe, SmallTable()), BadRequest) << static_cast<int>(step.kind);
  }
}

TEST(FitRecipes, ThatTheLibraryRefusesEndInAFailureWithItsWords) {
  PCARecipe recipe;
  recipe.scaling = NCScale::ScalingNone;
  const Table table("a,b\n1e25,2\n-3e25,5\n2e25,1\n", "t.csv");  // squares beyond the largest float
  EXPECT_THROW(Fit(recipe, table), BadData);
}

TEST(FitRecipes, OfModelsWithYNeedOne) {
  EXPECT_EQ(FailureOf<BadRequest>([] { Fit(OfTheTable<PLSRecipe>(), SmallTable()); }), "no column of Y is named");
  EXPECT_THROW(Fit(OfTheTable<OPLSRecipe>(), SmallTable()), BadRequest);
  EXPECT_THROW(Fit(OfTheTable<FilterRecipe>(), SmallTable()), BadRequest);
}

}  // namespace
}  // namespace kalmia::analysis
