#include "kalmia/analysis/chart/ChartResult.h"

#include <gtest/gtest.h>

#include <limits>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"

namespace {

using namespace kalmia::analysis;

Table Series() { return Table("x\n1\n2\n3\n2\n1\n2\n9\n", "t.csv"); }

ChartRecipe Individual() {
  ChartRecipe recipe;
  recipe.column = "x";
  recipe.type = "individual";
  return recipe;
}

ChartResult Compute(const ChartRecipe& recipe, const StoredLimits* limits = nullptr) {
  return ComputeChart(recipe, Series(), nullptr, limits);
}

// Ranges of neighbours 1 1 1 1 1 7: mean 2, over 1.128 is 1.773; mean of the values 20 / 7. Limits at three of them.
TEST(ComputeChart, TakesLimitsFromTheMovingRange) {
  const ChartResult result = Compute(Individual());
  EXPECT_NEAR(result.panels.front().zones.centre, 20.0 / 7.0, 1e-6);  // cells are single precision
  EXPECT_NEAR(result.panels.front().zones.upper, 20.0 / 7.0 + 3.0 * 2.0 / 1.128, 1e-5);
  EXPECT_TRUE(result.signals.empty() == (9.0 < 20.0 / 7.0 + 6.0 / 1.128));
}

TEST(ComputeChart, RefusesRecipesThatMakeNoSense) {
  ChartRecipe recipe = Individual();
  recipe.type = "shewhart";
  EXPECT_EQ(FailureOf<BadRequest>([&] { Compute(recipe); }), "there is no control chart of type 'shewhart'");
  recipe = Individual();
  recipe.rules = "mine";
  EXPECT_EQ(FailureOf<BadRequest>([&] { Compute(recipe); }),
            "there is no set of run rules called 'mine': take western-electric or nelson");
  recipe = Individual();
  for (const double sigma : {0.0, -1.0, std::numeric_limits<double>::infinity()}) {
    recipe.sigma = sigma;
    EXPECT_THROW(Compute(recipe), BadRequest) << sigma;
  }
  recipe = Individual();
  recipe.subgroup = -2;
  EXPECT_THROW(Compute(recipe), BadRequest);
}

TEST(ComputeChart, GoesOnWithTheLimitsOfAnother) {
  const StoredLimits limits = LimitsOf(Compute(Individual()));
  const ChartResult next = Compute(Individual(), &limits);
  EXPECT_EQ(next.panels.front().zones.upper, Compute(Individual()).panels.front().zones.upper);
  ChartRecipe cusum = Individual();
  cusum.type = "cusum";
  EXPECT_EQ(FailureOf<BadData>([&] { Compute(cusum, &limits); }),
            "what is given holds limits of type individual, not cusum");
}

}  // namespace
