// `kalmia opls`: what it fits, how it stops, what it writes.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using kalmia::app::CsvTable;
using nlohmann::json;
using ::testing::HasSubstr;

CommandResult RunWell(const std::vector<std::string>& arguments, const std::string& input = "") {
  CommandResult result = RunKalmia(arguments, input);
  EXPECT_EQ(result.exitCode, 0) << result.error;
  return result;
}

std::vector<std::string> GasolineOptions(std::vector<std::string> more) {
  more.insert(more.begin(), {"opls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale",
                             "centre"});
  return more;
}

TEST(Opls, KeepsOrthogonalComponentsAsLongAsQ2GainsMoreThanItsLimit) {
  const json fit = RunWell(GasolineOptions({"--json"})).Json();
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

TEST(Opls, DescribesOneCompleteYAsPlsWithAsManyComponentsInAll) {
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

TEST(Opls, SeveralYHaveSeveralPredictiveComponentsAsManyAsAskedFor) {
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

TEST(Opls, AStoredModelPredictsToTheBitWhatTheFitPredicted) {
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

TEST(Opls, WritesWhatPredictsApartFromWhatDoesNot) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d");
  RunWell(GasolineOptions({"--orthogonal", "2", "--csv", csv}));
  EXPECT_EQ(CsvAt(csv + "/scores.csv").ColumnNames(), (std::vector<std::string>{"row", "t1", "to1", "to2"}));
  EXPECT_EQ(CsvAt(csv + "/loadings.csv").ColumnNames(), (std::vector<std::string>{"column", "p1", "po1", "po2"}));
  EXPECT_EQ(CsvAt(csv + "/cross-validated-scores.csv").ColumnNames(),
            (std::vector<std::string>{"row", "t1", "to1", "to2"}));
  for (const char* vip : {"VIP predictive", "VIP orthogonal"}) {
    double squares = 0.0;
    for (const double each : NumbersOf(CsvAt(csv + "/vip.csv"), vip)) squares += each * each;
    EXPECT_NEAR(squares, 401.0, 1e-9) << vip;  // 401 columns, in double
  }
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

TEST(Opls, CoefficientsPredictCompleteRows) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d"), file = folder.Write("t.csv", LinearTable(30, 6, 2));
  RunWell({"opls", file, "--y", "y", "--id", "name", "--orthogonal", "2", "--csv", csv});
  const CsvTable table = CsvAt(file);
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

TEST(Opls, SPlotHasCovarianceAndCorrelationWithThePredictiveScore) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("d"), file = folder.Write("t.csv", LinearTable(30, 4, 2));
  RunWell({"opls", file, "--y", "y", "--id", "name", "--orthogonal", "1", "--csv", csv});
  const std::vector<double> correlation = NumbersOf(CsvAt(csv + "/s-plot.csv"), "correlation t1");
  const std::vector<double> covariance = NumbersOf(CsvAt(csv + "/s-plot.csv"), "covariance t1");
  const std::vector<double> t = NumbersOf(CsvAt(csv + "/scores.csv"), "t1");
  double tt = 0.0;
  for (const double score : t) tt += score * score / 29.0;
  // Columns of unit variance: their covariance with t is the correlation times the deviation of t; both centred but for
  // the rounding of floats.
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(covariance[k], correlation[k] * std::sqrt(tt), 1e-5);
}

TEST(Opls, NamesTheColumnAndTheRoundThatCannotBeComputed) {
  const std::string rows = "a,b,y,g\n1,2,1,u\n2,1,1,u\n3,5,1,u\n4,3,2,v\n5,4,3,v\n";
  CommandResult run = RunKalmia({"opls", "-", "--y", "y", "--group-column", "g"}, rows);
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.error, HasSubstr("round 2: without the rows of its group the Y column 'y' has no variance"));
  run = RunKalmia({"opls", "-", "--y", "y", "--group-column", "g"}, "a,b,y,g\n1,,1,u\n2,,2,u\n3,5,1,v\n4,3,2,v\n");
  EXPECT_EQ(run.exitCode, 1);
  EXPECT_THAT(run.error, HasSubstr("round 2: without the rows of its group the X column 'b' has no value"));
}

TEST(Opls, SaysWhenThereAreFewerOrthogonalComponentsThanAskedFor) {
  const json fit = RunWell({"opls", "-", "--y", "y", "--orthogonal", "2", "--groups", "4", "--json"},
                           "a,b,y\n1,2,1\n2,1,3\n3,5,2\n4,3,5\n5,4,4\n6,7,6\n")
                       .Json();
  EXPECT_EQ(fit["orthogonal"], 1) << "two columns carry one predictive and one orthogonal component";
  EXPECT_NE(fit["endedEarly"], nullptr);
}

TEST(Opls, ShowsAStoredModel) {
  const ScratchFolder folder;
  RunWell(GasolineOptions({"--save", folder.Path("m")}));
  const CommandResult run = RunWell({"info", folder.Path("m")});
  EXPECT_THAT(run.output, HasSubstr("OPLS"));
  EXPECT_THAT(run.output, HasSubstr("orthogonal 1"));
}

}  // namespace
