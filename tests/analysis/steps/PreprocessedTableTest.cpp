// Steps on the signals of a small table: new ones, saved ones and back again.

#include "kalmia/analysis/steps/PreprocessedTable.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;

constexpr auto kSignals = "name,a,b,y\nr1,1,2,7\nr2,3,,8\n";

Table SmallTable() { return Table(kSignals, "t.csv"); }

PreprocessRecipe RecipeOf(const std::string& steps) {
  PreprocessRecipe recipe;
  recipe.id = "name";
  recipe.exclude = {"y"};
  recipe.steps = {"the steps", ParseSteps(steps, "the steps"), {}};
  return recipe;
}

PreprocessedTable Preprocessed(const PreprocessRecipe& recipe, NCProgress* progress = nullptr) {
  return Preprocess(recipe, SmallTable(), progress);
}

PreprocessRecipe Saved(const PreprocessedTable& result) {
  PreprocessRecipe recipe;
  recipe.id = "name";
  recipe.steps.name = "saved.steps";
  recipe.steps.chain = result.chain;
  return recipe;
}

TEST(PreprocessedTable, HoldsWhatHasBecomeOfTheSignalsAndWritesItBehindTheOtherColumns) {
  const PreprocessedTable result = Preprocessed(RecipeOf("linear:2:1"));
  EXPECT_THAT(result.columns, ElementsAre(1, 2));
  EXPECT_THAT(result.InputNames(), ElementsAre("a", "b"));
  EXPECT_EQ(PreprocessedText(SmallTable(), result, CsvMarks(), /*progress=*/nullptr),
            "name,y,a,b\nr1,7,3,5\nr2,8,7,\n");
}

TEST(PreprocessedTable, RepeatsSavedStepsAsTheyWere) {
  const PreprocessedTable first = Preprocessed(RecipeOf("linear:2:1"));
  const PreprocessedTable again = Preprocessed(Saved(first));
  EXPECT_EQ(PreprocessedText(SmallTable(), again, CsvMarks(), nullptr),
            PreprocessedText(SmallTable(), first, CsvMarks(), nullptr));
}

TEST(PreprocessedTable, RefusesRecipesThatMakeNoSenseInWordsWithoutOptions) {
  PreprocessRecipe restored = RecipeOf("linear:2:1");
  restored.restore = true;
  EXPECT_EQ(FailureOf<BadRequest>([&] { Preprocessed(restored); }),
            "signals are restored from saved steps that end with wavelet-compress, not " + restored.steps.name);
  PreprocessRecipe chosen = Saved(Preprocessed(RecipeOf("linear:2:1")));
  chosen.x = {"a"};
  EXPECT_EQ(FailureOf<BadRequest>([&] { Preprocessed(chosen); }),
            "saved.steps holds saved steps and their columns, which cannot be chosen anew");
  PreprocessRecipe named = Saved(Preprocessed(RecipeOf("linear:2:1")));
  named.id = "b";
  EXPECT_EQ(FailureOf<BadData>([&] { Preprocessed(named); }),
            "t.csv: the steps of saved.steps take column 'b', which is to name the rows: take it out of them, or name "
            "the rows otherwise");
}

TEST(PreprocessedTable, StopsInItsStepsAndInItsText) {
  const PreprocessedTable result = Preprocessed(RecipeOf("linear:2:1"));
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(Preprocessed(RecipeOf("linear:2:1"), bar.get()), Stopped);
  EXPECT_THROW(PreprocessedText(SmallTable(), result, CsvMarks(), bar.get()), Stopped);
}

}  // namespace
}  // namespace kalmia::analysis
