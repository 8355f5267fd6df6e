#include "kalmia/analysis/validation/internal/RoundX.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "kalmia/analysis/table/internal/SingleCells.h"

namespace kalmia::analysis {
namespace {

constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

RealColumns ColumnsWithHoles(std::size_t rows, std::size_t columns, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal(3.0, 2.0);
  RealColumns made(columns, std::vector<double>(rows));
  for (std::size_t k = 0; k < columns; ++k) {
    for (std::size_t i = 0; i < rows; ++i) made[k][i] = (i + k) % 7 == 0 ? kHole : normal(random);
  }
  made[0][1] = -99.0;  // a measured one, which has to move
  return made;
}

NCDataMatrix<float> SinglesOf(const RealColumns& columns) {
  std::vector<std::vector<float>> cells;
  int moved = 0;
  for (const std::vector<double>& column : columns) cells.push_back(SingleCells(column, 0.0, &moved));
  return MatrixOf(cells, RowCount(columns));
}

void ExpectSameCells(const NCDataMatrix<float>& one, const NCDataMatrix<float>& other) {
  ASSERT_EQ(one.SizeRows(), other.SizeRows());
  ASSERT_EQ(one.SizeColumns(), other.SizeColumns());
  ASSERT_EQ(one.GetNumMisVal(), other.GetNumMisVal());
  for (int i = 1; i <= one.SizeRows(); ++i) {
    for (int k = 1; k <= one.SizeColumns(); ++k) EXPECT_EQ(one[i][k], other[i][k]) << i << ", " << k;
  }
}

TEST(RoundX, OfPlainRowsHasTheBitsThatColumnsGive) {
  const std::vector<std::string> names = {"a", "b", "c", "d", "e"};
  const RealColumns columns = ColumnsWithHoles(20, names.size(), 1), others = ColumnsWithHoles(6, names.size(), 2);
  for (const NCScale::Scaling scaling : {NCScale::ScalingNone, NCScale::ScalingCentre, NCScale::ScalingPareto,
                                         NCScale::ScalingUnitVariance}) {
    SCOPED_TRACE(scaling);
    WorkProgress progress(nullptr);
    const RoundX ofColumns(names, columns, scaling, &progress);
    ASSERT_TRUE(ArePlain(SinglesOf(columns), scaling));
    const RoundX ofRows(names, SinglesOf(columns), scaling);
    ExpectSameCells(ofRows.Fitted(), ofColumns.Fitted());
    ExpectSameCells(ofRows.Scaled(SinglesOf(others)), ofColumns.Scaled(others));
    EXPECT_EQ(ofRows.Places(), ofColumns.Places());
    EXPECT_TRUE(ofRows.ColumnsWithoutSpread().empty());
    for (int k = 1; k <= ofRows.Columns(); ++k) {
      EXPECT_EQ(CentreOf(ofRows.Scaling(), k), CentreOf(ofColumns.Scaling(), k));
      EXPECT_EQ(FactorOf(ofRows.Scaling(), k), FactorOf(ofColumns.Scaling(), k));
    }
  }
}

TEST(ArePlain, IsFalseWhereAColumnIsConstantOrMayBeShifted) {
  const double infinite = std::numeric_limits<double>::infinity();
  const struct Unlike {
    const char* what;
    std::vector<double> column;
    bool isPlainAsItIs;
  } kUnlike[] = {{"constant", {2, 2, 2, 2}, false},
                 {"one value beside holes", {kHole, 2, kHole, kHole}, false},
                 {"no value", {kHole, kHole, kHole, kHole}, false},
                 {"an infinite cell", {1, infinite, 2, 3}, true},
                 {"two thousand deviations from zero", {9999, 10009, 9999, 10009}, true},
                 {"the same below zero", {-9999, -10009, -9999, -10009}, true}};
  RealColumns columns = {{1, 2, kHole, 4}, {0.5, -0.5, 0.25, 7}};
  ASSERT_TRUE(ArePlain(SinglesOf(columns), NCScale::ScalingUnitVariance));
  for (const Unlike& unlike : kUnlike) {
    SCOPED_TRACE(unlike.what);
    RealColumns with = columns;
    with.push_back(unlike.column);
    EXPECT_FALSE(ArePlain(SinglesOf(with), NCScale::ScalingUnitVariance));
    EXPECT_EQ(ArePlain(SinglesOf(with), NCScale::ScalingNone), unlike.isPlainAsItIs);  // nothing is shifted then
  }
}

}  // namespace
}  // namespace kalmia::analysis
