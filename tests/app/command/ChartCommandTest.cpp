// What `kalmia chart` prints and writes, held against the library's charts and numbers worked by hand.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "ChartTables.h"
#include "CommandRun.h"
#include "TestTables.h"
#include "kalmia/analysis/chart/ChartTypes.h"
#include "kalmia/statistics/ControlChart.h"

namespace {

using kalmia::analysis::Table;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

const std::vector<std::string> kTypes = kalmia::analysis::ChartTypeWords();

NCDataVector<float> Vector(const std::vector<double>& numbers) {
  NCDataVector<float> v(static_cast<int>(numbers.size()));
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    v(static_cast<int>(i) + 1, std::isnan(numbers[i]) ? -99.0F : static_cast<float>(numbers[i]));
  }
  return v;
}

TEST(Chart, ShowsTargetAndThreeStandardDeviationsOfTheValuesForTheIndividualType) {
  const CommandResult run =
      RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--sigma-from", "values"}, kTwelve);
  ASSERT_EQ(run.exitCode, 0) << run.error;
  // Sum 72, sum of squares 650: mean 6, s = sqrt((650 - 72^2 / 12) / 11) = 4.45176, 6 +- 3 s = -7.35528 and 19.3553.
  EXPECT_THAT(run.output, HasSubstr("value     -7.35528  6.00000      19.3553"));
  EXPECT_THAT(run.output, HasSubstr("Standard deviation of the values 4.45176"));
  EXPECT_THAT(run.output, HasSubstr("No signals"));
  EXPECT_EQ(run.error, "");
}

TEST(Chart, TakesTargetAndStandardDeviationFromTheCommandLine) {
  const CommandResult run =
      RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--target", "5", "--sigma", "4"}, kTwelve);
  EXPECT_THAT(run.output, HasSubstr("value     -7.00000  5.00000      17.0000"));
  EXPECT_THAT(run.output, HasSubstr("1 signal\n\n  row  signal         value    limit\n   12  value above"));
}

TEST(Chart, MeanAndRangeLimitsOfThreeSubgroupsAreThoseWorkedByHand) {
  const ScratchFolder folder;
  const CommandResult run = RunKalmia({"chart", folder.Write("t.csv", kTwelve), "--column", "x", "--type", "mean-range",
                                       "--subgroup", "4", "--csv", folder.Path("c.csv")});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const Table csv = CsvAt(folder.Path("c.csv"));
  EXPECT_THAT(csv.ColumnNames(),
              ElementsAre("subgroup", "first row", "last row", "mean", "mean lower limit", "mean centre",
                          "mean upper limit", "range", "range lower limit", "range centre", "range upper limit",
                          "signal"));
  EXPECT_THAT(NumbersOf(csv, "first row"), ElementsAre(1, 5, 9));
  EXPECT_THAT(NumbersOf(csv, "last row"), ElementsAre(4, 8, 12));
  EXPECT_THAT(NumbersOf(csv, "mean"), ElementsAre(5, 5, 8));
  EXPECT_THAT(NumbersOf(csv, "range"), ElementsAre(6, 4, 17));
  // Mean range 9; A2 = 0.729, D4 = 2.282 are single precision: relative 6e-8.
  EXPECT_NEAR(NumbersOf(csv, "mean upper limit")[0], 6 + 0.729 * 9, 1e-6);
  EXPECT_NEAR(NumbersOf(csv, "mean lower limit")[2], 6 - 0.729 * 9, 1e-6);
  EXPECT_NEAR(NumbersOf(csv, "range upper limit")[1], 2.282 * 9, 2e-6);
  EXPECT_EQ(NumbersOf(csv, "range lower limit")[1], 0);
}

// NIST/SEMATECH e-Handbook of Statistical Methods, 6.3.2.2: ten batches of a process.
const char* const kBatches = "flow\n49.6\n47.6\n49.9\n51.3\n47.8\n51.2\n52.6\n52.4\n53.6\n52.1\n";

TEST(Chart, IndividualLimitsFromMovingRangesAreThosePublished) {
  const CommandResult run = RunKalmia({"chart", "-", "--column", "flow", "--type", "individual"}, kBatches);
  ASSERT_EQ(run.exitCode, 0) << run.error;
  // Published: centre 50.81, mean moving range 1.8778, limits 45.8159 and 55.8041.
  EXPECT_THAT(run.output, HasSubstr("value      45.8159  50.8100      55.8041\n"));
  EXPECT_THAT(run.output, HasSubstr("Standard deviation of the process 1.66470 (mean moving range / 1.128) and of the "
                                    "values 2.03385\n"));
}

TEST(Chart, MovingRangesAreTheDefaultOfIndividualAndEwmaAloneAndCanBeChosenForACuSum) {
  // Of kTwelve the moving ranges add up to 2 + 2 + 2 + 5 + 2 + 2 + 2 + 4 + 8 + 5 + 14 = 48: 48 / 11 / 1.128 = 3.86847.
  const std::vector<std::string> line = {"chart", "-", "--column", "x", "--type"};
  const auto outputOf = [&line](std::vector<std::string> more) {
    more.insert(more.begin(), line.begin(), line.end());
    return RunKalmia(more, kTwelve).output;
  };
  const char* const moving = "process 3.86847 (mean moving range / 1.128)";
  for (const char* type : {"individual", "ewma"}) {
    EXPECT_EQ(outputOf({type}), outputOf({type, "--sigma-from", "moving-range"}));
    EXPECT_THAT(outputOf({type}), HasSubstr(moving));
    EXPECT_THAT(outputOf({type, "--sigma-from", "values"}), Not(HasSubstr(moving)));
  }
  for (const char* type : {"cusum", "ewma-sd"}) {
    EXPECT_EQ(outputOf({type}), outputOf({type, "--sigma-from", "values"}));
    EXPECT_THAT(outputOf({type}), HasSubstr("Standard deviation of the process 4.45176"));
  }
  EXPECT_THAT(outputOf({"cusum", "--sigma-from", "moving-range"}), HasSubstr("dead band of the CuSum 1.93424"));
  // A given standard deviation is taken as it is: 6 +- 3 x 4.
  EXPECT_THAT(outputOf({"individual", "--sigma", "4"}), HasSubstr("-6.00000  6.00000      18.0000"));
}

TEST(Chart, MovingRangesLeaveOutPairsWithAMissingValue) {
  const CommandResult run =
      RunKalmia({"chart", "-", "--column", "x", "--type", "individual"}, "x,y\n1,0\n3,0\n,0\n50,0\n51,0\n");
  EXPECT_THAT(run.output, HasSubstr("process 1.32979 (mean"));  // (2 + 1) / 2 / 1.128
}

struct Quantity {
  const char* column;
  const NCDataVector<float>* (ControlChart::*get)() const;
  double sign;
};

struct Limit {
  const char* column;
  double value;
};

std::vector<Limit> LimitsOf(const ControlChart& chart) {
  switch (chart.GetControlType()) {
    case ControlChart::Individual:
      return {{"mean centre", chart.GetTarget()},
              {"mean upper limit", chart.GetTarget() + 3 * chart.GetStdDevIndividual()},
              {"mean lower limit", chart.GetTarget() - 3 * chart.GetStdDevIndividual()}};
    case ControlChart::MeanRange:
      return {{"mean centre", chart.GetTarget()},        {"mean upper limit", chart.GetMeanUCL()},
              {"mean lower limit", chart.GetMeanLCL()},   {"range centre", chart.GetRangeMean()},
              {"range upper limit", chart.GetRangeUCL()}, {"range lower limit", chart.GetRangeLCL()}};
    case ControlChart::MeanStdDev:
      return {{"mean centre", chart.GetTarget()},
              {"mean upper limit", chart.GetMeanUCL()},
              {"mean lower limit", chart.GetMeanLCL()},
              {"standard deviation centre", chart.GetStdDevMean()},
              {"standard deviation upper limit", chart.GetStdDevUCL()},
              {"standard deviation lower limit", chart.GetStdDevLCL()}};
    case ControlChart::CuSum:
      return {{"mean centre", chart.GetTarget()},
              {"CuSum centre", 0},
              {"CuSum upper limit", chart.GetActionLimit()},
              {"CuSum lower limit", -chart.GetActionLimit()}};
    default:
      return {{"EWMA centre", chart.GetTarget()},
              {"EWMA upper limit", chart.GetEWMAUCL()},
              {"EWMA lower limit", chart.GetEWMALCL()}};
  }
}

TEST(Chart, WritesTheSeriesAndLimitsOfTheLibraryForEveryType) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", Series(43, 20, 0.05));
  const NCDataVector<float> cells = Vector(NumbersOf(CsvAt(table), "ph"));
  const std::vector<std::vector<Quantity>> series = {
      {{"mean", &ControlChart::GetMeanVector, 1}},
      {{"mean", &ControlChart::GetMeanVector, 1}, {"range", &ControlChart::GetRangeVector, 1}},
      {{"mean", &ControlChart::GetMeanVector, 1}, {"standard deviation", &ControlChart::GetStdDevVector, 1}},
      {{"mean", &ControlChart::GetMeanVector, 1},
       {"high CuSum", &ControlChart::GetHighCuSum, 1},
       {"low CuSum", &ControlChart::GetLowCuSum, -1}},
      {{"mean", &ControlChart::GetMeanVector, 1}, {"EWMA", &ControlChart::GetEWMA, 1}},
      {{"mean", &ControlChart::GetMeanVector, 1}, {"EWMA", &ControlChart::GetEWMA, 1}}};
  for (std::size_t type = 0; type < kTypes.size(); ++type) {
    SCOPED_TRACE(kTypes[type]);
    const CommandResult run =
        RunKalmia(ChartOf(table, kTypes[type], {"--subgroup", "4", "--csv", folder.Path("c.csv")}));
    ASSERT_EQ(run.exitCode, 0) << run.error;
    EXPECT_THAT(run.error, HasSubstr("note: the last 3 rows are no whole subgroup and left out\n"));
    const Table csv = CsvAt(folder.Path("c.csv"));
    const ControlChart chart(static_cast<ControlChart::ControlType>(type), cells, 4);
    ASSERT_EQ(csv.Rows(), 10);
    for (const Quantity& quantity : series[type]) {
      const std::vector<double> written = NumbersOf(csv, quantity.column);
      for (int i = 1; i <= 10; ++i) {
        EXPECT_EQ(static_cast<float>(written[static_cast<std::size_t>(i) - 1]),
                  static_cast<float>(quantity.sign) * (*(chart.*quantity.get)())[i]);
      }
    }
    for (const Limit& limit : LimitsOf(chart)) EXPECT_EQ(NumbersOf(csv, limit.column)[9], limit.value) << limit.column;
  }
}

TEST(Chart, SignalsAreThePointsStrictlyBeyondALimit) {
  // Target 0, sigma 1: limits at -3 and 3, both met exactly by a value that is no signal.
  const CommandResult run = RunKalmia(
      {"chart", "-", "--column", "x", "--type", "individual", "--target", "0", "--sigma", "1"},
      "x\n3\n-3\n3.001\n-4\n");
  EXPECT_THAT(run.output, HasSubstr("2 signals\n\n  row  signal          value     limit\n"
                                    "    3  value above   3.00100   3.00000\n"
                                    "    4  value below  -4.00000  -3.00000\n"));
}

TEST(Chart, CuSumSignalsBeyondItsActionLimitOnBothSides) {
  // Target 0 and sigma 1: dead band 0.5, action limit 4.5. Sums of 1.5 a row pass it at the fourth and later again.
  const std::string up = "x\n2\n2\n2\n2\n", down = "x\n-2\n-2\n-2\n-2\n";
  const std::vector<std::string> line = {"chart", "-", "--column", "x", "--type", "cusum", "--target", "0",
                                         "--sigma", "1"};
  EXPECT_THAT(RunKalmia(line, up).output, HasSubstr("    4  high CuSum above  6.00000  4.50000\n"));
  EXPECT_THAT(RunKalmia(line, down).output, HasSubstr("    4  low CuSum below  -6.00000  -4.50000\n"));
  EXPECT_THAT(RunKalmia(line, up).output, HasSubstr("1 signal\n"));
}

TEST(Chart, TellsWhereItsEwmaWeightComesFrom) {
  const std::vector<std::string> line = {"chart", "-", "--column", "ph", "--type", "ewma"};
  const std::string table = Series(40, 99, 0);
  EXPECT_THAT(RunKalmia(line, table).output, HasSubstr(", with the smallest forecast errors\n"));
  std::vector<std::string> given = line;
  given.insert(given.end(), {"--lambda", "0.25"});
  EXPECT_THAT(RunKalmia(given, table).output, HasSubstr("Weight lambda 0.250000\n"));
}

TEST(Chart, LeavesMissingValuesOut) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("c.csv"), svg = folder.Path("c.svg");
  const CommandResult run =
      RunKalmia({"chart", "-", "--column", "x", "--type", "mean-range", "--subgroup", "2", "--csv", csv, "--svg", svg},
                "x\n1\n2\nNA\nNA\n5\nnan\n7\n8\n");
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("8 values in 4 subgroups of 2, 3 of them missing"));
  const std::vector<double> means = NumbersOf(CsvAt(csv), "mean");
  EXPECT_EQ(means[0], 1.5);
  EXPECT_TRUE(std::isnan(means[1]));
  EXPECT_EQ(means[2], 5);
  // The line breaks at the hole: two pieces in each of the two panels.
  EXPECT_EQ(CountOf(ReadWholeFile(svg), "<polyline"), 4);
}

TEST(Chart, StoredLimitsJudgeNewValuesAsTheOldOnesWereJudged) {
  const ScratchFolder folder;
  const std::string first = folder.Write("first.csv", Series(60, 99, 0));
  const std::string next = folder.Write("next.csv", Series(40, 10, 0.1));
  for (const std::string& type : kTypes) {
    SCOPED_TRACE(type);
    const std::string limits = folder.Path("limits"), old = folder.Path("old.csv"), csv = folder.Path("new.csv");
    ASSERT_EQ(
        RunKalmia(ChartOf(first, type, {"--subgroup", "4", "--save-limits", limits, "--csv", old})).exitCode, 0);
    const CommandResult run = RunKalmia(ChartOf(next, type, {"--limits-from", limits, "--csv", csv}));
    ASSERT_EQ(run.exitCode, 0) << run.error;
    EXPECT_THAT(run.output, HasSubstr("; limits from " + limits));
    EXPECT_THAT(run.output, HasSubstr("subgroups of 4"));
    EXPECT_THAT(run.output, HasSubstr("signal"));
    const Table before = CsvAt(old), after = CsvAt(csv);
    for (const std::string& name : before.ColumnNames()) {
      const bool isLimit = name.find("limit") != std::string::npos || name.find("centre") != std::string::npos;
      if (!isLimit) continue;
      const double was = NumbersOf(before, name)[0], is = NumbersOf(after, name)[0];
      EXPECT_TRUE(was == is || (std::isnan(was) && std::isnan(is))) << name;
    }
  }
}

TEST(Chart, StoredLimitsAreTheSameWhenTheyAreStoredAgain) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", Series(60, 99, 0));
  for (const std::string& type : kTypes) {
    SCOPED_TRACE(type);
    const std::string one = folder.Path("one"), two = folder.Path("two");
    ASSERT_EQ(RunKalmia(ChartOf(table, type, {"--subgroup", "5", "--save-limits", one})).exitCode, 0);
    ASSERT_EQ(RunKalmia(ChartOf(table, type, {"--limits-from", one, "--save-limits", two})).exitCode, 0);
    EXPECT_EQ(ReadWholeFile(one), ReadWholeFile(two));
  }
}

std::string WithoutField(const std::string& limits, const std::string& field) {
  nlohmann::json json = nlohmann::json::parse(limits);
  EXPECT_EQ(json.erase(field), 1U);
  return json.dump();
}

TEST(Chart, StoredLimitsSayWhereTheirStandardDeviationComesFrom) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", kTwelve);
  const std::vector<std::string> line = {"chart", table, "--column", "x", "--type", "individual"};
  const auto with = [&line](std::vector<std::string> more) {
    more.insert(more.begin(), line.begin(), line.end());
    return RunKalmia(more);
  };
  const std::string limits = folder.Path("limits"), again = folder.Path("again");
  const std::pair<std::vector<std::string>, const char*> ways[] = {
      {{}, "moving-range"}, {{"--sigma-from", "values"}, "values"}, {{"--sigma", "4"}, "given"}};
  for (const auto& [way, word] : ways) {
    SCOPED_TRACE(word);
    std::vector<std::string> save = way;
    save.insert(save.end(), {"--save-limits", limits});
    const std::string saved = with(save).output;
    EXPECT_EQ(nlohmann::json::parse(ReadWholeFile(limits))["sigmaFrom"], word);
    const std::string read = with({"--limits-from", limits, "--save-limits", again}).output;
    EXPECT_EQ(ReadWholeFile(limits), ReadWholeFile(again));
    // The table of limits is the same, to the last digit shown.
    EXPECT_THAT(read, HasSubstr(saved.substr(saved.find("  value"), saved.find('\n', saved.find("  value")))));
  }
}

TEST(Chart, StoredLimitsThatDoNotSaySoAreThoseOfTheValuesOrGiven) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", kTwelve), limits = folder.Path("limits");
  const auto run = [&](std::vector<std::string> more) {
    more.insert(more.begin(), {"chart", table, "--column", "x", "--type", "individual"});
    return RunKalmia(more);
  };
  // Earlier versions wrote the same numbers without the word.
  ASSERT_EQ(run({"--sigma-from", "values", "--save-limits", limits}).exitCode, 0);
  const std::string old = folder.Write("old", WithoutField(ReadWholeFile(limits), "sigmaFrom"));
  EXPECT_THAT(run({"--limits-from", old}).output, HasSubstr("value     -7.35528  6.00000      19.3553"));
  EXPECT_EQ(run({"--limits-from", old, "--json"}).Json()["sigmaFrom"], "values");
  ASSERT_EQ(run({"--sigma", "4", "--save-limits", limits}).exitCode, 0);
  const std::string given = folder.Write("given", WithoutField(ReadWholeFile(limits), "sigmaFrom"));
  EXPECT_THAT(run({"--limits-from", given}).output, HasSubstr("value     -6.00000  6.00000      18.0000"));
  EXPECT_EQ(run({"--limits-from", given, "--json"}).Json()["sigmaFrom"], "given");
}

/// Centre 0, sigma 1: nine points above 0, the last one beyond 3.
const char* const kShifted = "x\n-1\n0.5\n0.5\n0.5\n0.5\n0.5\n0.5\n0.5\n0.5\n4\n";
const std::vector<std::string> kRuled = {"chart",    "-", "--column", "x", "--type", "individual",
                                         "--target", "0", "--sigma",  "1", "--rules", "nelson"};

TEST(Chart, NamesTheRuleThatEachSignalBreaks) {
  const CommandResult run = RunKalmia(kRuled, kShifted);
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output,
              HasSubstr("2 signals\n\n"
                        "  row  signal         value    limit  nelson rule\n"
                        "   10  value above  4.00000  3.00000            1\n"
                        "   10  value above  4.00000  0.00000            2\n\n"
                        "  rule 1: 1 point beyond a limit\n"
                        "  rule 2: 9 points in a row on one side of the centre line\n"));
  const ScratchFolder folder;
  std::vector<std::string> line = kRuled;
  line.insert(line.end(), {"--csv", folder.Path("c.csv"), "--svg", folder.Path("c.svg")});
  ASSERT_EQ(RunKalmia(line, kShifted).exitCode, 0);
  const Table csv = CsvAt(folder.Path("c.csv"));
  EXPECT_EQ(csv.Cell(9, csv.Columns() - 2), "value above; value above");
  EXPECT_EQ(csv.Cell(9, csv.Columns() - 1), "nelson 1; nelson 2");
  const std::string drawing = ReadWholeFile(folder.Path("c.svg"));
  EXPECT_EQ(CountOf(drawing, "class=\"run\""), 1);
  EXPECT_EQ(CountOf(drawing, "class=\"signal\""), 1);
  EXPECT_THAT(drawing, HasSubstr(">2</text>"));
  EXPECT_THAT(drawing, HasSubstr(">nelson 2: 9 points in a row on one side of the centre line</text>"));
  line = kRuled;
  line.emplace_back("--json");
  const nlohmann::json json = RunKalmia(line, kShifted).Json();
  EXPECT_EQ(json["rules"], "nelson");
  ASSERT_EQ(json["signals"].size(), 2U);
  EXPECT_EQ(json["signals"][1]["rule"], "nelson 2");
  EXPECT_EQ(json["signals"][1]["firstRow"], 10);
}

TEST(Chart, SaysThatNoRunBreaksARule) {
  EXPECT_THAT(RunKalmia(kRuled, "x\n0.5\n-0.5\n").output,
              HasSubstr("No signals: every point lies within its limits, and no run breaks a rule\n"));
}

TEST(Chart, RangesAreJudgedByTheirLimitsAloneAndMeansByEveryRule) {
  // Twenty pairs: means of 5.1, but 4.9 in the first five; ranges of 1.
  std::string table = "x\n";
  for (int i = 0; i < 20; ++i) table += i < 5 ? "4.4\n5.4\n" : "4.6\n5.6\n";
  const nlohmann::json json = RunKalmia({"chart", "-", "--column", "x", "--type", "mean-range", "--subgroup", "2",
                                         "--target", "5", "--rules", "western-electric", "--json"},
                                        table)
                                  .Json();
  std::vector<int> points;
  for (const nlohmann::json& signal : json["signals"]) {
    EXPECT_EQ(signal["series"], "mean");
    EXPECT_EQ(signal["rule"], "western-electric 4");
    points.push_back(signal["point"]);
  }
  EXPECT_THAT(points, ElementsAre(13, 14, 15, 16, 17, 18, 19, 20));  // 6 to 13 are the first eight
}

TEST(Chart, ListsNoMoreSignalsThanAReaderReads) {
  std::string text = "x\n";
  for (int i = 0; i < 100; ++i) text += "9\n";
  const CommandResult run = RunKalmia(
      {"chart", "-", "--column", "x", "--type", "individual", "--target", "0", "--sigma", "1"}, text);
  EXPECT_THAT(run.output, HasSubstr("100 signals"));
  EXPECT_THAT(run.output, HasSubstr("  and 60 more: CSV or JSON gives them all\n"));
}

TEST(Chart, TargetOfMinus99IsATargetLikeAnyOther) {
  const CommandResult run = RunKalmia(
      {"chart", "-", "--column", "x", "--type", "individual", "--target", "-99", "--sigma", "1"}, "x\n-98\n-97\n");
  EXPECT_THAT(run.output, HasSubstr("value     -102.000  -99.0000     -96.0000"));
}

TEST(Chart, MeanOfExactlyMinus99IsATargetThatCanBeStored) {
  const ScratchFolder folder;
  const std::vector<std::string> line = {"chart", "-", "--column", "x", "--type", "mean-range", "--subgroup", "2"};
  std::vector<std::string> save = line, judge = line;
  save.insert(save.end(), {"--save-limits", folder.Path("limits")});
  judge.insert(judge.end(), {"--limits-from", folder.Path("limits")});
  const std::string values = "x\n-98.5\n-97.5\n-100.5\n-99.5\n";
  EXPECT_THAT(RunKalmia(save, values).output, HasSubstr("-100.880  -99.0000     -97.1200"));  // A2 = 1.880
  EXPECT_THAT(RunKalmia(judge, values).output, HasSubstr("-100.880  -99.0000     -97.1200"));
}

TEST(Chart, ProcessWithoutSpreadHasLimitsOnItsTarget) {
  const ScratchFolder folder;
  const std::string svg = folder.Path("c.svg");
  const CommandResult run =
      RunKalmia({"chart", "-", "--column", "x", "--type", "mean-range", "--subgroup", "2", "--svg", svg},
                "x\n5\n5\n5\n5\n5\n5\n");
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("No signals"));
  EXPECT_THAT(ReadWholeFile(svg), Not(HasSubstr("nan")));
}

TEST(Chart, OneValueIsEnoughWhereTheSpreadIsGiven) {
  const CommandResult run =
      RunKalmia({"chart", "-", "--column", "x", "--type", "individual", "--sigma", "1"}, "x\n7\n");
  EXPECT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("4.00000  7.00000      10.0000"));
}

TEST(Chart, HelpNamesEveryTypeAndGivesAnExample) {
  const CommandResult run = RunKalmia({"chart", "--help"});
  EXPECT_EQ(run.exitCode, 0);
  for (const std::string& type : kTypes) EXPECT_THAT(run.output, HasSubstr(type));
  EXPECT_THAT(run.output, HasSubstr("kalmia chart drift.csv --column diameter --type mean-range --subgroup 5"));
}

}  // namespace
