// Correlations and power of a few rows, worked by hand.

#include "kalmia/analysis/chart/SpectrumResult.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

constexpr auto kUpAndDown = "x,y\n1,2\n-1,1\n1,2\n-1,1\n1,2\n-1,1\n1,2\n-1,1\n";

SpectrumResult SpectrumOf(const SpectrumRecipe& recipe, NCProgress* progress = nullptr) {
  return ComputeSpectrum(recipe, Table(kUpAndDown, "t.csv"), progress);
}

SpectrumRecipe RecipeForX() {
  SpectrumRecipe recipe;
  recipe.column = "x";
  return recipe;
}

TEST(SpectrumResult, TakesTwoLagsAndSegmentsOfFourRowsOfEightAsItIsMade) {
  const SpectrumResult result = SpectrumOf(RecipeForX());
  EXPECT_EQ(result.Title(), "x of t.csv");
  EXPECT_EQ(result.lags, 2);
  EXPECT_EQ(result.segment, 4);
  EXPECT_FALSE(result.IsCross());
  // x turns over from row to row: seven products of -1 of eight of 1, then six of 1.
  ASSERT_EQ(result.correlations.size(), 3U);
  EXPECT_FLOAT_EQ(static_cast<float>(result.correlations[0]), 1.0F);
  EXPECT_LT(result.correlations[1], 0.0);
  EXPECT_GT(result.correlations[2], 0.0);
  ASSERT_EQ(result.parts.size(), 1U);
  EXPECT_EQ(SpectrumResult::Peak(result.parts[0]), 2) << "a period of two rows";
}

TEST(SpectrumResult, OfTwoColumnsHasLagsOnBothSides) {
  SpectrumRecipe recipe = RecipeForX();
  recipe.with = "y";
  recipe.lags = 3;
  const SpectrumResult result = SpectrumOf(recipe);
  EXPECT_TRUE(result.IsCross());
  EXPECT_EQ(result.FirstLag(), -3);
  EXPECT_EQ(result.correlations.size(), 7U);
  EXPECT_EQ(result.PeakLag(), 0);
  EXPECT_EQ(result.Title(), "x and y of t.csv");
}

TEST(SpectrumResult, RefusesRecipesThatMakeNoSenseInWordsWithoutOptions) {
  struct Bad {
    const char* message;
    int lags, segment;
    const char *window, *detrend;
  };
  const Bad bads[] = {
      {"a segment of a spectrum has a power of two of rows, such as 4, not 6", 1, 6, "hann", "mean"},
      {"a segment of a spectrum has a power of two of rows, such as 2, not 1", 1, 1, "hann", "mean"},
      {"a segment of a spectrum has a power of two of rows, such as 2, not -2", 1, -2, "hann", "mean"},
      {"the window of a spectrum is hann, welch or bartlett, not 'hamming'", 1, 0, "hamming", "mean"},
      {"the detrending of a spectrum is none, mean or linear, not ''", 1, 0, "hann", ""}};
  for (const Bad& bad : bads) {
    SpectrumRecipe recipe = RecipeForX();
    recipe.lags = bad.lags;
    recipe.segment = bad.segment;
    recipe.window = bad.window;
    recipe.detrend = bad.detrend;
    EXPECT_EQ(FailureOf<BadRequest>([&] { SpectrumOf(recipe); }), bad.message);
  }
}

TEST(SpectrumResult, RefusesMoreThanTheRowsGive) {
  SpectrumRecipe lags = RecipeForX(), segment = RecipeForX();
  lags.lags = 9;
  segment.segment = 16;
  EXPECT_EQ(FailureOf<BadData>([&] { SpectrumOf(lags); }),
            "t.csv: the column 'x' has 8 rows: its correlations go to lag 8, not 9");
  EXPECT_EQ(FailureOf<BadData>([&] { SpectrumOf(segment); }),
            "t.csv: the column 'x' has 8 rows: a segment takes up to 8, not 16");
}

TEST(SpectrumResult, StopsWhereTheBarWantsTo) {
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(SpectrumOf(RecipeForX(), bar.get()), Stopped);
}

}  // namespace
}  // namespace kalmia::analysis
