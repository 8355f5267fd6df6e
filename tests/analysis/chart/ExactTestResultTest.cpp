// Exact tests of tables of few counts, worked by hand.

#include "kalmia/analysis/chart/ExactTestResult.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

CountTable Counts(const std::string& csv, NCProgress* progress = nullptr) {
  Notes notes;
  return ReadCounts(Table(csv, "t.csv"), &notes, progress);
}

ExactTestResult TestOf(const std::string& csv, const std::string& alternative) {
  ExactTestRecipe recipe;
  recipe.alternative = alternative;
  return ComputeExactTest(recipe, Table(csv, "t.csv"));
}

TEST(ExactTestResult, CountsTheTablesOfItsAlternative) {
  // Eight cups, four of each: C(4, x) C(4, 4 - x) of the C(8, 4) = 70 tables have the first cell x: 1, 16, 36, 16, 1.
  // Twelve figures are promised.
  constexpr auto kTea = "milk,tea\n3,1\n1,3\n";
  EXPECT_NEAR(TestOf(kTea, "less").probability, 69.0 / 70, 1e-12);
  EXPECT_NEAR(TestOf(kTea, "greater").probability, 17.0 / 70, 1e-12);
  EXPECT_NEAR(TestOf(kTea, "two-sided").probability, 34.0 / 70, 1e-12);
  EXPECT_EQ(TestOf(kTea, "less").counts.total, 8);
}

TEST(ExactTestResult, OfALargerTableHasTwoSidesAndNoOptionInItsWords) {
  constexpr auto kWide = "a,b,c\n1,2,3\n3,4,5\n";
  EXPECT_GT(TestOf(kWide, "two-sided").probability, 0.0);
  EXPECT_EQ(FailureOf<BadData>([] { TestOf(kWide, "less"); }),
            "t.csv: the alternative less goes with a table of 2 x 2, not of 2 x 3");
  EXPECT_EQ(FailureOf<BadRequest>([] { TestOf(kWide, "both"); }),
            "the alternative of an exact test is less, greater or two-sided, not 'both'");
}

TEST(ExactTestResult, NotesColumnsOfTextAndAHybridThatPlaysNoPart) {
  ExactTestRecipe recipe;
  recipe.hybrid = true;
  const ExactTestResult result = ComputeExactTest(recipe, Table("who,milk,tea\na,3,1\nb,1,3\n", "t.csv"));
  EXPECT_EQ(result.notes.Lines(), (std::vector<std::string>{"columns of text are left out: who",
                                                            "hybrid plays no part in a table of 2 x 2"}));
}

TEST(ExactTestResult, StopsAmongTheCountsAndBeforeTheTest) {
  const std::string csv = "a,b\n1,2\n3,4\n";
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  EXPECT_THROW(Counts(csv, bar.get()), Stopped);
  EXPECT_THROW(ComputeExactTest(ExactTestRecipe(), Counts(csv), bar.get()), Stopped);
}

}  // namespace
}  // namespace kalmia::analysis
