#include <gtest/gtest.h>

#include <cmath>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/passes/BlockedColumnSums.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class NCDataMatrixStartColumn : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixStartColumn, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixStartColumn, IsTheColumnOfLargestSumOfSquares) {
  const auto x = MatrixOf<TypeParam>({{1, -3, 2}, {1, 3, -4}});
  EXPECT_EQ(CellsOf(x.GetNIPALSStartColumn()), (std::vector<TypeParam>{2, -4}));
}

TYPED_TEST(NCDataMatrixStartColumn, IsTheFirstOfColumnsWithEqualSumsOfSquares) {
  const auto x = MatrixOf<TypeParam>({{1, 3, -4, 4}, {1, 4, 3, -3}});
  EXPECT_EQ(CellsOf(x.GetNIPALSStartColumn()), (std::vector<TypeParam>{3, 4}));
}

TYPED_TEST(NCDataMatrixStartColumn, ALaterColumnMustLeadByMoreThanAPartInAMillion) {
  // Sums of squares 10^12, and k more for k cells of 1; a part in a million of it is 10^6.
  const int kCells = 1000100;
  NCDataMatrix<TypeParam> x(kCells + 1, 2, 0);
  x(1, 1, TypeParam(1e6));
  x(1, 2, TypeParam(1e6));
  for (int r = 2; r <= 999900; ++r) x(r, 2, 1);
  EXPECT_EQ(x.GetNIPALSStartColumn()[2], 0);
  for (int r = 2; r <= kCells; ++r) x(r, 2, 1);
  EXPECT_EQ(x.GetNIPALSStartColumn()[2], 1);
}

TYPED_TEST(NCDataMatrixStartColumn, IsTheFirstColumnWhereNoneHasASumOfSquares) {
  const auto x = MatrixOf<TypeParam>({{0, 0}, {0, -99}});
  EXPECT_EQ(CellsOf(x.GetNIPALSStartColumn()), (std::vector<TypeParam>{0, 0}));
  EXPECT_EQ(NCDataMatrix<TypeParam>(3, 2).GetNIPALSStartColumn().GetNumMisVal(), 3);  // all missing stays so
}

TYPED_TEST(NCDataMatrixStartColumn, ASingleColumnKeepsItsHoles) {
  const auto x = MatrixOf<TypeParam>({{1}, {-99}, {3}});
  const auto start = x.GetNIPALSStartColumn();
  EXPECT_EQ(CellsOf(start), (std::vector<TypeParam>{1, -99, 3}));
  EXPECT_EQ(start.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixStartColumn, FillsHolesWithAHundredthOfTheLargestInAlternatingSigns) {
  const auto x = MatrixOf<TypeParam>({{-99, 1}, {-50, 1}, {-99, 1}, {7, 1}, {-99, 1}});
  const auto start = x.GetNIPALSStartColumn();
  EXPECT_EQ(CellsOf(start), (std::vector<TypeParam>{0.5, -50, -0.5, 7, 0.5}));
  EXPECT_EQ(start.GetNumMisVal(), 0);
  EXPECT_EQ(x[1][1], -99);  // the table keeps its holes
}

TYPED_TEST(NCDataMatrixStartColumn, FillsHolesAmongZerosWithZeros) {
  const auto start = MatrixOf<TypeParam>({{-99, 0}, {0, 0}, {-99, 0}}).GetNIPALSStartColumn();
  EXPECT_EQ(CellsOf(start), (std::vector<TypeParam>{0, 0, 0}));
  EXPECT_EQ(start.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixStartColumn, EverySecondFillIsAHoleAgainWhereTheHundredthIsNinetyNine) {
  const auto x = MatrixOf<TypeParam>({{-99, 1}, {9900, 1}, {-99, 1}, {-99, 1}});
  const auto start = x.GetNIPALSStartColumn();
  EXPECT_EQ(CellsOf(start), (std::vector<TypeParam>{99, 9900, -99, 99}));
  EXPECT_EQ(start.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixStartColumn, ColumnsWithoutCellsAreNeverChosenWhereAnotherHasSome) {
  const auto x = MatrixOf<TypeParam>({{-99, TypeParam(0.001)}, {-99, -99}});
  EXPECT_EQ(x.GetNIPALSStartColumn()[1], TypeParam(0.001));
}

TYPED_TEST(NCDataMatrixStartColumn, OfATableWithoutColumnsIsMissing) {
  EXPECT_EQ(NCDataMatrix<TypeParam>(3, 0).GetNIPALSStartColumn().GetNumMisVal(), 3);
}

TYPED_TEST(NCDataMatrixStartColumn, GoesToTheResultTarget) {
  NCDataVector<TypeParam> target(2, 9);
  const NCDataVector<TypeParam> twin = target;
  const auto x = MatrixOf<TypeParam>({{1, -3}, {1, -99}});
  x.Result(&target).GetNIPALSStartColumn();
  EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{-3, static_cast<TypeParam>(TypeParam(3) / 100)}));
  EXPECT_EQ(target.GetNumMisVal(), 0);
  EXPECT_EQ(twin[1], 9);
}

TYPED_TEST(NCDataMatrixStartColumn, SumsOfSquaresHaveTheBitsOfTheColumnsOwn) {
  for (double holes : {0.0, 0.3}) {
    auto x = RandomMatrix<TypeParam>(37, 50, holes, 5);
    x.SetColumn(7, NCDataVector<TypeParam>(37, TypeParam(0.1)));
    std::vector<double> squares(50);
    std::vector<TypeParam> hole(50);
    kalmia::MarkColumnsWithHoles(x, 1, 50, hole.data());
    kalmia::SumColumnSquares(x, 1, 50, hole.data(), squares.data());
    std::vector<double> expected;
    for (int c = 1; c <= 50; ++c) expected.push_back(static_cast<double>(x.GetColumnSS(c, 0)));
    EXPECT_TRUE(SameBits(squares, expected));
  }
}

TYPED_TEST(NCDataMatrixStartColumn, LooksAtEveryColumnOfAWideTable) {  // several blocks of columns
  const auto x = RandomMatrix<TypeParam>(5, 40000, 0.2, 6);
  for (int c : {1, 1024, 13334, 13335, 40000}) {
    auto y = x;
    y.SetColumn(c, NCDataVector<TypeParam>(5, TypeParam(100)));
    EXPECT_EQ(y.GetNIPALSStartColumn()[3], 100) << c;
  }
}

}  // namespace
