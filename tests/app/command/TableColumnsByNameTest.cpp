// Columns by names and ranges, as --x, --exclude and --y take them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "CommandRun.h"
#include "app/console/ExitCode.h"
#include "kalmia/analysis/table/TableColumns.h"

namespace kalmia::app {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;

/// The names of the columns that the arguments name in a table with this header.
Words Named(const std::string& header, const Words& arguments) {
  const auto separators = static_cast<std::size_t>(std::count(header.begin(), header.end(), ';'));
  const CsvTable table(header + "\n" + std::string(separators, ';') + "1\n", "t.csv");
  Words names;
  for (const int column : RequireColumns(table, arguments)) {
    names.push_back(table.ColumnNames()[static_cast<std::size_t>(column)]);
  }
  return names;
}

std::string Refusal(const std::string& header, const Words& arguments) {
  try {
    Named(header, arguments);
  } catch (const Failure& failure) {
    EXPECT_EQ(ExitCodeOf(failure), ExitCode::BadData);
    return failure.what();
  }
  return "";
}

TEST(TableColumnsByName, AreNamesAndRangesInTheOrderInWhichTheyAreGiven) {
  const std::string header = "a;b;c;d;e";
  EXPECT_THAT(Named(header, {"d,a"}), ElementsAre("d", "a"));
  EXPECT_THAT(Named(header, {"d..e,a..b"}), ElementsAre("d", "e", "a", "b"));
  EXPECT_THAT(Named(header, {"e", "b..b", "c,a"}), ElementsAre("e", "b", "c", "a"));
  EXPECT_THAT(Named(header, {"a..e"}), ElementsAre("a", "b", "c", "d", "e"));
}

TEST(TableColumnsByName, TakeAnExactNameBeforeAnythingElseThatTheTextCouldMean) {
  EXPECT_THAT(Named("a;b;a..b;c", {"a..b"}), ElementsAre("a..b"));
  EXPECT_THAT(Named("a;b;a,b;c", {"a,b"}), ElementsAre("a,b"));
  EXPECT_THAT(Named("a;b;a,b;c", {"a", "b"}), ElementsAre("a", "b"));
  EXPECT_THAT(Named("a;b;a,b;c", {"c,a,b"}), ElementsAre("c", "a,b"));
  EXPECT_THAT(Named("a,b;x;c..d;y", {"a,b..c..d,y"}), ElementsAre("a,b", "x", "c..d", "y"));
  EXPECT_THAT(Named("1..;2;3", {"1....3"}), ElementsAre("1..", "2", "3"));
}

TEST(TableColumnsByName, AreRefusedByTheNameThatIsMissingOrTwice) {
  EXPECT_THAT(Refusal("a;b;c", {"a,q,c"}), HasSubstr("there is no column 'q'"));
  EXPECT_THAT(Refusal("a;b;c", {"a..q,c"}), HasSubstr("there is no column 'q'"));
  EXPECT_THAT(Refusal("a;b;c", {"q..c"}), HasSubstr("there is no column 'q'"));
  EXPECT_THAT(Refusal("a;b;c", {"a,"}), HasSubstr("there is no column ''"));
  EXPECT_THAT(Refusal("a;b;c", {"a..c,b"}), HasSubstr("column 'b' is named twice"));
  EXPECT_THAT(Refusal("a;b;c", {"a", "a"}), HasSubstr("column 'a' is named twice"));
  EXPECT_THAT(Refusal("a;b;c", {"c..a"}), HasSubstr("in the range 'c..a' the last column stands before the first"));
}

TEST(TableColumnsByName, AreRefusedByWhatTheirTextLacks) {
  EXPECT_EQ(Refusal("a;b;c", {"..b"}), "t.csv: the range '..b' lacks its first column");
  EXPECT_EQ(Refusal("a;b;c", {"c,a.."}), "t.csv: the range 'a..' lacks its last column");
  EXPECT_EQ(Refusal("a;b;c", {".."}), "t.csv: the range '..' lacks its first column");
  EXPECT_EQ(Refusal("a;b;c", {"a,"}), "t.csv: there is no column '': a name is missing beside a comma of 'a,'");
  EXPECT_EQ(Refusal("a;b;c", {",,"}), "t.csv: there is no column '': a name is missing beside a comma of ',,'");
  EXPECT_EQ(Refusal("a;b;c", {"a,,c"}), "t.csv: there is no column '': a name is missing beside a comma of 'a,,c'");
}

TEST(TableColumnsByName, MayBeExcludedMoreThanOnce) {
  const CsvTable table("a;b;c;d\n1;2;3;4\n", "t.csv");
  EXPECT_THAT(ColumnsToExclude(table, {"c", "c"}), ElementsAre(2));
  EXPECT_THAT(ColumnsToExclude(table, {"b..c,a", "c..d"}), ElementsAre(1, 2, 0, 3));
  EXPECT_THROW(ColumnsToExclude(table, {"c", "q"}), Failure);
}

TEST(TableColumnsByName, GoThroughThousandsOfNamesInOneArgument) {
  std::string header, argument;
  constexpr int kColumns = 5000;
  for (int c = 0; c < kColumns; ++c) {
    header += (c == 0 ? "x" : ";x") + std::to_string(c);
    if (c % 2 == 0) argument += (c == 0 ? "x" : ",x") + std::to_string(c);
  }
  EXPECT_EQ(Named(header, {argument}).size(), static_cast<std::size_t>(kColumns / 2));
}

TEST(TableColumnsByName, AreTakenByEveryCommandThatChoosesColumns) {
  const ScratchFolder folder;
  std::string text = "id,a,b,c,d,e,y\n";
  for (int r = 1; r <= 12; ++r) {
    text += std::to_string(r);
    for (const int prime : {3, 5, 7, 11, 13, 17}) text += "," + std::to_string(r * r * prime % 19);
    text += "\n";
  }
  const std::string table = folder.Write("t.csv", text), out = folder.Path("out");
  const auto run = [](const Words& arguments) {
    const CommandResult result = RunKalmia(arguments);
    EXPECT_EQ(result.exitCode, 0) << arguments.front() << ": " << result.error;
    return result.exitCode == 0 ? result.Json() : nlohmann::json();
  };
  const Words chosen = {"a", "b", "e"};
  for (const Words& what : {Words{"--x", "a..b,e"}, Words{"--exclude", "id,c..d,y"}}) {
    for (const Words& command : {Words{"pca", table, "--components", "1"},
                                 Words{"pls", table, "--y", "y", "--components", "1"},
                                 Words{"opls", table, "--y", "y", "--orthogonal", "0"}}) {
      Words arguments = command;
      arguments.insert(arguments.end(), {"--scale", "none", "--json", what[0], what[1]});
      EXPECT_EQ(run(arguments)["x"]["columns"], chosen) << command.front() << " " << what[0];
    }
    EXPECT_EQ(run({"preprocess", table, "--steps", "linear", "--out", out, "--json", what[0], what[1]})["columns"],
              chosen);
    EXPECT_EQ(run({"filter", table, "--y", "y", "--components", "1", "--out", out, "--json", what[0], what[1]})["x"],
              chosen);
  }
  for (const Words& what : {Words{"--x", "a..b,e"}, Words{"--exclude", "id,c..d,y"}}) {
    EXPECT_EQ(run({"cluster", table, "--method", "single", "--json", what[0], what[1]})["x"]["columns"], chosen);
  }
  EXPECT_EQ(run({"o2pls", table, table, "--x", "a..b,e", "--y", "d,y", "--joint", "1", "--x-unique", "0", "--y-unique",
                 "0", "--json"})["x"]["columns"],
            chosen);
  run({"fill", table, "--out", out, "--exclude", "id,c..d", "--json"});
}

}  // namespace
}  // namespace kalmia::app
