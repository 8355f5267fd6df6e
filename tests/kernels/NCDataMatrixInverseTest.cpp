#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class NCDataMatrixInverse : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixInverse, CellTypes, CellTypeNames);

/// max |A B - I|.
template <class T>
double DistanceFromIdentity(const NCDataMatrix<T>& a, const NCDataMatrix<T>& b) {
  double largest = 0;
  for (int i = 1; i <= a.SizeRows(); ++i)
    for (int j = 1; j <= b.SizeColumns(); ++j) {
      double sum = i == j ? -1 : 0;
      for (int k = 1; k <= a.SizeColumns(); ++k) sum += static_cast<double>(a[i][k]) * b[k][j];
      largest = std::max(largest, std::abs(sum));
    }
  return largest;
}

template <class T>
double LargestCell(const NCDataMatrix<T>& a) {
  double largest = 0;
  for (const auto& row : a)
    for (const T x : row) largest = std::max(largest, static_cast<double>(std::abs(x)));
  return largest;
}

TYPED_TEST(NCDataMatrixInverse, OfDyadicMatricesIsExact) {
  auto a = MatrixOf<TypeParam>({{2, 0}, {0, -4}});
  ASSERT_TRUE(a.TransformToInverse());
  EXPECT_EQ(CellsOf(a), CellsOf(MatrixOf<TypeParam>({{0.5, 0}, {0, -0.25}})));

  auto b = MatrixOf<TypeParam>({{4, 2}, {2, 2}});  // multiplier 1/2, pivots 4 and 1
  ASSERT_TRUE(b.TransformToInverse());
  EXPECT_EQ(CellsOf(b), CellsOf(MatrixOf<TypeParam>({{0.5, -0.5}, {-0.5, 1}})));
}

TYPED_TEST(NCDataMatrixInverse, OfAPermutationIsItsTranspose) {
  auto a = MatrixOf<TypeParam>({{0, 0, 1}, {1, 0, 0}, {0, 1, 0}});
  ASSERT_TRUE(a.TransformToInverse());
  EXPECT_EQ(CellsOf(a), CellsOf(MatrixOf<TypeParam>({{0, 1, 0}, {0, 0, 1}, {1, 0, 0}})));
}

TYPED_TEST(NCDataMatrixInverse, TimesTheMatrixIsTheIdentity) {
  for (const int n : {1, 2, 3, 4, 5, 17, 60}) {
    SCOPED_TRACE(n);
    const auto a = RandomMatrix<TypeParam>(n, n, 0, static_cast<unsigned>(n));
    auto inverse = a;
    ASSERT_TRUE(inverse.TransformToInverse());
    // Row sums of n products of a residual of LU: about n^2 units in the last place of the largest cells (Higham 2002,
    // 14.2); a right inverse computed by columns has a small residual A X - I.
    const double bound = n * n * std::numeric_limits<TypeParam>::epsilon() * LargestCell(a) * LargestCell(inverse);
    EXPECT_LE(DistanceFromIdentity(a, inverse), bound);
    EXPECT_TRUE(HasExactCounts(inverse));
  }
}

// The inverse of the Hilbert matrix consists of whole numbers (-1)^(i+j) (i+j-1) C(n+i-1, n-j) C(n+j-1, n-i)
// C(i+j-2, i-1)^2 (Choi 1983, Amer. Math. Monthly 90, 301-312). The condition number of order 5 is 4.8e5; rounding the
// cells and the elimination each cost a few units in the last place times that.
TYPED_TEST(NCDataMatrixInverse, OfTheHilbertMatrixHasItsWholeNumbers) {
  const int n = 5;
  NCDataMatrix<TypeParam> a(n, n, TypeParam(0));
  for (int i = 1; i <= n; ++i)
    for (int j = 1; j <= n; ++j) a(i, j, static_cast<TypeParam>(1.0 / (i + j - 1)));
  ASSERT_TRUE(a.TransformToInverse());
  const double published[5][5] = {{25, -300, 1050, -1400, 630},
                                  {-300, 4800, -18900, 26880, -12600},
                                  {1050, -18900, 79380, -117600, 56700},
                                  {-1400, 26880, -117600, 179200, -88200},
                                  {630, -12600, 56700, -88200, 44100}};
  const double relative = 4.8e5 * 4 * std::numeric_limits<TypeParam>::epsilon();
  for (int i = 1; i <= n; ++i)
    for (int j = 1; j <= n; ++j) EXPECT_NEAR(a[i][j], published[i - 1][j - 1], 179200 * relative) << i << ", " << j;
}

TYPED_TEST(NCDataMatrixInverse, RowsOfVeryDifferentScaleAreNoTrouble) {
  const TypeParam big = static_cast<TypeParam>(0x1p40);
  const auto a = MatrixOf<TypeParam>({{1, big}, {1, 1}});
  auto inverse = a;
  ASSERT_TRUE(inverse.TransformToInverse());
  // The inverse is (-1 2^40; 1 -1) / (2^40 - 1). With row 1 as the first pivot the 1 of row 2 would drown in 2^40, and
  // cell (1, 1) would come out as 1 - 1 = 0 in float; scaled, row 2 is the larger one, and nothing is lost.
  const double divisor = 0x1p40 - 1, rounding = 4 * std::numeric_limits<TypeParam>::epsilon();
  EXPECT_NEAR(inverse[1][1] * divisor, -1, rounding);
  EXPECT_NEAR(inverse[1][2] * divisor / 0x1p40, 1, rounding);
  EXPECT_NEAR(inverse[2][1] * divisor, 1, rounding);
  EXPECT_NEAR(inverse[2][2] * divisor, -1, rounding);
}

TYPED_TEST(NCDataMatrixInverse, FailsWhereARowIsZero) {
  auto a = MatrixOf<TypeParam>({{1, 2}, {0, 0}});
  EXPECT_FALSE(a.TransformToInverse());
  EXPECT_EQ(a.SizeRows(), 2);
}

// The second pivot is 2 - 2 * 1 = 0 and becomes 1e-20: U = (1 1; 0 1e-20), L = (1 0; 1 1), so that the inverse has the
// cells 1 + 1e20, -1e20; -1e20, 1e20.
TYPED_TEST(NCDataMatrixInverse, AZeroPivotGivesVeryLargeCells) {
  auto a = MatrixOf<TypeParam>({{1, 1}, {1, 1}});
  ASSERT_TRUE(a.TransformToInverse());
  const double large = 1 / static_cast<double>(static_cast<TypeParam>(1e-20));
  const double rounding = 2 * std::numeric_limits<TypeParam>::epsilon() * large;
  EXPECT_NEAR(a[1][1], large, rounding);
  EXPECT_NEAR(a[1][2], -large, rounding);
  EXPECT_NEAR(a[2][1], -large, rounding);
  EXPECT_NEAR(a[2][2], large, rounding);
}

TYPED_TEST(NCDataMatrixInverse, AZeroColumnIsNoZeroRow) {
  auto a = MatrixOf<TypeParam>({{0, 1}, {0, 2}});
  ASSERT_TRUE(a.TransformToInverse());
  EXPECT_GT(LargestCell(a), 1e19);
}

// With the first of the equal rows as the first pivot: L = (1 0; 1 1), U = (1 0; 0 1e-20), inverse (1 0; -1e20 1e20).
// With the rows exchanged it would be (0 1; 1e20 -1e20).
TYPED_TEST(NCDataMatrixInverse, OfEqualScaledPivotsTheFirstIsTaken) {
  auto a = MatrixOf<TypeParam>({{1, 0}, {1, 0}});
  ASSERT_TRUE(a.TransformToInverse());
  const double large = 1 / static_cast<double>(static_cast<TypeParam>(1e-20));
  const double rounding = std::numeric_limits<TypeParam>::epsilon() * large;
  EXPECT_EQ(a[1][1], 1);
  EXPECT_EQ(a[1][2], 0);
  EXPECT_NEAR(a[2][1], -large, rounding);
  EXPECT_NEAR(a[2][2], large, rounding);
}

TYPED_TEST(NCDataMatrixInverse, LeavesSharersAlone) {
  const auto original = RandomMatrix<TypeParam>(4, 4, 0, 2);
  const auto before = CellsOf(original);
  NCDataMatrix<TypeParam> a(original);
  ASSERT_TRUE(a.TransformToInverse());
  EXPECT_EQ(CellsOf(original), before);
}

TYPED_TEST(NCDataMatrixInverse, CountsNoHolesEvenWhereACellLandsOnMinus99) {
  auto a = MatrixOf<TypeParam>({{static_cast<TypeParam>(-1 / 99.0)}});
  ASSERT_TRUE(a.TransformToInverse());
  EXPECT_EQ(a.GetNumMisVal(), 0);
  EXPECT_EQ(a.GetColumnMisVal(1), 0);
}

TYPED_TEST(NCDataMatrixInverse, OfNothingIsNothing) {
  NCDataMatrix<TypeParam> a;
  EXPECT_TRUE(a.TransformToInverse());
  EXPECT_EQ(a.SizeRows(), 0);
}

TYPED_TEST(NCDataMatrixInverse, FailsWhereTheMatrixIsNotSquare) {
  auto a = RandomMatrix<TypeParam>(2, 3, 0, 1);
  EXPECT_FALSE(a.TransformToInverse());
}

TYPED_TEST(NCDataMatrixInverse, NumbersThatAreNotFiniteEnd) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN(), inf = std::numeric_limits<TypeParam>::infinity();
  auto a = MatrixOf<TypeParam>({{nan, 1}, {2, 3}});
  EXPECT_TRUE(a.TransformToInverse());
  EXPECT_TRUE(std::isnan(a[1][1]));
  auto allNaN = MatrixOf<TypeParam>({{nan, nan}, {2, 3}});
  EXPECT_FALSE(allNaN.TransformToInverse());
  auto infinite = MatrixOf<TypeParam>({{inf, 1}, {2, 3}});
  infinite.TransformToInverse();
  EXPECT_FALSE(std::isfinite(infinite[1][1]) && std::isfinite(infinite[2][2]) && std::isfinite(infinite[1][2]));
}

}  // namespace
