// `kalmia fill`: bytes that stay, cells that are filled, and what is told of them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <sstream>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

class Fill : public ::testing::Test {
 protected:
  /// A run that has to succeed.
  CommandResult Run(const std::string& table, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"fill", "-", "--out", Out()};
    arguments.insert(arguments.end(), options.begin(), options.end());
    CommandResult result = RunKalmia(arguments, table);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    return result;
  }
  json Json(const std::string& table, std::vector<std::string> options = {}) const {
    options.emplace_back("--json");
    return Run(table, options).Json();
  }
  std::string Filled(const std::string& table, const std::vector<std::string>& options = {}) const {
    Run(table, options);
    return ReadWholeFile(Out());
  }
  std::string Out() const { return folder_.Path("filled.csv"); }

  ScratchFolder folder_;
};

std::vector<std::vector<std::string>> FieldsOf(const std::string& csv) {
  std::vector<std::vector<std::string>> rows;
  std::istringstream lines(csv);
  for (std::string line; std::getline(lines, line);) {
    rows.emplace_back();
    std::istringstream fields(line + ",");
    for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(field);
  }
  return rows;
}

/// The wines with a share of their measured cells emptied.
std::string WineWithHoles(double share, unsigned seed) {
  auto rows = FieldsOf(ReadWholeFile(ExampleTable("wine.csv")));
  std::mt19937 random(seed);
  std::string text;
  for (std::size_t r = 0; r < rows.size(); ++r) {
    for (std::size_t c = 0; c < rows[r].size(); ++c) {
      const bool isHole = r > 0 && c >= 2 && random() < share * 4294967296.0;
      text += (c > 0 ? "," : "") + (isHole ? "" : rows[r][c]);
    }
    text += "\n";
  }
  return text;
}

/// Sums of squared errors of the filled cells, in standard deviations: of what was filled in, and of means.
struct Errors {
  double filled = 0.0;
  double means = 0.0;
};

Errors ErrorsOfWine(const std::string& holed, const std::string& filled) {
  const auto truth = FieldsOf(ReadWholeFile(ExampleTable("wine.csv")));
  const auto holes = FieldsOf(holed), cells = FieldsOf(filled);
  Errors errors;
  for (std::size_t c = 2; c < truth[0].size(); ++c) {
    double sum = 0.0, squares = 0.0, present = 0.0, presentSum = 0.0;
    const auto n = static_cast<double>(truth.size() - 1);
    for (std::size_t r = 1; r < truth.size(); ++r) {
      const double cell = std::stod(truth[r][c]);
      sum += cell;
      squares += cell * cell;
      if (holes[r][c].empty()) continue;
      present += 1.0;
      presentSum += cell;
    }
    const double variance = (squares - sum * sum / n) / (n - 1.0);
    for (std::size_t r = 1; r < truth.size(); ++r) {
      if (!holes[r][c].empty()) continue;
      errors.filled += std::pow(std::stod(cells[r][c]) - std::stod(truth[r][c]), 2) / variance;
      errors.means += std::pow(presentSum / present - std::stod(truth[r][c]), 2) / variance;
    }
  }
  return errors;
}

const std::vector<std::string> kWineOptions = {"--id", "sample", "--exclude", "cultivar"};

std::vector<std::string> OfWineWith(const std::vector<std::string>& more) {
  std::vector<std::string> options = kWineOptions;
  options.insert(options.end(), more.begin(), more.end());
  return options;
}

TEST_F(Fill, BringsCellsOfWineBackWithAtMostFourFifthsOfTheErrorOfMeans) {
  Errors all;
  for (const unsigned seed : {1U, 2U, 3U}) {
    const std::string holed = WineWithHoles(0.1, seed);
    const Errors errors = ErrorsOfWine(holed, Filled(holed, kWineOptions));
    RecordProperty("seed" + std::to_string(seed), std::to_string(std::sqrt(errors.filled / errors.means)));
    all.filled += errors.filled;
    all.means += errors.means;
  }
  EXPECT_LE(std::sqrt(all.filled / all.means), 0.8);
}

TEST_F(Fill, TellsBeforehandHowWellItWillDo) {
  const std::string holed = WineWithHoles(0.1, 6);
  const std::vector<std::string> options = OfWineWith({"--check"});
  const json trial = Json(holed, options)["trial"];
  EXPECT_LE(trial["ratio"], 0.8);
  const Errors errors = ErrorsOfWine(holed, ReadWholeFile(Out()));
  // Some 200 cells are hidden by each side, other ones: the ratio of their errors is known to about a tenth.
  EXPECT_NEAR(trial["ratio"], std::sqrt(errors.filled / errors.means), 0.2);
  EXPECT_EQ(trial["columns"].size(), 13U);
  int cells = 0;
  for (const json& column : trial["columns"]) cells += column["cells"].get<int>();
  EXPECT_EQ(trial["cells"], cells);
  EXPECT_EQ(Json(holed, kWineOptions)["trial"], nullptr);
  EXPECT_THAT(Run(holed, options).output, HasSubstr("Trial: "));
}

TEST_F(Fill, NamesTheNumbersOfComponentsThatItChose) {
  const std::string holed = WineWithHoles(0.1, 6);
  const std::vector<std::string> check = OfWineWith({"--check"});
  const json result = Json(holed, check);
  const std::vector<double> errors = result["choice"];
  const int chosen = result["chosenComponents"];
  EXPECT_EQ(chosen, result["model"]["components"]);
  // The last number that made the error smaller by more than 1 %.
  for (std::size_t a = static_cast<std::size_t>(chosen); a < errors.size(); ++a) {
    EXPECT_GE(errors[a], 0.99 * errors[static_cast<std::size_t>(chosen)]);
  }
  const int ofTrial = result["trial"]["chosenComponents"];
  EXPECT_EQ(ofTrial, result["trial"]["components"]);
  const std::string text = Run(holed, check).output;
  EXPECT_THAT(text, HasSubstr("\n" + std::to_string(chosen) + " components chosen: root mean square error of "));
  EXPECT_THAT(text, HasSubstr("(" + std::to_string(ofTrial) + " chosen from the cells that were left; of all cells " +
                              std::to_string(chosen) + ")"));
  const std::vector<std::string> asked = OfWineWith({"--check", "--components", "2"});
  EXPECT_EQ(Json(holed, asked)["chosenComponents"], nullptr);
  EXPECT_EQ(Json(holed, asked)["trial"]["chosenComponents"], nullptr);
  EXPECT_THAT(Run(holed, asked).output, Not(HasSubstr("chosen")));
}

TEST_F(Fill, UnderstandsTheOldNameOfItsCheckWithANote) {
  const std::string holed = WineWithHoles(0.1, 6);
  const json now = Json(holed, OfWineWith({"--check"})), before = Json(holed, OfWineWith({"--report"}));
  EXPECT_EQ(now["notes"], json::array());
  EXPECT_EQ(before["notes"], json::array({"--report is called --check now"}));
  EXPECT_EQ(before["trial"], now["trial"]);
}

TEST_F(Fill, LeavesEveryPresentFieldAsItIs) {
  const std::string holed = WineWithHoles(0.1, 1);
  const auto before = FieldsOf(holed), after = FieldsOf(Filled(holed, kWineOptions));
  ASSERT_EQ(after.size(), before.size());
  int filled = 0;
  for (std::size_t r = 0; r < before.size(); ++r) {
    ASSERT_EQ(after[r].size(), before[r].size());
    for (std::size_t c = 0; c < before[r].size(); ++c) {
      if (before[r][c].empty()) {
        EXPECT_NE(after[r][c], "");
        ++filled;
      } else {
        EXPECT_EQ(after[r][c], before[r][c]);
      }
    }
  }
  const json result = Json(holed, kWineOptions);
  EXPECT_EQ(result["filledCells"], filled);
  EXPECT_EQ(result["missingCells"], filled);
  EXPECT_THAT(result["leftEmpty"], IsEmpty());
  EXPECT_LE(result["model"]["lastMove"], 1e-4);
  EXPECT_TRUE(result["model"]["settled"]);
  EXPECT_LE(result["model"]["rounds"], 50);
}

TEST_F(Fill, TouchesNoByteButThoseOfMissingFields) {
  // Byte order mark, quotation marks, blanks, another line end, blank lines, none at the end, decimal commas.
  const std::string table =
      "\xEF\xBB\xBF\"Name\"; x ;y\r\n\r\na; 1,50 ;\"2,0\"\nb;;4\r\n\"c;\"\"\";NA;6,10e0\r\nd;4;\"nan\"\r\ne; 5;+10";
  const std::string filled = Filled(table, {"--components", "0"});
  // Means: (1.5 + 4 + 5) / 3 and (2 + 4 + 6.1 + 10) / 4, in single precision.
  EXPECT_EQ(filled,
            "\xEF\xBB\xBF\"Name\"; x ;y\r\n\r\na; 1,50 ;\"2,0\"\nb;3,5;4\r\n\"c;\"\"\";3,5;6,10e0\r\nd;4;5,525\r\n"
            "e; 5;+10");
}

TEST_F(Fill, CopiesATableWithoutMissingCells) {
  const std::string wine = ReadWholeFile(ExampleTable("wine.csv"));
  const CommandResult run = Run(wine);
  EXPECT_EQ(ReadWholeFile(Out()), wine);
  EXPECT_THAT(run.output, HasSubstr("No cell of standard input is missing"));
  EXPECT_EQ(run.error, "");
}

TEST_F(Fill, FindsACellThatTheOthersDetermine) {
  std::string table = "a,b,c\n";
  for (int i = 1; i <= 12; ++i) {
    const int t = i * i % 11;
    table += std::to_string(t) + "," + (i == 5 ? "" : std::to_string(10 + 2 * t)) + "," + std::to_string(-3 * t) + "\n";
  }
  const auto rows = FieldsOf(Filled(table, {"--components", "1"}));
  // t is 3 there: b is 16, with a standard deviation near 7. The refitting ends at 1e-4 of one.
  EXPECT_NEAR(std::stod(rows[5][1]), 16.0, 1e-2);
}

TEST_F(Fill, SaysWhichCellsItCannotFillAndWhy) {
  const std::string table =
      "name,word,none,code,x,y\n"
      "r1,a,,1,1,2\n,,NA,,2,4.1\nr3,c,,3,,\nr4,,,4,4,\nr5,e,,5,5,10\nr6,f,,6,6,11.8\n";
  const json result = Json(table, {"--id", "name", "--exclude", "code"});
  EXPECT_EQ(result["missingCells"], 13);
  EXPECT_EQ(result["filledCells"], 1);
  const json expected = {{{"reason", "excludedColumn"}, {"name", "name"}, {"cells", 1}},
                         {{"reason", "textColumn"}, {"name", "word"}, {"cells", 2}},
                         {{"reason", "emptyColumn"}, {"name", "none"}, {"cells", 6}},
                         {{"reason", "excludedColumn"}, {"name", "code"}, {"cells", 1}},
                         {{"reason", "emptyRow"}, {"name", "r3"}, {"cells", 2}}};
  EXPECT_EQ(result["leftEmpty"], expected);
  const std::string text = Run(table, {"--id", "name", "--exclude", "code"}).output;
  EXPECT_THAT(text, HasSubstr("Filled 1 of 13 missing cells"));
  EXPECT_THAT(text, HasSubstr("2 cells: column 'word' holds text"));
  EXPECT_THAT(text, HasSubstr("6 cells: column 'none' has no cell at all"));
  EXPECT_THAT(text, HasSubstr("1 cell: column 'code' takes no part"));
  EXPECT_THAT(text, HasSubstr("2 cells: row 'r3' has no cell in a column that varies"));
  const auto rows = FieldsOf(ReadWholeFile(Out()));
  EXPECT_EQ(rows[3][4] + rows[3][5], "");
  EXPECT_NE(rows[4][5], "");
}

TEST_F(Fill, FillsAConstantColumnWithItsValue) {
  const CommandResult run = Run("x,y,k\n1,2,7\n2,4,NA\n3,,7.0\n4,8,7\n", {"--components", "1"});
  EXPECT_THAT(run.error, HasSubstr("note: no part of the model, filled with their only value: constant columns k"));
  EXPECT_EQ(FieldsOf(ReadWholeFile(Out()))[2][2], "7");
}

TEST_F(Fill, UsesExcludedAndIdColumnsForNothing) {
  const std::string with = "id,x,y,z,code\n9,1,2,3,5\n1,2,,6,1\n7,3,6,9,4\n2,4,8,,1\n5,5,10,15,3\n3,7,14,21,3\n";
  const std::string without = "x,y,z\n1,2,3\n2,,6\n3,6,9\n4,8,\n5,10,15\n7,14,21\n";
  const auto a = FieldsOf(Filled(with, {"--id", "id", "--exclude", "code", "--components", "1"}));
  const auto b = FieldsOf(Filled(without, {"--components", "1"}));
  EXPECT_EQ(a[2][2], b[2][1]);
  EXPECT_EQ(a[4][3], b[4][2]);
}

TEST_F(Fill, UsesAsManyComponentsAsAskedForOrAsThereCanBe) {
  const std::string table = LinearTable(20, 5, 3);
  const std::string holed = WithHoles(table, 9);
  for (const int components : {0, 1, 3}) {
    const json result = Json(holed, {"--id", "name", "--components", std::to_string(components)});
    EXPECT_EQ(result["model"]["components"], components);
    EXPECT_THAT(result["choice"], IsEmpty());
  }
  const CommandResult cut = Run(holed, {"--id", "name", "--components", "9"});
  EXPECT_THAT(cut.error, HasSubstr("note: 9 components are cut to 5: there are 20 rows and 6 columns"));
  EXPECT_THAT(Run(holed, {"--id", "name", "--components", "0"}).error,
              HasSubstr("note: no component is used: the cells are filled with means"));
  const json automatic = Json(holed, {"--id", "name", "--components", "auto"});
  EXPECT_EQ(automatic["model"]["components"], Json(holed, {"--id", "name"})["model"]["components"]);
  EXPECT_FALSE(automatic["choice"].empty());
}

TEST_F(Fill, SaysSoWhereCellsStillMoveAtTheEnd) {
  // Hardly anything is left to go by, and four components are about what that supports: some tables are slow.
  std::vector<std::string> options = kWineOptions;
  options.insert(options.end(), {"--components", "4", "--json"});
  int slow = 0;
  for (unsigned seed = 1; seed <= 12; ++seed) {
    const CommandResult run = Run(WineWithHoles(0.3, seed), options);
    const json model = run.Json()["model"];
    EXPECT_EQ(model["settled"], model["lastMove"] <= 1e-4);
    if (model["settled"]) {
      EXPECT_EQ(run.error, "");
      continue;
    }
    ++slow;
    EXPECT_EQ(model["rounds"], 50);
    EXPECT_THAT(run.error, HasSubstr("standard deviations in round 50, the last"));
  }
  EXPECT_GT(slow, 0);
}

TEST_F(Fill, GivesTheSameFileEachTime) {
  const std::string holed = WineWithHoles(0.2, 2);
  EXPECT_EQ(Filled(holed, kWineOptions), Filled(holed, kWineOptions));
}

TEST_F(Fill, KeepsACellMeasuredAsMinus99) {
  const std::string table = "x,y\n-99,1\n-98,2\n,3\n-96,4\n-95,\n";
  const CommandResult run = Run(table, {"--components", "1"});
  EXPECT_THAT(run.error, HasSubstr("1 cell measured as -99 is taken as -99.0000076"));
  EXPECT_THAT(ReadWholeFile(Out()), HasSubstr("x,y\n-99,1\n-98,2\n"));
}

// ---- Failures

TEST_F(Fill, RefusesWhatMakesNoSense) {
  const std::string table = folder_.Write("t.csv", "x,y\n1,2\n3,\n5,7\n");
  ExpectFailure(RunKalmia({"fill", table}), 2, "--out");
  ExpectFailure(RunKalmia({"fill", table, "--out", table}), 2, "--out would overwrite the table");
  ExpectFailure(RunKalmia({"fill", table, "--out", Out(), "--components", "-1"}), 2, "--components");
  ExpectFailure(RunKalmia({"fill", table, "--out", Out(), "--components", "some"}), 2, "--components");
  ExpectFailure(RunKalmia({"fill", table, "--out", Out(), "--id", "z"}), 1, "there is no column 'z'");
  ExpectFailure(RunKalmia({"fill", table, "--out", Out(), "--exclude", "x,y"}), 1, "no column of numbers is left");
  ExpectFailure(RunKalmia({"fill", "-", "--out", Out()}, "x,y\n1,2\noops,3\n"), 1,
                "row 2 (line 3), column 'x': 'oops' is not a number");
  ExpectFailure(RunKalmia({"fill", "-", "--out", Out()}, "x,y\n,\nNA,\n"), 1, "no column of numbers is left");
  ExpectFailure(RunKalmia({"fill", "-", "--out", Out()}, ""), 1, "standard input is empty");
  ExpectFailure(RunKalmia({"fill", folder_.Path("nowhere.csv"), "--out", Out()}), 3, "cannot read");
  ExpectFailure(RunKalmia({"fill", table, "--out", folder_.Path("no/such/folder.csv")}), 3, "folder.csv");
  EXPECT_EQ(folder_.Names(), std::vector<std::string>{"t.csv"});
}

TEST_F(Fill, StopsOnCtrlCAndLeavesNothingBehind) {
  const std::string table = folder_.Write("t.csv", WithHoles(UnrelatedTable(600, 120, 1, 4), 3));
  const CommandResult run = RunOnTerminal({"fill", table, "--out", Out(), "--components", "15"}, "round ");
  EXPECT_EQ(run.exitCode, 130);
  EXPECT_THAT(run.error, HasSubstr("kalmia: stopped"));
  EXPECT_EQ(folder_.Names(), std::vector<std::string>{"t.csv"});
}

}  // namespace
