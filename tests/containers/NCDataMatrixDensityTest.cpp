#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <limits>
#include <map>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class NCDataMatrixDensity : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixDensity, CellTypes, CellTypeNames);

template <class T>
bool IsPoint(const NCDataMatrix<T>& m, int c) {
  return std::all_of(m.begin(), m.end(), [c](const auto& row) { return row[c] != kHole<T>; });
}

/// One sweep of the definition: a dense grid, kept as a map from index tuples, raised point by point.
template <class T>
void AddSweep(const NCDataMatrix<T>& m, int bins, int shifts, bool moved, std::vector<double>& density) {
  const int dimensions = m.SizeRows();
  for (int s = 1; s <= shifts; s *= 2) {
    const int cells = moved ? s * (bins + 1) : s * bins;
    const auto indexOf = [&](int c) {
      std::vector<int> index;
      for (int r = 1; r <= dimensions; ++r) {
        T min, max;
        m.GetRowMinMax(r, min, max);
        const long double width = min == max ? 0.001L : (static_cast<long double>(max) - min) / bins;
        const long double step = width / s, origin = moved ? min - step * 0.5L : static_cast<long double>(min);
        const int k = static_cast<int>((m[r][c] - origin) / step) + 1;
        index.push_back(k > cells ? k - 1 : k);
      }
      return index;
    };
    std::map<std::vector<int>, int> grid;
    for (int c = 1; c <= m.SizeColumns(); ++c)
      if (IsPoint(m, c)) grid[indexOf(c)] += (s + 2) / 2;
    for (int c = 1; c <= m.SizeColumns(); ++c)
      if (IsPoint(m, c)) density[c - 1] += grid[indexOf(c)];
  }
}

template <class T>
std::vector<T> DensityByDefinition(const NCDataMatrix<T>& m, int bins, int shifts, bool all) {
  std::vector<double> density(static_cast<std::size_t>(m.SizeColumns()), 0);
  AddSweep(m, bins, shifts, false, density);
  if (all || m.SizeColumns() < 5000) AddSweep(m, bins, shifts, true, density);
  const double min = *std::min_element(density.begin(), density.end());
  const double max = *std::max_element(density.begin(), density.end());
  std::vector<T> scaled;
  for (const double d : density) scaled.push_back(static_cast<T>(min == max ? d : (d - min) / (max - min)));
  return scaled;
}

TYPED_TEST(NCDataMatrixDensity, IsThatOfTheDefinition) {
  for (const int dimensions : {1, 2, 3})
    for (const int bins : {1, 2, 5, 11})
      for (const int shifts : {1, 2, 3, 8}) {
        SCOPED_TRACE(testing::Message() << dimensions << " dimensions, " << bins << " bins, " << shifts << " shifts");
        const auto m = RandomMatrix<TypeParam>(dimensions, 60, 0.1, static_cast<unsigned>(dimensions));
        EXPECT_EQ(CellsOf(m.GetDensity(bins, shifts, true)), DensityByDefinition(m, bins, shifts, true));
      }
}

// Five points in one dimension, 2 bins of width 2, one shift: first sweep cells {0, 1}, {2, 4} and 4 with its index
// taken down, so (2, 2, 3, 3, 3) for 0, 1, 2, 4, 4. Second sweep with origin -1 and 3 cells: {0}, {1, 2}, {4, 4}:
// (1, 2, 2, 2, 2). The sums (3, 4, 5, 5, 5) are scaled to 0 .. 1.
TYPED_TEST(NCDataMatrixDensity, OfFivePointsIsAsWorkedByHand) {
  const auto m = MatrixOf<TypeParam>({{0, 1, 2, 4, 4}});
  EXPECT_EQ(CellsOf(m.GetDensity(2, 1, true)), (std::vector<TypeParam>{0, 0.5, 1, 1, 1}));
}

// Points A = 0 twice, B = 0.375 and C = 1 in 2 bins: B shares a cell with A only where s = 1 in the first sweep, and C
// is always alone. The grids up to s give A 5, B 4, C 2 for s = 1, and each larger s, which raises cells by w, adds 4 w
// to A and 2 w to the others: B is scaled to 2 / (3 + 2 sum(w)), with w = 2, 3 and 5 for s = 2, 4 and 8.
TYPED_TEST(NCDataMatrixDensity, RaisesByHalfOfTwoMoreThanTheShift) {
  const auto m = MatrixOf<TypeParam>({{0, 0, 0.375, 1}});
  const double expected[][2] = {{1, 2.0 / 3}, {2, 2.0 / 7}, {3, 2.0 / 7}, {4, 2.0 / 13}, {8, 2.0 / 23}};
  for (const auto& [shifts, density] : expected)
    EXPECT_EQ(CellsOf(m.GetDensity(2, static_cast<int>(shifts), true)),
              (std::vector<TypeParam>{1, 1, static_cast<TypeParam>(density), 0}))
        << shifts;
}

TYPED_TEST(NCDataMatrixDensity, OfPointsWithAHoleIs0) {
  const TypeParam hole = kHole<TypeParam>;
  const auto m = MatrixOf<TypeParam>({{1, 1, hole, 1}, {2, 2, 2, 2}});
  EXPECT_EQ(CellsOf(m.GetDensity(3, 1, true)), (std::vector<TypeParam>{1, 1, 0, 1}));
  EXPECT_EQ(CellsOf(NCDataMatrix<TypeParam>(2, 3).GetDensity(3, 1, true)), (std::vector<TypeParam>{0, 0, 0}));
}

TYPED_TEST(NCDataMatrixDensity, OfPointsThatAreNotFiniteIs0AndTheOthersAreAsIfTheyHadHoles) {
  auto finite = RandomMatrix<TypeParam>(2, 30, 0, 7);
  auto other = finite;
  finite(1, 1, kHole<TypeParam>);
  finite(2, 9, kHole<TypeParam>);
  finite(1, 30, kHole<TypeParam>);
  other(1, 1, std::numeric_limits<TypeParam>::quiet_NaN());
  other(2, 9, std::numeric_limits<TypeParam>::infinity());
  other(1, 30, -std::numeric_limits<TypeParam>::infinity());
  EXPECT_EQ(CellsOf(other.GetDensity(4, 4, true)), CellsOf(finite.GetDensity(4, 4, true)));
}

TYPED_TEST(NCDataMatrixDensity, OfEqualPointsIsNotScaled) {
  // One cell for all three, in both sweeps: 2 * 3.
  EXPECT_EQ(CellsOf(NCDataMatrix<TypeParam>(2, 3, TypeParam(5)).GetDensity(4, 1, true)),
            (std::vector<TypeParam>{6, 6, 6}));
}

TYPED_TEST(NCDataMatrixDensity, BelowOneBinTakesTheRootOfThePoints) {
  const auto cubes = RandomMatrix<TypeParam>(2, 64, 0, 1);  // 64^(1/3) = 4, although pow(64, 1.0 / 3) is below 4
  EXPECT_EQ(CellsOf(cubes.GetDensity(0, 2, true)), DensityByDefinition(cubes, 4, 2, true));
  const auto squares = RandomMatrix<TypeParam>(1, 35, 0, 2);
  EXPECT_EQ(CellsOf(squares.GetDensity(-5, 2, true)), DensityByDefinition(squares, 5, 2, true));
  const auto few = RandomMatrix<TypeParam>(9, 3, 0, 2);
  EXPECT_EQ(CellsOf(few.GetDensity(0, 2, true)), DensityByDefinition(few, 1, 2, true));
}

TYPED_TEST(NCDataMatrixDensity, BelowOneShiftTakesAsManyAsTheBinsAskFor) {
  const auto m = RandomMatrix<TypeParam>(1, 200, 0, 3);
  const int expected[][2] = {{1, 16}, {50, 16}, {51, 8}, {200, 8}, {201, 4}, {500, 4}, {501, 2}, {1000, 2}, {1001, 1}};
  for (const auto& [bins, shifts] : expected)
    EXPECT_EQ(CellsOf(m.GetDensity(bins, 0, true)), CellsOf(m.GetDensity(bins, shifts, true))) << bins;
}

TYPED_TEST(NCDataMatrixDensity, LeavesTheSecondSweepOutFrom5000PointsOnUnlessAsked) {
  const auto small = RandomMatrix<TypeParam>(1, 4999, 0, 3), large = RandomMatrix<TypeParam>(1, 5000, 0, 3);
  EXPECT_EQ(CellsOf(small.GetDensity(20, 1, false)), CellsOf(small.GetDensity(20, 1, true)));
  EXPECT_NE(CellsOf(large.GetDensity(20, 1, false)), CellsOf(large.GetDensity(20, 1, true)));
  EXPECT_EQ(CellsOf(large.GetDensity(20, 1, false)), DensityByDefinition(large, 20, 1, false));
}

TYPED_TEST(NCDataMatrixDensity, OfManyDimensionsTakesTheMemoryOfThePointsOnly) {
  const int dimensions = 300, points = 400;
  const auto m = RandomMatrix<TypeParam>(dimensions, points, 0, 11);
  const PeakBytesDuring meter;
  const NCDataVector<TypeParam> density = m.GetDensity(10, 2, true);
  // A few words per point and per dimension; the grid of the definition would have 20^300 cells.
  EXPECT_LT(meter.GetBytes(), 256 * (points + dimensions));
  EXPECT_EQ(density.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixDensity, OfHugeNumbersOfBinsAndShiftsLeavesEveryPointAlone) {
  const auto m = RandomMatrix<TypeParam>(2, 20, 0, 5);  // cells of 2^-20 and coarser, bins of 6 / 2^31
  const auto density = CellsOf(m.GetDensity(INT_MAX, INT_MAX, true));
  EXPECT_GT(density.front(), 0);
  EXPECT_EQ(density, std::vector<TypeParam>(20, density.front()));
}

TYPED_TEST(NCDataMatrixDensity, OfAWholeRangeOfNumbersDoesNotOverflow) {
  const TypeParam largest = std::numeric_limits<TypeParam>::max();
  const auto m = MatrixOf<TypeParam>({{-largest, -largest, 0, largest}});
  EXPECT_EQ(CellsOf(m.GetDensity(3, 1, true)), (std::vector<TypeParam>{1, 1, 0, 0}));
}

TYPED_TEST(NCDataMatrixDensity, OfNothingIsNothing) {
  EXPECT_EQ(NCDataMatrix<TypeParam>().GetDensity(3, 1, true).Size(), 0);
  NCDataMatrix<TypeParam> noRows;
  noRows.SetSize(0, 2);
  EXPECT_EQ(CellsOf(noRows.GetDensity(3, 1, true)), (std::vector<TypeParam>{0, 0}));
}

TYPED_TEST(NCDataMatrixDensity, IsBuiltInATarget) {
  const auto m = RandomMatrix<TypeParam>(2, 20, 0.1, 5);
  NCDataVector<TypeParam> target(20);
  m.Result(&target).GetDensity(3, 2, true);
  EXPECT_EQ(CellsOf(target), CellsOf(m.GetDensity(3, 2, true)));
  EXPECT_TRUE(HasExactCounts(target));
}

TYPED_TEST(NCDataMatrixDensity, IsBuiltInARowOfTheTable) {
  for (const int r : {1, 2}) {
    auto m = RandomMatrix<TypeParam>(2, 20, 0.1, 5);
    const NCDataMatrix<TypeParam> twin(m);
    const auto before = CellsOf(m);
    const auto density = CellsOf(m.GetDensity(3, 2, true));
    m.Result(&m(r)).GetDensity(3, 2, true);
    EXPECT_EQ(CellsOf(m[r]), density);
    EXPECT_TRUE(HasExactCounts(m[r]));
    EXPECT_EQ(CellsOf(m[3 - r]), before[static_cast<std::size_t>(2 - r)]);
    EXPECT_EQ(CellsOf(twin), before);
  }
}

}  // namespace
