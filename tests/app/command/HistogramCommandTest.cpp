// What `kalmia histogram` prints, writes and draws, and every way in which it fails.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <sstream>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "SvgTexts.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

CommandResult RunHistogram(const std::string& table, std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"histogram", "-", "--column", "x"});
  return RunKalmia(more, table);
}

TEST(Histogram, SortsNineWholeNumbersIntoBinsOfTwoAndAHalf) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("h.csv");
  const CommandResult run = RunHistogram("x\n1\n2\n3\n4\n5\n6\n7\n8\n9\n", {"--csv", csv});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  // Width 8 / sqrt(9) = 2.67, rounded down to 2.5; bins from 1: 1 2 3, 4 5, 6 7 8, 9.
  EXPECT_THAT(run.output, HasSubstr("x of standard input: 9 values in 4 bins of width 2.5\n"));
  const Table bins = CsvAt(csv);
  EXPECT_THAT(bins.ColumnNames(), ElementsAre("from", "to", "centre", "values", "rows"));
  EXPECT_THAT(NumbersOf(bins, "from"), ElementsAre(1, 3.5, 6, 8.5));
  EXPECT_THAT(NumbersOf(bins, "to"), ElementsAre(3.5, 6, 8.5, 11));
  EXPECT_THAT(NumbersOf(bins, "centre"), ElementsAre(2.25, 4.75, 7.25, 9.75));
  EXPECT_THAT(NumbersOf(bins, "values"), ElementsAre(3, 2, 3, 1));
  EXPECT_EQ(bins.Cell(0, 4), "1 2 3");
  EXPECT_EQ(bins.Cell(3, 4), "9");
}

TEST(Histogram, PutsEveryValueIntoOneBinAndItsRowBesideIt) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("h.csv"), svg = folder.Path("h.svg");
  const CommandResult run = RunKalmia(
      {"histogram", ExampleTable("wine.csv"), "--column", "proline", "--csv", csv, "--svg", svg});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const Table bins = CsvAt(csv), wine = CsvAt(ExampleTable("wine.csv"));
  const std::vector<double> from = NumbersOf(bins, "from"), to = NumbersOf(bins, "to"),
                            values = NumbersOf(wine, "proline");
  std::set<int> seen;
  int filled = 0;
  for (int bin = 0; bin < bins.Rows(); ++bin) {
    std::istringstream rows{std::string(bins.Cell(bin, 4))};
    const std::size_t before = seen.size();
    for (int row = 0; rows >> row;) {
      EXPECT_TRUE(seen.insert(row).second) << row;
      const auto b = static_cast<std::size_t>(bin);
      EXPECT_GE(values[static_cast<std::size_t>(row) - 1], from[b]);
      EXPECT_LE(values[static_cast<std::size_t>(row) - 1], to[b]);
    }
    EXPECT_EQ(NumbersOf(bins, "values")[static_cast<std::size_t>(bin)], static_cast<double>(seen.size() - before));
    filled += seen.size() > before ? 1 : 0;
  }
  EXPECT_EQ(seen.size(), 178U);
  const std::string drawing = ReadWholeFile(svg);
  const std::string bar = "class=\"bar\"";
  int bars = 0;
  for (std::size_t at = drawing.find(bar); at != std::string::npos; at = drawing.find(bar, at + 1)) ++bars;
  EXPECT_EQ(bars, filled);
  EXPECT_THAT(FaultsOf(drawing), IsEmpty());
  EXPECT_THAT(run.output, HasSubstr("\nWrote " + csv + "\nWrote " + svg + "\n"));
}

TEST(Histogram, LeavesMissingValuesOut) {
  const CommandResult run = RunHistogram("x\n1\nNA\n2\nnan\n3\n4\n");
  EXPECT_THAT(run.output, HasSubstr("4 values in "));
  EXPECT_THAT(run.output, HasSubstr(", 2 missing\n"));
}

TEST(Histogram, OneBinReachesFromTheSmallestToTheLargestValueOrIsOneUnitWide) {
  EXPECT_THAT(RunHistogram("x\n0\n10\n").output, HasSubstr("2 values in 1 bin of width 10\n"));
  EXPECT_THAT(RunHistogram("x\n0\n10\n").output, HasSubstr("  0.00000  10.0000       2"));
  EXPECT_THAT(RunHistogram("x\n5\n5\n5\n").output, HasSubstr("3 values in 1 bin of width 1.0\n"));
  EXPECT_THAT(RunHistogram("x\n5\n5\n5\n").output, HasSubstr("  5.00000  6.00000       3"));
  EXPECT_THAT(RunHistogram("x\n7\n").output, HasSubstr("1 value in 1 bin"));
}

TEST(Histogram, ReportsNarrowRangesInTheirOwnUnit) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("h.csv");
  ASSERT_EQ(RunHistogram("x\n0.001\n0.002\n0.003\n0.004\n", {"--csv", csv}).exitCode, 0);
  const Table bins = CsvAt(csv);
  EXPECT_NEAR(NumbersOf(bins, "from")[0], 0.001, 1e-9);  // from a centre in single precision: relative 6e-8
  double values = 0;
  for (const double count : NumbersOf(bins, "values")) values += count;
  EXPECT_EQ(values, 4);
}

TEST(Histogram, ShowsNoMoreBinsThanAReaderReads) {
  std::string table = "x\n";
  for (int i = 0; i < 10000; ++i) table += std::to_string(i * 37 % 10007) + "\n";
  const CommandResult run = RunHistogram(table);
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr(" more: CSV or JSON gives them all\n"));
}

struct BadHistogram {
  const char* table;
  const char* message;
};

const BadHistogram kBadHistograms[] = {{"y\n1\n", "standard input: there is no column 'x'"},
                               {"x\na\nb\n", "the column 'x' holds text, not numbers"},
                               {"x,y\n,1\nNaN,2\n", "the column 'x' has no measurement"},
                               {"x\n1\ninf\n", "row 2 (line 3), column 'x': 'inf' is infinite"},
                               {"x\n1\n1e39\n", "'1e39' is too large for single precision"},
                               {"x\n1\none\n", "'one' is not a number"},
                               {"x\n1\n3e38\n", "standard input: the column 'x' has values too large for a histogram"},
                               {"x\n1e-38\n3e38\n", "has values too large for a histogram"},
                               {"x\n3e38\n3e38\n", "has values too large for a histogram"},
                               {"x\n", "has a header but no data rows"},
                               {"", "standard input is empty"}};

TEST(FailureOfHistogram, IsOneLineWithExitCode1ForBadData) {
  for (const BadHistogram& bad : kBadHistograms) {
    SCOPED_TRACE(bad.message);
    const ScratchFolder folder;
    ExpectFailure(RunHistogram(bad.table, {"--csv", folder.Path("c"), "--svg", folder.Path("s")}), 1, bad.message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>());
  }
}

TEST(FailureOfHistogram, IsExitCode2ForACommandLineThatMakesNoSense) {
  ExpectFailure(RunKalmia({"histogram", "t.csv"}), 2, "histogram needs --column NAME: ");
  ExpectFailure(RunKalmia({"histogram", "--column", "x"}), 2, "histogram needs a TABLE: ");
  for (const char* text : {"--title", "--x-label", "--y-label"}) {
    ExpectFailure(RunKalmia({"histogram", "t.csv", "--column", "x", text, "T"}), 2,
                  std::string(text) + " is a text of the drawing: give --svg too");
  }
  ExpectFailure(RunKalmia({"histogram", "t.csv", "--column", "x", "--bins", "3"}), 2,
                "histogram has no option '--bins'; it takes --column, --csv, --separator, --decimal, --svg, --size, "
                "--title, --x-label, --y-label, --json, --na, --skip-lines, --comment and --help");
}

TEST(FailureOfHistogram, NeverWritesOverItsTableAndLeavesNothingWhereAFileCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "x\n1\n2\n");
  for (const char* option : {"--csv", "--svg"}) {
    ExpectFailure(RunKalmia({"histogram", table, "--column", "x", option, table}), 2, "would overwrite the table");
    ExpectFailure(RunKalmia({"histogram", table, "--column", "x", option, table + "/below"}), 3, "Not a directory");
  }
  ExpectFailure(RunKalmia({"histogram", table, "--column", "x", "--csv", folder.Path("c"), "--svg", table + "/s"}), 3,
                "cannot write " + table + "/s");
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  EXPECT_EQ(ReadWholeFile(table), "x\n1\n2\n");
}

TEST(Histogram, DrawsTicksAtTheEdgesOfItsBins) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("h.svg");
  const std::string nine = "x\n1\n2\n3\n4\n5\n6\n7\n8\n9\n";
  ASSERT_EQ(RunHistogram(nine, {"--svg", svg}).exitCode, 0);
  for (const char* text : {">1.0</text>", ">3.5</text>", ">6.0</text>", ">8.5</text>", ">11.0</text>",
                           ">count</text>", ">x</text>", ">x of standard input</text>"}) {
    EXPECT_THAT(ReadWholeFile(svg), HasSubstr(text));
  }
  ASSERT_EQ(RunHistogram(nine, {"--svg", svg, "--title", "Nine", "--x-label", "length", "--y-label", "parts"}).exitCode,
            0);
  for (const char* text : {">Nine</text>", ">length</text>", ">parts</text>"}) {
    EXPECT_THAT(ReadWholeFile(svg), HasSubstr(text));
  }
}

TEST(Histogram, EdgesAreRoundNumbersWhereTheRangeIsNarrow) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("h.svg");
  const nlohmann::json json = RunHistogram("x\n1e-6\n2.1e-6\n3.25e-6\n", {"--svg", svg, "--json"}).Json();
  // In units of 1e-6 the smallest lies just below 1 in single precision, so the first bin begins at 0.
  EXPECT_EQ(json["bins"][0]["from"], 0);
  EXPECT_EQ(json["bins"][1]["from"], 1.5e-6);
  EXPECT_EQ(json["bins"][0]["to"], json["bins"][1]["from"]);
  EXPECT_THAT(ReadWholeFile(svg), HasSubstr(">0</text>"));
  EXPECT_THAT(ReadWholeFile(svg), HasSubstr(">1.5e-06</text>"));
}

TEST(Histogram, TellsItsBinsAsJson) {
  const nlohmann::json json = RunHistogram("x\n1\n2\n3\n4\n5\n6\n7\n8\n9\nNA\n", {"--json"}).Json();
  EXPECT_EQ(json["width"], 2.5);
  EXPECT_EQ(json["values"], 9);
  EXPECT_EQ(json["missing"], 1);
  ASSERT_EQ(json["bins"].size(), 4U);
  EXPECT_EQ(json["bins"][1], (nlohmann::json{{"from", 3.5}, {"to", 6.0}, {"count", 2}, {"rows", {4, 5}}}));
}

TEST(Histogram, HelpGivesAnExample) {
  const CommandResult run = RunKalmia({"histogram", "--help"});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("kalmia histogram wine.csv --column alcohol --svg alcohol.svg"));
}

}  // namespace
