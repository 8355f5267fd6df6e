// How many components a fit takes at most.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

#include "CommandRun.h"
#include "TestTables.h"
#include "kalmia/analysis/fit/ModelData.h"

namespace {

using kalmia::analysis::ModelData;
using kalmia::analysis::MostComponents;
using kalmia::analysis::Notes;
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

/// A fit of a table in which each of 20 components tells something of y, with `more` options.
nlohmann::json FitOfMany(const char* command, const std::vector<std::string>& more) {
  std::vector<std::string> arguments = {command, "-", "--y", "y", "--scale", "centre", "--json"};
  arguments.insert(arguments.end(), more.begin(), more.end());
  const CommandResult run = RunKalmia(arguments, FadingTable(140, 20, 1));
  EXPECT_EQ(run.exitCode, 0) << run.error;
  return run.Json();
}

TEST(MostComponents, OfPLSAre15UnlessMoreAreAskedFor) {
  const nlohmann::json fit = FitOfMany("pls", {});
  EXPECT_EQ(fit["kept"], 15);
  ASSERT_EQ(fit["components"].size(), 15);
  EXPECT_EQ(fit["components"].back()["significant"], true) << "it is not Q2 that ends the search";
  EXPECT_EQ(FitOfMany("pls", {"--components", "17"})["kept"], 17);
}

TEST(MostComponents, OfOPLSAre15OrthogonalOnesUnlessMoreAreAskedFor) {
  const nlohmann::json fit = FitOfMany("opls", {});
  EXPECT_EQ(fit["orthogonal"], 15);
  ASSERT_EQ(fit["components"].size(), 16);
  EXPECT_EQ(fit["components"].back()["significant"], true) << "it is not Q2 that ends the search";
  EXPECT_EQ(FitOfMany("opls", {"--orthogonal", "17"})["orthogonal"], 17);
}

}  // namespace
