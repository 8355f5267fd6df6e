// `kalmia opls`: what it fits, how it stops, what it writes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"
#include "Words.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;
using ::testing::HasSubstr;

std::vector<std::string> GasolineOptions(std::vector<std::string> more) {
  more.insert(more.begin(), {"opls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale",
                             "centre"});
  return more;
}

TEST(OPLS, KeepsOrthogonalComponentsAsLongAsQ2GainsMoreThanItsLimit) {
  const json fit = RunWell(GasolineOptions({"--validation", "component", "--json"})).Json();
  ASSERT_EQ(fit["components"].size(), 3);
  EXPECT_EQ(fit["predictive"], 1);
  EXPECT_EQ(fit["orthogonal"], 1);
  double before = 0.0;
  for (std::size_t a = 0; a < 3; ++a) {
    const json& component = fit["components"][a];
    EXPECT_EQ(component["kind"], a == 0 ? "predictive" : "orthogonal");
    EXPECT_EQ(component["kept"], a < 2);
    EXPECT_EQ(component["significant"], component["q2"] > component["q2Limit"]);
    EXPECT_EQ(component["q2Limit"], 0.05);
    // Both are floats, printed with as few digits as name them.
    EXPECT_NEAR(component["q2"].get<double>(), component["q2Cum"].get<double>() - before, 2e-7);
    before = component["q2Cum"];
  }
}

TEST(OPLS, DescribesOneCompleteYAsPLSWithAsManyComponentsInAll) {
  const json opls = RunWell(GasolineOptions({"--json", "--orthogonal", "3"})).Json();
  const json pls = RunWell({"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale", "centre",
                            "--components", "4", "--json"})
                       .Json();
  double r2x = 0.0, r2y = 0.0;
  for (const json& component : opls["components"]) {
    r2x += component["r2x"].get<double>();
    r2y += component["r2y"].get<double>();
    // Rounding of scores to float, squared.
    if (component["kind"] == "orthogonal") {
      EXPECT_LT(std::abs(component["r2y"].get<double>()), 1e-7);
    }
  }
  // Scores and loadings are floats; what they describe differs by some ten of their roundings.
  EXPECT_NEAR(r2x, pls["components"][3]["r2xCum"].get<double>(), 1e-5);
  EXPECT_NEAR(r2y, pls["components"][3]["r2yCum"].get<double>(), 1e-5);
  EXPECT_NEAR(opls["quality"][0]["rmsee"].get<double>(), pls["quality"][0]["rmsee"].get<double>(), 1e-4);
}

TEST(OPLS, SeveralYHaveSeveralPredictiveComponentsAsManyAsAskedFor) {
  const std::vector<std::string> options = {"opls", ExampleTable("oliveoil.csv"), "--y", "yellow,green,brown", "--id",
                                            "sample", "--x", "Acidity..DK", "--json"};
  const auto with = [&options](const std::vector<std::string>& more) {
    std::vector<std::string> all = options;
    all.insert(all.end(), more.begin(), more.end());
    return all;
  };
  EXPECT_EQ(RunWell(with({"--predictive", "1", "--orthogonal", "2"})).Json()["components"].size(), 3);
  EXPECT_EQ(RunWell(with({"--predictive", "2", "--orthogonal", "0"})).Json()["predictive"], 2);
  const json cut = RunWell(with({"--predictive", "9", "--orthogonal", "0"})).Json();
  EXPECT_EQ(cut["predictive"], 3);
  EXPECT_THAT(cut["notes"][0], HasSubstr("9 predictive components are cut to 3"));
}

TEST(OPLS, SeveralYHaveThePredictiveComponentsOfNoteAllWithTheQ2OfTheirBlock) {
  const json fit = RunWell({"opls", ExampleTable("oliveoil.csv"), "--y", "yellow,green,brown,glossy,transp,syrup",
                            "--id", "sample", "--x", "Acidity..DK", "--predictive", "auto", "--validation", "component",
                            "--json"})
                       .Json();
  ASSERT_EQ(fit["predictive"], 3) << "the others of Y'X have less than 1 % of the first one's sum of squares";
  const json& first = fit["components"][0];
  for (std::size_t a = 0; a < 3; ++a) {
    const json& component = fit["components"][a];
    EXPECT_EQ(component["kind"], "predictive");
    for (const char* field : {"q2", "q2Cum", "q2Limit", "significant", "kept"})
      EXPECT_EQ(component[field], first[field]) << field;
  }
  EXPECT_EQ(first["q2"], first["q2Cum"]) << "nothing comes before the block";
  EXPECT_EQ(fit["components"].size(), 4);
  EXPECT_EQ(fit["orthogonal"], 0);
}

TEST(OPLS, HasALimitOfQ2UpTo100RowsAndNoneBeyond) {
  for (const auto& [rows, limit] : {std::make_pair(100, 0.05), std::make_pair(101, 0.0)}) {
    const json fit =
        RunWell({"opls", "-", "--y", "y", "--id", "name", "--orthogonal", "1", "--validation", "component", "--json"}, LinearTable(rows, 6, 2))
            .Json();
    for (const json& component : fit["components"]) EXPECT_EQ(component["q2Limit"], limit) << rows;
  }
}

TEST(OPLS, KeepsSmallGainsOfQ2Beyond100RowsOnly) {
  const auto gains = [](int rows) {
    return RunWell({"opls", "-", "--y", "y", "--scale", "centre", "--validation", "component", "--json"}, FadingTable(rows, 20, 1))
        .Json()["components"];
  };
  const json few = gains(100), many = gains(101);
  EXPECT_EQ(few.back()["kept"], false);
  EXPECT_GT(few.back()["q2"], 0.0);
  EXPECT_LT(few.back()["q2"], 0.05);
  EXPECT_TRUE(std::any_of(many.begin() + 1, many.end(), [](const json& component) {
    return component["kept"] == true && component["q2"] < 0.05;
  }));
}

TEST(OPLS, AStoredModelPredictsToTheBitWhatTheFitPredicted) {
  const ScratchFolder folder;
  for (const std::string& table : {LinearTable(30, 6, 2), WithHoles(LinearTable(30, 6, 2), 7)}) {
    const std::string file = folder.Write("t.csv", table), model = folder.Path("m"), csv = folder.Path("d");
    RunWell({"opls", file, "--y", "y", "--id", "name", "--orthogonal", "2", "--save", model, "--csv", csv});
    RunWell({"predict", model, file, "--csv", csv});
    EXPECT_EQ(NumbersOf(CsvAt(csv + "/predictions.csv"), "predicted y"), NumbersOf(CsvAt(csv + "/fit.csv"),
                                                                                   "predicted y"));
    EXPECT_EQ(NumbersOf(CsvAt(csv + "/predictions.csv"), "distance"), NumbersOf(CsvAt(csv + "/rows.csv"), "distance"));
  }
}

TEST(OPLS, WritesWhatPredictsApartFromWhatDoesNot) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d");
  RunWell(GasolineOptions({"--validation", "component", "--orthogonal", "2", "--csv", csv}));
  EXPECT_EQ(CsvAt(csv + "/scores.csv").ColumnNames(), (std::vector<std::string>{"row", "t1", "to1", "to2"}));
  EXPECT_EQ(CsvAt(csv + "/loadings.csv").ColumnNames(), (std::vector<std::string>{"column", "p1", "po1", "po2"}));
  EXPECT_EQ(CsvAt(csv + "/cross-validated-scores.csv").ColumnNames(),
            (std::vector<std::string>{"row", "t1", "to1", "to2"}));
  const std::vector<double> t = NumbersOf(CsvAt(csv + "/scores.csv"), "t1");
  const std::vector<double> left = NumbersOf(CsvAt(csv + "/cross-validated-scores.csv"), "t1");
  ASSERT_EQ(t.size(), left.size());
  double tt = 0.0, tl = 0.0, ll = 0.0;
  for (std::size_t i = 0; i < t.size(); ++i) {
    tt += t[i] * t[i];
    tl += t[i] * left[i];
    ll += left[i] * left[i];
  }
  EXPECT_GT(tl / std::sqrt(tt * ll), 0.9) << "rows that were left out get nearly their own scores";
}

TEST(OPLS, CoefficientsPredictCompleteRows) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d"), file = folder.Write("t.csv", LinearTable(30, 6, 2));
  RunWell({"opls", file, "--y", "y", "--id", "name", "--orthogonal", "2", "--csv", csv});
  const Table table = CsvAt(file);
  const std::vector<double> coefficients = NumbersOf(CsvAt(csv + "/coefficients.csv"), "y");
  const std::vector<double> fitted = NumbersOf(CsvAt(csv + "/fit.csv"), "predicted y");
  for (std::size_t i = 0; i < fitted.size(); ++i) {
    double y = coefficients[0];
    for (std::size_t k = 1; k < coefficients.size(); ++k)
      y += coefficients[k] * NumbersOf(table, "x" + std::to_string(k))[i];
    // The prediction goes through floats of a few times the spread of y, which is some units.
    EXPECT_NEAR(y, fitted[i], 1e-4) << i;
  }
}

TEST(OPLS, IsJudgedByRefitsUnlessToldOtherwise) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d");
  const json fit = RunWell(GasolineOptions({"--json", "--csv", csv})).Json();
  EXPECT_EQ(fit["formatVersion"], 2);
  const json& validation = fit["validation"];
  EXPECT_EQ(validation["method"], "refit");
  EXPECT_EQ(validation["chosen"], 4);  // as many as PLS of one Y has
  EXPECT_EQ(fit["predictive"], 1);
  EXPECT_EQ(fit["orthogonal"], 3);
  ASSERT_EQ(validation["components"].size(), 16U);
  const json& first = validation["components"][0];
  const json& chosen = validation["components"][4];
  EXPECT_EQ(first["components"], 0);
  EXPECT_EQ(first["predictive"], 0);
  EXPECT_EQ(chosen["components"], 4);
  EXPECT_EQ(chosen["predictive"], 1);
  EXPECT_EQ(chosen["orthogonal"], 3);
  EXPECT_NEAR(chosen["rmsecv"]["octane"], 0.2450, 1e-4);  // of PLS with 4 components, see PLSValidationTest
  EXPECT_EQ(fit["quality"][0]["rmsecv"], chosen["rmsecv"]["octane"]);
  EXPECT_EQ(fit["cvAnova"]["df1"], 8);
  EXPECT_EQ(fit["crossValidated"]["octane"].size(), 60U);
  for (const json& component : fit["components"]) EXPECT_FALSE(component.contains("q2Limit"));
  EXPECT_EQ(NumbersOf(CsvAt(csv + "/fit.csv"), "cv octane")[7], fit["crossValidated"]["octane"][7]);
  EXPECT_EQ(NumbersOf(CsvAt(csv + "/coefficients.csv"), "standard error").size(), 402U);
  EXPECT_FALSE(std::filesystem::exists(csv + "/cross-validated-scores.csv"));
  const std::string text = RunWell(GasolineOptions({})).output;
  EXPECT_THAT(text, HasSubstr("1 + 3"));
  EXPECT_THAT(text, HasSubstr("1 predictive and 3 orthogonal components kept, cross-validated by refits in 7 groups"));
}

TEST(OPLS, FindsTheGoodComponentsOfYarn) {
  const ScratchFolder folder;
  const std::string model = folder.Path("m");
  for (const char* scaling : {"uv", "centre"}) {
    RunWell({"opls", ExampleTable("yarn_train.csv"), "--y", "density", "--id", "row", "--scale", scaling, "--save",
             model});
    const json predicted = RunWell({"predict", model, ExampleTable("yarn_test.csv"), "--json"}).Json();
    EXPECT_LT(predicted["errors"][0]["rmsep"].get<double>(), 0.5) << scaling;
  }
}

TEST(OPLS, ModelsTheMeanWhereNoComponentPredictsAnything) {
  const CommandResult run = RunWell({"opls", "-", "--y", "y1"}, UnrelatedTable(40, 20, 1, 3));
  EXPECT_THAT(run.output, HasSubstr("No component is kept, cross-validated by refits in 7 groups (interleaved): the "
                                    "model is the mean of y1."));
}

TEST(OPLS, StoresACrossValidationByComponentAlone) {
  const ScratchFolder folder;
  const std::string cv = folder.Path("cv");
  EXPECT_EQ(RunWell(GasolineOptions({"--save-cv", cv, "--json"})).Json()["validation"]["method"], "component");
  for (const char* option : {"--save-cv", "--resume"}) {
    ExpectFailure(RunKalmia(GasolineOptions({option, cv, "--validation", "refit"})), 2,
                  "--save-cv and --resume are of a cross-validation by component, not of --validation refit");
  }
  ExpectFailure(RunKalmia(GasolineOptions({"--save-cv", cv, "--select", "min"})), 2, "--select min");
}

TEST(OPLS, NamesTheColumnAndTheRoundThatCannotBeComputed) {
  const std::pair<const char*, const char*> tables[] = {
      {"a,b,y,z,g\n1,2,1,2,u\n2,1,1,1,u\n3,5,1,3,u\n4,3,2,5,v\n5,4,3,2,v\n",
       "round 2: without the rows of its group the Y column 'y' has no variance"},
      {"a,b,y,z,g\n1,2,1,2,u\n2,1,2,1,u\n3,5,,3,v\n4,3,,5,v\n5,4,,2,v\n",
       "round 1: without the rows of its group the Y column 'y' has no value"},
      {"a,b,z,y,g\n1,2,1,2,u\n2,1,2,1,u\n3,5,3,,v\n4,3,5,,v\n5,4,2,,v\n",
       "round 1: without the rows of its group the Y column 'y' has no value"},
      {"a,b,y,z,g\n1,2,1,2,u\n2,1,2,1,u\n3,5,,,v\n4,3,,,v\n5,4,,,v\n",
       "round 1: without the rows of its group the Y column 'y' has no value"},
      {"a,b,y,z,g\n1,,1,2,u\n2,,2,1,u\n3,5,1,1,v\n4,3,2,3,v\n",
       "round 2: without the rows of its group the X column 'b' has no value"}};
  for (const auto& [table, message] : tables) {
    const ScratchFolder folder;
    ExpectFailure(RunKalmia({"opls", "-", "--y", "y,z", "--group-column", "g", "--save", folder.Path("m"), "--save-cv",
                             folder.Path("v")},
                            table),
                  1, message);
    EXPECT_EQ(folder.Names(), std::vector<std::string>()) << message;
  }
}

TEST(OPLS, SaysWhenThereAreFewerOrthogonalComponentsThanAskedFor) {
  const json fit = RunWell({"opls", "-", "--y", "y", "--orthogonal", "2", "--groups", "4", "--json"},
                           "a,b,y\n1,2,1\n2,1,3\n3,5,2\n4,3,5\n5,4,4\n6,7,6\n")
                       .Json();
  EXPECT_EQ(fit["orthogonal"], 1) << "two columns carry one predictive and one orthogonal component";
  EXPECT_NE(fit["endedEarly"], nullptr);
}

TEST(OPLS, ShowsAStoredModel) {
  const ScratchFolder folder;
  RunWell(GasolineOptions({"--save", folder.Path("m")}));
  const CommandResult run = RunWell({"info", folder.Path("m")});
  EXPECT_THAT(run.output, HasSubstr("OPLS"));
  EXPECT_THAT(run.output, HasSubstr("orthogonal 1"));
}

TEST(OPLS, ShowsAGivenModelThatTheRoundsCannotHave) {
  const ScratchFolder folder;
  const Words line = {"opls", folder.Write("t.csv", LinearTable(5, 8, 4)), "--id", "name", "--y", "y", "--orthogonal",
                      "3"};
  const json fit = RunWell(line + Words{"--json", "--csv", folder.Path("d")}).Json();
  const json& rows = fit["validation"]["components"];
  ASSERT_EQ(rows.size(), 5U) << "four rows of a round carry 1 + 2 components";
  EXPECT_EQ(fit["validation"]["chosen"], 4);
  EXPECT_EQ(rows[4]["predictive"], 1);
  EXPECT_EQ(rows[4]["orthogonal"], 3);
  EXPECT_EQ(rows[4]["press"], nullptr);
  EXPECT_GT(rows[4]["r2x"], rows[3]["r2x"]);
  EXPECT_NEAR(rows[4]["r2x"], 1.0, 1e-5) << "4 components describe 5 rows, but for roundings of single cells";
  const Table csv = CsvAt(folder.Path("d/components.csv"));
  EXPECT_EQ(NumbersOf(csv, "orthogonal")[8], 3.0);
  EXPECT_TRUE(std::isnan(NumbersOf(csv, "Q2")[8]));
  EXPECT_THAT(RunWell(line).output, HasSubstr("1 predictive and 3 orthogonal components kept, not judged: "
                                              "cross-validated by refits in 5 groups (interleaved) up to 1 + 2 "
                                              "components.\n"));
}

}  // namespace
