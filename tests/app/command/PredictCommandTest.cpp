// `kalmia predict`: columns by name, holes, distances, reasons.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// A model of three components of y on x1 to x5, with rows named by the column `name`.
class Predict : public ::testing::Test {
 protected:
  Predict() {
    const std::string table = folder_.Write("t.csv", LinearTable(30, 5, 6));
    model_ = folder_.Path("m");
    const CommandResult run =
        RunKalmia({"pls", table, "--y", "y", "--id", "name", "--components", "3", "--save", model_});
    EXPECT_EQ(run.exitCode, 0) << run.error;
  }

  CommandResult Run(const std::string& table, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"predict", model_, "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunWell(arguments, table);
  }
  json Json(const std::string& table) const { return Run(table, {"--json"}).Json(); }

  ScratchFolder folder_;
  std::string model_;
};

constexpr auto kHeader = "x1,x2,x3,x4,x5\n";
constexpr auto kRow = "5.1,10.2,15.3,19.8,25.5\n";

TEST_F(Predict, MatchesColumnsByNameWhateverTheirOrderAndCompany) {
  const json straight = Json(std::string(kHeader) + kRow);
  const json turned = Json("x5,zeal,x2,x4,x1,x3\n25.5,high,10.2,19.8,5.1,15.3\n");
  EXPECT_EQ(straight["rows"], turned["rows"]);
  ASSERT_EQ(straight["rows"].size(), 1);
  EXPECT_TRUE(straight["rows"][0]["predicted"][0].is_number());
}

TEST_F(Predict, PredictsARowAloneAsAmongOthers) {
  const json alone = Json(std::string(kHeader) + kRow);
  const json among = Json(std::string(kHeader) + "1,2,3,4,5\n" + kRow + ",,4,,7\n");
  EXPECT_EQ(among["rows"][1]["predicted"], alone["rows"][0]["predicted"]);
  EXPECT_EQ(among["rows"][1]["distance"], alone["rows"][0]["distance"]);
}

TEST_F(Predict, FindsNewRowsOfTheSameKindNearTheTruth) {
  const json rows = Json(LinearTable(40, 5, 77));
  EXPECT_EQ(rows["errors"][0]["rows"], 40);
  // y has uniform noise of 0.2, a standard deviation of 0.115; 30 rows and 3 components blow it up by a third at most.
  EXPECT_LT(rows["errors"][0]["rmsep"], 0.16);
}

TEST_F(Predict, TakesAColumnThatIsNotThereAsMissingCellsAndSaysSo) {
  const CommandResult run = Run("x1,x2,x4,x5\n5.1,10.2,19.8,25.5\n", {"--json"});
  EXPECT_THAT(run.error, HasSubstr("note: taken as missing cells, not in the table: x3\n"));
  EXPECT_THAT(run.Json()["missingColumns"].get<std::vector<std::string>>(), ElementsAre("x3"));
  EXPECT_EQ(run.Json()["rows"][0]["predicted"],
            Json(std::string(kHeader) + "5.1,10.2,,19.8,25.5\n")["rows"][0]["predicted"]);
}

TEST_F(Predict, SaysWhyARowCannotBePredicted) {
  const json rows = Json(std::string(kHeader) + ",,,,\n5.1,NA,,,25.5\n" + kRow)["rows"];
  EXPECT_EQ(rows[0]["reason"], "none of its 5 X cells is present");
  EXPECT_EQ(rows[1]["reason"], "only 2 of its 5 X cells are present, too few for 3 components");
  EXPECT_EQ(rows[2]["reason"], nullptr);
  EXPECT_EQ(rows[0]["predicted"][0], nullptr);
  EXPECT_EQ(rows[1]["predicted"][0], nullptr);
  EXPECT_EQ(rows[1]["distance"], nullptr);
  EXPECT_THAT(Run(std::string(kHeader) + ",,,,\n" + kRow).output, HasSubstr("none of its 5 X cells is present"));
}

TEST_F(Predict, SaysSoWhereCellsAreTooLargeToCalculateWith) {
  const json rows = Json(std::string(kHeader) + "3e38,3e38,3e38,3e38,3e38\n" + kRow)["rows"];
  EXPECT_EQ(rows[0]["reason"], "its cells are too large for single precision");
  EXPECT_EQ(rows[0]["predicted"][0], nullptr);
  EXPECT_TRUE(rows[1]["predicted"][0].is_number());
}

TEST_F(Predict, HasNoDistanceWhereARowHasNoMoreCellsThanComponents) {
  const json rows = Json(std::string(kHeader) + "5.1,10.2,15.3,,\n5.1,10.2,15.3,19.8,\n")["rows"];
  EXPECT_TRUE(rows[0]["predicted"][0].is_number());
  EXPECT_EQ(rows[0]["distance"], nullptr);
  EXPECT_TRUE(rows[1]["distance"].is_number());
}

TEST_F(Predict, SaysOnceWhyNoRowHasADistanceWhereEveryColumnHasAComponent) {
  const std::string table = folder_.Write("t.csv", LinearTable(30, 3, 6));
  const std::string model = folder_.Path("full");
  const CommandResult fit = RunKalmia({"pls", table, "--y", "y", "--id", "name", "--components", "3", "--save", model});
  ASSERT_EQ(fit.exitCode, 0) << fit.error;
  EXPECT_EQ(fit.error, "");
  const char* note =
      "note: no row has a distance to the model: with as many components as X columns, 3, nothing of X is left to "
      "measure it by\n";
  const CommandResult run = RunKalmia({"predict", model, table, "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.error, HasSubstr(note));
  EXPECT_EQ(run.Json()["rows"][0]["distance"], nullptr);
  EXPECT_EQ(
      RunKalmia({"pls", table, "--y", "y", "--id", "name", "--components", "3", "--csv", folder_.Path("d")}).error,
      note);
}

TEST_F(Predict, PutsRowsUnlikeTheTrainingRowsFarAway) {
  const json rows = Json(std::string(kHeader) + "5,10,15,20,25\n5,10,15,29,25\n")["rows"];
  EXPECT_LT(rows[0]["distance"], 2.0);
  EXPECT_GT(rows[1]["distance"].get<double>(), 2.0 * rows[0]["distance"].get<double>());
}

TEST_F(Predict, SaysSoWhereATableIsInOtherUnits) {
  // Percent in place of fractions, as it were: each cell a hundredfold.
  const std::string hundredfold = std::string(kHeader) + "510,1020,1530,1980,2550\n500,1000,1500,2000,2500\n";
  const CommandResult run = Run(hundredfold, {"--json"});
  EXPECT_THAT(run.error, HasSubstr("note: beyond the 99 % limit of T2 or of the distance: 2 of 2 rows"));
  const json result = run.Json();
  for (const json& row : result["rows"]) {
    EXPECT_THAT(row["flags"].get<std::vector<std::string>>(), Contains("T2 99 %"));
    EXPECT_GT(row["t2"], result["limits"]["new"]["t2"]["0.99"]);
  }
  const CommandResult text = Run(hundredfold);
  EXPECT_THAT(text.output, HasSubstr("beyond"));
  EXPECT_THAT(text.output, HasSubstr("T2 99 %"));
  EXPECT_THAT(text.output, HasSubstr("Limits for new rows: T2 "));
  EXPECT_THAT(Run(std::string(kHeader) + kRow).error, Not(HasSubstr("beyond")));
}

TEST_F(Predict, GivesScoresT2AndBothDistancesOfTheTrainingRowsAsTheFitDid) {
  const std::string table = folder_.Path("t.csv");
  const json fit = RunKalmia({"pls", table, "--y", "y", "--id", "name", "--components", "3", "--json"}).Json();
  const json predicted = Json(ReadWholeFile(table));
  EXPECT_EQ(predicted["limits"], fit["limits"]);
  EXPECT_EQ(predicted["digest"], fit["digest"]);
  EXPECT_EQ(predicted["scores"], json({"t1", "t2", "t3"}));
  ASSERT_EQ(fit["rowStatistics"].size(), 30);
  for (std::size_t i = 0; i < 30; ++i) {
    const json &row = predicted["rows"][i], &said = fit["rowStatistics"][i];
    EXPECT_EQ(row["distance"], said["distance"]);
    EXPECT_EQ(row["absoluteDistance"], said["absoluteDistance"]);
    EXPECT_EQ(row["t"].size(), 3);
    // Scores of new rows go through X as the fit deflated it, cell by cell in single precision: 3 components.
    EXPECT_NEAR(row["t2"], said["t2"].get<double>(), 1e-4 * (1 + said["t2"].get<double>()));
  }
}

TEST_F(Predict, NamesRowsAsTheModelDidOrAsAskedOrByNumber) {
  const std::string table = "x1,x2,x3,x4,x5,name,other\n5.1,10.2,15.3,19.8,25.5,first,second\n";
  EXPECT_EQ(Run(table, {"--json"}).Json()["rows"][0]["row"], "first");
  EXPECT_EQ(Run(table, {"--json", "--id", "other"}).Json()["rows"][0]["row"], "second");
  EXPECT_EQ(Json(std::string(kHeader) + kRow)["rows"][0]["row"], "1");
}

TEST_F(Predict, ShowsMeasuredValuesBesideThePredictions) {
  const std::string table = "x1,x2,x3,x4,x5,y\n5.1,10.2,15.3,19.8,25.5,41\n5,10,15,20,25,\n5,10,15,20,26,42.5\n";
  const CommandResult text = Run(table);
  EXPECT_THAT(text.output, HasSubstr("measured"));
  EXPECT_THAT(text.output, HasSubstr("RMSEP"));
  const json result = Json(table);
  EXPECT_EQ(result["rows"][1]["measured"][0], nullptr);
  EXPECT_EQ(result["errors"][0]["rows"], 2);
  const double first = result["rows"][0]["predicted"][0].get<double>() - 41;
  const double third = result["rows"][2]["predicted"][0].get<double>() - 42.5;
  EXPECT_DOUBLE_EQ(result["errors"][0]["rmsep"], std::sqrt((first * first + third * third) / 2));
  EXPECT_EQ(Json(std::string(kHeader) + kRow)["errors"][0]["rmsep"], nullptr);
}

TEST_F(Predict, TellsHowPredictionsMeetMeasuredValues) {
  // Two rows that err by 1 and by -3 of what is predicted, far beyond the interval, and one next to it.
  const json plain = Json(std::string(kHeader) + "5.1,10.2,15.3,19.8,25.5\n5,10,15,20,26\n4,11,15,20,25\n");
  double p[3], y[3], meanP = 0, meanY = 0, products = 0, squares = 0;
  const double errors[] = {1.0, -3.0, 0.001};
  std::string table = "x1,x2,x3,x4,x5,y\n";
  const char* const cells[] = {"5.1,10.2,15.3,19.8,25.5,", "5,10,15,20,26,", "4,11,15,20,25,"};
  for (int i = 0; i < 3; ++i) {
    p[i] = plain["rows"][i]["predicted"][0].get<double>();
    std::ostringstream number;
    number << std::setprecision(17) << p[i] - errors[i];
    y[i] = std::stod(number.str());
    table += cells[i] + number.str() + "\n";
    meanP += p[i] / 3;
    meanY += y[i] / 3;
  }
  for (int i = 0; i < 3; ++i) {
    products += (p[i] - meanP) * (y[i] - meanY);
    squares += (p[i] - meanP) * (p[i] - meanP);
  }
  const json error = Json(table)["errors"][0];
  EXPECT_NEAR(error["bias"], (1.0 - 3.0 + 0.001) / 3, 1e-12);  // of doubles around 40
  EXPECT_NEAR(error["slope"], products / squares, 1e-9);
  EXPECT_DOUBLE_EQ(error["covered"], 1.0 / 3);
  EXPECT_THAT(Run(table).output, HasSubstr("RMSEP    bias  slope  covered\n"));
  const json alone = Json("x1,x2,x3,x4,x5,y\n5.1,10.2,15.3,19.8,25.5,41\n")["errors"][0];
  EXPECT_TRUE(alone["slope"].is_null());
  EXPECT_TRUE(Json(std::string(kHeader) + kRow)["errors"][0]["bias"].is_null());
}

TEST_F(Predict, AsksForTheUnitsOfMeasuredValuesOutsideTheirIntervals) {
  const std::string fresh = LinearTable(12, 5, 77);
  EXPECT_THAT(Run(fresh).error, Not(HasSubstr("in the units")));
  // The same in hundredths: the last column of each line is y.
  const auto inHundredths = [&fresh](int rows) {
    std::istringstream lines(fresh);
    std::string line, table;
    std::getline(lines, line);
    table = line + "\n";
    for (int row = 0; row < rows && std::getline(lines, line); ++row) {
      const std::size_t comma = line.rfind(',');
      table += line.substr(0, comma + 1) + std::to_string(std::stod(line.substr(comma + 1)) / 100) + "\n";
    }
    return table;
  };
  EXPECT_THAT(Run(inHundredths(5)).error,
              HasSubstr("note: fewer than half of the measured values of rows within the limits lie inside their intervals of 95 %, of y: are "
                        "they in the units of the model?\n"));
  EXPECT_THAT(Run(inHundredths(4)).error, Not(HasSubstr("in the units"))) << "too few to say";
  EXPECT_EQ(Json(inHundredths(12))["errors"][0]["covered"], 0.0);
}

TEST_F(Predict, SaysThatTheRowsAreThoseOfTheModel) {
  constexpr auto kNote = "these are the rows that the model was fitted to";
  const std::string own = LinearTable(30, 5, 6);
  EXPECT_THAT(Run(own).error, HasSubstr(kNote));
  EXPECT_THAT(Run(WithHoles(own, 7)).error, HasSubstr(kNote)) << "what is complete is the same";
  EXPECT_THAT(Run(WithRowsReversed(own)).error, Not(HasSubstr(kNote)));
  EXPECT_THAT(Run(LinearTable(30, 5, 77)).error, Not(HasSubstr(kNote))) << "the names alone are the same";
  const std::string without = folder_.Path("n");
  RunWell({"pls", "-", "--y", "y", "--id", "name", "--components", "3", "--save", without, "--no-rows"}, own);
  EXPECT_THAT(RunWell({"predict", without, "-"}, own).error, Not(HasSubstr(kNote)));
  const std::string mean = folder_.Path("mean");
  RunWell({"pls", "-", "--y", "y", "--id", "name", "--components", "0", "--save", mean}, own);
  EXPECT_THAT(RunWell({"predict", mean, "-"}, own).error, HasSubstr(kNote));
  EXPECT_THAT(RunWell({"predict", mean, "-"}, LinearTable(30, 5, 77)).error, Not(HasSubstr(kNote)));
  const std::string opls = folder_.Path("opls");
  RunWell({"opls", "-", "--y", "y", "--id", "name", "--orthogonal", "2", "--save", opls}, own);
  EXPECT_THAT(RunWell({"predict", opls, "-"}, own).error, HasSubstr(kNote));
}

TEST_F(Predict, NotesHolesAndColumnsThatAreEmpty) {
  const std::string fresh = LinearTable(12, 5, 77);
  EXPECT_THAT(Run(fresh).error, Not(HasSubstr("missing cells")));
  std::string error = Run(WithHoles(fresh, 7)).error;
  EXPECT_THAT(error, HasSubstr("rows with missing cells, up to 1 of 5: what is told of such rows"));
  EXPECT_THAT(error, Not(HasSubstr("empty in the table")));
  error = Run("x1,x2,x3,x4,x5\n5.1,,15.3,19.8,25.5\n5.2,NA,15.3,19.9,25.6\n").error;
  EXPECT_THAT(error, HasSubstr("note: empty in the table: x2\n"));
}

TEST_F(Predict, AsksForUnitsOfYOnlyByRowsWithinTheLimits) {
  std::istringstream lines(LinearTable(12, 5, 77));
  std::string line, table;
  std::getline(lines, line);
  table = line + "\n";
  while (std::getline(lines, line)) {  // name, x1: a thousand times as much
    const std::size_t begin = line.find(',') + 1, end = line.find(',', begin);
    table += line.substr(0, begin) + std::to_string(1e3 * std::stod(line.substr(begin, end - begin))) + line.substr(end) +
             "\n";
  }
  const std::string error = Run(table).error;
  EXPECT_THAT(error, HasSubstr("beyond the 99 % limit of T2 or of the distance: 12 of 12 rows, unlike"));
  EXPECT_THAT(error, Not(HasSubstr("in the units")));
}

// Distances are told apart by their size in the model, not by 1: these are some 1e-4.
TEST_F(Predict, KnowsItsRowsOfSmallNumbersThatAreNotDividedByTheirSpread) {
  const auto table = [](double first) {
    std::string text = "name,x1,x2,y\n";
    for (int i = 0; i < 8; ++i) {
      const double x = first * ((i * 5) % 8);
      text += "r" + std::to_string(i) + "," + std::to_string(x) + "," + std::to_string(1e-4 * i) + "," +
              std::to_string(i % 3) + "\n";
    }
    return text;
  };
  const std::string mean = folder_.Path("small");
  RunWell({"pls", "-", "--y", "y", "--id", "name", "--components", "0", "--scale", "centre", "--save", mean}, table(1e-4));
  constexpr auto kNote = "these are the rows that the model was fitted to";
  EXPECT_THAT(RunWell({"predict", mean, "-"}, table(1e-4)).error, HasSubstr(kNote));
  EXPECT_THAT(RunWell({"predict", mean, "-"}, table(2e-4)).error, Not(HasSubstr(kNote)));
}

TEST_F(Predict, HasNoSlopeOfEqualPredictions) {
  std::string table = "name,x1,x2,y\n";
  for (int i = 0; i < 9; ++i) {
    table += "r" + std::to_string(i) + "," + std::to_string(i) + "," + std::to_string((i * 4) % 9) + ",100000." +
             std::to_string(100 + (i * 7) % 9) + "\n";
  }
  const std::string mean = folder_.Path("mean");
  RunWell({"pls", "-", "--y", "y", "--id", "name", "--components", "0", "--save", mean}, table);
  for (std::size_t rows = 2; rows <= 9; ++rows) {
    std::istringstream lines(table);
    std::string line, first;
    for (std::size_t i = 0; i <= rows && std::getline(lines, line); ++i) first += line + "\n";
    const json error = RunWell({"predict", mean, "-", "--json"}, first).Json()["errors"][0];
    EXPECT_TRUE(error["slope"].is_null()) << rows << ": " << error["slope"];
  }
}

TEST_F(Predict, SaysSoWhereAMeasuredColumnHoldsText) {
  const CommandResult run = Run("x1,x2,x3,x4,x5,y\n5.1,10.2,15.3,19.8,25.5,unknown\n", {"--json"});
  EXPECT_THAT(run.error, HasSubstr("note: not taken as measured values, text columns: y\n"));
  EXPECT_EQ(run.Json()["rows"][0]["measured"][0], nullptr);
}

TEST_F(Predict, TakesAMeasuredValueOfMinus99ForOneButSaysSoOfAnXCell) {
  const CommandResult measured = Run("x1,x2,x3,x4,x5,y\n5.1,10.2,15.3,19.8,25.5,-99\n", {"--json"});
  EXPECT_THAT(measured.error, Not(HasSubstr("-99")));
  EXPECT_EQ(measured.Json()["errors"][0]["rows"], 1);
  EXPECT_EQ(measured.Json()["rows"][0]["measured"][0], -99.0);
  const CommandResult x = Run("x1,x2,x3,x4,x5\n5.1,10.2,-99,19.8,25.5\n", {"--json"});
  EXPECT_THAT(x.error, HasSubstr("1 cell measured as -99 is taken as -99.0000076"));
}

TEST_F(Predict, WritesPredictionsAsCsv) {
  Run(std::string(kHeader) + kRow + ",,,,\n", {"--csv", folder_.Path("d")});
  const kalmia::analysis::Table file = CsvAt(folder_.Path("d/predictions.csv"));
  EXPECT_THAT(file.ColumnNames(), ElementsAre("row", "predicted y", "lower y", "upper y", "t1", "t2", "t3", "T2", "distance",
                                              "absolute distance", "flags", "extrapolation", "reason"));
  EXPECT_EQ(file.Cell(1, 1), "");
  EXPECT_EQ(file.Cell(1, 12), "none of its 5 X cells is present");
  EXPECT_EQ(file.Cell(0, 12), "");
}

TEST_F(Predict, ReadsTheModelFromStandardInput) {
  const std::string table = folder_.Write("n.csv", std::string(kHeader) + kRow);
  const CommandResult piped = RunKalmia({"predict", "-", table, "--json"}, ReadWholeFile(model_));
  ASSERT_EQ(piped.exitCode, 0) << piped.error;
  EXPECT_EQ(piped.Json()["rows"], Json(std::string(kHeader) + kRow)["rows"]);
}

TEST_F(Predict, TakesDecimalCommasForAModelFittedWithPoints) {
  EXPECT_EQ(Json("x1;x2;x3;x4;x5\n5,1;10,2;15,3;19,8;25,5\n")["rows"], Json(std::string(kHeader) + kRow)["rows"]);
}

TEST(PredictGasoline, FindsOctaneOfSpectraThatTheModelHasNotSeen) {
  std::istringstream lines(ReadWholeFile(ExampleTable("gasoline.csv")));
  std::string header;
  std::getline(lines, header);
  std::string training = header + "\n";
  std::string fresh = header + "\n";
  std::string line;
  for (int row = 1; std::getline(lines, line); ++row) (row <= 50 ? training : fresh) += line + "\n";
  const ScratchFolder folder;
  const std::string model = folder.Path("m");
  ASSERT_EQ(RunKalmia({"pls", "-", "--y", "octane", "--id", "sample", "--save", model}, training).exitCode, 0);
  const json predicted = RunKalmia({"predict", model, "-", "--json"}, fresh).Json();
  EXPECT_EQ(predicted["errors"][0]["rows"], 10);
  // The octane numbers of these ten spread by 1.5; models of a few components are known to err by about 0.2.
  EXPECT_LT(predicted["errors"][0]["rmsep"], 0.35);
}

TEST_F(Predict, ShowsMeasuredValuesWithTheDigitsOfPredictedOnesAndKeepsAllElsewhere) {
  const ScratchFolder folder;
  const std::string table = "x1,x2,x3,x4,x5,y\n5.1,10.2,15.3,19.8,25.5,40.123456789012345\n5,10,15,20,25,\n";
  const CommandResult text = Run(table, {"--csv", folder.Path("d")});
  EXPECT_THAT(text.output, HasSubstr(" 40.1235 "));
  EXPECT_THAT(text.output, Not(HasSubstr("40.12345")));
  EXPECT_THAT(text.output, HasSubstr(" - "));
  EXPECT_EQ(Json(table)["rows"][0]["measured"][0], 40.123456789012345);
  EXPECT_THAT(ReadWholeFile(folder.Path("d/predictions.csv")), HasSubstr("40.12345678901234"));
}

}  // namespace
