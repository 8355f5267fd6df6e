// What `--svg DIR` and `--json --figures` show of models: the numbers of their CSV files, and good pictures of any
// table.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <limits>
#include <map>

#include "CommandRun.h"
#include "SvgTexts.h"
#include "TestTables.h"

namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Numbers = std::vector<double>;

/// Numbers of a list, null as NaN.
Numbers Read(const json& list) {
  Numbers numbers;
  for (const json& number : list) {
    numbers.push_back(number.is_null() ? std::numeric_limits<double>::quiet_NaN() : number.get<double>());
  }
  return numbers;
}

/// The figures of a run with --json --figures by their names.
std::map<std::string, json> FiguresByName(const json& output) {
  std::map<std::string, json> figures;
  for (const json& figure : output["figures"]["figures"]) figures[figure["name"]] = figure;
  return figures;
}

/// The mark of a type, and of a name where it is given.
json MarkIn(const json& panel, const std::string& type, const std::string& name = "") {
  for (const json& mark : panel["marks"]) {
    if (mark["type"] == type && (name.empty() || mark.value("name", "") == name)) return mark;
  }
  ADD_FAILURE() << "no mark " << type << " " << name;
  return {{"x", json::array()}, {"y", json::array()}};
}

std::vector<std::string> NamesOfRules(const json& panel) {
  std::vector<std::string> names;
  for (const json& mark : panel["marks"]) {
    if (mark["type"] == "rule" && mark.contains("name")) names.push_back(mark["name"]);
  }
  return names;
}

/// A column of a file of --csv.
Numbers CsvColumn(const std::string& folder, const std::string& file, const std::string& column) {
  return NumbersOf(CsvAt(folder + "/" + file), column);
}

class FiguresOfGasoline : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    folder_ = new ScratchFolder;
    const CommandResult run =
        RunWell({"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale", "centre",
                 "--components", "2", "--permutations", "19", "--contributions", "15", "--json", "--figures", "--csv",
                 folder_->Path("csv"), "--svg", folder_->Path("svg")});
    output_ = new json(run.Json());
    figures_ = new std::map<std::string, json>(FiguresByName(*output_));
  }
  static void TearDownTestSuite() {
    delete folder_;
    delete output_;
    delete figures_;
  }
  static Numbers Csv(const std::string& file, const std::string& column) {
    return CsvColumn(folder_->Path("csv"), file, column);
  }

  static ScratchFolder* folder_;
  static json* output_;
  static std::map<std::string, json>* figures_;
};
ScratchFolder* FiguresOfGasoline::folder_ = nullptr;
json* FiguresOfGasoline::output_ = nullptr;
std::map<std::string, json>* FiguresOfGasoline::figures_ = nullptr;

TEST_F(FiguresOfGasoline, AreDrawnAsAFileEach) {
  std::vector<std::string> names;
  for (const json& path : (*output_)["svgFiles"]) {
    names.push_back(std::filesystem::path(path.get<std::string>()).stem().string());
    EXPECT_THAT(FaultsOf(ReadWholeFile(path)), IsEmpty()) << path;
    const json figure = figures_->at(names.back());
    EXPECT_THAT(ReadWholeFile(path), HasSubstr("<desc>" + figure["alt"].get<std::string>() + "</desc>"));
  }
  EXPECT_THAT(names, ElementsAre("scores", "loadings", "distance", "components", "validation", "fit", "coefficients",
                                 "vip", "permutation", "contributions-1"));
  EXPECT_EQ((*figures_)["scores"]["title"], "Scores: PLS of octane on gasoline.csv");
}

TEST_F(FiguresOfGasoline, OfScoresAndLoadingsHaveTheNumbersOfTheCsvFiles) {
  const json scores = MarkIn((*figures_)["scores"], "points");
  EXPECT_EQ(Read(scores["x"]), Csv("scores.csv", "t1"));
  EXPECT_EQ(Read(scores["y"]), Csv("scores.csv", "t2"));
  EXPECT_EQ(scores["names"], "rows");
  EXPECT_EQ((*output_)["figures"]["names"]["rows"].size(), 60U);
  const json& loadings = (*figures_)["loadings"];
  EXPECT_EQ(Read(MarkIn(loadings, "line", "p1")["y"]), Csv("loadings.csv", "p1"));
  EXPECT_EQ(Read(MarkIn(loadings, "line", "p2")["y"]), Csv("loadings.csv", "p2"));
  EXPECT_EQ(MarkIn(loadings, "line", "p1")["x"][1], 902);
  EXPECT_EQ(loadings["x"]["label"], "nm");
  EXPECT_EQ(loadings["x"]["low"], 900);
}

TEST_F(FiguresOfGasoline, HaveAnEllipseWhosePointsAreAtTheLimitOfTwoComponents) {
  const json ellipse = MarkIn((*figures_)["scores"], "line", "T2, 95 %");
  const Numbers x = Read(ellipse["x"]), y = Read(ellipse["y"]);
  ASSERT_GT(x.size(), 60U);
  EXPECT_EQ(x.front(), x.back());
  const double limit = (*output_)["limits"]["training"]["t2"]["0.95"];
  const auto moments = [](const Numbers& t) {
    double mean = 0.0, squares = 0.0;
    for (const double number : t) mean += number / static_cast<double>(t.size());
    for (const double number : t) squares += (number - mean) * (number - mean);
    return std::make_pair(mean, squares / static_cast<double>(t.size() - 1));
  };
  const auto [mean1, variance1] = moments(Csv("scores.csv", "t1"));
  const auto [mean2, variance2] = moments(Csv("scores.csv", "t2"));
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double t2 = std::pow(x[i] - mean1, 2) / variance1 + std::pow(y[i] - mean2, 2) / variance2;
    // Scores in the file are floats in their shortest digits, each within 6e-8 of its size: so are the variances.
    EXPECT_NEAR(t2, limit, 2e-7 * limit) << i;
  }
}

TEST_F(FiguresOfGasoline, OfRowsHaveTheirStatisticsAndTheLimitsOfTrainingRows) {
  const json& distance = (*figures_)["distance"];
  EXPECT_EQ(Read(MarkIn(distance, "points")["x"]), Csv("rows.csv", "T2"));
  EXPECT_EQ(Read(MarkIn(distance, "points")["y"]), Csv("rows.csv", "distance"));
  const json& limits = (*output_)["limits"]["training"];
  Numbers upright, level;
  for (const json& mark : distance["marks"]) {
    if (mark["type"] != "rule") continue;
    for (const double x : Read(mark["x"])) upright.push_back(x);
    for (const double y : Read(mark["y"])) level.push_back(y);
  }
  EXPECT_EQ(upright, Numbers({limits["t2"]["0.95"], limits["t2"]["0.99"]}));
  EXPECT_EQ(level, Numbers({limits["distance"]["0.95"], limits["distance"]["0.99"]}));
}

TEST_F(FiguresOfGasoline, OfCoefficientsAndImportancesHaveTheirIntervals) {
  Numbers slopes = Csv("coefficients.csv", "octane"), lower = Csv("coefficients.csv", "lower");
  slopes.erase(slopes.begin());  // the intercept
  lower.erase(lower.begin());
  const json& coefficients = (*figures_)["coefficients"];
  EXPECT_EQ(Read(MarkIn(coefficients, "line")["y"]), slopes);
  EXPECT_EQ(Read(MarkIn(coefficients, "area", "95 % interval")["low"]), lower);
  const json& vip = (*figures_)["vip"];
  EXPECT_EQ(Read(MarkIn(vip, "line")["y"]), Csv("vip.csv", "VIP"));
  EXPECT_EQ(Read(MarkIn(vip, "area")["high"]), Csv("vip.csv", "upper"));
  EXPECT_THAT(NamesOfRules(vip), ElementsAre("1"));
}

TEST_F(FiguresOfGasoline, OfTheFitHaveMeasuredFittedAndLeftOutValues) {
  const json& fit = (*figures_)["fit"];
  EXPECT_EQ(Read(MarkIn(fit, "points", "fitted")["x"]), Csv("fit.csv", "measured octane"));
  EXPECT_EQ(Read(MarkIn(fit, "points", "fitted")["y"]), Csv("fit.csv", "predicted octane"));
  EXPECT_EQ(Read(MarkIn(fit, "points", "cross-validated")["y"]), Csv("fit.csv", "cv octane"));
  EXPECT_EQ(fit["x"]["low"], fit["y"]["low"]);
}

TEST_F(FiguresOfGasoline, ByNumberOfComponentsHaveTheSharesAndErrorsOfTheValidation) {
  const json& list = (*output_)["validation"]["components"];
  const Numbers r2y = Read(MarkIn((*figures_)["components"], "bars", "R2Y")["y"]);
  const Numbers q2 = Read(MarkIn((*figures_)["components"], "bars", "Q2")["y"]);
  const Numbers errors = Read(MarkIn((*figures_)["validation"], "line")["y"]);
  ASSERT_EQ(list.size(), q2.size());
  ASSERT_EQ(list.size(), errors.size());
  for (std::size_t a = 0; a < q2.size(); ++a) {
    EXPECT_EQ(r2y[a], list[a]["r2y"]);
    EXPECT_EQ(q2[a], list[a]["q2"]);
    // From PRESS, which has been divided by the variance: three roundings.
    const double rmsecv = list[a]["rmsecv"]["octane"];
    EXPECT_NEAR(errors[a], rmsecv, 1e-14 * rmsecv);
  }
  EXPECT_THAT(NamesOfRules((*figures_)["validation"]), ElementsAre("given"));
}

TEST_F(FiguresOfGasoline, OfPermutationsHaveTheRunsAndOfARowItsContributions) {
  const json& permutation = (*figures_)["permutation"];
  const json& runs = (*output_)["permutation"]["runs"];
  const Numbers q2 = Read(MarkIn(permutation, "points", "Q2")["y"]);
  ASSERT_EQ(q2.size(), 19U);
  for (std::size_t i = 0; i < q2.size(); ++i) EXPECT_EQ(q2[i], runs[i]["q2"]);
  const json& contributions = (*figures_)["contributions-1"];
  EXPECT_EQ(MarkIn(contributions, "line")["y"], (*output_)["contributions"][0]["t2"]);
  EXPECT_EQ(MarkIn(contributions["below"][0], "line")["y"], (*output_)["contributions"][0]["residual"]);
}

TEST(FiguresOfModels, OfClassesShowTheirRowsAndHowManyAreFound) {
  const ScratchFolder folder;
  const json output = RunWell({"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--id", "sample",
                               "--components", "3", "--json", "--figures"})
                          .Json();
  std::map<std::string, json> figures = FiguresByName(output);
  const json scores = MarkIn(figures["scores"], "points");
  EXPECT_EQ(scores["look"], "class");
  EXPECT_EQ(figures["scores"]["classes"], json({"1", "2", "3"}));
  EXPECT_EQ(scores["class"].size(), 178U);
  EXPECT_EQ(scores["class"][0], 0);
  EXPECT_EQ(scores["class"][177], 2);
  const json& found = output["classes"];
  const json cells = MarkIn(figures["confusion"], "area"), counts = MarkIn(figures["confusion"], "text");
  for (std::size_t i = 0; i < cells["x"].size(); ++i) {
    const int assigned = cells["x"][i], row = 2 - cells["y"][i].get<int>();
    EXPECT_EQ(counts["names"][i], std::to_string(found["confusionCv"][row][assigned].get<int>()));
  }
  // The area under a curve is the sum of its trapeziums, whatever the order of equal scores.
  for (std::size_t k = 0; k < 3; ++k) {
    json curve;
    for (const json& mark : figures["roc"]["marks"]) {
      if (mark.value("class", json::array()) == json({k})) curve = mark;
    }
    const Numbers x = Read(curve["x"]), y = Read(curve["y"]);
    double area = 0.0;
    for (std::size_t i = 1; i < x.size(); ++i) area += (x[i] - x[i - 1]) * (y[i] + y[i - 1]) / 2;
    EXPECT_NEAR(area, found["auc"][std::to_string(k + 1)].get<double>(), 1e-12);  // some hundred additions
  }
}

TEST(FiguresOfModels, OfOplsHaveThePredictiveComponentAcrossAndTheOrthogonalOneUp) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("csv");
  const json output = RunWell({"opls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale",
                               "centre", "--orthogonal", "2", "--predictive", "1", "--json", "--figures", "--csv", csv})
                          .Json();
  std::map<std::string, json> figures = FiguresByName(output);
  EXPECT_EQ(Read(MarkIn(figures["scores"], "points")["x"]), CsvColumn(csv, "scores.csv", "t1"));
  EXPECT_EQ(Read(MarkIn(figures["scores"], "points")["y"]), CsvColumn(csv, "scores.csv", "to1"));
  EXPECT_EQ(Read(MarkIn(figures["loadings"], "line", "po1")["y"]), CsvColumn(csv, "loadings.csv", "po1"));
  const json plot = MarkIn(figures["s-plot"], "points");
  EXPECT_EQ(Read(plot["x"]), CsvColumn(csv, "s-plot.csv", "covariance t1"));
  EXPECT_EQ(Read(plot["y"]), CsvColumn(csv, "s-plot.csv", "correlation t1"));
  EXPECT_EQ(Read(MarkIn(figures["vip"], "line")["y"]), CsvColumn(csv, "vip.csv", "VIP predictive"));
  EXPECT_EQ(Read(MarkIn(figures["vip"]["below"][0], "line")["y"]), CsvColumn(csv, "vip.csv", "VIP orthogonal"));
  EXPECT_EQ(figures["components"]["x"]["categories"], json({"0", "1 + 0", "1 + 1", "1 + 2"}));
  EXPECT_FALSE(figures.count("cross-validated-scores") > 0);
  const json byComponent = RunWell({"opls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample",
                                    "--validation", "component", "--orthogonal", "1", "--json", "--figures", "--csv",
                                    csv})
                               .Json();
  const json leftOut = MarkIn(FiguresByName(byComponent)["cross-validated-scores"], "points", "cross-validated");
  EXPECT_EQ(Read(leftOut["x"]), CsvColumn(csv, "cross-validated-scores.csv", "t1"));
  EXPECT_EQ(Read(leftOut["y"]), CsvColumn(csv, "cross-validated-scores.csv", "to1"));
}

TEST(FiguresOfModels, OfO2plsHaveBothBlocksAndTheirSharesOnTopOfEachOther) {
  const ScratchFolder folder;
  const std::string oils = ExampleTable("oliveoil.csv"), csv = folder.Path("csv");
  const json output = RunWell({"o2pls", oils, oils, "--id", "sample", "--x", "Acidity..DK", "--y", "yellow..syrup",
                               "--joint", "2", "--x-unique", "1", "--y-unique", "1", "--json", "--figures", "--csv",
                               csv})
                          .Json();
  std::map<std::string, json> figures = FiguresByName(output);
  EXPECT_EQ(Read(MarkIn(figures["joint-scores"], "points")["y"]), CsvColumn(csv, "y-scores.csv", "u1"));
  EXPECT_EQ(Read(MarkIn(figures["x-scores"], "points")["y"]), CsvColumn(csv, "x-scores.csv", "t2"));
  EXPECT_EQ(Read(MarkIn(figures["y-scores"], "points")["x"]), CsvColumn(csv, "y-scores.csv", "u1"));
  EXPECT_EQ(Read(MarkIn(figures["x-unique-scores"], "points")["y"]), CsvColumn(csv, "x-scores.csv", "to1"));
  EXPECT_EQ(Read(MarkIn(figures["y-unique-scores"], "points")["y"]), CsvColumn(csv, "y-scores.csv", "uo1"));
  EXPECT_EQ(Read(MarkIn(figures["x-loadings"], "points")["x"]), CsvColumn(csv, "x-loadings.csv", "p1"));
  EXPECT_EQ(Read(MarkIn(figures["y-loadings"], "points")["y"]), CsvColumn(csv, "y-loadings.csv", "q2"));
  EXPECT_EQ(output["figures"]["names"]["y-columns"], json({"yellow", "green", "brown", "glossy", "transp", "syrup"}));
  const Numbers joint = CsvColumn(csv, "shares.csv", "joint"), unique = CsvColumn(csv, "shares.csv", "unique");
  const json ofUnique = MarkIn(figures["shares"], "bars", "unique"), rest = MarkIn(figures["shares"], "bars", "rest");
  EXPECT_EQ(Read(MarkIn(figures["shares"], "bars", "joint")["y"]), joint);
  for (std::size_t b = 0; b < 2; ++b) {
    EXPECT_EQ(Read(ofUnique["base"])[b], joint[b]);
    EXPECT_EQ(Read(ofUnique["y"])[b], joint[b] + unique[b]);
    EXPECT_NEAR(Read(rest["y"])[b], 1.0, 1e-15);  // a difference and a sum
  }
  EXPECT_EQ(figures["fit"]["below"].size(), 5U);
}

TEST(FiguresOfModels, OfNewRowsLieOnTheTrainingRowsWithTheirOwnLimits) {
  const ScratchFolder folder;
  const std::string model = folder.Path("model"), csv = folder.Path("csv"), bare = folder.Path("bare");
  for (const std::string& place : {model, bare}) {
    std::vector<std::string> words = {"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--id", "sample", "--scale",
                                      "centre", "--components", "2", "--save", place};
    if (place == bare) words.push_back("--no-rows");
    RunWell(words);
  }
  const json output = RunWell({"predict", model, ExampleTable("gasoline.csv"), "--json", "--figures", "--csv", csv,
                               "--contributions", "3", "--svg", folder.Path("svg")})
                          .Json();
  std::map<std::string, json> figures = FiguresByName(output);
  const json fresh = MarkIn(figures["scores"], "points", "new rows");
  EXPECT_EQ(Read(fresh["x"]), CsvColumn(csv, "predictions.csv", "t1"));
  EXPECT_EQ(fresh["names"], "new-rows");
  const json training = MarkIn(figures["scores"], "points", "training rows");
  EXPECT_EQ(training["look"], "faint");
  ASSERT_EQ(training["x"].size(), 60U);
  // The new rows are the training rows: their scores are the same up to the rounding of single precision.
  for (std::size_t i = 0; i < 60; ++i) EXPECT_NEAR(Read(fresh["x"])[i], Read(training["x"])[i], 1e-6);
  const json ellipse = MarkIn(figures["scores"], "line", "T2, 95 %");
  double farthest = 0.0, variance = 0.0;  // the mean of the scores is 0 but for rounding
  for (const double x : Read(ellipse["x"])) farthest = std::max(farthest, x);
  for (const double x : Read(training["x"])) variance += x * x / 59;
  const double limit = output["limits"]["new"]["t2"]["0.95"];
  EXPECT_NEAR(farthest * farthest / variance, limit, 1e-5 * limit);
  EXPECT_EQ(Read(MarkIn(figures["distance"], "points")["x"]), CsvColumn(csv, "predictions.csv", "T2"));
  const json predictions = MarkIn(figures["predictions"], "points");
  EXPECT_EQ(Read(predictions["y"]), CsvColumn(csv, "predictions.csv", "predicted octane"));
  EXPECT_EQ(Read(predictions["low"]), CsvColumn(csv, "predictions.csv", "lower octane"));
  EXPECT_EQ(Read(predictions["x"]), CsvColumn(csv, "predictions.csv", "measured octane"));
  EXPECT_EQ(figures.count("contributions-1"), 1U);
  for (const json& path : output["svgFiles"]) EXPECT_THAT(FaultsOf(ReadWholeFile(path)), IsEmpty()) << path;
  const json alone = RunWell({"predict", bare, ExampleTable("gasoline.csv"), "--json", "--figures"}).Json();
  const json scores = FiguresByName(alone)["scores"];
  EXPECT_THAT(scores["notes"], ElementsAre("the model has no training rows with it: only new rows are shown"));
}

TEST(FiguresOfModels, ShowTheComponentsThatAxesName) {
  const ScratchFolder folder;
  const std::string csv = folder.Path("csv");
  const json output = RunWell({"pca", ExampleTable("wine.csv"), "--id", "sample", "--exclude", "cultivar",
                               "--components", "3", "--axes", "3,2", "--title", "Wines", "--json", "--figures", "--csv",
                               csv})
                          .Json();
  std::map<std::string, json> figures = FiguresByName(output);
  EXPECT_EQ(Read(MarkIn(figures["scores"], "points")["x"]), CsvColumn(csv, "scores.csv", "t3"));
  EXPECT_EQ(Read(MarkIn(figures["loadings"], "points")["y"]), CsvColumn(csv, "loadings.csv", "p2"));
  EXPECT_EQ(figures["scores"]["title"], "Scores: Wines");
  EXPECT_FALSE(output.contains("svgFiles"));
}

TEST(FiguresOfModels, OfOneComponentGoByTheRowsNumberAndOfNoneShowWhatIsLeft) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(30, 6, 1)), csv = folder.Path("csv");
  std::map<std::string, json> one = FiguresByName(
      RunWell({"pls", table, "--y", "y", "--id", "name", "--components", "1", "--json", "--figures", "--csv", csv})
          .Json());
  const json points = MarkIn(one["scores"], "points");
  EXPECT_EQ(points["x"][29], 30);
  EXPECT_EQ(Read(points["y"]), CsvColumn(csv, "scores.csv", "t1"));
  EXPECT_THAT(NamesOfRules(one["scores"]), ElementsAre("T2, 95 %", "T2, 95 %"));
  const json none =
      RunWell({"pls", table, "--y", "y", "--id", "name", "--components", "0", "--json", "--figures"}).Json();
  std::vector<std::string> names;
  for (const json& figure : none["figures"]["figures"]) names.push_back(figure["name"]);
  EXPECT_THAT(names, ElementsAre("distance", "fit"));
}

TEST(FiguresOfModels, AreDrawnWellOfAnyTable) {
  const ScratchFolder folder;
  std::string classes = "c,a,b\n", longNames = "name,y,", odd = "name,a,b,y\n";
  std::string large = "a,b,y\n", constant = "a,b,k,y\n";
  for (int i = 0; i < 240; ++i) {
    classes += "k" + std::to_string(i / 2) + "," + std::to_string(i % 97) + "," + std::to_string(i % 89) + "\n";
  }
  longNames += std::string(10000, 'x') + "," + std::string(10000, 'm') + "1\n";
  const char* const kOdd[] = {"\xF0\x9F\xA7\xAA", "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D", "<img src=x onerror=alert(1)>",
                              "a&b'c>"};
  for (int i = 0; i < 12; ++i) {
    const std::string x = std::to_string(i * i % 11), y = std::to_string(i * 5 % 12), z = std::to_string(i * 7 % 13);
    longNames += std::string(10000, 'n') + std::to_string(i) + "," + x + "," + y + "," + z + "\n";
    odd += std::string(kOdd[i % 4]) + std::to_string(i) + "," + x + "," + y + "," + z + "\n";
    large += x + "e16," + y + "e16," + z + "e16\n";
    constant += x + "," + y + ",5," + z + "\n";
  }
  const struct {
    const char* what;
    std::vector<std::string> words;
    std::string table;
  } cases[] = {
      {"spectra", {"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--scale", "centre"}, ""},
      {"wines", {"pca", ExampleTable("wine.csv"), "--exclude", "cultivar", "--components", "4", "--axes", "2,4"}, ""},
      {"oils", {"pls", ExampleTable("oliveoil.csv"), "--id", "sample", "--y", "yellow..syrup", "--components", "2"},
       ""},
      {"cultivars", {"pls", ExampleTable("wine.csv"), "--classes", "cultivar", "--permutations", "9"}, ""},
      {"yarn", {"pls", ExampleTable("yarn_train.csv"), "--y", "density", "--components", "3"}, ""},
      {"tank", {"pca", ExampleTable("tank.csv"), "--components", "1"}, ""},
      {"120 classes", {"pls", "-", "--classes", "c", "--components", "2", "--groups", "2"}, classes},
      {"long names", {"pls", "-", "--y", "y", "--id", "name", "--components", "2"}, longNames},
      {"odd names", {"pls", "-", "--y", "y", "--id", "name", "--components", "2", "--contributions", "1"}, odd},
      {"large values", {"pls", "-", "--y", "y", "--components", "2"}, large},
      {"constant", {"pls", "-", "--y", "y", "--components", "1", "--validation", "component"}, constant},
      {"opls",
       {"opls", ExampleTable("oliveoil.csv"), "--id", "sample", "--y", "yellow,green", "--x", "Acidity..DK"},
       ""},
      {"blocks",
       {"o2pls", ExampleTable("oliveoil.csv"), ExampleTable("oliveoil.csv"), "--id", "sample", "--x", "Acidity..DK",
        "--y", "yellow..syrup", "--joint", "2", "--x-unique", "1", "--y-unique", "1"},
       ""},
      {"two rows", {"pca", "-", "--components", "1", "--validation", "none"}, "a,b\n1,2\n3,5\n"},
      {"holes", {"pls", "-", "--y", "y", "--id", "name", "--components", "2"}, WithHoles(LinearTable(25, 5, 3), 7)},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.what);
    for (const char* size : {"", "300x240"}) {
      const std::string svg = folder.Path(std::string("svg") + size);
      std::filesystem::remove_all(svg);
      std::vector<std::string> words = one.words;
      words.insert(words.end(), {"--svg", svg});
      if (*size != '\0') words.insert(words.end(), {"--size", size});
      RunWell(words, one.table);
      int files = 0;
      for (const auto& file : std::filesystem::directory_iterator(svg)) {
        EXPECT_THAT(FaultsOf(ReadWholeFile(file.path().string())), IsEmpty()) << file.path();
        ++files;
      }
      EXPECT_GE(files, 2);  // two rows have no distance to a component that describes them
    }
  }
}

TEST(FiguresOfModels, AreRefusedWithAClearTextAndLeaveNothing) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1)), svg = folder.Path("svg");
  const struct {
    std::vector<std::string> words;
    const char* text;
  } cases[] = {
      {{"--axes", "2,3", "--svg", svg, "--components", "2"}, "components 2 and 3: the model has 2 components"},
      {{"--axes", "2", "--svg", svg}, "--axes takes two numbers"},
      {{"--axes", "2,2", "--svg", svg}, "--axes takes two numbers"},
      {{"--axes", "1,2"}, "--axes is of figures"},
      {{"--title", "x"}, "--title is of figures"},
      {{"--size", "700x500"}, "--size is of drawings"},
      {{"--svg", svg, "--size", "10x10"}, "--size takes width and height"},
      {{"--svg", svg, "--size", "700"}, "--size takes width and height"},
      {{"--figures"}, "--figures adds figures to JSON"},
      {{"--svg", folder.Path("none/deeper")}, "cannot make the folder"},
      {{"--svg", "-"}, "--svg takes a folder"},
  };
  for (const auto& one : cases) {
    std::vector<std::string> words = {"pls", table, "--y", "y", "--id", "name"};
    words.insert(words.end(), one.words.begin(), one.words.end());
    const CommandResult run = RunKalmia(words);
    EXPECT_NE(run.exitCode, 0) << one.text;
    EXPECT_THAT(run.error, HasSubstr(one.text));
    EXPECT_FALSE(std::filesystem::exists(svg));
  }
}

TEST(FiguresOfModels, AreTheSameBytesForAnyNumberOfThreads) {
  const ScratchFolder folder;
  for (const char* threads : {"1", "4"}) {
    CommandRun run;
    run.arguments = {"pls", ExampleTable("gasoline.csv"), "--y", "octane", "--svg", folder.Path(threads)};
    run.environment = {std::string("OMP_NUM_THREADS=") + threads, "LC_ALL=de_DE.UTF-8"};
    EXPECT_EQ(RunKalmia(run).exitCode, 0);
  }
  for (const auto& file : std::filesystem::directory_iterator(folder.Path("1"))) {
    EXPECT_EQ(ReadWholeFile(file.path().string()), ReadWholeFile(folder.Path("4/" + file.path().filename().string())));
  }
}

}  // namespace
