// `kalmia pca`: what it fits, how it stops, what it writes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

/// The JSON output of a fit to a table on standard input.
json FitPCA(const std::string& table, std::vector<std::string> options) {
  options.insert(options.begin(), {"pca", "-", "--json"});
  return RunWell(options, table).Json();
}

std::vector<std::string> WineOptions(std::vector<std::string> more) {
  more.insert(more.begin(), {"pca", ExampleTable("wine.csv"), "--id", "sample", "--exclude", "cultivar"});
  return more;
}

/// Two equal columns, and a third that goes its own way: of rank 2.
const std::string kRankTwo = "a,b,c\n1,1,3\n2,2,1\n3,3,4\n4,4,1\n5,5,5\n";

TEST(PCA, FindsThePrincipalComponentsOfTheWines) {
  const json fit = RunWell(WineOptions({"--json"})).Json();
  EXPECT_EQ(fit["x"]["columns"].size(), 13);
  EXPECT_EQ(fit["rows"], 178);
  ASSERT_EQ(fit["components"].size(), 3);
  // R 4.2.2, prcomp(scale. = TRUE), which prints five decimals; the iteration ends with shares right to 1e-9.
  const double shares[] = {0.36199, 0.19207, 0.11124};
  for (int a = 0; a < 3; ++a) EXPECT_NEAR(fit["components"][a]["r2x"], shares[a], 6e-6);
  // The same; scores are as long as 4 and turn by less than 1e-5 when the iteration ends.
  const double sign = fit["scores"][0]["t"][0] > 0 ? 1 : -1;
  EXPECT_NEAR(sign * fit["scores"][0]["t"][0].get<double>(), 3.3074210, 1e-4);
  EXPECT_NEAR(sign * fit["loadings"][0]["p"][0].get<double>(), 0.1443294, 1e-5);
  EXPECT_NEAR(sign * fit["loadings"][12]["p"][0].get<double>(), 0.2867522, 1e-5);
  EXPECT_EQ(fit["loadings"][12]["name"], "proline");
  EXPECT_EQ(fit["scores"][177]["name"], "178");
}

TEST(PCA, ShowsTheFirstComponentThatFailsAndDoesNotKeepIt) {
  const json fit = RunWell(WineOptions({"--json", "--validation", "component"})).Json();
  ASSERT_EQ(fit["kept"], 2);
  ASSERT_EQ(fit["components"].size(), 3);
  for (std::size_t a = 0; a < 3; ++a) {
    const json& component = fit["components"][a];
    EXPECT_EQ(component["component"], a + 1);
    EXPECT_EQ(component["kept"], a < 2);
    EXPECT_EQ(component["significant"], a < 2);
    EXPECT_EQ(component["q2"] > component["q2Limit"], a < 2);
    EXPECT_EQ(component["enoughLeft"], true);
    // 1 - (N - 1 - a + 1)(K - a + 1) / ((N - a + 1)(K - a + 2)), rounded to float.
    const double n = 178.0 - static_cast<double>(a);
    const double k = 13.0 - static_cast<double>(a);
    EXPECT_NEAR(component["q2Limit"], 1.0 - (n - 1.0) * k / (n * (k + 1.0)), 6e-8);
  }
  EXPECT_EQ(fit["loadings"][0]["p"].size(), 2);
  EXPECT_EQ(fit["endedEarly"], nullptr);
}

TEST(PCA, CountsNoRowAwayFromTheLimitWhereNothingIsCentred) {
  const json fit = RunWell(WineOptions({"--json", "--scale", "none", "--validation", "component"})).Json();
  EXPECT_NEAR(fit["components"][0]["q2Limit"], 1.0 - 178.0 * 13.0 / (178.0 * 14.0), 6e-8);
}

TEST(PCA, CumulatesQ2AsTheProductOfWhatIsNotPredicted) {
  const json fit = RunWell(WineOptions({"--json", "--components", "4", "--validation", "component"})).Json();
  double left = 1.0;
  double r2x = 0.0;
  for (const json& component : fit["components"]) {
    left *= std::min(1.0 - component["q2"].get<double>(), 1.1);
    r2x += component["r2x"].get<double>();
    EXPECT_NEAR(component["q2Cum"], 1.0 - left, 1e-6);  // each is a float
    EXPECT_NEAR(component["r2xCum"], r2x, 1e-12);
  }
}

TEST(PCA, KeepsAsManyComponentsAsAskedForWhateverCrossValidationSays) {
  const json fit = FitPCA(UnrelatedTable(30, 5, 1, 5), {"--components", "4", "--validation", "component"});
  EXPECT_EQ(fit["kept"], 4);
  EXPECT_EQ(fit["components"].size(), 4);
  for (const json& component : fit["components"]) EXPECT_EQ(component["kept"], true);
  const CommandResult cut = RunWell({"pca", "-", "--components", "50"}, UnrelatedTable(30, 5, 1, 5));
  EXPECT_THAT(cut.error, HasSubstr("50 components are cut to 6: there are 30 rows and 6 X columns"));
}

TEST(PCA, SaysSoAndSavesNothingWhereNoComponentIsSignificant) {
  const ScratchFolder folder;
  const CommandResult run =
      RunWell({"pca", "-", "--validation", "component", "--save", folder.Path("m"), "--csv", folder.Path("d")},
              UnrelatedTable(60, 20, 1, 3));
  EXPECT_THAT(run.output, HasSubstr("No component is kept, cross-validated in 7 groups: Q2 of the first, "));
  EXPECT_THAT(run.output, HasSubstr("Nothing is saved."));
  EXPECT_THAT(folder.Names(), IsEmpty());
  const json fit = FitPCA(UnrelatedTable(60, 20, 1, 3), {"--validation", "component"});
  EXPECT_EQ(fit["kept"], 0);
  EXPECT_EQ(fit["scores"], json::array());
}

TEST(PCA, EndsWhereNothingIsLeftOfATableOfLowRank) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{}, {"--components", "3"}}) {
    const json fit = FitPCA(kRankTwo, options);
    EXPECT_LE(fit["kept"], 2);
    if (options.empty()) continue;
    EXPECT_EQ(fit["kept"], 2);
    EXPECT_EQ(fit["endedEarly"], "nothing is left of X");
    EXPECT_NEAR(fit["components"][1]["r2xCum"], 1.0, 1e-12);
    EXPECT_NEAR(fit["loadings"][0]["p"][0], fit["loadings"][1]["p"][0], 1e-6);  // float cells
  }
}

TEST(PCA, StopsByItselfWhereTheRuleSaysThatTooLittleIsLeft) {
  const json automatic = RunWell(WineOptions({"--json", "--scale", "none", "--validation", "component"})).Json();
  EXPECT_EQ(automatic["endedEarly"], "less than 0.001 of X is left");
  EXPECT_GT(automatic["components"].back()["r2xCum"], 0.999);
  const json asked = RunWell(WineOptions({"--json", "--scale", "none", "--components", "4"})).Json();
  ASSERT_EQ(asked["kept"], 4);
  EXPECT_EQ(asked["components"][0]["enoughLeft"], true);
  EXPECT_EQ(asked["components"][3]["enoughLeft"], false);
}

TEST(PCA, FitsEqualSingularValuesToo) {
  // Two uncorrelated columns of one length: every direction is as good.
  const json fit = FitPCA("a,b\n1,1\n1,-1\n-1,1\n-1,-1\n", {"--components", "2", "--groups", "2"});
  ASSERT_EQ(fit["kept"], 2);
  EXPECT_NEAR(fit["components"][0]["r2x"], 0.5, 1e-6);
  EXPECT_NEAR(fit["components"][1]["r2xCum"], 1.0, 1e-12);
}

TEST(PCA, CutsGroupsToRowsAndColumnsAndSaysSo) {
  const CommandResult run = RunWell({"pca", "-", "--components", "1", "--groups", "9", "--validation", "component"}, kRankTwo);
  EXPECT_THAT(run.error, HasSubstr("9 groups are cut to 5, the number of rows"));
  EXPECT_THAT(run.error, HasSubstr("5 groups are cut to 3, the number of X columns"));
  EXPECT_THAT(run.output, HasSubstr("cross-validated in 3 groups"));
}

TEST(PCA, TakesGroupsFromAColumnAndMergesThemWhereTheyOutnumberTheColumns) {
  const std::string grouped = "g,a,b,c\nu,1,1,3\nv,2,2,1\nw,3,3,4\nx,4,4,1\ny,5,5,5\nz,7,6,3\n";
  const json merged = FitPCA(grouped, {"--components", "1", "--group-column", "g", "--validation", "component"});
  EXPECT_EQ(merged["validation"]["groups"], 3);
  EXPECT_EQ(merged["validation"]["groupColumn"], "g");
  EXPECT_THAT(merged["notes"].get<std::vector<std::string>>(),
              Contains("6 groups are merged to 3, the number of X columns"));
  // The fourth group joins the first, as if it had been named so.
  const std::string same = "g,a,b,c\nu,1,1,3\nv,2,2,1\nw,3,3,4\nu,4,4,1\nv,5,5,5\nw,7,6,3\n";
  EXPECT_EQ(FitPCA(same, {"--components", "1", "--group-column", "g", "--validation", "component"})["components"],
            merged["components"]);
}

TEST(PCA, LeavesOutWhatPLSLeavesOutOfX) {
  const std::string table = "k,e,s,a,b\n7,,x,1,5\n7,,y,2,3\n7,,z,3,1\n7,,w,5,2\n,,q,,\n";
  const json fit = FitPCA(table, {"--components", "1", "--id", "s"});
  EXPECT_EQ(fit["x"]["columns"], (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(fit["leftOut"]["constantColumns"], std::vector<std::string>{"k"});
  EXPECT_EQ(fit["leftOut"]["emptyColumns"], std::vector<std::string>{"e"});
  EXPECT_EQ(fit["leftOut"]["rows"], std::vector<std::string>{"q"});
  EXPECT_EQ(fit["scores"][3]["name"], "w");
}

TEST(PCA, SaysSoWhereCrossValidationIsNotPossible) {
  const std::string corners = "a,b,c\n1,0,0\n0,1,0\n0,0,1\n1,1,1\n";
  const CommandResult run = RunWell({"pca", "-", "--components", "1", "--json", "--scale", "centre",
                                    "--validation", "component"},
                                   corners);
  EXPECT_THAT(run.error, HasSubstr("note: cross-validation is not possible: "));
  EXPECT_EQ(run.Json()["components"][0]["q2"], nullptr);
  EXPECT_EQ(run.Json()["components"][0]["significant"], false);
  EXPECT_THAT(RunWell({"pca", "-", "--scale", "centre", "--validation", "component"}, corners).output,
              HasSubstr("No component is kept: cross-validation cannot judge the first."));
}

TEST(PCA, ShowsSomeLinesOfLongTablesAndSaysHowManyMoreThereAre) {
  const std::string text = RunWell(WineOptions({})).output;
  EXPECT_THAT(text, HasSubstr("  proline "));
  EXPECT_THAT(text, HasSubstr("  and 158 more: CSV or JSON gives them all\n"));
}

/// A fit with its files.
class PCAFiles : public ::testing::Test {
 protected:
  PCAFiles() {
    json_ = RunWell({"pca", folder_.Write("t.csv", WithHoles(LinearTable(30, 5, 3), 11)), "--id", "name", "--exclude",
                     "y", "--components", "3", "--validation", "component", "--json", "--csv", folder_.Path("d"), "--save", folder_.Path("m")})
                .Json();
  }
  Table File(const std::string& name) const { return CsvAt(folder_.Path("d/" + name)); }

  ScratchFolder folder_;
  json json_;
};

TEST_F(PCAFiles, AreWrittenWithNamesOfRowsAndColumns) {
  EXPECT_EQ(json_["csvFiles"].size(), 5);
  EXPECT_THAT(File("scores.csv").ColumnNames(), ElementsAre("row", "t1", "t2", "t3"));
  EXPECT_EQ(File("scores.csv").Cell(29, 0), "s30");
  EXPECT_THAT(File("loadings.csv").ColumnNames(), ElementsAre("column", "p1", "p2", "p3"));
  EXPECT_EQ(File("loadings.csv").Cell(4, 0), "x5");
  EXPECT_EQ(File("components.csv").Rows(), 3);
  EXPECT_EQ(File("columns.csv").Rows(), 5);
  EXPECT_EQ(File("rows.csv").Rows(), 30);
}

TEST_F(PCAFiles, HoldTheNumbersOfTheJsonOutput) {
  for (std::size_t a = 0; a < 3; ++a) {
    const std::vector<double> scores = NumbersOf(File("scores.csv"), "t" + std::to_string(a + 1));
    const std::vector<double> loadings = NumbersOf(File("loadings.csv"), "p" + std::to_string(a + 1));
    for (std::size_t i = 0; i < 30; ++i) EXPECT_EQ(json_["scores"][i]["t"][a], scores[i]);
    for (std::size_t k = 0; k < 5; ++k) EXPECT_EQ(json_["loadings"][k]["p"][a], loadings[k]);
    EXPECT_EQ(json_["components"][a]["q2"], NumbersOf(File("components.csv"), "Q2")[a]);
  }
}

TEST_F(PCAFiles, HaveLoadingsOfUnitLengthAndT2ThatSumsToItsDegreesOfFreedom) {
  for (const char* p : {"p1", "p2", "p3"}) {
    double length = 0.0;
    for (const double cell : NumbersOf(File("loadings.csv"), p)) length += cell * cell;
    EXPECT_NEAR(length, 1.0, 1e-6);  // float cells
  }
  double sum = 0.0;
  for (const double t2 : NumbersOf(File("rows.csv"), "T2")) sum += t2;
  EXPECT_NEAR(sum, 3.0 * 29.0, 1e-4);
}

TEST_F(PCAFiles, DescribeEachColumnAndTogetherTheTable) {
  // With unit variance the columns weigh the same but for their holes: at most 3 of 30 cells.
  double mean = 0.0;
  for (const double r2 : NumbersOf(File("columns.csv"), "R2X cum")) mean += r2 / 5.0;
  EXPECT_NEAR(mean, json_["components"][2]["r2xCum"], 0.05);
  for (const double q2 : NumbersOf(File("columns.csv"), "Q2 cum")) EXPECT_LE(q2, 1.0);
}

TEST_F(PCAFiles, HoldTheDistancesThatPredictFindsForTheTrainingRows) {
  const json rows = RunWell({"predict", folder_.Path("m"), folder_.Path("t.csv"), "--json"}).Json()["rows"];
  const std::vector<double> distances = NumbersOf(File("rows.csv"), "distance");
  ASSERT_EQ(rows.size(), distances.size());
  for (std::size_t i = 0; i < distances.size(); ++i) {
    EXPECT_EQ(rows[i]["row"], "s" + std::to_string(i + 1));
    ASSERT_EQ(rows[i]["distance"].is_number(), !std::isnan(distances[i]));
    if (!std::isnan(distances[i])) {
      EXPECT_EQ(rows[i]["distance"], distances[i]);
    }
  }
}

TEST(PCA, IsJudgedByRefitsUnlessToldOtherwise) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d");
  const json fit = RunWell(WineOptions({"--json", "--csv", csv})).Json();
  EXPECT_EQ(fit["formatVersion"], 2);
  const json& validation = fit["validation"];
  EXPECT_EQ(validation["method"], "refit");
  EXPECT_EQ(validation["folds"], "interleaved");
  EXPECT_EQ(validation["groups"], 7);
  EXPECT_EQ(validation["rule"], "one-se");
  EXPECT_EQ(validation["chosen"], fit["kept"]);
  ASSERT_EQ(validation["components"].size(), 11U);  // 13 columns in 7 groups, of 2 at most: 11 are left, one too many
  EXPECT_EQ(validation["components"][0]["components"], 0);
  EXPECT_EQ(validation["components"][0]["q2"], 0.0);
  EXPECT_FALSE(validation["components"][0].contains("rmsecv"));
  for (const json& component : fit["components"]) EXPECT_FALSE(component.contains("significant"));
  EXPECT_THAT(CsvAt(csv + "/components.csv").ColumnNames(), ElementsAre("components", "R2X cum", "PRESS", "Q2", "kept"));
  const std::string text = RunWell(WineOptions({"--select", "q2"})).output;
  EXPECT_THAT(text, HasSubstr("cross-validated by refits in 7 groups (interleaved) and as many of columns"));
  EXPECT_THAT(text, HasSubstr("chosen"));
}

TEST(PCA, ModelsTheMeanWhereNoComponentPredictsAnything) {
  const CommandResult run = RunWell({"pca", "-"}, UnrelatedTable(60, 20, 1, 3));
  EXPECT_THAT(run.output, HasSubstr("No component is kept, cross-validated by refits in 7 groups"));
  EXPECT_THAT(run.output, HasSubstr("the model is the mean of each column"));
  const json fit = FitPCA(UnrelatedTable(60, 20, 1, 3), {});
  EXPECT_EQ(fit["kept"], 0);
  EXPECT_EQ(fit["scores"], json::array());
}

TEST(PCA, WithoutAValidationTakesANumber) {
  const json fit = RunWell(WineOptions({"--json", "--validation", "none", "--components", "2"})).Json();
  EXPECT_EQ(fit["kept"], 2);
  EXPECT_EQ(fit["validation"]["method"], "none");
  EXPECT_EQ(fit["validation"]["components"], json::array());
  EXPECT_EQ(RunKalmia(WineOptions({"--validation", "none"})).exitCode, 2);
  EXPECT_EQ(RunKalmia(WineOptions({"--select", "min", "--components", "2"})).exitCode, 2);
}

TEST(PCAHelp, HasAnExampleAndTellsOfEveryOption) {
  const CommandResult help = RunWell({"pca", "--help"});
  for (const char* word : {"kalmia pca wine.csv", "--id", "--x", "--exclude", "--scale", "--components", "--validation",
                           "--groups", "--folds", "--repeats", "--seed", "--select", "--alpha", "--group-column", "--save", "--json", "--csv", "--help"}) {
    EXPECT_THAT(help.output, HasSubstr(word));
  }
}

TEST(PCA, ShowsAGivenModelThatTheRoundsCannotHave) {
  const ScratchFolder folder;
  const std::string table = LinearTable(12, 3, 4);  // and y: 3 cells outside a group of 4 columns score 2 components
  const json fit = FitPCA(table, {"--id", "name", "--components", "4", "--csv", folder.Path("d")});
  const json& rows = fit["validation"]["components"];
  ASSERT_EQ(rows.size(), 4U);
  EXPECT_EQ(fit["validation"]["chosen"], 4);
  EXPECT_EQ(rows[3]["components"], 4);
  EXPECT_EQ(rows[3]["r2x"], fit["components"][3]["r2xCum"]);
  EXPECT_EQ(rows[3]["q2"], nullptr);
  EXPECT_THAT(ReadWholeFile(folder.Path("d/components.csv")), HasSubstr("\n4,"));
  EXPECT_THAT(RunWell({"pca", "-", "--id", "name", "--components", "4"}, table).output,
              HasSubstr("4 components kept, not judged: cross-validated by refits in 7 groups (interleaved) and as "
                        "many of columns up to 2 components.\n"));
}

TEST(PCA, SaysWhyNoComponentCanBeJudged) {
  const CommandResult run = RunWell({"pca", "-"}, "a,b\n1,2\n2,1\n3,5\n4,3\n5,7\n");
  EXPECT_THAT(run.output, HasSubstr("the model is the mean of each column.\nNo component can be judged: without one of "
                                    "the 2 groups of its 2 columns too few cells of a row are left to score it.\n"));
  EXPECT_THAT(run.output, Not(HasSubstr("Rule")));
  EXPECT_THAT(RunWell({"pca", "-"}, "a,b,c,d\n1,2,3,1\n2,1,5,4\n").output,
              HasSubstr("No component can be judged: "));
}

}  // namespace
