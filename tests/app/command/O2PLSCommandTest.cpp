// `kalmia o2pls`: what it fits, how it brings rows together, what it refuses; predictions in both directions.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/NCO2PLSPred.h"

namespace {

using kalmia::analysis::Table;
using kalmia::analysis::StoredO2PLS;
using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Matrix = NCDataMatrix<float>;

/// Two blocks of 60 rows in files x.csv and y.csv.
class O2PLS : public ::testing::Test {
 protected:
  CommandResult Run(std::vector<std::string> options) const {
    options.insert(options.begin(), {"o2pls", x_, y_, "--id", "name"});
    return RunKalmia(options);
  }
  CommandResult RunWell(const std::vector<std::string>& options) const {
    CommandResult result = Run(options);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    return result;
  }
  json Json(std::vector<std::string> options) const {
    options.emplace_back("--json");
    return RunWell(options).Json();
  }
  std::string Csv(const std::string& file) const { return folder_.Path("d/") + file; }

  static std::vector<std::string> Fixed(std::vector<std::string> more) {
    more.insert(more.begin(), {"--joint", "1", "--x-unique", "1", "--y-unique", "1"});
    return more;
  }

  ScratchFolder folder_;
  TwoBlocks blocks_ = SharedBlocks(60, 3);
  std::string x_ = folder_.Write("x.csv", blocks_.x);
  std::string y_ = folder_.Write("y.csv", blocks_.y);
};

double Correlation(const std::vector<double>& a, const std::vector<double>& b) {
  double sumA = 0.0, sumB = 0.0, aa = 0.0, ab = 0.0, bb = 0.0;
  const auto n = static_cast<double>(a.size());
  for (std::size_t i = 0; i < a.size(); ++i) {
    sumA += a[i];
    sumB += b[i];
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    aa += (a[i] - sumA / n) * (a[i] - sumA / n);
    ab += (a[i] - sumA / n) * (b[i] - sumB / n);
    bb += (b[i] - sumB / n) * (b[i] - sumB / n);
  }
  return std::abs(ab) / std::sqrt(aa * bb);
}

TEST_F(O2PLS, TellsWhatTheBlocksShareFromWhatIsEachOnesOwn) {
  RunWell(Fixed({"--csv", folder_.Path("d")}));
  // Of 60 rows the common direction and the blocks' own correlate by some 1 / sqrt(60) = 0.13 by chance, which turns
  // the directions by as much: cosines from 0.98 on, some less for the noise.
  EXPECT_GT(Correlation(NumbersOf(CsvAt(Csv("x-scores.csv")), "t1"), NumbersOf(CsvAt(x_), "x1")), 0.95);
  EXPECT_GT(Correlation(NumbersOf(CsvAt(Csv("x-scores.csv")), "to1"), NumbersOf(CsvAt(x_), "x2")), 0.95);
  EXPECT_GT(Correlation(NumbersOf(CsvAt(Csv("y-scores.csv")), "u1"), NumbersOf(CsvAt(y_), "y1")), 0.95);
  EXPECT_GT(Correlation(NumbersOf(CsvAt(Csv("y-scores.csv")), "uo1"), NumbersOf(CsvAt(y_), "y2")), 0.95);
}

TEST_F(O2PLS, GivesJointAndUniqueVariationAsSharesOfEachBlock) {
  const json fit = Json(Fixed({}));
  for (const char* block : {"x", "y"}) {
    const json& shares = fit["shares"][block];
    double joint = 0.0, unique = 0.0;
    for (const json& component : fit["components"]) {
      const json& share = component[std::string("r2") + block];
      (component["kind"] == "joint" ? joint : unique) += share.is_number() ? share.get<double>() : 0.0;
    }
    EXPECT_DOUBLE_EQ(shares["joint"], joint);
    EXPECT_DOUBLE_EQ(shares["unique"], unique);
    EXPECT_DOUBLE_EQ(shares["rest"], 1.0 - joint - unique);
    // Two directions of about equal size make up each block but for noise of a tenth, a hundredth of the variance.
    EXPECT_GT(joint, 0.3);
    EXPECT_GT(unique, 0.3);
    EXPECT_GT(shares["rest"], 0.0);
    EXPECT_LT(shares["rest"], 0.05);
  }
}

TEST_F(O2PLS, FindsTheNumbersByCrossValidationUnlessTheyAreGiven) {
  const json found = Json({"--validation", "component"});
  EXPECT_EQ(found["joint"], 1);
  EXPECT_EQ(Json({"--auto", "--validation", "component"}), found);
  int kept = 0;
  for (const json& component : found["components"]) {
    kept += component["kept"] ? 1 : 0;
    EXPECT_TRUE(component["code"] == "R1" || component["code"] == "NS") << component;
    EXPECT_EQ(component["significant"], component["code"] == "R1");
    EXPECT_EQ(component["q2Limit"], 0.01);
  }
  EXPECT_EQ(kept, found["joint"].get<int>() + found["xUnique"].get<int>() + found["yUnique"].get<int>());
  EXPECT_GT(found["components"].size(), static_cast<std::size_t>(kept)) << "the search ends with a component in vain";
  const json given = Json(Fixed({}));
  EXPECT_EQ(given["components"].size(), 3);
}

TEST_F(O2PLS, IsJudgedByRefitsUnlessToldOtherwise) {
  const json fit = Json({"--csv", folder_.Path("d")});
  EXPECT_EQ(fit["formatVersion"], 2);
  const json& validation = fit["validation"];
  EXPECT_EQ(validation["method"], "refit");
  EXPECT_EQ(validation["rule"], nullptr);
  EXPECT_EQ(validation["chosen"]["joint"], fit["joint"]);
  ASSERT_EQ(validation["components"].size(), 2U);
  EXPECT_EQ(validation["components"][0]["joint"], 0);
  EXPECT_EQ(validation["components"][0]["q2"], 0.0);
  const json& model = validation["components"][1];
  EXPECT_EQ(model["joint"], fit["joint"]);
  EXPECT_EQ(model["xUnique"], fit["xUnique"]);
  EXPECT_EQ(model["yUnique"], fit["yUnique"]);
  EXPECT_GT(model["q2"].get<double>(), 0.2);
  EXPECT_GT(model["xFromY"]["q2"].get<double>(), 0.2);
  EXPECT_LT(model["rmsecv"]["y1"].get<double>(), validation["components"][0]["rmsecv"]["y1"].get<double>());
  EXPECT_EQ(fit["crossValidated"]["y1"].size(), 60U);
  EXPECT_EQ(fit["search"], Json({"--validation", "component"})["components"]);
  for (const json& component : fit["components"]) EXPECT_FALSE(component.contains("significant"));
  EXPECT_EQ(NumbersOf(CsvAt(folder_.Path("d/y-fit.csv")), "cv y1")[3], fit["crossValidated"]["y1"][3]);
  EXPECT_EQ(NumbersOf(CsvAt(folder_.Path("d/x-fit.csv")), "cv x1").size(), 60U);
}

TEST_F(O2PLS, NamesScoresAndLoadings) {
  const json fit = Json(Fixed({}));
  EXPECT_EQ(fit["xScores"].size(), 60);
  EXPECT_EQ(fit["xScores"][4]["name"], "s5");
  EXPECT_EQ(fit["xScores"][4]["t"].size(), 1);
  EXPECT_EQ(fit["xScores"][4]["to"].size(), 1);
  EXPECT_EQ(fit["yLoadings"][2]["name"], "y3");
  EXPECT_EQ(fit["yLoadings"][2]["qo"].size(), 1);
  const std::string text = RunWell(Fixed({})).output;
  for (const char* word : {"joint 1", "X-unique 1", "Y-unique 1", "row, in X", "to1", "uo1", "x6", "s20",
                           "and 40 more"}) {
    EXPECT_THAT(text, HasSubstr(word));
  }
}

TEST_F(O2PLS, BringsRowsTogetherById) {
  json straight = Json(Fixed({}));
  folder_.Write("y.csv", WithRowsReversed(blocks_.y) + "zeal,1,2,3,4\n");
  json turned = Json(Fixed({}));
  EXPECT_THAT(turned["notes"].get<std::vector<std::string>>(),
              ElementsAre("left out, rows of " + y_ + " that " + x_ + " lacks: zeal"));
  EXPECT_EQ(turned["leftOutRows"]["onlyInY"], json({"zeal"}));
  for (json* fit : {&straight, &turned}) {
    fit->erase("notes");
    fit->erase("leftOutRows");
  }
  EXPECT_EQ(straight, turned);
}

TEST_F(O2PLS, TakesRowsInTheirOrderWithoutIds) {
  const CommandResult run =
      RunKalmia({"o2pls", x_, y_, "--joint", "1", "--x-unique", "1", "--y-unique", "1", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_EQ(run.Json()["components"], Json(Fixed({}))["components"]);
  EXPECT_EQ(run.Json()["xScores"][4]["name"], "5");
}

TEST_F(O2PLS, TakesBothBlocksFromOneTable) {
  const std::string both = folder_.Write("both.csv", UnrelatedTable(20, 4, 3, 2));
  const CommandResult run = RunKalmia({"o2pls", both, both, "--x", "x1..x4", "--y", "y1..y3", "--joint", "1",
                                       "--x-unique", "0", "--y-unique", "0", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  EXPECT_EQ(run.Json()["x"]["columns"], json({"x1", "x2", "x3", "x4"}));
  EXPECT_EQ(run.Json()["y"]["columns"], json({"y1", "y2", "y3"}));
}

TEST_F(O2PLS, RefusesAColumnOfTheSameCellsInBothBlocksWhateverItsName) {
  const std::string both = folder_.Write("both.csv", UnrelatedTable(20, 4, 3, 2));
  ExpectFailure(RunKalmia({"o2pls", both, both, "--x", "x1..x4", "--y", "x4..y3"}), 1,
                "the same column is in both blocks, which would predict it from itself: 'x4' of X is 'x4' of Y");
  ExpectFailure(RunKalmia({"o2pls", both, both}), 1, "'x1' of X is 'x1' of Y, 'x2' of X is 'x2' of Y, ");
  // In another order of the rows, beside a hole, with zeros of another sign and digits that single precision drops.
  const std::string x = folder_.Write("x.csv", "id,a,b\n1,1,0\n2,2,-1\n3,,1\n4,4,5\n5,1,3\n");
  const std::string y = folder_.Write("y.csv", "id,c,d\n5,3,2\n4,5.00000000001,1\n3,1,7\n2,-1,4\n1,-0.0,5\n");
  ExpectFailure(RunKalmia({"o2pls", x, y, "--id", "id", "--fill"}), 1, "from itself: 'b' of X is 'c' of Y; choose");
  const std::string other = folder_.Write("o.csv", "id,c,d\n5,3,2\n4,5,1\n3,1,7\n2,-1,4\n1,0.5,5\n");
  EXPECT_THAT(RunKalmia({"o2pls", x, other, "--id", "id", "--fill"}).error, Not(HasSubstr("from itself")));
}

StoredO2PLS ModelAt(const std::string& path) {
  return std::get<StoredO2PLS>(kalmia::analysis::ReadModelFile(ReadWholeFile(path), path));
}

Matrix ScaledTable(const Table& table, const std::vector<std::string>& names,
                   const kalmia::analysis::ColumnScaling& scaling) {
  Matrix cells(table.Rows(), static_cast<int>(names.size()));
  for (std::size_t c = 0; c < names.size(); ++c) {
    const std::vector<double> numbers = NumbersOf(table, names[c]);
    for (int r = 1; r <= cells.SizeRows(); ++r)
      cells(r, static_cast<int>(c) + 1, static_cast<float>(numbers[static_cast<std::size_t>(r) - 1]));
  }
  kalmia::analysis::ApplyScale(scaling, &cells);
  return cells;
}

TEST_F(O2PLS, StoresTheMatricesOfTheFittedModelToTheBit) {
  const std::string file = folder_.Path("m");
  RunWell(Fixed({"--save", file}));
  const StoredO2PLS stored = ModelAt(file);
  const Matrix x = ScaledTable(CsvAt(x_), stored.xNames, stored.xScaling);
  const Matrix y = ScaledTable(CsvAt(y_), stored.yNames, stored.yScaling);
  NCO2PLS model(x, y, /*checkDimensions=*/true, /*maxIterations=*/500);
  model.Fit(1, 1, 1);
  const auto& o = stored.o2pls;
  const std::pair<Matrix, Matrix> pairs[] = {
      {o.t, model.GetT()},   {o.u, model.GetU()},   {o.p, model.GetP()},   {o.w, model.GetW()},
      {o.c, model.GetC()},   {o.q, model.GetQ()},   {o.to, model.GetTo()}, {o.wo, model.GetWo()},
      {o.po, model.GetPo()}, {o.uo, model.GetUo()}, {o.co, model.GetCo()}, {o.qo, model.GetQo()},
      {o.r, model.GetR()},   {o.s, model.GetS()},   {o.lambda, model.GetLambda()}, {o.xLambda, model.GetXLambda()}};
  for (const auto& [kept, fitted] : pairs) EXPECT_TRUE(kept == fitted);
  const Matrix fromStored = NCO2PLSYPred(x, o.p, o.w, o.q, o.wo, o.po, o.s, o.lambda, 4).GetYPred();
  EXPECT_TRUE(fromStored == NCO2PLSYPred(&x, &model).GetYPred());
  const Matrix backwards = NCO2PLSXPred(y, o.q, o.c, o.p, o.co, o.qo, o.r, o.xLambda, 6).GetXPred();
  EXPECT_TRUE(backwards == NCO2PLSXPred(&y, &model).GetXPred());
}

TEST_F(O2PLS, AStoredModelPredictsBothWaysToTheBitWhatTheFitPredicted) {
  const std::string model = folder_.Path("m"), csv = folder_.Path("d");
  RunWell(Fixed({"--save", model, "--csv", csv}));
  for (const std::string from : {"x", "y"}) {
    const CommandResult run =
        RunKalmia({"predict", model, from == "x" ? x_ : y_, "--from", from, "--csv", csv, "--json"});
    ASSERT_EQ(run.exitCode, 0) << run.error;
    EXPECT_EQ(run.Json()["from"], from);
    const Table fit = CsvAt(Csv(from == "x" ? "y-fit.csv" : "x-fit.csv"));
    const Table predicted = CsvAt(Csv("predictions.csv"));
    for (const std::string& column : from == "x" ? std::vector<std::string>{"y1", "y2", "y3", "y4"}
                                                : std::vector<std::string>{"x1", "x2", "x3", "x4", "x5", "x6"}) {
      EXPECT_EQ(NumbersOf(predicted, "predicted " + column), NumbersOf(fit, "predicted " + column)) << column;
    }
  }
}

TEST_F(O2PLS, AStoredModelPredictsFromXUnlessToldOtherwise) {
  const std::string model = folder_.Path("m");
  RunWell(Fixed({"--save", model}));
  EXPECT_EQ(RunKalmia({"predict", model, x_}).output, RunKalmia({"predict", model, x_, "--from", "x"}).output);
  ExpectFailure(RunKalmia({"predict", model, y_}), 1, "no column has the name of one of the model's X columns");
  ExpectFailure(RunKalmia({"predict", model, x_, "--from", "y"}), 1,
                "no column has the name of one of the model's Y columns");
  ExpectFailure(RunKalmia({"predict", model, x_, "--from", "z"}), 2, "--from takes one of x and y, not 'z'");
}

TEST_F(O2PLS, PredictsRowsWithHolesAndSaysWhyARowCannotBePredicted) {
  const std::string model = folder_.Path("m");
  RunWell(Fixed({"--save", model}));
  const std::string table = "y1,y2,y3,y4\n9,9.1,,9.2\n,,,\n9,9,9,9\n,9,,\n";
  const json rows = RunKalmia({"predict", model, "-", "--from", "y", "--json"}, table).Json()["rows"];
  EXPECT_TRUE(rows[0]["predicted"][5].is_number());
  EXPECT_EQ(rows[1]["predicted"][5], nullptr);
  EXPECT_EQ(rows[1]["reason"], "none of its 4 Y cells is present");
  EXPECT_EQ(rows[2]["reason"], nullptr);
  EXPECT_TRUE(rows[3]["predicted"][5].is_number()) << "from one cell, with two components";
  EXPECT_EQ(rows[3]["distance"], nullptr);
}

TEST_F(O2PLS, PredictsBackwardsWhatTheSwappedModelPredictsForwards) {
  const std::string model = folder_.Path("m"), swapped = folder_.Path("s");
  RunWell(Fixed({"--save", model}));
  const CommandResult run = RunKalmia({"o2pls", y_, x_, "--id", "name", "--joint", "1", "--x-unique", "1", "--y-unique",
                                       "1", "--save", swapped});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const json back = RunKalmia({"predict", model, y_, "--from", "y", "--json"}).Json()["rows"];
  const json forth = RunKalmia({"predict", swapped, y_, "--json"}).Json()["rows"];
  ASSERT_EQ(back.size(), 60);
  for (std::size_t i = 0; i < back.size(); ++i)
    for (std::size_t k = 0; k < 6; ++k)
      // Weights are settled to a relative change of 1e-5; the values spread by 3.
      EXPECT_NEAR(back[i]["predicted"][k], forth[i]["predicted"][k].get<double>(), 1e-3);
}

TEST_F(O2PLS, OtherModelsPredictFromXOnly) {
  const std::string model = folder_.Path("m");
  ASSERT_EQ(RunKalmia({"pca", x_, "--id", "name", "--components", "1", "--save", model}).exitCode, 0);
  ExpectFailure(RunKalmia({"predict", model, x_, "--from", "y"}), 2,
                "predicts from X only: --from y takes an O2PLS model");
}

TEST_F(O2PLS, RefusesHolesUnlessTheyAreToBeFilled) {
  folder_.Write("x.csv", WithHoles(blocks_.x, 50));
  ExpectFailure(Run(Fixed({"--save", folder_.Path("m")})), 1,
                "x.csv: row 10 (line 11), column 'x5': a cell is missing, one of 6 in both blocks; O2PLS takes "
                "complete blocks, and --fill estimates what is missing");
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"x.csv", "y.csv"}));
  folder_.Write("y.csv", WithHoles(blocks_.y, 40));
  const json fit = Json(Fixed({"--fill"}));
  EXPECT_EQ(fit["x"]["missingCells"], 6);
  EXPECT_EQ(fit["x"]["filledCells"], 6);
  EXPECT_EQ(fit["y"]["filledCells"], fit["y"]["missingCells"]);
  EXPECT_THAT(fit["notes"][0], HasSubstr("estimated, 6 missing cells of X"));
  // A fiftieth of the cells is estimated: the model hardly differs from that of the complete blocks.
  folder_.Write("x.csv", blocks_.x);
  folder_.Write("y.csv", blocks_.y);
  EXPECT_NEAR(fit["shares"]["x"]["joint"], Json(Fixed({}))["shares"]["x"]["joint"].get<double>(), 0.05);
}

TEST_F(O2PLS, LeavesRowsOutThatHaveNoCellToFillFrom) {
  folder_.Write("x.csv", blocks_.x + "s61,,,,,,\ns62,5,5,5,5,5,5\n");
  folder_.Write("y.csv", blocks_.y + "s61,9,9,9,9\ns62,NA,NA,NA,NA\n");
  const json fit = Json(Fixed({"--fill"}));
  EXPECT_EQ(fit["rows"], 60);
  EXPECT_EQ(fit["leftOutRows"]["empty"], json({"s61", "s62"}));
}

TEST_F(O2PLS, LeavesColumnsOutOfEachBlockThatDoNotVaryInTheCommonRows) {
  folder_.Write("x.csv", "name,word,a,b,c\ns1,u,1,1,7\ns2,v,2,4,7\ns3,w,3,2,7\ns4,x,4,3,7\ns5,y,6,5,7\nelse,z,1,1,8\n");
  folder_.Write("y.csv", "name,d,e\ns1,1,\ns2,2,\ns3,2.9,\ns4,4.2,\ns5,5.7,\n");
  const json fit = Json({"--joint", "1", "--x-unique", "0", "--y-unique", "0"});
  EXPECT_EQ(fit["x"]["columns"], json({"a", "b"}));
  EXPECT_EQ(fit["x"]["leftOut"]["textColumns"], json({"word"}));
  EXPECT_EQ(fit["x"]["leftOut"]["constantColumns"], json({"c"}));
  EXPECT_EQ(fit["y"]["leftOut"]["emptyColumns"], json({"e"}));
}

TEST_F(O2PLS, SaysSoAndSavesNothingWhereTheBlocksShareNothing) {
  const std::string table = folder_.Write("u.csv", UnrelatedTable(30, 6, 1, 5));
  const CommandResult run = RunKalmia({"o2pls", table, table, "--x", "x1..x6", "--y", "y1..y1", "--save",
                                       folder_.Path("m"), "--csv", folder_.Path("d")});
  EXPECT_EQ(run.exitCode, 0) << run.error;
  EXPECT_THAT(run.output, HasSubstr("X and Y share no component, cross-validated by refits in 7 groups (interleaved).\n"
                                    "Nothing is saved."));
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"u.csv", "x.csv", "y.csv"}));
}

TEST_F(O2PLS, ShowsAStoredModel) {
  RunWell(Fixed({"--save", folder_.Path("m")}));
  const CommandResult run = RunKalmia({"info", folder_.Path("m")});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  for (const char* word : {"O2PLS", "joint 1", "X-unique 1", "Y-unique 1", "variation of", "y1, y2, y3, y4", "y.csv"}) {
    EXPECT_THAT(run.output, HasSubstr(word));
  }
}

struct BadBlocks {
  const char* what;
  std::string x;
  std::string y;
  std::vector<std::string> options;
  const char* message;
};

TEST(FailureOfO2PLS, IsOneLineWithExitCode1ForBadData) {
  const std::string x = "id,a,b\nu,1,2\nv,2,1\nw,3,5\nz,5,4\n", y = "id,c,d\nu,1,1\nv,3,2\nw,2,4\nz,6,4\n";
  const std::vector<std::string> byId = {"--id", "id"};
  const auto fixed = [](const char* joint, const char* xUnique, const char* yUnique) {
    return std::vector<std::string>{"--id",       "id",    "--joint",    joint,
                                    "--x-unique", xUnique, "--y-unique", yUnique, "--groups", "4"};
  };
  const BadBlocks all[] = {
      {"different row counts", x, "id,c,d\nu,1,1\n", {}, "x.csv: there are 4 rows, but 1 in "},
      {"no common ids", x, "id,c\n1,1\n2,3\n", byId, "have no id of column 'id' in common"},
      {"one common id", x, "id,c\nu,1\n2,3\n", byId, "have only 1 row with cells in both: a model takes two or more"},
      {"an id twice in X", "id,a\nu,1\nv,2\nu,3\n", y, byId, "x.csv: the id 'u' comes twice, in row 1 (line 2) and "},
      {"an id twice in Y", x, "id,c\nu,1\nv,2\nv,3\n", byId, "y.csv: the id 'v' comes twice, in row 2 (line 3) and "},
      {"no id", x, "id,c\nu,1\n,2\n", byId, "y.csv: row 2 (line 3) has no id in column 'id'"},
      {"no id column", x, "name,c\nu,1\nv,2\n", byId, "y.csv: there is no column 'id'"},
      {"a constant block",
       x,
       "id,c,d\nu,1,5\nv,1,5\nw,1,5\nz,1,5\n",
       byId,
       "y.csv: no column of numbers that varies is left for Y; constant columns: c and d"},
      {"a block of text",
       "id,a\nu,p\nv,q\nw,r\nz,s\n",
       y,
       byId,
       "x.csv: no column of numbers that varies is left for X; text columns: a"},
      {"an empty block to fill",
       x,
       "id,c\nu,\nv,\nw,NA\nz,\n",
       {"--id", "id", "--fill"},
       "y.csv: no column of numbers that varies is left for Y; empty columns: c"},
      {"a hole in Y",
       x,
       "id,c,d\nu,1,1\nv,3,\nw,2,4\nz,6,4\n",
       byId,
       "y.csv: row 2 (line 3), column 'd': a cell is missing"},
      {"a word", x, "id,c,d\nu,1,1\nv,3,oops\nw,2,4\nz,6,4\n", byId, "column 'd': 'oops' is not a number"},
      {"no such column", x, y, {"--id", "id", "--y", "c..e"}, "y.csv: there is no column 'e'"},
      {"too many joint components",
       x,
       y,
       fixed("3", "0", "0"),
       "3 joint components are too many for 4 rows, 2 X columns and 2 Y columns"},
      {"too many X-unique components",
       x,
       y,
       fixed("1", "2", "0"),
       "1 joint and 2 X-unique components are too many for 4 rows"},
      {"too many Y-unique components", x, y, fixed("2", "0", "1"), "2 joint and 1 Y-unique components are too many"},
      {"numbers too large",
       "id,a,b\nu,1e30,-2e30\nv,2e30,1e30\nw,-3e30,2e30\nz,5e30,1e30\n",
       "id,c,d\nu,1e30,1e30\nv,3e30,2e30\nw,2e30,4e30\nz,6e30,4e30\n",
       {"--id", "id", "--scale", "none"},
       "cross-validation: a joint component cannot be computed in every round"},
      {"more joint components than the rank",
       "id,a,b\nu,1,2\nv,2,4\nw,3,6\nz,5,10\n",
       y,
       fixed("2", "0", "0"),
       "2 joint components are more than X and Y have in common"}};
  for (const BadBlocks& bad : all) {
    SCOPED_TRACE(bad.what);
    const ScratchFolder folder;
    std::vector<std::string> arguments = {"o2pls", folder.Write("x.csv", bad.x), folder.Write("y.csv", bad.y)};
    arguments.insert(arguments.end(), bad.options.begin(), bad.options.end());
    for (const std::string& more : {std::string("--save"), folder.Path("m"), std::string("--csv"), folder.Path("d")}) {
      arguments.push_back(more);
    }
    ExpectFailure(RunKalmia(arguments), 1, bad.message);
    EXPECT_EQ(folder.Names(), (std::vector<std::string>{"x.csv", "y.csv"}));
  }
}

TEST(FailureOfO2PLS, RefusesUniqueComponentsThatAreRelatedToTheOtherBlock) {
  const std::string oils = ExampleTable("oliveoil.csv");
  ExpectFailure(RunKalmia({"o2pls", oils, oils, "--id", "sample", "--x", "Acidity..DK", "--y", "yellow..syrup",
                           "--joint", "1", "--x-unique", "1", "--y-unique", "1"}),
                1,
                "the model cannot be computed: There are no dimensions in Y that are unrelated to X. More components "
                "can not be calculated.");
}

TEST(O2PLSOfSpectra, CutsUniqueComponentsThatTheSearchFoundToThoseUnrelatedToTheOtherBlock) {
  const std::string spectra = ExampleTable("gasoline.csv");
  const CommandResult run = RunKalmia({"o2pls", spectra, spectra, "--id", "sample", "--x", "900nm..1098nm", "--y",
                                       "1100nm..1300nm", "--scale", "centre", "--json"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const json fit = run.Json();
  EXPECT_EQ(fit["notes"][0], "X-unique components are cut from 1 to 0: the next one is related to Y after all");
  EXPECT_EQ(fit["xUnique"], 0);
  // Cross-validated as it then is: all components that are shown are those of the model.
  EXPECT_EQ(fit["components"].size(), fit["joint"].get<std::size_t>() + fit["yUnique"].get<std::size_t>());
}

/// Two columns of which b is zero but in the last row: without that row one direction is all that there is, and
/// nothing, to the bit, is left beside it.
constexpr const char* kLeftInOneRow = "id,a,b\n1,1,0\n2,-2,0\n3,3,0\n4,-1,0\n5,2,0\n6,-3,0\n7,1,0\n8,-1,5\n";
/// Follows a, but for the last row.
constexpr const char* kFollowsA = "id,c\n1,1.1\n2,-2.2\n3,2.9\n4,-1.3\n5,2.2\n6,-2.9\n7,0.7\n8,3\n";

TEST(O2PLSOfSparseColumns, DoesNotJudgeGivenUniqueComponentsForWhichARoundHasNothingLeft) {
  const ScratchFolder folder;
  const std::string left = folder.Write("left.csv", kLeftInOneRow), follows = folder.Write("follows.csv", kFollowsA);
  const auto fit = [](const std::string& x, const std::string& y, const char* ofX, const char* ofY) {
    const CommandResult run = RunKalmia({"o2pls", x, y, "--id", "id", "--scale", "none", "--groups", "8", "--joint",
                                         "1", "--x-unique", ofX, "--y-unique", ofY, "--json", "--validation", "component"});
    EXPECT_EQ(run.exitCode, 0) << run.error;
    return run.Json();
  };
  const char* const note =
      "cross-validation could not compute all unique components; those without a Q2 are not judged";
  for (const json& both : {fit(left, follows, "1", "0"), fit(follows, left, "0", "1")}) {
    EXPECT_EQ(both["notes"], json({note}));
    EXPECT_EQ(both["xUnique"].get<int>() + both["yUnique"].get<int>(), 1) << "the model of all rows has it";
    ASSERT_EQ(both["components"].size(), 2U);
    EXPECT_LT(both["components"][0]["q2"].get<double>(), 1.0);
    EXPECT_TRUE(both["components"][1]["q2"].is_null());
    EXPECT_EQ(both["components"][1]["code"], "NA");
  }
  EXPECT_EQ(fit(left, follows, "1", "0")["components"][0]["q2"], fit(left, follows, "0", "0")["components"][0]["q2"]);
}

TEST(O2PLSOfSparseColumns, CutsUniqueComponentsThatTheSearchFoundToThoseOfEveryRound) {
  // The round that leaves the last row out predicts nothing with the X-unique component, so that it gains by far.
  const ScratchFolder folder;
  const CommandResult run =
      RunKalmia({"o2pls", folder.Write("x.csv", kLeftInOneRow), folder.Write("y.csv", kFollowsA), "--id", "id",
                 "--scale", "none", "--groups", "8", "--json", "--validation", "component"});
  ASSERT_EQ(run.exitCode, 0) << run.error;
  const json fit = run.Json();
  EXPECT_EQ(fit["notes"][0],
            "X-unique components are cut from 1 to 0: a round of the cross-validation has nothing left for the next "
            "one");
  EXPECT_EQ(fit["joint"], 1);
  EXPECT_EQ(fit["xUnique"], 0);
  ASSERT_EQ(fit["components"].size(), 1U);
  EXPECT_LT(fit["components"][0]["q2"].get<double>(), 1.0);
}

TEST(FailureOfO2PLS, IsExitCode2WhereTheCommandLineMakesNoSense) {
  const std::pair<std::vector<std::string>, const char*> lines[] = {
      {{"--joint", "1"}, "--joint, --x-unique and --y-unique go together: give all three numbers, or none for --auto"},
      {{"--x-unique", "1", "--y-unique", "0"}, "give all three numbers, or none for --auto; see kalmia o2pls --help"},
      {{"--auto", "--joint", "1"}, "--auto and --joint '1' do not go together"},
      {{"--joint", "0", "--x-unique", "0", "--y-unique", "0"}, "--joint takes a whole number from 1 on, not '0'"},
      {{"--joint", "1", "--x-unique", "-1", "--y-unique", "0"}, "--x-unique takes a whole number from 0 on, not '-1'"},
      {{"--groups", "1"}, "--groups takes a whole number from 2 on"},
      {{"--select", "min"}, "--select"},
      {{"--permutations", "99"}, "--permutations"},
      {{"--validation", "none"}, "--validation none cannot choose the number of components"},
      {{"--folds", "blocks", "--group-column", "g"}, "--group-column"},
      {{"--repeats", "2"}, "--repeats is for --folds random"}};
  for (const auto& [options, message] : lines) {
    std::vector<std::string> arguments = {"o2pls", "x.csv", "y.csv"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    ExpectFailure(RunKalmia(arguments), 2, message);
  }
  ExpectFailure(RunKalmia({"o2pls", "-", "-"}), 2, "only one of X and Y can be -, standard input");
  ExpectFailure(RunKalmia({"o2pls", "x.csv"}), 2, "o2pls needs a Y: CSV table with a header, also as .gz, the Y block");
}

TEST(FailureOfO2PLS, NeverWritesOverOneOfItsTablesNorLeavesHalfOfItsFiles) {
  const ScratchFolder folder;
  const TwoBlocks blocks = SharedBlocks(20, 1);
  const std::string x = folder.Write("x.csv", blocks.x), y = folder.Write("y-fit.csv", blocks.y);
  ExpectFailure(RunKalmia({"o2pls", x, y, "--id", "name", "--csv", folder.Path("")}), 2,
                "--csv would overwrite the Y table " + y);
  ExpectFailure(RunKalmia({"o2pls", x, y, "--id", "name", "--save", x}), 2, "--save would overwrite the X table");
  ExpectFailure(RunKalmia({"o2pls", x, y, "--id", "name", "--save", folder.Path("m"), "--csv", x}), 3,
                "Not a directory");
  EXPECT_EQ(ReadWholeFile(x), blocks.x);
  EXPECT_EQ(ReadWholeFile(y), blocks.y);
  EXPECT_EQ(folder.Names(), (std::vector<std::string>{"x.csv", "y-fit.csv"}));
}

TEST(HelpOfO2PLS, SaysWhichSideTheOrthogonalComponentsOfTheLibraryAreOn) {
  const CommandResult run = RunKalmia({"o2pls", "--help"});
  ASSERT_EQ(run.exitCode, 0);
  std::string text;  // wrapped by the parser
  for (const char c : run.output)
    if (c != '\n' && (c != ' ' || text.empty() || text.back() != ' ')) text += c;
    else if (!text.empty() && text.back() != ' ') text += ' ';
  EXPECT_THAT(text, HasSubstr("calls Y-orthogonal components: they lie in X and are orthogonal to Y"));
  EXPECT_THAT(text, HasSubstr("calls X-orthogonal components: they lie in Y and are orthogonal to X"));
}

TEST(O2PLSOfFewRows, SaysWhatTheLimitsOfTheDistanceRestOn) {
  const TwoBlocks few = SharedBlocks(8, 3);
  const ScratchFolder folder;
  const std::string x = folder.Write("x.csv", few.x), y = folder.Write("y.csv", few.y);
  const std::vector<std::string> line = {"o2pls", x, y, "--id", "name", "--joint", "1", "--x-unique", "0",
                                         "--y-unique", "0"};
  EXPECT_THAT(RunWell(line).error, HasSubstr("note: the limits of the distance rest on 8 rows: they are a guess\n"));
  std::vector<std::string> without = line;
  without.insert(without.end(), {"--validation", "none"});
  const CommandResult run = RunWell(without);
  const std::string widened = "note: no row was left out: the limits of the distance";
  EXPECT_THAT(run.error, HasSubstr(widened));
  EXPECT_EQ(run.error.find(widened), run.error.rfind(widened)) << "true of both blocks, and said once";
}

}  // namespace
