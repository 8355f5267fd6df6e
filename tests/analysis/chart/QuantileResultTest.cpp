// Quantiles that are known by heart, and recipes that make no sense.

#include "kalmia/analysis/chart/QuantileResult.h"

#include <gtest/gtest.h>

#include <optional>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

QuantileRecipe Recipe(const char* distribution, double probability, std::optional<double> df = {},
                      std::optional<double> df2 = {}) {
  QuantileRecipe recipe;
  recipe.distribution = distribution;
  recipe.probability = probability;
  recipe.df = df;
  recipe.df2 = df2;
  return recipe;
}

TEST(QuantileResult, IsThatOfTheSizeOfANumberOfEitherSign) {
  const QuantileResult t = ComputeQuantile(Recipe("t", 0.5, 1.0));  // |T| stays below 1 for half of a Cauchy's numbers
  EXPECT_EQ(t.value, 1.0);
  EXPECT_TRUE(t.isOfSize);
  EXPECT_EQ(t.tail, Tail::Lower);
}

TEST(QuantileResult, IsOfTheUpperTailOfAPositiveNumber) {
  const QuantileResult f = ComputeQuantile(Recipe("f", 0.5, 7.0, 7.0));  // F and 1 / F have one distribution
  EXPECT_EQ(f.value, 1.0);
  EXPECT_FALSE(f.isOfSize);
  EXPECT_EQ(f.tail, Tail::Upper);
}

TEST(QuantileResult, OneSidedIsZeroInTheMiddleAndTurnsItsSignWithTheTail) {
  QuantileRecipe recipe = Recipe("t", 0.5, 3.0);
  recipe.oneSided = true;
  EXPECT_EQ(ComputeQuantile(recipe).value, 0.0);
  recipe.probability = 0.25;
  recipe.df = 1.0;
  EXPECT_EQ(ComputeQuantile(recipe).value, -1.0);
  recipe.complement = true;
  EXPECT_EQ(ComputeQuantile(recipe).value, 1.0);
}

TEST(QuantileResult, RefusesRecipesThatMakeNoSenseInWordsWithoutOptions) {
  QuantileRecipe oneSided = Recipe("chi2", 0.5, 1.0);
  oneSided.oneSided = true;
  const struct {
    QuantileRecipe recipe;
    const char* message;
  } bads[] = {{Recipe("z", 0.5), "a distribution is t, f, chi2 or normal, not 'z'"},
              {Recipe("normal", 1.0), "a quantile of normal needs a probability above 0 and below 1"},
              {Recipe("normal", 0.5, 1.0), "a quantile of normal takes no degrees of freedom"},
              {Recipe("t", 0.5), "a quantile of t needs degrees of freedom from 0.001 to 1e+09"},
              {Recipe("t", 0.5, 2e9), "a quantile of t needs degrees of freedom from 0.001 to 1e+09, not 2e+09"},
              {Recipe("f", 0.5, 1.0), "a quantile of f needs degrees of freedom of a denominator from 0.001 to 1e+09"},
              {oneSided, "a quantile of chi2 has one side already"},
              {Recipe("t", 0.99, 1e-3), "the quantile is beyond 1.79e308"}};
  for (const auto& bad : bads) {
    EXPECT_EQ(FailureOf<BadRequest>([&] { ComputeQuantile(bad.recipe); }), bad.message);
  }
}

}  // namespace
}  // namespace kalmia::analysis
