// `kalmia o2pls` of blocks of one column, or of columns that do not vary.

#include <gtest/gtest.h>

#include <cmath>

#include "CommandRun.h"
#include "ExpectFailure.h"
#include "TestTables.h"

namespace {

using kalmia::analysis::Table;
using nlohmann::json;

/// The first `columns` columns of a table.
std::string FirstColumns(const std::string& table, int columns) {
  const Table whole(table, "whole");
  std::string text;
  for (int row = -1; row < whole.Rows(); ++row)
    for (int c = 0; c < columns; ++c) {
      const auto name = static_cast<std::size_t>(c);
      text += row < 0 ? whole.ColumnNames()[name] : std::string(whole.Cell(row, c));
      text += c + 1 < columns ? "," : "\n";
    }
  return text;
}

class O2PLSOfSmallBlocks : public ::testing::Test {
 protected:
  CommandResult Run(const std::string& x, const std::string& y, const std::vector<std::string>& more) const {
    std::vector<std::string> arguments = {"o2pls", folder_.Write("x.csv", x), folder_.Write("y.csv", y), "--id",
                                          "name"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunKalmia(arguments);
  }
  json Json(const std::string& x, const std::string& y) const {
    const CommandResult run = Run(x, y, {"--json", "--save", folder_.Path("m"), "--csv", folder_.Path("d")});
    EXPECT_EQ(run.exitCode, 0) << run.error;
    return run.Json();
  }

  ScratchFolder folder_;
  TwoBlocks blocks_ = SharedBlocks(60, 3);
};

TEST_F(O2PLSOfSmallBlocks, TakesAYOfOneColumn) {
  const json fit = Json(blocks_.x, FirstColumns(blocks_.y, 2));
  EXPECT_EQ(fit["joint"], 1);
  EXPECT_EQ(fit["yUnique"], 0);
  EXPECT_NEAR(fit["shares"]["y"]["joint"], 1.0, 1e-6);  // the only direction of Y; rounding of floats
}

TEST_F(O2PLSOfSmallBlocks, TakesAnXOfOneColumn) {
  const json fit = Json(FirstColumns(blocks_.x, 2), blocks_.y);
  EXPECT_EQ(fit["joint"], 1);
  EXPECT_EQ(fit["xUnique"], 0);
  EXPECT_NEAR(fit["shares"]["x"]["joint"], 1.0, 1e-6);  // the only direction of X; rounding of floats
  // The score is the scaled column, or its negative.
  const std::vector<double> x = NumbersOf(CsvAt(folder_.Path("x.csv")), "x1");
  const std::vector<double> t = NumbersOf(CsvAt(folder_.Path("d/x-scores.csv")), "t1");
  ASSERT_EQ(t.size(), 60U);
  const double factor = (t[0] - t[1]) / (x[0] - x[1]);
  // Scores are floats of some units; the cells behind the factor differ by enough not to magnify their rounding much.
  for (std::size_t i = 0; i < t.size(); ++i) EXPECT_NEAR(t[i] - t[0], factor * (x[i] - x[0]), 1e-5) << i;
  EXPECT_GT(std::abs(factor), 0.0);
  // y1 has nothing but what is common, which is all that x1 has, each with noise of a tenth.
  const CommandResult predicted =
      RunKalmia({"predict", folder_.Path("m"), folder_.Path("x.csv"), "--csv", folder_.Path("n")});
  ASSERT_EQ(predicted.exitCode, 0) << predicted.error;
  const std::vector<double> y = NumbersOf(CsvAt(folder_.Path("y.csv")), "y1");
  const std::vector<double> guess = NumbersOf(CsvAt(folder_.Path("n/predictions.csv")), "predicted y1");
  // Two noises of a tenth, one for each block, differ by 0.2 at most; slope and centre err by some hundredths.
  for (std::size_t i = 0; i < y.size(); ++i) EXPECT_NEAR(guess[i], y[i], 0.3) << i;
}

TEST_F(O2PLSOfSmallBlocks, TakesOneColumnOfEach) {
  const json fit = Json(FirstColumns(blocks_.x, 2), FirstColumns(blocks_.y, 2));
  EXPECT_EQ(fit["joint"], 1);
  EXPECT_EQ(fit["xUnique"], 0);
  EXPECT_EQ(fit["yUnique"], 0);
}

TEST_F(O2PLSOfSmallBlocks, RefusesABlockThatDoesNotVaryWhicheverItIs) {
  std::string constant = "name,a,b\n";
  for (int i = 1; i <= 60; ++i) constant += "s" + std::to_string(i) + ",5,7\n";
  const std::vector<std::string> files = {"--save", folder_.Path("m"), "--csv", folder_.Path("d")};
  ExpectFailure(Run(constant, blocks_.y, files), 1,
                "x.csv: no column of numbers that varies is left for X; constant columns: a and b");
  ExpectFailure(Run(blocks_.x, constant, files), 1,
                "y.csv: no column of numbers that varies is left for Y; constant columns: a and b");
  EXPECT_EQ(folder_.Names(), (std::vector<std::string>{"x.csv", "y.csv"}));
}

}  // namespace
