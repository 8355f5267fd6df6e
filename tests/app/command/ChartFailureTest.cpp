// Every way in which `kalmia chart` fails: one line, the right exit code, no output, no file.

#include <gtest/gtest.h>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

struct BadChart {
  const char* what;
  const char* table;
  std::vector<std::string> options;
  const char* message;
};

const BadChart kBadCharts[] = {
    {"no such column", "y\n1\n2\n", {"--type", "individual"}, "t.csv: there is no column 'x'"},
    {"text", "x\na\nb\n", {"--type", "individual"}, "t.csv: the column 'x' holds text, not numbers"},
    {"an empty column", "x,y\n,1\nNA,2\n", {"--type", "individual"}, "t.csv: the column 'x' has no measurement"},
    {"a word", "x\n1\ntwo\n", {"--type", "individual"}, "row 2 (line 3), column 'x': 'two' is not a number"},
    {"infinity", "x\n1\n-inf\n", {"--type", "individual"}, "row 2 (line 3), column 'x': '-inf' is infinite"},
    {"too large", "x\n1\n1e39\n", {"--type", "individual"}, "'1e39' is too large for single precision"},
    {"NaN alone", "x,y\nNaN,1\nnan,2\n", {"--type", "cusum"}, "the column 'x' has no measurement"},
    {"one value", "x\n1\n", {"--type", "individual"}, "too few values for the limits of a chart of type individual"},
    {"one value", "x\n1\n", {"--type", "cusum"}, "too few values for the limits of a chart of type cusum"},
    {"one value", "x\n1\n", {"--type", "ewma"}, "too few values for the limits of a chart of type ewma"},
    {"one value", "x\n1\n", {"--type", "ewma-sd"}, "too few values for the limits of a chart of type ewma-sd"},
    {"no two values beside each other",
     "x,y\n1,1\n,2\n3,3\n,4\n5,5\n",
     {"--type", "individual"},
     "the column 'x' has no two values beside each other, which a moving range takes: give --sigma-from values"},
    {"no subgroup with two values",
     "x,y\n1,1\n,2\n3,3\n,4\n",
     {"--type", "mean-sd", "--subgroup", "2"},
     "too few values for the limits of a chart of type mean-sd"},
    {"no value in a whole subgroup",
     "x,y\n,1\n,2\n3,3\n",
     {"--type", "mean-range", "--subgroup", "2"},
     "too few values for the limits of a chart of type mean-range"},
    {"less than a subgroup",
     "x\n1\n2\n3\n",
     {"--type", "mean-range", "--subgroup", "4"},
     "the column 'x' has 3 rows, less than one subgroup of 4"},
    {"a target that is not known",
     "x,y\n,1\n,2\n3,3\n",
     {"--type", "cusum", "--subgroup", "2", "--sigma", "1"},
     "too few values for the limits of a chart of type cusum"},
    {"a range beyond single precision",
     "x\n-3e38\n3e38\n-3e38\n3e38\n",
     {"--type", "mean-range", "--subgroup", "2"},
     "the column 'x' has values too large for a chart"}};

TEST(FailureOfChart, IsOneLineWithExitCode1ForBadData) {
  for (const BadChart& bad : kBadCharts) {
    SCOPED_TRACE(std::string(bad.what) + ", " + bad.options[1]);
    const ScratchFolder folder;
    std::vector<std::string> line = {"chart", folder.Write("t.csv", bad.table), "--column", "x"};
    line.insert(line.end(), bad.options.begin(), bad.options.end());
    for (const char* option : {"--csv", "--svg", "--save-limits"}) {
      line.insert(line.end(), {option, folder.Path(option)});
    }
    ExpectFailure(RunKalmia(line), 1, bad.message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  }
}

TEST(FailureOfChart, IsExitCode2ForACommandLineThatMakesNoSense) {
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{"--type", "cusum"}, "chart needs --column NAME: "},
      {{"--column", "x"}, "chart needs --type TYPE: "},
      {{"--column", "x", "--type", "shewhart"},
       "--type takes one of individual, mean-range, mean-sd, cusum, ewma and ewma-sd, not 'shewhart'"},
      {{"--column", "x", "--type", "mean-range"},
       "type mean-range takes subgroups of 2 to 25 values, not of 1 (--subgroup); see kalmia chart --help"},
      {{"--column", "x", "--type", "mean-sd", "--subgroup", "26"}, "subgroups of 2 to 25 values, not of 26"},
      {{"--column", "x", "--type", "cusum", "--subgroup", "0"}, "--subgroup takes a whole number from 1 on, not '0'"},
      {{"--column", "x", "--type", "cusum", "--subgroup", "2.5"}, "--subgroup takes a whole number from 1 on"},
      {{"--column", "x", "--type", "cusum", "--subgroup", "26", "--sigma", "1"},
       "sigma with type cusum takes subgroups of at most 25 values, not of 26"},
      {{"--column", "x", "--type", "cusum", "--target", "high"}, "--target takes a number, not 'high'"},
      {{"--column", "x", "--type", "cusum", "--target", "inf"}, "--target takes a number, not 'inf'"},
      {{"--column", "x", "--type", "cusum", "--target", "1,5"}, "--target takes a number, not '1,5'"},
      {{"--column", "x", "--type", "cusum", "--sigma", "0"}, "--sigma takes a number above 0, not '0'"},
      {{"--column", "x", "--type", "cusum", "--sigma", "-1"}, "--sigma takes a number above 0, not '-1'"},
      {{"--column", "x", "--type", "ewma", "--lambda", "0"}, "--lambda takes a number above 0 and up to 1, not '0'"},
      {{"--column", "x", "--type", "ewma", "--lambda", "1.01"}, "--lambda takes a number above 0 and up to 1"},
      {{"--column", "x", "--type", "cusum", "--lambda", "0.2"},
       "lambda goes with type ewma and ewma-sd, not cusum"},
      {{"--column", "x", "--type", "cusum", "--limits-from", "f", "--target", "1"},
       "--limits-from 'f' and --target '1' do not go together"},
      {{"--column", "x", "--type", "cusum", "--limits-from", "f", "--sigma", "1"}, "do not go together"},
      {{"--column", "x", "--type", "ewma", "--limits-from", "f", "--lambda", "1"}, "do not go together"},
      {{"--column", "x", "--type", "cusum", "--limits-from", "f", "--sigma-from", "values"}, "do not go together"},
      {{"--column", "x", "--type", "cusum", "--sigma", "1", "--sigma-from", "values"}, "do not go together"},
      {{"--column", "x", "--type", "cusum", "--sigma-from", "range"},
       "--sigma-from takes one of moving-range and values, not 'range'"},
      {{"--column", "x", "--type", "cusum", "--subgroup", "2", "--sigma-from", "values"},
       "sigma-from goes with subgroups of 1 value, not of 2"},
      {{"--column", "x", "--type", "ewma-sd", "--sigma-from", "moving-range"},
       "type ewma-sd takes the standard deviation of the values: take type ewma"},
      {{"--column", "x", "--type", "individual", "--rules", "shewhart"},
       "--rules takes one of western-electric and nelson, not 'shewhart'"},
      {{"--column", "x", "--type", "cusum", "--rules", "nelson"},
       "rules go with type individual, mean-range and mean-sd, not cusum, whose points lean on those before"},
      {{"--column", "x", "--type", "ewma", "--rules", "nelson"}, "not ewma, whose points"},
      {{"--column", "x", "--type", "individual", "--subgroup", "2", "--rules", "nelson"},
       "rules with type individual take single values, not means of 2, whose limits are those of the values"},
      {{"--column", "x", "--type", "cusum", "--title", "T"}, "--title is a text of the drawing: give --svg too"},
      {{"--column", "x", "--type", "cusum", "--x-label", "X"}, "--x-label is a text of the drawing"},
      {{"--column", "x", "--type", "cusum", "--y-label", "Y"}, "--y-label is a text of the drawing"},
      {{"--column", "x", "--type", "cusum", "--yaml"}, "chart has no option '--yaml'"}};
  for (const auto& [options, message] : lines) {
    SCOPED_TRACE(::testing::PrintToString(options));
    const ScratchFolder folder;
    std::vector<std::string> line = {"chart", folder.Write("t.csv", "x\n1\n2\n")};
    line.insert(line.end(), options.begin(), options.end());
    ExpectFailure(RunKalmia(line), 2, message);
    ExpectFailure(RunKalmia(line), 2, "; see kalmia chart --help");
  }
  ExpectFailure(RunKalmia({"chart", "-", "--column", "x", "--type", "cusum", "--limits-from", "-"}), 2,
                "only one of TABLE and --limits-from can be -, standard input");
}

TEST(FailureOfChart, SaysWhatIsWrongWithStoredLimits) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "x\n1\n2\n4\n2\n");
  const std::string limits = folder.Path("limits");
  ASSERT_EQ(RunKalmia({"chart", table, "--column", "x", "--type", "cusum", "--save-limits", limits}).exitCode, 0);
  const nlohmann::json good = nlohmann::json::parse(ReadWholeFile(limits));
  const auto changed = [&good](const char* path, const nlohmann::json& value) {
    nlohmann::json json = good;
    json[nlohmann::json::json_pointer(path)] = value;
    return json.dump();
  };
  nlohmann::json lacking = good;
  lacking["limits"].erase("target");
  nlohmann::json ofFive = good, upsideDown = good;
  ofFive["subgroup"] = 5;
  ofFive["sigmaFrom"] = "moving-range";
  upsideDown["limits"]["ewmaLower"] = 2;
  upsideDown["limits"]["ewmaUpper"] = 1;
  const std::pair<std::string, const char*> files[] = {
      {"", "it is not JSON"},
      {"{\"a\":", "it is not JSON"},
      {"[1]", "its format is not kalmia-limits"},
      {"7", "its format is not kalmia-limits"},
      {changed("/format", "kalmia-pls"), "its format is not kalmia-limits"},
      {changed("/formatVersion", "one"), "it has no format version"},
      {changed("/formatVersion", 0), "it has no format version"},
      {changed("/formatVersion", 2), "has version 2; this program reads versions up to 1"},
      {changed("/formatVersion", 4294967297), "has version 4294967297; this program reads versions up to 1"},
      {changed("/formatVersion", 18446744073709551615U), "has version 18446744073709551615; this program reads"},
      {changed("/type", "shewhart"), "it names no type of chart"},
      {changed("/type", 3), "it names no type of chart"},
      {changed("/subgroup", 0), "it names no size of subgroups"},
      {changed("/subgroup", 4294967297), "it names no size of subgroups"},
      {changed("/subgroup", "five"), "it names no size of subgroups"},
      {changed("/sigmaFrom", "ranges"), "it does not say where its standard deviation comes from"},
      {changed("/sigmaFrom", 7), "it does not say where its standard deviation comes from"},
      {changed("/sigmaFrom", nullptr), "it does not say where its standard deviation comes from"},
      {ofFive.dump(), "it does not say where its standard deviation comes from"},
      {changed("/limits", 5), "it holds no limits"},
      {changed("/limits/target", "high"), "its limit 'target' is not a number"},
      {changed("/limits/target", nullptr), "it does not say what its target is"},
      {changed("/limits/sdProcess", -3), "its limit 'sdProcess' is below 0"},
      {changed("/limits/deadBand", -0.5), "its limit 'deadBand' is below 0"},
      {upsideDown.dump(), "its limit 'ewmaLower' is above 'ewmaUpper'"},
      {lacking.dump(), "it has no limit 'target'"}};
  for (const auto& [text, message] : files) {
    SCOPED_TRACE(text);
    const std::string file = folder.Write("bad", text);
    ExpectFailure(RunKalmia({"chart", table, "--column", "x", "--type", "cusum", "--limits-from", file}), 3, message);
  }
  const std::string gone = folder.Path("gone");
  ExpectFailure(RunKalmia({"chart", table, "--column", "x", "--type", "cusum", "--limits-from", gone}), 3,
                "cannot read " + gone);
  ExpectFailure(RunKalmia({"chart", table, "--column", "x", "--type", "ewma", "--limits-from", limits}), 1,
                limits + " holds limits of type cusum, not ewma");
  ExpectFailure(
      RunKalmia({"chart", table, "--column", "x", "--type", "cusum", "--subgroup", "2", "--limits-from", limits}), 1,
      limits + " holds limits for subgroups of 1, not of 2");
}

TEST(FailureOfChart, NeverWritesOverWhatItReadsNorTwiceIntoOneFile) {
  const ScratchFolder folder;
  const std::string text = "x\n1\n2\n4\n2\n", table = folder.Write("t.csv", text), limits = folder.Path("limits");
  const std::vector<std::string> line = {"chart", table, "--column", "x", "--type", "cusum"};
  const auto with = [&line](std::vector<std::string> more) {
    more.insert(more.begin(), line.begin(), line.end());
    return RunKalmia(more);
  };
  ASSERT_EQ(with({"--save-limits", limits}).exitCode, 0);
  const std::string stored = ReadWholeFile(limits);
  for (const char* option : {"--csv", "--svg", "--save-limits"}) {
    ExpectFailure(with({option, folder.Path("./t.csv")}), 2, std::string(option) + " would overwrite the table");
    ExpectFailure(with({"--limits-from", limits, option, limits}), 2,
                  std::string(option) + " would overwrite the limits");
  }
  ExpectFailure(with({"--csv", folder.Path("o"), "--svg", folder.Path("o")}), 2, "--csv and --svg would both write");
  EXPECT_EQ(ReadWholeFile(table), text);
  EXPECT_EQ(ReadWholeFile(limits), stored);
}

TEST(FailureOfChart, LeavesNothingOfTheOtherFilesWhereOneCannotBeWritten) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "x\n1\n2\n4\n2\n");
  for (const char* option : {"--csv", "--svg", "--save-limits"}) {
    std::vector<std::string> line = {"chart", table, "--column", "x", "--type", "cusum"};
    for (const char* each : {"--csv", "--svg", "--save-limits"}) {
      line.insert(line.end(), {each, each == std::string(option) ? table + "/below" : folder.Path(each)});
    }
    ExpectFailure(RunKalmia(line), 3, "cannot write " + table + "/below: Not a directory");
  }
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

}  // namespace
