// `kalmia predict` and `kalmia info` with a stored PCA model.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// Three components of x1 to x5, with rows named by the column `name`.
class PCAPredict : public ::testing::Test {
 protected:
  PCAPredict() : table_(folder_.Write("t.csv", LinearTable(30, 5, 6))), model_(folder_.Path("m")) {
    const CommandResult run =
        RunKalmia({"pca", table_, "--exclude", "y", "--id", "name", "--components", "3", "--json", "--save", model_});
    EXPECT_EQ(run.exitCode, 0) << run.error;
    fit_ = run.Json();
  }

  CommandResult Run(const std::string& table, const std::vector<std::string>& options = {}) const {
    std::vector<std::string> arguments = {"predict", model_, "-"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return RunWell(arguments, table);
  }
  json Json(const std::string& table) const { return Run(table, {"--json"}).Json(); }

  ScratchFolder folder_;
  std::string table_;
  std::string model_;
  json fit_;
};

constexpr auto kScoredColumns = "x1,x2,x3,x4,x5\n";
constexpr auto kScoredRow = "5.1,10.2,15.3,19.8,25.5\n";

TEST_F(PCAPredict, FindsTheScoresOfTheTrainingRowsAgain) {
  const json predicted = Json(ReadWholeFile(table_));
  EXPECT_EQ(predicted["format"], "kalmia-predict-pca");
  EXPECT_EQ(predicted["components"], 3);
  ASSERT_EQ(predicted["rows"].size(), 30);
  for (std::size_t i = 0; i < 30; ++i) {
    EXPECT_EQ(predicted["rows"][i]["row"], fit_["scores"][i]["name"]);
    for (std::size_t a = 0; a < 3; ++a) {
      // Scores of a few units; the loadings are those of a t that has stopped moving by more than 1e-5 of its length.
      EXPECT_NEAR(predicted["rows"][i]["t"][a], fit_["scores"][i]["t"][a].get<double>(), 2e-4);
    }
  }
}

TEST_F(PCAPredict, ScoresARowAloneAsAmongOthersWhateverTheOrderOfItsColumns) {
  const json alone = Json(std::string(kScoredColumns) + kScoredRow)["rows"][0];
  const json among = Json(std::string(kScoredColumns) + "1,2,3,4,5\n" + kScoredRow + ",,4,,7\n")["rows"][1];
  EXPECT_EQ(among["t"], alone["t"]);
  EXPECT_EQ(among["distance"], alone["distance"]);
  EXPECT_EQ(Json("x5,zeal,x2,x4,x1,x3\n25.5,high,10.2,19.8,5.1,15.3\n")["rows"][0]["t"], alone["t"]);
}

TEST_F(PCAPredict, EstimatesTheScoresOfRowsWithHoles) {
  const json whole = Json(ReadWholeFile(table_))["rows"];
  const json holed = Json(WithHoles(ReadWholeFile(table_), 29))["rows"];
  int unlike = 0;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    EXPECT_TRUE(holed[i]["t"][0].is_number());
    EXPECT_TRUE(holed[i]["distance"].is_number());
    unlike += holed[i]["t"] == whole[i]["t"] ? 0 : 1;
  }
  EXPECT_EQ(unlike, 5);  // one cell in 29 of 150 is out
}

TEST_F(PCAPredict, TakesAColumnThatIsNotThereAsMissingCellsAndSaysSo) {
  const CommandResult run = Run("x1,x2,x4,x5\n5.1,10.2,19.8,25.5\n", {"--json"});
  EXPECT_THAT(run.error, HasSubstr("note: taken as missing cells, not in the table: x3\n"));
  EXPECT_EQ(run.Json()["rows"][0]["t"], Json(std::string(kScoredColumns) + "5.1,10.2,,19.8,25.5\n")["rows"][0]["t"]);
}

TEST_F(PCAPredict, SaysWhyARowHasNoScores) {
  const std::string table = std::string(kScoredColumns) + ",,,,\n3e38,3e38,3e38,3e38,3e38\n" + kScoredRow;
  const json rows = Json(table)["rows"];
  EXPECT_EQ(rows[0]["reason"], "none of its 5 X cells is present");
  EXPECT_EQ(rows[0]["t"], json::array({nullptr, nullptr, nullptr}));
  EXPECT_EQ(rows[0]["distance"], nullptr);
  EXPECT_EQ(rows[1]["reason"], "its cells are too large for single precision");
  EXPECT_EQ(rows[2]["reason"], nullptr);
  EXPECT_THAT(Run(table).output, HasSubstr("no scores because"));
  EXPECT_THAT(Run(table).output, HasSubstr("none of its 5 X cells is present"));
}

TEST_F(PCAPredict, HasNoDistanceWhereARowHasNoMoreCellsThanComponents) {
  const json rows = Json(std::string(kScoredColumns) + "5.1,10.2,15.3,,\n5.1,10.2,15.3,19.8,\n")["rows"];
  EXPECT_EQ(rows[0]["distance"], nullptr);
  EXPECT_TRUE(rows[0]["t"][0].is_number());
  EXPECT_TRUE(rows[1]["distance"].is_number());
}

TEST_F(PCAPredict, SaysOnceWhyNoRowHasADistanceWhereEveryColumnHasAComponent) {
  const std::string model = folder_.Path("full");
  ASSERT_EQ(RunKalmia({"pca", table_, "--exclude", "y", "--id", "name", "--components", "5", "--save", model}).exitCode,
            0);
  const CommandResult run = RunKalmia({"predict", model, table_});
  EXPECT_EQ(run.exitCode, 0);
  EXPECT_EQ(run.error,
            "note: these are the rows that the model was fitted to: it suits new rows less well\n"
            "note: no row has a distance to the model: with as many components as X columns, 5, nothing of X is left "
            "to measure it by\n");
}

TEST_F(PCAPredict, PutsRowsUnlikeTheTrainingRowsFarAway) {
  const json rows = Json(std::string(kScoredColumns) + "5,10,15,20,25\n5,10,15,32,25\n5,10,-40,20,25\n")["rows"];
  EXPECT_LT(rows[0]["distance"], 2.0);
  EXPECT_GT(std::max(rows[1]["distance"].get<double>(), rows[2]["distance"].get<double>()), 3.0);
}

TEST_F(PCAPredict, WritesScoresAsCsv) {
  Run(std::string(kScoredColumns) + kScoredRow + ",,,,\n", {"--csv", folder_.Path("d")});
  const kalmia::analysis::Table file = CsvAt(folder_.Path("d/predictions.csv"));
  EXPECT_THAT(file.ColumnNames(), ElementsAre("row", "t1", "t2", "t3", "T2", "distance", "absolute distance", "flags", "reason"));
  EXPECT_EQ(file.Cell(1, 1), "");
  EXPECT_EQ(file.Cell(1, 8), "none of its 5 X cells is present");
  EXPECT_NE(file.Cell(0, 1), "");
}

TEST_F(PCAPredict, IsToldByInfoToBeAPCAModel) {
  const CommandResult text = RunKalmia({"info", model_});
  EXPECT_EQ(text.exitCode, 0);
  for (const char* part : {"Kind              PCA", "30, named by column name", "5, scaled to unit variance",
                           "x1, x2, x3, x4, x5", "7 groups", "enough left", "R2X cum"}) {
    EXPECT_THAT(text.output, HasSubstr(part));
  }
  const json info = RunKalmia({"info", model_, "--json"}).Json();
  EXPECT_EQ(info["format"], "kalmia-info-pca");
  EXPECT_EQ(info["components"], fit_["components"]);
  EXPECT_EQ(info["x"].size(), 5);
  EXPECT_EQ(info["rows"].size(), 30);
}

}  // namespace
