// The numbers that `kalmia pls --csv` writes, held against what they mean.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <numeric>

#include "CommandRun.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

/// Float cells have relative steps of 6e-8; a prediction adds a few dozen terms of the size of the answer.
constexpr double kFloatTolerance = 1e-5;

/// Fits a table and keeps the files that were written.
class WrittenFit {
 public:
  WrittenFit(const std::string& table, std::vector<std::string> options) : table_(table, "t.csv") {
    options.insert(options.begin(), {"pls", folder_.Write("t.csv", table), "--json", "--csv", folder_.Path("d"),
                                     "--save", folder_.Path("m")});
    const CommandResult run = RunKalmia(options);
    EXPECT_EQ(run.exitCode, 0) << run.error;
    json_ = run.Json();
    kept_ = json_["kept"];
  }

  const Table& FittedTable() const { return table_; }
  Table File(const std::string& name) const { return CsvAt(folder_.Path("d/" + name)); }
  std::string Model() const { return folder_.Path("m"); }
  std::string TablePath() const { return folder_.Path("t.csv"); }
  const ScratchFolder& Folder() const { return folder_; }
  const nlohmann::json& Json() const { return json_; }
  int Kept() const { return kept_; }

 private:
  ScratchFolder folder_;
  Table table_;
  nlohmann::json json_;
  int kept_ = 0;
};

const std::vector<std::string> kXNames = {"x1", "x2", "x3", "x4", "x5", "x6"};

WrittenFit ThreeComponents(const std::string& table, const std::string& scale) {
  return {table, {"--y", "y", "--id", "name", "--components", "3", "--scale", scale}};
}

TEST(PLSCsv, NotesFilesOfEarlierRunsInItsFolder) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 6, 1)), csv = folder.Path("d");
  const std::vector<std::string> fit = {"pls", table, "--y", "y", "--id", "name", "--components", "1", "--csv", csv};
  const CommandResult first = RunKalmia({"pca", table, "--id", "name", "--components", "1", "--csv", csv});
  ASSERT_EQ(first.exitCode, 0) << first.error;
  EXPECT_THAT(first.error, Not(HasSubstr("has not written")));
  EXPECT_THAT(RunKalmia(fit).error, HasSubstr("also holds columns.csv, which this run has not written: it does not tell "
                                              "of this model"));
  std::filesystem::remove(csv + "/columns.csv");
  EXPECT_THAT(RunKalmia(fit).error, Not(HasSubstr("has not written"))) << "files that are written anew";
}

TEST(PLSCsv, WritesAllFilesWithNamesOfRowsAndColumns) {
  const WrittenFit fit = ThreeComponents(LinearTable(20, 6, 1), "uv");
  EXPECT_EQ(fit.Json()["csvFiles"].size(), 11);
  for (const char* name : {"scores.csv", "y-scores.csv"}) {
    EXPECT_EQ(fit.File(name).Rows(), 20);
    EXPECT_EQ(fit.File(name).Cell(4, 0), "s5");
  }
  for (const char* name : {"loadings.csv", "weights.csv", "w-star.csv", "vip.csv"}) {
    const Table file = fit.File(name);
    ASSERT_EQ(file.Rows(), 6);
    for (int k = 0; k < 6; ++k) EXPECT_EQ(file.Cell(k, 0), kXNames[static_cast<std::size_t>(k)]);
  }
  EXPECT_THAT(fit.File("scores.csv").ColumnNames(), ElementsAre("row", "t1", "t2", "t3"));
  EXPECT_THAT(fit.File("w-star.csv").ColumnNames(), ElementsAre("column", "w*1", "w*2", "w*3"));
  EXPECT_THAT(fit.File("vip.csv").ColumnNames(), ElementsAre("column", "VIP", "standard error", "lower", "upper"));
  EXPECT_THAT(fit.File("coefficients.csv").ColumnNames(),
              ElementsAre("column", "y", "standard error", "lower", "upper", "p"));
  EXPECT_THAT(fit.File("fit.csv").ColumnNames(), ElementsAre("row", "measured y", "predicted y", "cv y"));
  EXPECT_THAT(fit.File("rows.csv").ColumnNames(), ElementsAre("row", "T2", "distance", "absolute distance", "flags"));
  EXPECT_THAT(fit.File("components.csv").ColumnNames(),
              ElementsAre("components", "Y", "R2X cum", "R2Y cum", "PRESS", "Q2", "RMSECV", "kept"));
  EXPECT_EQ(fit.File("components.csv").Rows(), 8);  // of 0 to 3 components, in total and of y
}

TEST(PLSCsv, GivesBackNamesThatNeedQuotationMarks) {
  const WrittenFit fit("\"a,\"\"1\"\"\",\" b\",y\n1,7,1\n2,5,3\n3,6,2\n5,1,5\n4,3,6\n",
                       {"--y", "y", "--components", "1"});
  EXPECT_EQ(fit.File("vip.csv").Cell(0, 0), "a,\"1\"");
  EXPECT_EQ(fit.File("vip.csv").Cell(1, 0), " b");
}

TEST(PLSCsv, PredictsWithCoefficientsInOriginalUnitsAsTheModelDoes) {
  for (const char* scale : {"uv", "pareto", "centre", "none"}) {
    SCOPED_TRACE(scale);
    const WrittenFit fit = ThreeComponents(LinearTable(20, 6, 1), scale);
    const std::vector<double> coefficients = NumbersOf(fit.File("coefficients.csv"), "y");
    ASSERT_EQ(coefficients.size(), 7U);
    EXPECT_EQ(fit.File("coefficients.csv").Cell(0, 0), "(intercept)");
    std::vector<double> expected(20, coefficients[0]);
    for (std::size_t k = 0; k < kXNames.size(); ++k) {
      const std::vector<double> x = NumbersOf(fit.FittedTable(), kXNames[k]);
      for (std::size_t i = 0; i < x.size(); ++i) expected[i] += x[i] * coefficients[k + 1];
    }
    const std::vector<double> predicted = NumbersOf(fit.File("fit.csv"), "predicted y");
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_NEAR(predicted[i] / expected[i], 1.0, kFloatTolerance);
  }
}

TEST(PLSCsv, HasVipWhoseSquaresSumToTheNumberOfColumns) {
  const WrittenFit fit = ThreeComponents(WithHoles(LinearTable(20, 6, 1), 13), "uv");
  const std::vector<double> vip = NumbersOf(fit.File("vip.csv"), "VIP");
  // The formula norms each w in double, so that only the roots' rounding is left.
  EXPECT_NEAR(std::inner_product(vip.begin(), vip.end(), vip.begin(), 0.0), 6.0, 1e-12);
}

TEST(PLSCsv, HasTheVipOfTheWeightsWhereThereIsOneComponent) {
  const WrittenFit fit(LinearTable(20, 6, 1), {"--y", "y", "--id", "name", "--components", "1"});
  const std::vector<double> vip = NumbersOf(fit.File("vip.csv"), "VIP");
  const std::vector<double> w = NumbersOf(fit.File("weights.csv"), "w1");
  // VIP = sqrt(K) |w| with w of unit length, which float cells reach to 1e-7.
  for (std::size_t k = 0; k < w.size(); ++k) EXPECT_NEAR(vip[k], std::sqrt(6.0) * std::fabs(w[k]), 1e-6);
}

TEST(PLSCsv, HasT2ThatSumsToComponentsTimesRowsLessOne) {
  const WrittenFit fit = ThreeComponents(WithHoles(LinearTable(20, 6, 1), 13), "none");
  const std::vector<double> t2 = NumbersOf(fit.File("rows.csv"), "T2");
  EXPECT_NEAR(std::accumulate(t2.begin(), t2.end(), 0.0), 3.0 * 19.0, 1e-9);
  EXPECT_GT(*std::min_element(t2.begin(), t2.end()), 0.0);
}

TEST(PLSCsv, HasT2OfTheScores) {
  const WrittenFit fit(LinearTable(20, 6, 1), {"--y", "y", "--id", "name", "--components", "1"});
  std::vector<double> t = NumbersOf(fit.File("scores.csv"), "t1");
  for (double& score : t) score = static_cast<float>(score);  // what the file says with the fewest digits
  const std::vector<double> t2 = NumbersOf(fit.File("rows.csv"), "T2");
  const double mean = std::accumulate(t.begin(), t.end(), 0.0) / 20;
  double squares = 0.0;
  for (const double score : t) squares += (score - mean) * (score - mean);
  for (std::size_t i = 0; i < t.size(); ++i) EXPECT_NEAR(t2[i], (t[i] - mean) * (t[i] - mean) / (squares / 19), 1e-9);
}

TEST(PLSCsv, HasDistancesThatFollowFromScoresAndLoadings) {
  const WrittenFit fit = ThreeComponents(WithHoles(LinearTable(20, 6, 1), 13), "centre");
  std::vector<double> squares(20, 0.0);
  std::vector<double> present(20, 0.0);
  for (std::size_t k = 0; k < kXNames.size(); ++k) {
    const std::vector<double> x = NumbersOf(fit.FittedTable(), kXNames[k]);
    double sum = 0.0;
    int n = 0;
    for (const double cell : x) {
      if (std::isnan(cell)) continue;
      sum += cell;
      ++n;
    }
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (std::isnan(x[i])) continue;
      double e = x[i] - sum / n;
      for (const char* a : {"1", "2", "3"}) {
        e -= NumbersOf(fit.File("scores.csv"), std::string("t") + a)[i] *
             NumbersOf(fit.File("loadings.csv"), std::string("p") + a)[k];
      }
      squares[i] += e * e;
      present[i] += 1.0;
    }
  }
  double allSquares = 0.0;
  double allFreedom = 0.0;
  for (std::size_t i = 0; i < 20; ++i) {
    ASSERT_GT(present[i], 3.0);
    allSquares += squares[i];
    allFreedom += present[i] - 3.0;
  }
  const std::vector<double> distance = NumbersOf(fit.File("rows.csv"), "distance");
  for (std::size_t i = 0; i < 20; ++i) {
    const double expected = std::sqrt(squares[i] / (present[i] - 3.0)) / std::sqrt(allSquares / allFreedom);
    EXPECT_NEAR(distance[i], expected, 1e-4 * (1.0 + expected));  // small differences of float cells near 30
  }
}

TEST(PLSCsv, HasScoresOfWStarOnCompleteTables) {
  const WrittenFit fit = ThreeComponents(LinearTable(20, 6, 1), "none");
  for (const char* a : {"1", "2", "3"}) {
    const std::vector<double> t = NumbersOf(fit.File("scores.csv"), std::string("t") + a);
    const std::vector<double> w = NumbersOf(fit.File("w-star.csv"), std::string("w*") + a);
    for (std::size_t i = 0; i < t.size(); ++i) {
      double score = 0.0;
      for (std::size_t k = 0; k < w.size(); ++k) score += NumbersOf(fit.FittedTable(), kXNames[k])[i] * w[k];
      EXPECT_NEAR(score, t[i], 50.0 * kFloatTolerance);  // x reaches 36, and the scores are differences of such cells
    }
  }
}

TEST(PLSCsv, HasTheErrorOfEstimationOfItsFittedValues) {
  const WrittenFit fit = ThreeComponents(WithHoles(LinearTable(20, 6, 1), 13), "uv");
  const std::vector<double> measured = NumbersOf(fit.File("fit.csv"), "measured y");
  const std::vector<double> predicted = NumbersOf(fit.File("fit.csv"), "predicted y");
  double sse = 0.0;
  for (std::size_t i = 0; i < 20; ++i) sse += (measured[i] - predicted[i]) * (measured[i] - predicted[i]);
  // `measured` is a float cell in both, written so that it reads back the same.
  EXPECT_NEAR(fit.Json()["quality"][0]["rmsee"].get<double>(), std::sqrt(sse / (20 - 1 - 3)), 1e-6);
}

TEST(PLSCsv, HoldsComponentsOfTheModelAlone) {
  const WrittenFit fit(LinearTable(30, 6, 2), {"--y", "y", "--id", "name", "--validation", "component"});
  ASSERT_EQ(fit.Json()["components"].size(), static_cast<std::size_t>(fit.Kept()) + 1);
  EXPECT_EQ(fit.File("scores.csv").Columns(), fit.Kept() + 1);
  const Table components = fit.File("components.csv");
  EXPECT_EQ(components.Rows(), 2 * (fit.Kept() + 1));
  EXPECT_EQ(components.Cell(components.Rows() - 1, components.Find("kept")), "no");
}

TEST(PLSCsv, PredictsTheTrainingTableWithTheStoredModelToTheLastBit) {
  for (const char* scale : {"uv", "pareto", "centre", "none"}) {
    SCOPED_TRACE(scale);
    const WrittenFit fit = ThreeComponents(WithHoles(LinearTable(40, 6, 1), 9), scale);
    const CommandResult run = RunKalmia({"predict", fit.Model(), fit.TablePath(), "--csv", fit.Folder().Path("p")});
    ASSERT_EQ(run.exitCode, 0) << run.error;
    const Table fitted = fit.File("fit.csv");
    const Table rows = fit.File("rows.csv");
    const Table predicted = CsvAt(fit.Folder().Path("p/predictions.csv"));
    for (int i = 0; i < fitted.Rows(); ++i) {
      EXPECT_EQ(predicted.Cell(i, predicted.Find("row")), fitted.Cell(i, fitted.Find("row")));
      EXPECT_EQ(predicted.Cell(i, predicted.Find("predicted y")), fitted.Cell(i, fitted.Find("predicted y")));
      EXPECT_EQ(predicted.Cell(i, predicted.Find("measured y")), fitted.Cell(i, fitted.Find("measured y")));
      EXPECT_EQ(predicted.Cell(i, predicted.Find("distance")), rows.Cell(i, rows.Find("distance")));
    }
  }
}

TEST(PLSCsv, ReplacesFilesOfAnEarlierRunAndLeavesOthersAlone) {
  const ScratchFolder folder;
  const std::string table = folder.Write("t.csv", LinearTable(20, 4, 1));
  const auto run = [&](const char* components) {
    return RunKalmia({"pls", table, "--y", "y", "--id", "name", "--components", components, "--csv", folder.Path("")})
        .exitCode;
  };
  folder.Write("mine.txt", "mine");
  ASSERT_EQ(run("3"), 0);
  ASSERT_EQ(run("1"), 0);
  EXPECT_EQ(CsvAt(folder.Path("scores.csv")).Columns(), 2);
  EXPECT_EQ(ReadWholeFile(folder.Path("mine.txt")), "mine");
  EXPECT_EQ(folder.Names().size(), 11U + 2U);
}

}  // namespace
