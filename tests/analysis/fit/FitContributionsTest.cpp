#include "kalmia/analysis/fit/FitContributions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::HasSubstr;
using ::testing::Optional;

/// The third row has no cell of X.
PCAResult FitOfFiveRows(const Table& table) {
  PCARecipe recipe;
  recipe.id = "name";
  recipe.components = 1;
  recipe.judgeComponents = false;
  return Fit(recipe, table);
}

TEST(FitContributions, AreOfTheRowsOfTheTable) {
  const Table table("name,a,b\np,1,2\nq,2,3\nr,NA,NA\ns,4,6\nu,5,7\n", "t.csv");
  const PCAResult fit = FitOfFiveRows(table);
  Notes notes;
  const auto rows = Contributions(fit, table, {4, 0}, &notes);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0].row, "u");
  EXPECT_EQ(rows[1].row, "p");
  EXPECT_EQ(rows[0].t2, fit.model.rowStatistics->t2[3]);
}

TEST(FitContributions, OfARowThatIsLeftOutAreRefused) {
  const Table table("name,a,b\np,1,2\nq,2,3\nr,NA,NA\ns,4,6\nu,5,7\n", "t.csv");
  const PCAResult fit = FitOfFiveRows(table);
  Notes notes;
  EXPECT_THAT(FailureOf<BadData>([&] { Contributions(fit, table, {2}, &notes); }),
              Optional(HasSubstr("t.csv: row 3 (line 4) has no contributions: it is left out")));
}

}  // namespace
}  // namespace kalmia::analysis
