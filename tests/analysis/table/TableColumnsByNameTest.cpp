// Columns by names and ranges.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Words = std::vector<std::string>;

/// The names of the columns that the arguments name in a table with this header.
Words Named(const std::string& header, const Words& arguments) {
  const auto separators = static_cast<std::size_t>(std::count(header.begin(), header.end(), ';'));
  const Table table(header + "\n" + std::string(separators, ';') + "1\n", "t.csv");
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
    EXPECT_TRUE(Is<BadData>(failure));
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
  const Table table("a;b;c;d\n1;2;3;4\n", "t.csv");
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

}  // namespace
}  // namespace kalmia::analysis
