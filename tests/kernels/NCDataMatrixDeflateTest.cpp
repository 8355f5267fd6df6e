#include <gtest/gtest.h>

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
using Cells = std::vector<std::vector<T>>;

/// The witness of A + f u w': the factor u[r] f is a T, a cell is rounded once.
template <class T>
Cells<T> BruteForceSum(const NCDataMatrix<T>& a, const NCDataVector<T>& u, const NCDataVector<T>& w, T f) {
  Cells<T> cells = CellsOf(a);
  for (int r = 1; r <= a.SizeRows(); ++r)
    for (int c = 1; c <= a.SizeColumns(); ++c) {
      T& cell = cells[r - 1][c - 1];
      if (cell == kHole<T> || u[r] == kHole<T> || w[c] == kHole<T>) {
        cell = kHole<T>;
      } else {
        const T factor = static_cast<T>(u[r] * f);
        cell = static_cast<T>(static_cast<double>(cell) + static_cast<double>(w[c]) * static_cast<double>(factor));
      }
    }
  return cells;
}

template <class T>
class NCDataMatrixDeflate : public testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixDeflate, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixDeflate, AddsAMultipleOfTheOuterProductWithEveryMixtureOfHoles) {
  using T = TypeParam;
  for (const double inMatrix : {0.0, 0.05, 0.3, 1.0})
    for (const double inU : {0.0, 0.2})
      for (const double inW : {0.0, 0.2})
        for (const int columns : {1, 3, 16, 37, 100})
          for (const T f : {T{1}, T{-1}, T{0.3}}) {
            SCOPED_TRACE(testing::Message() << "holes " << inMatrix << " " << inU << " " << inW << ", " << columns
                                            << " columns, f " << f);
            auto m = RandomMatrix<T>(30, columns, inMatrix, 1);
            const auto u = RandomVector<T>(30, inU, 2), w = RandomVector<T>(columns, inW, 3);
            const auto expected = BruteForceSum(m, u, w, f);
            m.AddVprimV(u, w, f);
            EXPECT_TRUE(SameBits(CellsOf(m), expected));
            EXPECT_TRUE(HasExactCounts(m));
          }
}

TYPED_TEST(NCDataMatrixDeflate, AddingAndSubtractingAreTheFactorsOneAndMinusOne) {
  using T = TypeParam;
  const auto m = RandomMatrix<T>(8, 9, 0.2, 4);
  const auto u = RandomVector<T>(8, 0.1, 5), w = RandomVector<T>(9, 0.1, 6);
  NCDataMatrix<T> added(m), subtracted(m);
  added.TransformToAdd_V_x_Vt(u, w);
  subtracted.TransformToSub_V_x_Vt(u, w);
  EXPECT_EQ(CellsOf(added), BruteForceSum(m, u, w, T{1}));
  EXPECT_EQ(CellsOf(subtracted), BruteForceSum(m, u, w, T{-1}));
}

TYPED_TEST(NCDataMatrixDeflate, AMissingScoreEmptiesItsRowAndCountsIt) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, 2}, {3, kHole<T>}, {5, 6}});
  m.TransformToSub_V_x_Vt(VectorOf<T>({1, kHole<T>, 1}), VectorOf<T>({1, 2}));
  EXPECT_EQ(CellsOf(m), (Cells<T>{{0, 0}, {kHole<T>, kHole<T>}, {4, 4}}));
  EXPECT_EQ(m[2].GetNumMisVal(), 2);
  EXPECT_EQ(m.GetNumMisVal(), 2);
  EXPECT_EQ(m.GetColumnMisVal(1), 1);
  EXPECT_EQ(m.GetColumnMisVal(2), 1);
}

TYPED_TEST(NCDataMatrixDeflate, AMissingLoadingEmptiesItsColumnAndCountsIt) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, 2}, {3, kHole<T>}});
  m.TransformToAdd_V_x_Vt(VectorOf<T>({1, 1}), VectorOf<T>({kHole<T>, 10}));
  EXPECT_EQ(CellsOf(m), (Cells<T>{{kHole<T>, 12}, {kHole<T>, kHole<T>}}));
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixDeflate, MissingCellsOfTheVectorsEmptyAlsoWithAFactorOfZero) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, 2}, {3, 4}});
  m.AddVprimV(VectorOf<T>({kHole<T>, 1}), VectorOf<T>({1, kHole<T>}), T{0});
  EXPECT_EQ(CellsOf(m), (Cells<T>{{kHole<T>, kHole<T>}, {3, kHole<T>}}));
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixDeflate, SeesHolesOfALoadingThatItsCountDoesNotKnowWhereTheMatrixHasHoles) {
  using T = TypeParam;
  auto w = VectorOf<T>({1, 2});
  w.TransformTo_Sub_d_x_Vt(1, VectorOf<T>({kHole<T>, 1}));  // leaves the count low
  ASSERT_EQ(w.GetNumMisVal(), 0);
  auto m = MatrixOf<T>({{1, 2}, {3, kHole<T>}});
  m.TransformToAdd_V_x_Vt(VectorOf<T>({1, 1}), w);
  EXPECT_EQ(CellsOf(m), (Cells<T>{{kHole<T>, 3}, {kHole<T>, kHole<T>}}));
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixDeflate, AFactorThatBecomesTheMissingValueEmptiesTheRow) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, kHole<T>}, {3, 4}});
  m.AddVprimV(VectorOf<T>({99, 1}), VectorOf<T>({1, 1}), T{-1});
  EXPECT_EQ(CellsOf(m), (Cells<T>{{kHole<T>, kHole<T>}, {2, 3}}));
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixDeflate, ARowThatIsEmptyAlreadyIsNotCountedAgain) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{kHole<T>, kHole<T>}, {3, 4}});
  m.TransformToSub_V_x_Vt(VectorOf<T>({kHole<T>, kHole<T>}), VectorOf<T>({1, 1}));
  EXPECT_EQ(m.GetNumMisVal(), 4);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixDeflate, FormsTheFactorInTheTypeOfTheCells) {
  using T = TypeParam;
  // 3 * (1 / 3) is 1 in T, but not in anything wider: only the rounded factor leaves exactly 0.
  auto m = MatrixOf<T>({{-1}});
  m.AddVprimV(VectorOf<T>({3}), VectorOf<T>({1}), static_cast<T>(1) / 3);
  EXPECT_EQ(m[1][1], 0);
}

TYPED_TEST(NCDataMatrixDeflate, LeavesSharersAlone) {
  using T = TypeParam;
  const auto source = RandomMatrix<T>(5, 4, 0.2, 7);
  const auto cells = CellsOf(source);
  NCDataMatrix<T> whole(source), part = source.GetRowSubMatrix(2, 4);
  whole.TransformToSub_V_x_Vt(RandomVector<T>(5, 0.3, 8), RandomVector<T>(4, 0.3, 9));
  part.TransformToSub_V_x_Vt(RandomVector<T>(3, 0.3, 10), RandomVector<T>(4, 0.3, 11));
  EXPECT_EQ(CellsOf(source), cells);
  EXPECT_TRUE(HasExactCounts(source));
}

TYPED_TEST(NCDataMatrixDeflate, TheVectorsMayBeRowsOfTheMatrix) {
  using T = TypeParam;
  for (const double holes : {0.0, 0.2}) {
    for (const int row : {1, 3}) {
      auto m = RandomMatrix<T>(6, 6, holes, 12);
      const auto expected = BruteForceSum(m, NCDataVector<T>(m[row]), NCDataVector<T>(m[3]), T{-1});
      m.TransformToSub_V_x_Vt(m[row], m[3]);
      EXPECT_EQ(CellsOf(m), expected);
      EXPECT_TRUE(HasExactCounts(m));
    }
  }
}

TYPED_TEST(NCDataMatrixDeflate, TablesWithoutCellsStayAsTheyAre) {
  using T = TypeParam;
  NCDataMatrix<T> none, noColumns;
  noColumns.SetSize(2, 0);
  none.TransformToSub_V_x_Vt(NCDataVector<T>(), NCDataVector<T>());
  noColumns.TransformToSub_V_x_Vt(VectorOf<T>({1, kHole<T>}), NCDataVector<T>());
  EXPECT_TRUE(HasExactCounts(none));
  EXPECT_TRUE(HasExactCounts(noColumns));
}

}  // namespace
