// What `kalmia fisher` and `kalmia quantile` answer, and every way in which they fail.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

#include "CommandRun.h"
#include "ExpectFailure.h"

namespace {

using ::testing::HasSubstr;

double ProbabilityOf(const std::string& table, std::vector<std::string> more = {}) {
  more.insert(more.begin(), {"fisher", "-"});
  const CommandResult run = RunKalmia(more, table);
  EXPECT_EQ(run.exitCode, 0) << run.error;
  const std::string mark = "probability ";
  return std::strtod(run.output.c_str() + run.output.find(mark) + mark.size(), nullptr);
}

const char* const kTea = "milk,tea\n3,1\n1,3\n";  // R. A. Fisher, The Design of Experiments (1935), chapter 2

TEST(Fisher, JudgesTheLadyTastingTeaOnEachSide) {
  // Of 70 tables of these margins 1 + 16 are at least as good: 17 / 70; 69 at most; 2 (1 + 16) not more probable.
  // Six figures are shown, and log gamma is good for as many.
  EXPECT_NEAR(ProbabilityOf(kTea, {"--alternative", "greater"}), 17.0 / 70, 2e-6);
  EXPECT_NEAR(ProbabilityOf(kTea, {"--alternative", "less"}), 69.0 / 70, 2e-6);
  EXPECT_NEAR(ProbabilityOf(kTea, {"--alternative", "two-sided"}), 34.0 / 70, 2e-6);
  EXPECT_NEAR(ProbabilityOf(kTea), 34.0 / 70, 2e-6);
}

TEST(Fisher, JudgesLargerTables) {
  // Job satisfaction and income, A. Agresti, Categorical Data Analysis (2002), table 2.8: p = 0.7827.
  const char* const jobs = "a,b,c,d\n1,3,10,6\n2,3,10,7\n1,6,14,12\n0,1,9,11\n";
  EXPECT_NEAR(ProbabilityOf(jobs), 0.7827, 5e-5);  // as many figures as are published
}

TEST(Fisher, TellsWhatWasComputed) {
  const CommandResult two = RunKalmia({"fisher", "-", "--alternative", "less"}, kTea);
  EXPECT_THAT(two.output,
              HasSubstr("Fisher's exact test of standard input, 2 x 2, 8 counts\n\n  probability 0.985714"));
  EXPECT_THAT(two.output, HasSubstr("this table and those whose first cell is smaller\n"));
  EXPECT_THAT(RunKalmia({"fisher", "-", "--alternative", "greater"}, kTea).output, HasSubstr("first cell is larger\n"));
  const CommandResult three = RunKalmia({"fisher", "-", "--hybrid"}, "a,b,c\n9,8,7\n8,7,9\n");
  EXPECT_THAT(three.output, HasSubstr("2 x 3, 48 counts"));
  EXPECT_THAT(three.output, HasSubstr("all tables that are not more probable than this one\nHybrid: chi-square"));
  EXPECT_EQ(three.error, "");
  EXPECT_THAT(RunKalmia({"fisher", "-", "--hybrid"}, kTea).error,
              HasSubstr("note: --hybrid plays no part in a table of 2 x 2\n"));
}

TEST(Fisher, HybridTakesChiSquareWhereExpectedCountsAreLarge) {
  const char* const table = "a,b,c\n29,18,17\n18,27,19\n";
  EXPECT_NE(ProbabilityOf(table), ProbabilityOf(table, {"--hybrid"}));
  EXPECT_NEAR(ProbabilityOf(table), ProbabilityOf(table, {"--hybrid"}), 0.03);  // an approximation, of this size here
}

TEST(Fisher, LeavesColumnsOfTextOutAndReadsWholeNumbersInEveryForm) {
  const CommandResult run = RunKalmia({"fisher", "-"}, "cup,milk,tea\nfirst,3.0,+1\nsecond,1e0,3\n");
  EXPECT_EQ(run.error, "note: columns of text are left out: cup\n");
  EXPECT_THAT(run.output, HasSubstr("2 x 2, 8 counts\n\n  probability 0.485714"));
}

TEST(Fisher, RowOfZerosLeavesOneTable) { EXPECT_EQ(ProbabilityOf("a,b\n0,0\n3,4\n"), 1.0); }

struct BadInput {
  const char* table;
  std::vector<std::string> options;
  const char* message;
};

const BadInput kBadInputs[] = {
    {"a,b\n1,-2\n3,4\n", {}, "row 1 (line 2), column 'b': the count '-2' is negative"},
    {"a,b\n1,2.5\n3,4\n", {}, "row 1 (line 2), column 'b': the count '2.5' is not a whole number"},
    {"a,b\n1,2\n,4\n", {}, "row 2 (line 3), column 'a': a count is missing"},
    {"a,b\n1,2\nNaN,4\n", {}, "row 2 (line 3), column 'a': a count is missing"},
    {"a,b\n1,2\ninf,4\n", {}, "row 2 (line 3), column 'a': 'inf' is infinite"},
    {"a,b\n1,2\n3,four\n", {}, "row 2 (line 3), column 'b': 'four' is not a number"},
    {"a,b\n1,2\n1e39,4\n", {}, "'1e39' is too large for a count"},
    {"a,b\n1,2\n3e9,4\n", {}, "'3e9' is too large for a count"},
    {"a,b\n0,0\n0,0\n", {}, "standard input: every count is 0"},
    {"a,b,c\n0,0,0\n0,0,0\n", {}, "standard input: every count is 0"},
    {"a,b\n2000000000,100000000\n100000000,1\n", {}, "the counts add up to more than 2147483647"},
    {"a,b\n99999999999999,1\n1,1\n", {}, "the counts add up to more than 2147483647"},
    {"a,b\n1,2\n", {}, "an exact test takes at least 2 rows and 2 columns of counts, not 1 and 2"},
    {"a\n1\n2\n", {}, "at least 2 rows and 2 columns of counts, not 2 and 1; the table has one column only"},
    {"a,b\nx,y\nz,w\n", {}, "at least 2 rows and 2 columns of counts, not 2 and 0"},
    {"a,b,c\n1,2,3\n3,4,5\n", {"--alternative", "less"}, "--alternative less goes with a table of 2 x 2, not of 2 x 3"},
    {"a,b,c\n70000,1,1\n1,70000,1\n1,1,70000\n", {}, "too large a table for the exact test: The hash table key cannot"},
    {"a,b\n", {}, "has a header but no data rows"}};

TEST(FailureOfFisher, IsOneLineWithExitCode1ForBadData) {
  for (const BadInput& bad : kBadInputs) {
    SCOPED_TRACE(bad.table);
    std::vector<std::string> line = {"fisher", "-"};
    line.insert(line.end(), bad.options.begin(), bad.options.end());
    ExpectFailure(RunKalmia(line, bad.table), 1, bad.message);
  }
}

TEST(FailureOfFisher, IsExitCode2ForACommandLineThatMakesNoSense) {
  ExpectFailure(RunKalmia(std::vector<std::string>{"fisher"}), 2, "fisher needs a COUNTS: ");
  ExpectFailure(RunKalmia({"fisher", "t.csv", "--alternative", "both"}), 2,
                "--alternative takes one of less, greater and two-sided, not 'both'");
  ExpectFailure(RunKalmia({"fisher", "t.csv", "--hybrid=yes"}), 2, "--hybrid takes no value, not 'yes'");
}

TEST(Fisher, HelpGivesAnExample) {
  EXPECT_THAT(RunKalmia({"fisher", "--help"}).output, HasSubstr("kalmia fisher counts.csv --alternative greater"));
}

// ---- Quantiles

TEST(Quantile, GivesThoseOfSciPy) {
  // scipy.stats 1.10.1: t.ppf(0.975, 10) = 2.2281389, t.ppf(0.95, 10) = 1.8124611, f.isf(0.05, 3, 20) = 3.0983912. The
  // bisection of t ends at 1e-4, that of F at 5e-5.
  const auto valueOf = [](const std::vector<std::string>& line) {
    const CommandResult run = RunKalmia(line);
    EXPECT_EQ(run.exitCode, 0) << run.error;
    return std::strtod(run.output.c_str() + 4, nullptr);
  };
  EXPECT_NEAR(valueOf({"quantile", "t", "--probability", "0.95", "--df", "10"}), 2.2281389, 1.1e-4);
  EXPECT_NEAR(valueOf({"quantile", "t", "--probability", "0.95", "--df", "10", "--one-sided"}), 1.8124611, 1.1e-4);
  EXPECT_NEAR(valueOf({"quantile", "f", "--probability", "0.05", "--df", "3", "--df2", "20"}), 3.0983912, 1e-4);
}

TEST(Quantile, TellsWhatItIs) {
  EXPECT_THAT(RunKalmia({"quantile", "t", "--probability", "0.95", "--df", "10"}).output,
              HasSubstr("\n\n|T| stays below it with probability 0.95, T having Student's distribution with 10 deg"));
  EXPECT_THAT(RunKalmia({"quantile", "t", "--probability", "0.95", "--df", "10", "--one-sided"}).output,
              HasSubstr("\n\nT stays below it with probability 0.95"));
  EXPECT_THAT(RunKalmia({"quantile", "f", "--probability", "0.05", "--df", "3", "--df2", "20"}).output,
              HasSubstr("\n\nF exceeds it with probability 0.05"));
}

TEST(Quantile, SaysWhereTheSearchEnds) {
  EXPECT_EQ(RunKalmia({"quantile", "t", "--probability", "0.9999", "--df", "1"}).error,
            "note: the search ends at 64: the quantile may be larger\n");
  EXPECT_EQ(RunKalmia({"quantile", "f", "--probability", "0.00101", "--df", "1", "--df2", "1"}).error,
            "note: the search ends at 99999: the quantile may be larger\n");
}

TEST(FailureOfQuantile, IsExitCode2ForACommandLineThatMakesNoSense) {
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{}, "quantile needs a DISTRIBUTION: "},
      {{"g", "--probability", "0.5", "--df", "3"}, "DISTRIBUTION takes one of t and f, not 'g'"},
      {{"", "--probability", "0.5", "--df", "3"}, "DISTRIBUTION takes one of t and f, not ''"},
      {{"t", "f", "--probability", "0.5", "--df", "3"}, "quantile takes 1 word, DISTRIBUTION; 'f' is one too many"},
      {{"t", "--df", "3"}, "quantile needs --probability X: "},
      {{"t", "--probability", "0.5"}, "quantile needs --df X: "},
      {{"t", "--probability", "0", "--df", "3"}, "--probability takes a number above 0 and below 1, not '0'"},
      {{"t", "--probability", "1", "--df", "3"}, "--probability takes a number above 0 and below 1, not '1'"},
      {{"t", "--probability", "0.99999999999", "--df", "3"}, "--probability takes a number above 0 and below 1"},
      {{"t", "--probability", "NaN", "--df", "3"}, "--probability takes a number above 0 and below 1, not 'NaN'"},
      {{"t", "--probability", "0.5", "--df", "0"}, "--df takes a number above 0, not '0'"},
      {{"t", "--probability", "0.5", "--df", "inf"}, "--df takes a number above 0, not 'inf'"},
      {{"t", "--probability", "0.5", "--df", "1e300"}, "--df takes a number above 0, not '1e300'"},
      {{"t", "--probability", "0.5", "--df", "3", "--df2", "4"}, "--df2 goes with f, not t"},
      {{"t", "--probability", "0.25", "--df", "3", "--one-sided"},
       "--one-sided takes probabilities from 0.5 on, not 0.25: the quantile is that of 0.75 with the sign turned"},
      {{"f", "--probability", "0.5", "--df", "3"}, "quantile f needs --df2 X: "},
      {{"f", "--probability", "0.5", "--df", "3", "--df2", "-1"}, "--df2 takes a number above 0, not '-1'"},
      {{"f", "--probability", "0.5", "--df", "3", "--df2", "4", "--one-sided"}, "--one-sided goes with t, not f"}};
  for (const auto& [words, message] : lines) {
    SCOPED_TRACE(::testing::PrintToString(words));
    std::vector<std::string> line = {"quantile"};
    line.insert(line.end(), words.begin(), words.end());
    ExpectFailure(RunKalmia(line), 2, message);
  }
}

TEST(Quantile, HelpGivesAnExample) {
  EXPECT_THAT(RunKalmia({"quantile", "--help"}).output, HasSubstr("kalmia quantile t --probability 0.95 --df 10"));
}

}  // namespace
