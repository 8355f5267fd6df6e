// `kalmia pls`: what it selects, how it stops, what its numbers mean.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <sstream>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// The JSON output of a fit to a table on standard input.
json FitPLS(const std::string& table, std::vector<std::string> options) {
  options.insert(options.begin(), {"pls", "-", "--json"});
  return RunWell(options, table).Json();
}

std::vector<std::string> Names(const json& list) { return list.get<std::vector<std::string>>(); }

TEST(PLS, FitsOctaneToTheGasolineSpectra) {
  const json fit = RunWell({"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--json"}).Json();
  EXPECT_EQ(fit["x"]["columns"].size(), 401);
  EXPECT_EQ(fit["rows"], 60);
  EXPECT_EQ(fit["validation"]["groups"], 7);
  ASSERT_GE(fit["kept"], 2);
  // The octane numbers spread by 1.53; every published model of these spectra errs by 0.2 to 0.35.
  EXPECT_LT(fit["quality"][0]["rmsecv"], 0.4);
  EXPECT_LT(fit["quality"][0]["rmsee"], fit["quality"][0]["rmsecv"]);
}

TEST(PLS, ShowsTheFirstComponentThatFailsAndDoesNotKeepIt) {
  const json fit = RunWell({"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--validation",
                            "component", "--json"})
                       .Json();
  const json& components = fit["components"];
  const std::size_t kept = fit["kept"];
  ASSERT_EQ(components.size(), kept + 1);
  for (std::size_t a = 0; a < components.size(); ++a) {
    EXPECT_EQ(components[a]["component"], a + 1);
    EXPECT_EQ(components[a]["kept"], a < kept);
    EXPECT_EQ(components[a]["significant"], a < kept);
    EXPECT_EQ(components[a]["q2"] > components[a]["q2Limit"], a < kept);
    EXPECT_EQ(components[a]["q2Limit"], 0.05);
  }
}

TEST(PLS, KeepsAsManyComponentsAsAskedForWhateverQ2Says) {
  const json fit = FitPLS(UnrelatedTable(30, 6, 1, 5), {"--y", "y1", "--components", "4", "--validation", "component"});
  EXPECT_EQ(fit["kept"], 4);
  ASSERT_EQ(fit["components"].size(), 4);
  for (const json& component : fit["components"]) EXPECT_EQ(component["kept"], true);
  EXPECT_EQ(fit["components"][3]["significant"], false);
}

TEST(PLS, KeepsTheSameModelWhetherTheNumberIsGivenOrFound) {
  const std::string table = LinearTable(30, 6, 2);
  const ScratchFolder folder;
  const std::vector<std::string> words = {"--y", "y", "--id", "name", "--validation", "component", "--csv"};
  std::vector<std::string> finds = words, gives = words;
  finds.push_back(folder.Path("found"));
  const json found = FitPLS(table, finds);
  gives.insert(gives.end(), {folder.Path("given"), "--components", found["kept"].dump()});
  const json given = FitPLS(table, gives);
  ASSERT_EQ(found["components"].size(), found["kept"].get<std::size_t>() + 1);  // one was taken and dropped again
  for (const char* file : {"scores.csv", "weights.csv", "loadings.csv", "w-star.csv", "coefficients.csv", "fit.csv",
                           "vip.csv", "rows.csv"}) {
    EXPECT_EQ(ReadWholeFile(folder.Path(std::string("found/") + file)),
              ReadWholeFile(folder.Path(std::string("given/") + file)))
        << file;
  }
  EXPECT_EQ(found["quality"], given["quality"]);
}

TEST(PLS, ByComponentSaysThatNoneIsKeptSavesNothingAndEndsWell) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", UnrelatedTable(30, 6, 1, 5));
  const CommandResult text =
      RunWell({"pls", table, "--y", "y1", "--validation", "component", "--save", folder.Path("m"), "--csv",
               folder.Path("d")});
  EXPECT_THAT(text.output, HasSubstr("No component is kept"));
  EXPECT_THAT(text.output, HasSubstr("Nothing is saved"));
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
  const json fit =
      RunWell({"pls", table, "--y", "y1", "--validation", "component", "--save", folder.Path("m"), "--json"}).Json();
  EXPECT_EQ(fit["kept"], 0);
  EXPECT_EQ(fit["saved"], nullptr);
  EXPECT_EQ(fit["components"].size(), 1);
  EXPECT_THAT(fit["quality"], IsEmpty());
}

TEST(PLS, ByComponentEndsWellWhereNotEvenAFirstOneCanBeFound) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", "x,y\n1,1\n1.5,2\n1,3\n1.5,2\n");  // unrelated, exactly
  std::vector<std::string> line = {"pls",  table, "--y", "y", "--validation", "component", "--save", folder.Path("m"),
                                   "--csv", folder.Path("d")};
  const CommandResult text = RunWell(line);
  EXPECT_THAT(text.output, HasSubstr("No component is kept: none can be computed, "));
  EXPECT_THAT(text.output, HasSubstr("Nothing is saved"));
  line.push_back("--json");
  const json fit = RunWell(line).Json();
  EXPECT_EQ(fit["kept"], 0);
  EXPECT_THAT(fit["components"], IsEmpty());
  EXPECT_TRUE(fit["endedEarly"].is_string());
  EXPECT_EQ(fit["saved"], nullptr);
  EXPECT_EQ(folder.Names(), std::vector<std::string>{"t.csv"});
}

TEST(PLS, AddsAtMostOneComponentLessThanRowsAndOnePerColumn) {
  const json byColumns = FitPLS(LinearTable(30, 2, 1), {"--y", "y", "--id", "name", "--components", "9"});
  EXPECT_EQ(byColumns["kept"], 2);
  EXPECT_THAT(Names(byColumns["notes"]), ElementsAre("9 components are cut to 2: there are 30 rows and 2 X columns"));
  const json byRows = FitPLS(UnrelatedTable(4, 9, 1, 3), {"--y", "y1", "--components", "9"});
  EXPECT_EQ(byRows["kept"], 3);
}

TEST(PLS, StopsWhereNothingIsLeftOfX) {
  // The second X column is twice the first, so that X holds a single component.
  const json fit = FitPLS("a,b,y\n1,2,1\n2,4,3\n3,6,2\n4,8,5\n5,10,4\n6,12,7\n", {"--y", "y", "--components", "2"});
  EXPECT_EQ(fit["kept"], 1);
  EXPECT_EQ(fit["endedEarly"], "nothing is left of X");
}

TEST(PLS, TakesAllOtherColumnsOfNumbersAsX) {
  const json fit = FitPLS("id,a,site,y,b\n1,1,n,1,4\n2,2,s,3,3\n3,3,n,2,5\n4,5,s,5,1\n5,4,n,4,2\n",
                          {"--y", "y", "--components", "1"});
  EXPECT_THAT(Names(fit["x"]["columns"]), ElementsAre("id", "a", "b"));
  EXPECT_THAT(Names(fit["leftOut"]["textColumns"]), ElementsAre("site"));
  EXPECT_THAT(Names(fit["notes"]),
              ElementsAre("left out of X, text columns: site", "7 groups are cut to 5, the number of rows",
                          "the limits of the distance rest on 5 rows: they are a guess"));
}

TEST(PLS, SelectsXByRangeByExclusionAndNeverTakesYIdOrGroups) {
  const std::string table = "id,a,b,y,c,g\n1,1,7,1,4,1\n2,2,5,3,3,2\n3,3,6,2,5,1\n4,5,1,5,1,2\n5,4,2,4,2,1\n";
  const auto columns = [&table](std::vector<std::string> options) {
    options.insert(options.end(), {"--y", "y", "--components", "1"});
    return Names(FitPLS(table, options)["x"]["columns"]);
  };
  EXPECT_THAT(columns({"--x", "b..c"}), ElementsAre("b", "c"));
  EXPECT_THAT(columns({"--x", "a"}), ElementsAre("a"));
  EXPECT_THAT(columns({"--exclude", "id,b"}), ElementsAre("a", "c", "g"));
  EXPECT_THAT(columns({"--exclude", "id", "--exclude", "b"}), ElementsAre("a", "c", "g"));
  EXPECT_THAT(columns({"--id", "id", "--group-column", "g"}), ElementsAre("a", "b", "c"));
}

TEST(PLS, TakesNamesThatHoldCommasAndDotsAsTheyAre) {
  const std::string table = "\"a,b\";c..d;y\n1;7;1\n2;5;3\n3;6;2\n5;1;5\n";
  EXPECT_THAT(Names(FitPLS(table, {"--y", "y", "--components", "1", "--x", "a,b..c..d"})["x"]["columns"]),
              ElementsAre("a,b", "c..d"));
  EXPECT_THAT(Names(FitPLS(table, {"--y", "y", "--components", "1", "--exclude", "a,b"})["x"]["columns"]),
              ElementsAre("c..d"));
  EXPECT_THAT(Names(FitPLS(table, {"--y", "a,b", "--components", "1"})["y"]["columns"]), ElementsAre("a,b"));
}

TEST(PLS, LeavesOutConstantAndEmptyColumnsAndRowsWithoutXWithOneLineEach) {
  const CommandResult run = RunWell({"pls", "-", "--y", "y", "--components", "1", "--groups", "2", "--json"},
                                    "a,k,e,l,f,y\n1,7,,2,,1\n2,7,NA,,,3\n,,,,,9\n3,7,,2,,2\n5,7,,2,,5\n");
  const json fit = run.Json();
  EXPECT_THAT(Names(fit["x"]["columns"]), ElementsAre("a"));
  EXPECT_THAT(Names(fit["leftOut"]["constantColumns"]), ElementsAre("k", "l"));
  EXPECT_THAT(Names(fit["leftOut"]["emptyColumns"]), ElementsAre("e", "f"));
  EXPECT_THAT(Names(fit["leftOut"]["rows"]), ElementsAre("3"));
  EXPECT_EQ(fit["rows"], 4);
  EXPECT_EQ(run.error,
            "note: left out, without any X cell: row 3\n"
            "note: left out of X, constant columns: k and l\n"
            "note: left out of X, empty columns: e and f\n"
            "note: the jack-knife has 1 degree of freedom: its intervals are wide and mean little\n");
}

TEST(PLS, TakesAMeasured99AsANumberAndSaysSo) {
  const CommandResult run = RunWell({"pls", "-", "--y", "y", "--components", "1", "--groups", "2", "--json"},
                                    "a,y\n-99,1\n-98,3\n-97.5,-99.0\n-96,5\n");
  EXPECT_EQ(run.Json()["x"]["missingCells"], 0);
  EXPECT_EQ(run.Json()["y"]["missingCells"], 0);
  EXPECT_EQ(run.error,
            "note: 2 cells measured as -99 are taken as -99.0000076: -99 itself marks missing cells inside\n"
            "note: the jack-knife has 1 degree of freedom: its intervals are wide and mean little\n");
}

TEST(PLS, CutsGroupsToTheRowsWithOneLine) {
  const CommandResult run =
      RunWell({"pls", "-", "--y", "y1", "--components", "1", "--groups", "50", "--json"}, UnrelatedTable(12, 3, 1, 1));
  EXPECT_EQ(run.Json()["validation"]["groups"], 12);
  EXPECT_EQ(run.error, "note: 50 groups are cut to 12, the number of rows\n");
}

TEST(PLS, MakesGroupsOfTheValuesOfAColumn) {
  // Row i is in group i modulo 4 by default; words for the same groups must give the same numbers.
  std::string plain = LinearTable(30, 5, 3);
  std::string grouped;
  std::istringstream lines(plain);
  std::string line;
  for (int row = 0; std::getline(lines, line); ++row) {
    grouped += line + (row == 0 ? ",batch" : std::string(",batch ") + static_cast<char>('A' + row % 4)) + "\n";
  }
  const json byRule = FitPLS(plain, {"--y", "y", "--id", "name", "--groups", "4"});
  const json byColumn = FitPLS(grouped, {"--y", "y", "--id", "name", "--group-column", "batch"});
  EXPECT_EQ(byColumn["components"], byRule["components"]);
  EXPECT_EQ(byColumn["quality"], byRule["quality"]);
  EXPECT_EQ(byColumn["validation"]["groups"], 4);
  EXPECT_EQ(byColumn["validation"]["folds"], "group-column");
  EXPECT_EQ(byColumn["validation"]["groupColumn"], "batch");
}

TEST(PLS, GivesTheSameNumbersForEveryDialectAndLocale) {
  const std::string table = LinearTable(25, 4, 4);
  std::string european = table;
  for (char& c : european) c = c == ',' ? ';' : c == '.' ? ',' : c;
  std::string windows = "\xEF\xBB\xBF";
  for (const char c : table) windows += c == '\n' ? std::string("\r\n") : std::string(1, c == ',' ? '\t' : c);
  const json expected = FitPLS(table, {"--y", "y", "--id", "name"});
  for (const std::string& dialect : {european, windows}) {
    CommandRun run;
    run.arguments = {"pls", "-", "--json", "--y", "y", "--id", "name"};
    run.input = dialect;
    run.environment = {"LC_ALL=de_DE.UTF-8", "LANG=de_DE.UTF-8"};
    const json fit = RunKalmia(run).Json();
    EXPECT_EQ(fit["components"], expected["components"]);
    EXPECT_EQ(fit["quality"], expected["quality"]);
  }
}

TEST(PLS, ShowsEachYColumnWhereThereAreSeveral) {
  const std::vector<std::string> arguments = {"pls",          ExampleTable("oliveoil.csv"),
                                              "--id",         "sample",
                                              "--x",          "Acidity..DK",
                                              "--y",          "yellow,green",
                                              "--y",          "brown",
                                              "--components", "2"};
  const CommandResult text = RunWell(arguments);
  auto jsonArguments = arguments;
  jsonArguments.push_back("--json");
  const json fit = RunWell(jsonArguments).Json();
  EXPECT_THAT(Names(fit["y"]["columns"]), ElementsAre("yellow", "green", "brown"));
  for (const json& component : fit["components"]) {
    ASSERT_EQ(component["y"].size(), 3);
    // Scaled to unit variance, each Y column has the same sum of squares, so R2 in total is the mean of the three; the
    // sums run over float cells, each off by 6e-8 at most.
    double mean = 0.0;
    for (const json& y : component["y"]) mean += y["r2Cum"].get<double>() / 3;
    EXPECT_NEAR(component["r2yCum"].get<double>(), mean, 1e-6);
  }
  EXPECT_EQ(fit["quality"].size(), 3);
  for (const char* name : {"yellow", "green", "brown"}) EXPECT_THAT(text.output, HasSubstr(name));
}

TEST(PLS, ModelsTablesWithHolesInXAndY) {
  const std::string whole = LinearTable(40, 6, 7);
  const json complete = FitPLS(whole, {"--y", "y", "--id", "name"});
  const json holed = FitPLS(WithHoles(whole, 11), {"--y", "y", "--id", "name"});
  EXPECT_GT(holed["x"]["missingCells"], 15);
  EXPECT_GE(holed["kept"], 1);
  EXPECT_EQ(holed["rows"], complete["rows"]);
  const json holedY = FitPLS("a,b,y\n1,2,1\n2,1,\n3,4,2\n5,3,5\n4,4,4\n7,5,6\n", {"--y", "y", "--components", "1"});
  EXPECT_EQ(holedY["rows"], 6);
  EXPECT_EQ(holedY["y"]["missingCells"], 1);
  EXPECT_EQ(holedY["quality"][0]["rows"], 5);
}

TEST(PLS, PrintsErrorsThatFollowFromR2AndQ2OfOneComponent) {
  // RMSEE^2 (N - 2) = SSE = (1 - R2Y) SS(y) and RMSECV^2 N = PRESS = (1 - Q2) SS(y), SS(y) around the mean; whatever
  // the scaling, which must have been taken back. R2 and Q2 come from float cells: 1e-5 of the small remainders.
  const std::string table = LinearTable(30, 5, 9);
  double sum = 0.0;
  double squares = 0.0;
  const std::vector<double> y = NumbersOf(kalmia::analysis::Table(table, "t"), "y");
  for (const double value : y) sum += value;
  for (const double value : y) squares += (value - sum / 30) * (value - sum / 30);
  for (const char* scale : {"uv", "pareto", "centre"}) {
    SCOPED_TRACE(scale);
    const json fit = FitPLS(table, {"--y", "y", "--id", "name", "--components", "1", "--scale", scale, "--validation",
                                   "component"});
    const json& component = fit["components"][0];
    const double sse = (1.0 - component["r2y"].get<double>()) * squares;
    const double press = (1.0 - component["q2"].get<double>()) * squares;
    EXPECT_NEAR(fit["quality"][0]["rmsee"].get<double>() / std::sqrt(sse / 28), 1.0, 1e-5);
    EXPECT_NEAR(fit["quality"][0]["rmsecv"].get<double>() / std::sqrt(press / 30), 1.0, 1e-5);
  }
}

TEST(PLS, HasNoErrorOfEstimationWithoutADegreeOfFreedom) {
  const json fit = FitPLS(UnrelatedTable(4, 9, 1, 3), {"--y", "y1", "--components", "3"});
  EXPECT_EQ(fit["quality"][0]["rmsee"], nullptr);
  EXPECT_THAT(RunWell({"pls", "-", "--y", "y1", "--components", "3"}, UnrelatedTable(4, 9, 1, 3)).output,
              HasSubstr("  -  "));
}

TEST(PLS, ScalesXAsAsked) {
  const std::string table = LinearTable(30, 5, 9);
  std::vector<double> r2;
  for (const char* scale : {"uv", "pareto", "centre", "none"}) {
    const json fit = FitPLS(table, {"--y", "y", "--id", "name", "--components", "1", "--scale", scale});
    EXPECT_EQ(fit["scaling"], scale);
    r2.push_back(fit["components"][0]["r2x"]);
  }
  std::sort(r2.begin(), r2.end());
  EXPECT_EQ(std::unique(r2.begin(), r2.end()), r2.end());
}

TEST(PLS, KeepsTheOutputCleanForOtherPrograms) {
  const CommandResult run = RunWell({"pls", ExampleTable("oliveoil.csv"), "--y", "yellow", "--json"});
  EXPECT_NO_THROW(run.Json());
  EXPECT_EQ(run.error.find('\x1b'), std::string::npos);
  EXPECT_EQ(run.error.find('\r'), std::string::npos);
  EXPECT_THAT(run.error, HasSubstr("note: left out of X, text columns: sample\n"));
}

TEST(PLS, ShowsNamesWithControlCharactersOnOneLine) {
  const CommandResult run = RunWell({"pls", "-", "--y", "y\n2", "--components", "1"},
                                    "\"a\x1b[31m\",\"y\n2\"\n1,1\n2,3\n3,2\n5,5\n4,4\n7,8\n1,2\n");
  EXPECT_THAT(run.output, HasSubstr("y\\n2"));
  EXPECT_EQ(run.output.find('\x1b'), std::string::npos);
}

TEST(PLS, TakesNamesThatAreNoUtf8) {
  const json fit = FitPLS("\xE9,y\n1,1\n2,3\n3,2\n5,5\n4,4\n7,8\n1,2\n", {"--y", "y", "--components", "1"});
  EXPECT_THAT(Names(fit["x"]["columns"]), ElementsAre("\xEF\xBF\xBD"));
}

TEST(PLS, KeepsNoComponentOfAnXTooSmallToBeRegressedOn) {
  const std::string table = "x,z,y\n1e-16,3e-16,1\n2e-16,2e-16,2\n3e-16,5e-16,2.5\n5e-16,4e-16,4\n";
  const CommandResult run = RunKalmia({"pls", "-", "--y", "y", "--scale", "centre", "--groups", "4", "--validation",
                                        "component"},
                                       table);
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_THAT(run.output, HasSubstr("No component is kept: none can be computed, nothing is left of X (or its numbers "
                                    "are too small; try scaling to unit variance)"));
  const json scaled = RunKalmia({"pls", "-", "--y", "y", "--groups", "4", "--json"}, table).Json();
  EXPECT_GT(scaled["kept"], 0);
}

TEST(PLS, EndsWhereWhatIsLeftOfXIsTooSmallToBeRegressedOn) {
  // The columns run together but for a part in a million: of a sum of squares of 1e-25 some 1e-37 is left.
  const std::string table =
      "x,z,y\n1e-13,1.000001e-13,1\n2e-13,2e-13,2\n3e-13,3.000001e-13,2.5\n5e-13,4.999999e-13,4\n";
  const json result =
      RunKalmia({"pls", "-", "--y", "y", "--scale", "centre", "--components", "2", "--json"}, table).Json();
  EXPECT_EQ(result["kept"], 1);
  EXPECT_EQ(result["components"].size(), 1U);
  EXPECT_EQ(result["endedEarly"], "nothing is left of X");
}

TEST(PLS, FitsAYWithAMeanOfMinus99AsOneMovedElsewhere) {
  const char* rows[] = {"1,2,-98", "2,5,-97", "3,1,-99.5", "4,6,-96", "5,2,-104.5"};  // mean of y: -99
  std::string table = "a,b,y\n";
  for (const char* row : rows) table += std::string(row) + "\n";
  const std::string moved = "a,b,y\n1,2,1\n2,5,2\n3,1,-0.5\n4,6,3\n5,2,-5.5\n";
  for (const char* scaling : {"uv", "centre"}) {
    const std::vector<std::string> line = {"pls", "-", "--y", "y", "--components", "1", "--json", "--scale", scaling};
    const CommandResult here = RunKalmia(line, table);
    const CommandResult there = RunKalmia(line, moved);
    ASSERT_EQ(here.exitCode, 0) << here.error;
    ASSERT_EQ(there.exitCode, 0) << there.error;
    for (const char* number : {"rmsee", "rmsecv"}) {
      // The centre is off by two float steps, 1.5e-5, at most.
      EXPECT_NEAR(here.Json()["quality"][0][number].get<double>(), there.Json()["quality"][0][number].get<double>(),
                  2e-5);
    }
  }
}

}  // namespace
