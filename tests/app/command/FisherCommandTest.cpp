// What `kalmia fisher` and `kalmia quantile` answer, and every way in which they fail.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>

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
              HasSubstr("note: hybrid plays no part in a table of 2 x 2\n"));
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

struct BadCounts {
  const char* table;
  std::vector<std::string> options;
  const char* message;
};

const BadCounts kBadCounts[] = {
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
    {"a,b,c\n1,2,3\n3,4,5\n",
     {"--alternative", "less"},
     "the alternative less goes with a table of 2 x 2, not of 2 x 3 (--alternative)"},
    {"a,b,c\n70000,1,1\n1,70000,1\n1,1,70000\n", {}, "too large a table for the exact test: The hash table key cannot"},
    {"a,b\n", {}, "has a header but no data rows"}};

TEST(FailureOfFisher, IsOneLineWithExitCode1ForBadData) {
  for (const BadCounts& bad : kBadCounts) {
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

TEST(Fisher, TellsTheSameAsJson) {
  const nlohmann::json json = RunKalmia({"fisher", "-", "--alternative", "less", "--json"}, kTea).Json();
  EXPECT_EQ(json["alternative"], "less");
  EXPECT_EQ(json["total"], 8);
  EXPECT_NEAR(json["probability"], 69.0 / 70, 2e-6);  // as in the text
  const nlohmann::json hybrid = RunKalmia({"fisher", "-", "--hybrid", "--json"}, kTea).Json();
  EXPECT_EQ(hybrid["hybrid"], false);
  EXPECT_EQ(hybrid["notes"][0], "hybrid plays no part in a table of 2 x 2");
}

TEST(Fisher, HelpGivesAnExample) {
  EXPECT_THAT(RunKalmia({"fisher", "--help"}).output, HasSubstr("kalmia fisher counts.csv --alternative greater"));
}

// ---- Quantiles

std::string QuantileText(const std::string& line) {
  std::istringstream words("quantile " + line);
  std::vector<std::string> arguments;
  for (std::string word; words >> word;) arguments.push_back(word);
  const CommandResult run = RunKalmia(arguments);
  EXPECT_EQ(run.exitCode, 0) << run.error;
  EXPECT_EQ(run.error, "");
  return run.output.substr(0, run.output.find('\n'));
}

TEST(Quantile, PrintsTenDigitsOfEachDistribution) {
  // The forty digits of tests/analysis/data/quantiles.py, rounded to ten: mpmath 1.2.1.
  EXPECT_EQ(QuantileText("t --probability 0.95 --df 10"), "t = 2.228138852");
  EXPECT_EQ(QuantileText("t --probability 0.95 --df 10 --one-sided"), "t = 1.812461123");
  EXPECT_EQ(QuantileText("f --probability 0.05 --df 3 --df2 20"), "F = 3.098391212");
  EXPECT_EQ(QuantileText("chi2 --probability 0.05 --df 10"), "chi2 = 18.30703805");
  EXPECT_EQ(QuantileText("normal --probability 0.95"), "z = 1.959963985");
}

TEST(Quantile, HoldsWithVeryManyDegreesOfFreedomAndInFarTails) {
  EXPECT_EQ(QuantileText("t --probability 0.975 --df 1e8 --one-sided"), "t = 1.959964008");
  EXPECT_EQ(QuantileText("t --probability 0.95 --df 1e8"), "t = 1.959964008");
  EXPECT_EQ(QuantileText("f --probability 0.9999999 --df 3 --df2 20"), "F = 1.694972687e-05");
  EXPECT_EQ(QuantileText("f --probability 0.5 --df 1e8 --df2 1e8"), "F = 1.000000000");
  EXPECT_EQ(QuantileText("normal --probability 1e-300 --one-sided"), "z = -37.04709630");
  EXPECT_EQ(QuantileText("normal --probability 1e-300 --one-sided --complement"), "z = 37.04709630");
  // Cauchy's distribution: tan(pi (0.99995 - 0.5)) = 6366.197671.
  EXPECT_EQ(QuantileText("t --probability 0.9999 --df 1"), "t = 6366.197671");
  EXPECT_EQ(QuantileText("t --probability 0.99999999999 --df 3 --one-sided"), "t = 4795.275338");
}

TEST(Quantile, OneSidedOnesAreSymmetrical) {
  EXPECT_EQ(QuantileText("t --probability 0.25 --df 3 --one-sided"), "t = -0.7648923284");
  EXPECT_EQ(QuantileText("t --probability 0.75 --df 3 --one-sided"), "t = 0.7648923284");
  EXPECT_EQ(QuantileText("t --probability 0.75 --df 3 --one-sided --complement"), "t = -0.7648923284");
  EXPECT_EQ(QuantileText("t --probability 0.5 --df 3 --one-sided"), "t = 0.000000000");
}

TEST(Quantile, ComplementTakesTheOtherTail) {
  EXPECT_EQ(QuantileText("t --probability 0.0625 --df 3 --complement"), QuantileText("t --probability 0.9375 --df 3"));
  EXPECT_EQ(QuantileText("f --probability 0.0625 --df 3 --df2 4 --complement"),
            QuantileText("f --probability 0.9375 --df 3 --df2 4"));
  EXPECT_EQ(QuantileText("chi2 --probability 0.0625 --df 3 --complement"),
            QuantileText("chi2 --probability 0.9375 --df 3"));
}

TEST(Quantile, TellsWhatItIs) {
  EXPECT_THAT(RunKalmia({"quantile", "t", "--probability", "0.95", "--df", "10"}).output,
              HasSubstr("\n\n|T| stays below it with probability 0.95, T having Student's distribution with 10 deg"));
  EXPECT_THAT(RunKalmia({"quantile", "t", "--probability", "0.95", "--df", "10", "--one-sided"}).output,
              HasSubstr("\n\nT stays below it with probability 0.95"));
  EXPECT_THAT(RunKalmia({"quantile", "f", "--probability", "0.05", "--df", "3", "--df2", "20"}).output,
              HasSubstr("\n\nF exceeds it with probability 0.05"));
  EXPECT_THAT(RunKalmia({"quantile", "chi2", "--probability", "0.05", "--df", "1"}).output,
              HasSubstr("\n\nChi2 exceeds it with probability 0.05, Chi2 having the chi-square distribution with 1 "
                        "degree of freedom\n"));
  EXPECT_THAT(RunKalmia({"quantile", "normal", "--probability", "0.05", "--complement"}).output,
              HasSubstr("\n\n|Z| exceeds it with probability 0.05, Z having the standard normal distribution\n"));
}

TEST(Quantile, IsTheSameInJson) {
  const nlohmann::json json = RunKalmia({"quantile", "t", "--probability", "0.95", "--df", "10", "--json"}).Json();
  EXPECT_EQ(json["quantile"], 2.228138852);
  EXPECT_EQ(json["twoSided"], true);
  EXPECT_EQ(json["tail"], "below");
  EXPECT_EQ(json["df2"], nullptr);
}

TEST(FailureOfQuantile, IsExitCode2ForACommandLineThatMakesNoSense) {
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{}, "quantile needs a DISTRIBUTION: "},
      {{"g", "--probability", "0.5", "--df", "3"}, "DISTRIBUTION takes one of t, f, chi2 and normal, not 'g'"},
      {{"", "--probability", "0.5", "--df", "3"}, "DISTRIBUTION takes one of t, f, chi2 and normal, not ''"},
      {{"t", "f", "--probability", "0.5", "--df", "3"}, "quantile takes 1 word, DISTRIBUTION; 'f' is one too many"},
      {{"t", "--df", "3"}, "quantile needs --probability X: "},
      {{"t", "--probability", "0.5"},
       "a quantile of t needs degrees of freedom from 0.001 to 1e+09 (--df); see kalmia quantile --help"},
      {{"chi2", "--probability", "0.5"}, "a quantile of chi2 needs degrees of freedom from 0.001 to 1e+09 (--df)"},
      {{"normal", "--probability", "0.5", "--df", "3"}, "a quantile of normal takes no degrees of freedom (--df)"},
      {{"chi2", "--probability", "0.5", "--df", "3", "--df2", "4"},
       "a quantile of chi2 takes no degrees of freedom of a denominator (--df2)"},
      {{"chi2", "--probability", "0.5", "--df", "3", "--one-sided"},
       "a quantile of chi2 has one side already (--one-sided)"},
      {{"t", "--probability", "0.99", "--df", "0.001"}, "the quantile is beyond 1.79e308"},
      {{"f", "--probability", "1e-300", "--df", "3", "--df2", "0.5"}, "the quantile is beyond 1.79e308"},
      {{"chi2", "--probability", "0.9999999999", "--df", "0.01"}, "the quantile is nearer to 0 than 2.2e-308"},
      {{"t", "--probability", "0", "--df", "3"}, "--probability takes a number above 0 and below 1, not '0'"},
      {{"t", "--probability", "1", "--df", "3"}, "--probability takes a number above 0 and below 1, not '1'"},
      {{"t", "--probability", "0.99999999999999999", "--df", "3"}, "--probability takes a number above 0 and below 1"},
      {{"t", "--probability", "-0.5", "--df", "3"}, "--probability takes a number above 0 and below 1, not '-0.5'"},
      {{"t", "--probability", "NaN", "--df", "3"}, "--probability takes a number above 0 and below 1, not 'NaN'"},
      {{"t", "--probability", "0.5", "--df", "0"}, "--df takes a number above 0, not '0'"},
      {{"t", "--probability", "0.5", "--df", "inf"}, "--df takes a number above 0, not 'inf'"},
      {{"t", "--probability", "0.5", "--df", "1e300"},
       "needs degrees of freedom from 0.001 to 1e+09, not 1e+300 (--df)"},
      {{"t", "--probability", "0.5", "--df", "0.0001"},
       "needs degrees of freedom from 0.001 to 1e+09, not 1e-04 (--df)"},
      {{"t", "--probability", "0.5", "--df", "nan"}, "--df takes a number above 0, not 'nan'"},
      {{"t", "--probability", "0.5", "--df", "-3"}, "--df takes a number above 0, not '-3'"},
      {{"f", "--probability", "0.5", "--df", "3", "--df2", "2e9"},
       "needs degrees of freedom of a denominator from 0.001 to 1e+09, not 2e+09 (--df2)"},
      {{"t", "--probability", "0.5", "--df", "3", "--df2", "4"},
       "a quantile of t takes no degrees of freedom of a denominator (--df2)"},
      {{"f", "--probability", "0.5", "--df", "3"},
       "a quantile of f needs degrees of freedom of a denominator from 0.001 to 1e+09 (--df2)"},
      {{"f", "--probability", "0.5", "--df", "3", "--df2", "-1"}, "--df2 takes a number above 0, not '-1'"},
      {{"f", "--probability", "0.5", "--df", "3", "--df2", "4", "--one-sided"},
       "a quantile of f has one side already (--one-sided)"}};
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
