#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

// Statistics of the columns of a matrix, and of the matrix as a whole.

namespace {

constexpr double kNoEstimate = kalmia::kMissing;

template <class T>
class NCDataMatrixStatistics : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixStatistics, CellTypes, CellTypeNames);

/// A table of 40 rows whose columns are: complete, with holes, all missing, with one cell, constant, with a mean of
/// -99.
template <class T>
NCDataMatrix<T> TableOfAllKinds() {
  NCDataMatrix<T> m = RandomMatrix<T>(40, 6, 0, 21);
  m.SetColumn(2, RandomVector<T>(40, 0.4, 22));
  m.SetColumn(3, kHole<T>);
  m.SetColumn(4, kHole<T>);
  m(17, 4, T(2.5));
  m.SetColumn(5, T(1.25));
  for (int r = 1; r <= 40; ++r) m(r, 6, static_cast<T>(r % 2 == 0 ? -98 : -100));
  return m;
}

/// What the vector says of column c, where it is well defined: not for a mean of -99.
template <class T>
void ExpectAsOnVector(const NCDataMatrix<T>& m, int c) {
  SCOPED_TRACE(testing::Message() << "column " << c);
  const NCDataVector<T> v = m.GetColumn(c);
  // Both sum the same numbers in double, in another order: 40 terms whose absolute values add to less than 1e4.
  const double rounding = 1e4 * 40 * 0x1p-53;
  EXPECT_NEAR(m.GetColumnMean(c), v.GetMean(), rounding);
  EXPECT_NEAR(m.GetColumnStdDev(c), v.GetStdDev(), rounding);
  EXPECT_NEAR(m.GetColumnSkewness(c), v.GetSkewness(), rounding);
  EXPECT_NEAR(m.GetColumnSkewnessTest(c), v.GetSkewnessTest(), rounding);
  EXPECT_NEAR(m.GetColumnKurtosis(c), v.GetKurtosis(), rounding);
  EXPECT_EQ(m.GetColumnMedian(c), v.GetMedian());
  T min, max, vMin, vMax;
  m.GetColumnMinMax(c, min, max);
  v.GetMinMax(vMin, vMax);
  EXPECT_EQ(min, vMin);
  EXPECT_EQ(max, vMax);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnsAreAsTheirVectors) {
  const auto m = TableOfAllKinds<TypeParam>();
  for (int c = 1; c <= 5; ++c) ExpectAsOnVector(m, c);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnMeanIsMinus99WithoutACellAnd0WithoutARow) {
  const auto m = TableOfAllKinds<TypeParam>();
  EXPECT_EQ(m.GetColumnMean(3), kNoEstimate);
  EXPECT_EQ(m.GetColumnMean(4), 2.5);
  NCDataMatrix<TypeParam> noRows;
  noRows.SetSize(0, 2);
  EXPECT_EQ(noRows.GetColumnMean(1), 0);
  EXPECT_EQ(NCDataMatrix<TypeParam>().GetColumnMean(1), 0);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnMeanMayBeAnHonestMinus99) {
  const auto m = TableOfAllKinds<TypeParam>();
  EXPECT_EQ(m.GetColumnMean(6), -99);
  EXPECT_EQ(m.GetColumnSS(6, m.GetColumnMean(6)), 40);
  EXPECT_EQ(m.GetColumnStdDev(6), std::sqrt(40.0L / 39));
  EXPECT_NEAR(m.GetColumnSkewness(6), 0, 1e-15);  // symmetric: the cubes cancel
}

TYPED_TEST(NCDataMatrixStatistics, ColumnSSIsTakenAroundTheGivenMean) {
  const TypeParam hole = kHole<TypeParam>;
  const auto m = MatrixOf<TypeParam>({{1, hole, hole}, {2, 5, hole}, {4, 7, hole}});
  EXPECT_EQ(m.GetColumnSS(1, 0), 21);
  EXPECT_EQ(m.GetColumnSS(1, 2), 5);
  EXPECT_EQ(m.GetColumnSS(2, 6), 2);
  EXPECT_EQ(m.GetColumnSS(3, 0), kNoEstimate);
  EXPECT_EQ(NCDataMatrix<TypeParam>().GetColumnSS(1, 0), 0);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnStdDevTakesTheDivisorOrOneLessThanTheCells) {
  const TypeParam hole = kHole<TypeParam>;
  const auto m = MatrixOf<TypeParam>({{1, 4, hole}, {3, hole, hole}, {hole, hole, hole}});
  EXPECT_EQ(m.GetColumnStdDev(1), std::sqrt(2.0L));
  EXPECT_EQ(m.GetColumnStdDev(1, -99.0f), std::sqrt(2.0L));
  EXPECT_EQ(m.GetColumnStdDev(1, 2.0f), 1);
  EXPECT_EQ(m.GetColumnStdDev(1, 0.5f), 2);
  EXPECT_EQ(m.GetColumnStdDev(1, 0.0f), kNoEstimate);
  EXPECT_EQ(m.GetColumnStdDev(1, -1.0f), kNoEstimate);
  EXPECT_EQ(m.GetColumnStdDev(2), kNoEstimate);       // n - 1 = 0
  EXPECT_EQ(m.GetColumnStdDev(2, 1.0f), 0);           // a divisor of the caller's own needs one cell only
  EXPECT_EQ(m.GetColumnStdDev(3), kNoEstimate);
  EXPECT_EQ(m.GetColumnStdDev(3, 1.0f), kNoEstimate);
  EXPECT_EQ(NCDataMatrix<TypeParam>().GetColumnStdDev(1), kNoEstimate);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnSkewnessStandardisesByTheGivenDivisor) {
  const auto m = MatrixOf<TypeParam>({{1}, {1}, {4}, {8}, {2}});
  const int n = 5;
  // z shrinks by the root of (n - 1) / n when the standard deviation is taken over n - 1 instead of n.
  const long double ratio = std::pow((n - 1.0L) / n, 1.5L);
  EXPECT_NEAR(m.GetColumnSkewness(1), ratio * m.GetColumnSkewness(1, n), 1e-15);
  EXPECT_NEAR(m.GetColumnSkewnessTest(1), ratio * m.GetColumnSkewnessTest(1, n), 1e-15);
  EXPECT_EQ(m.GetColumnSkewness(1, 0), kNoEstimate);
  EXPECT_EQ(m.GetColumnSkewnessTest(1, 0), kNoEstimate);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnSkewnessAndKurtosisNeedTwoCellsAndSpread) {
  const auto m = TableOfAllKinds<TypeParam>();
  for (const int c : {3, 4, 5}) {
    EXPECT_EQ(m.GetColumnSkewness(c), kNoEstimate);
    EXPECT_EQ(m.GetColumnSkewness(c, 1), kNoEstimate);
    EXPECT_EQ(m.GetColumnSkewnessTest(c), kNoEstimate);
    EXPECT_EQ(m.GetColumnKurtosis(c), kNoEstimate);
  }
}

TYPED_TEST(NCDataMatrixStatistics, ColumnsOfAMatrixWithoutRowsAreNoEstimate) {
  const NCDataMatrix<TypeParam> m;
  EXPECT_EQ(m.GetColumnSkewness(1), kNoEstimate);
  EXPECT_EQ(m.GetColumnKurtosis(1), kNoEstimate);
  EXPECT_EQ(m.GetColumnMedian(1), kNoEstimate);
  TypeParam min = 0, max = 0;
  m.GetColumnMinMax(1, min, max);
  EXPECT_EQ(min, kNoEstimate);
  EXPECT_EQ(max, kNoEstimate);
  EXPECT_EQ(m.GetMean(), kNoEstimate);
  EXPECT_EQ(m.GetSSAroundColumnMeans(), 0);
}

TYPED_TEST(NCDataMatrixStatistics, MinAndMaxOfColumnsAndRowsLeaveHolesOut) {
  const TypeParam hole = kHole<TypeParam>;
  const auto m = MatrixOf<TypeParam>({{hole, 5, hole}, {-200, hole, hole}, {3, 4, 7}});
  TypeParam min, max;
  m.GetColumnMinMax(1, min, max);
  EXPECT_EQ(min, -200);
  EXPECT_EQ(max, 3);
  m.GetColumnMinMax(3, min, max);
  EXPECT_EQ(min, 7);
  EXPECT_EQ(max, 7);
  m.GetRowMinMax(1, min, max);
  EXPECT_EQ(min, 5);
  EXPECT_EQ(max, 5);
  m.GetRowMinMax(3, min, max);
  EXPECT_EQ(min, 3);
  EXPECT_EQ(max, 7);
  const NCDataMatrix<TypeParam> empty(2, 2);
  empty.GetColumnMinMax(1, min, max);
  EXPECT_EQ(min, kNoEstimate);
  EXPECT_EQ(max, kNoEstimate);
}

TYPED_TEST(NCDataMatrixStatistics, MeanIsThatOfAllPresentCells) {
  const TypeParam hole = kHole<TypeParam>;
  EXPECT_EQ(MatrixOf<TypeParam>({{1, 2}, {3, hole}}).GetMean(), 2);
  EXPECT_EQ(MatrixOf<TypeParam>({{1, 2}, {3, 4}}).GetMean(), 2.5);
  EXPECT_EQ(NCDataMatrix<TypeParam>(2, 3).GetMean(), kNoEstimate);
}

TYPED_TEST(NCDataMatrixStatistics, SSAroundColumnMeansIsTheSumOverTheColumnsToTheBit) {
  for (const auto& m : {TableOfAllKinds<TypeParam>(), RandomMatrix<TypeParam>(33, 70, 0.2, 3),
                        RandomMatrix<TypeParam>(33, 70, 0, 4)}) {
    long double sum = 0;
    for (int c = 1; c <= m.SizeColumns(); ++c)
      if (m.GetColumnMisVal(c) < m.SizeRows()) sum += m.GetColumnSS(c, m.GetColumnMean(c));
    EXPECT_EQ(m.GetSSAroundColumnMeans(), sum);
  }
}

TYPED_TEST(NCDataMatrixStatistics, SSAroundColumnMeansLeavesEmptyColumnsOut) {
  const TypeParam hole = kHole<TypeParam>;
  EXPECT_EQ(MatrixOf<TypeParam>({{1, hole}, {3, hole}}).GetSSAroundColumnMeans(), 2);
  EXPECT_EQ(NCDataMatrix<TypeParam>(2, 3).GetSSAroundColumnMeans(), 0);
}

TYPED_TEST(NCDataMatrixStatistics, ACellThatLandedOnMinus99InAColumnWithoutCountedHolesIsANumber) {
  auto m = MatrixOf<TypeParam>({{-98, 2}, {4, kHole<TypeParam>}});
  m.TransformToDotSubRowVector(VectorOf<TypeParam>({1, 0}));  // makes -99 of cell (1, 1), and counts no hole
  ASSERT_EQ(m.GetColumnMisVal(1), 0);
  EXPECT_EQ(m.GetColumnMean(1), -48);
  EXPECT_EQ(m.GetColumnSS(1, 0), 99 * 99 + 3 * 3);
  EXPECT_EQ(m.GetSSAroundColumnMeans(), 2 * 51 * 51);
  EXPECT_EQ(m.GetColumnCorrelation(VectorOf<TypeParam>({-33, 1}))[1], 1);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnCorrelationIsTheVectorsToTheBit) {
  for (const double vHoles : {0.0, 0.3}) {
    const auto v = RandomVector<TypeParam>(40, vHoles, 31);
    for (const auto& m : {TableOfAllKinds<TypeParam>(), RandomMatrix<TypeParam>(40, 9, 0, 5)}) {
      const NCDataVector<TypeParam> correlations = m.GetColumnCorrelation(v);
      ASSERT_EQ(correlations.Size(), m.SizeColumns());
      for (int c = 1; c <= m.SizeColumns(); ++c)
        EXPECT_EQ(correlations[c], static_cast<TypeParam>(m.GetColumn(c).Correlation(v))) << c;
      EXPECT_TRUE(HasExactCounts(correlations));
    }
  }
}

TYPED_TEST(NCDataMatrixStatistics, ColumnCorrelationWithoutAPairIsMissing) {
  const TypeParam hole = kHole<TypeParam>;
  const auto m = MatrixOf<TypeParam>({{1, hole}, {2, 5}});
  NCDataVector<TypeParam> target(2, TypeParam(7));
  m.Result(&target).GetColumnCorrelation(VectorOf<TypeParam>({3, hole}));
  EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{1, hole}));
  EXPECT_TRUE(HasExactCounts(target));
  EXPECT_EQ(NCDataMatrix<TypeParam>().GetColumnCorrelation(NCDataVector<TypeParam>()).Size(), 0);
}

TYPED_TEST(NCDataMatrixStatistics, ColumnCorrelationIsBuiltInARowOfTheTableThatMayBeTheVectorToo) {
  for (const double holes : {0.0, 0.3}) {
    auto m = RandomMatrix<TypeParam>(7, 7, holes, 6);
    const NCDataMatrix<TypeParam> twin(m);
    const auto before = CellsOf(m);
    const auto ofRow2 = CellsOf(m.GetColumnCorrelation(m[2]));
    m.Result(&m(3)).GetColumnCorrelation(m[2]);
    EXPECT_EQ(CellsOf(m[3]), ofRow2);
    m = twin;
    m.Result(&m(2)).GetColumnCorrelation(m[2]);
    EXPECT_EQ(CellsOf(m[2]), ofRow2);
    EXPECT_TRUE(HasExactCounts(m[2]));
    EXPECT_EQ(CellsOf(m[3]), before[2]);
    EXPECT_EQ(CellsOf(twin), before);
  }
}

TYPED_TEST(NCDataMatrixStatistics, SNVIsThatOfEachRow) {
  auto m = RandomMatrix<TypeParam>(7, 5, 0.3, 12);
  m.SetRow(3, kHole<TypeParam>);
  m.SetRow(5, kHole<TypeParam>);
  m(5, 2, 1);  // one cell only: the whole row becomes missing
  const NCDataMatrix<TypeParam> z = m.SNV();
  for (int r = 1; r <= 7; ++r) EXPECT_EQ(CellsOf(z[r]), CellsOf(m[r].SNV())) << r;
  EXPECT_TRUE(HasExactCounts(z));
  EXPECT_EQ(z[5].GetNumMisVal(), 5);
}

TYPED_TEST(NCDataMatrixStatistics, SNVBuildsItsResultInATarget) {
  const auto m = RandomMatrix<TypeParam>(4, 6, 0.4, 13);
  const auto expected = CellsOf(m.SNV());
  NCDataMatrix<TypeParam> target(4, 6, TypeParam(7));
  const NCDataMatrix<TypeParam> sharer(target);
  m.Result(&target).SNV();
  EXPECT_EQ(CellsOf(target), expected);
  EXPECT_TRUE(HasExactCounts(target));
  EXPECT_EQ(sharer[1][1], 7);
  EXPECT_EQ(NCDataMatrix<TypeParam>().SNV().SizeRows(), 0);
}

TYPED_TEST(NCDataMatrixStatistics, RegressionCoefficientsTakeVariablesInRows) {
  // Two X variables and three Y variables in rows, four observations in columns; Y = B' X exactly.
  const auto x = MatrixOf<TypeParam>({{1, 2, 0, -1}, {0, 1, 3, 2}});
  const auto b = MatrixOf<TypeParam>({{2, -1, 0.5}, {1, 4, 0}});
  NCDataMatrix<TypeParam> y(3, 4, TypeParam(0));
  for (int q = 1; q <= 3; ++q)
    for (int i = 1; i <= 4; ++i) y(q, i, b[1][q] * x[1][i] + b[2][q] * x[2][i]);
  const NCDataMatrix<TypeParam> found = x.GetRegressionCoefficients(y);
  ASSERT_EQ(found.SizeRows(), 2);
  ASSERT_EQ(found.SizeColumns(), 3);
  // X X' = (6 0; 0 14): only 1 / 6, 1 / 14 and the products with them are rounded, of numbers below 60.
  for (int p = 1; p <= 2; ++p)
    for (int q = 1; q <= 3; ++q) EXPECT_NEAR(found[p][q], b[p][q], 60 * std::numeric_limits<TypeParam>::epsilon());
}

TYPED_TEST(NCDataMatrixStatistics, RegressionCoefficientsLeaveResidualsOrthogonalToX) {
  const auto x = RandomMatrix<TypeParam>(3, 30, 0, 40), y = RandomMatrix<TypeParam>(2, 30, 0, 41);
  const auto before = CellsOf(x);
  const NCDataMatrix<TypeParam> b = x.GetRegressionCoefficients(y);
  EXPECT_EQ(CellsOf(x), before);
  for (int p = 1; p <= 3; ++p)
    for (int q = 1; q <= 2; ++q) {
      double sum = 0;
      for (int i = 1; i <= 30; ++i) {
        double residual = y[q][i];
        for (int k = 1; k <= 3; ++k) residual -= static_cast<double>(b[k][q]) * x[k][i];
        sum += residual * x[p][i];
      }
      // 30 products below 9; X X' is well conditioned, its inverse and products are rounded to cells a few times.
      EXPECT_NEAR(sum, 0, 30 * 9 * 8 * std::numeric_limits<TypeParam>::epsilon());
    }
}

TYPED_TEST(NCDataMatrixStatistics, RegressionCoefficientsWithHolesAreZerosOfRowsByRows) {
  auto x = RandomMatrix<TypeParam>(2, 5, 0, 1), y = RandomMatrix<TypeParam>(3, 5, 0, 2);
  const auto zeros = std::vector<std::vector<TypeParam>>(2, std::vector<TypeParam>(2, 0));
  auto holed = x;
  holed(2, 3, kHole<TypeParam>);
  EXPECT_EQ(CellsOf(holed.GetRegressionCoefficients(y)), zeros);
  y(1, 1, kHole<TypeParam>);
  const NCDataMatrix<TypeParam> result = x.GetRegressionCoefficients(y);
  EXPECT_EQ(CellsOf(result), zeros);
  EXPECT_TRUE(HasExactCounts(result));
}

// A row of zeros stops the inversion of X X', which then stays what it is: (14 0; 0 0) times X times y'.
TYPED_TEST(NCDataMatrixStatistics, RegressionCoefficientsGoOnWhereTheInversionFails) {
  const auto x = MatrixOf<TypeParam>({{1, 2, 3}, {0, 0, 0}}), y = MatrixOf<TypeParam>({{1, 2, 4}});
  EXPECT_EQ(CellsOf(x.GetRegressionCoefficients(y)), CellsOf(MatrixOf<TypeParam>({{14 * 17}, {0}})));
}

TYPED_TEST(NCDataMatrixStatistics, RegressionCoefficientsBuildTheirResultInATarget) {
  auto x = RandomMatrix<TypeParam>(2, 5, 0, 1), y = RandomMatrix<TypeParam>(3, 5, 0, 2);
  const auto expected = CellsOf(x.GetRegressionCoefficients(y));
  NCDataMatrix<TypeParam> target(2, 3, TypeParam(7));
  x.Result(&target).GetRegressionCoefficients(y);
  EXPECT_EQ(CellsOf(target), expected);
  x.SNV();
  EXPECT_EQ(CellsOf(target), expected) << "a target serves once";
  NCDataMatrix<TypeParam> square(2, 2, TypeParam(7));
  y(1, 1, kHole<TypeParam>);
  x.Result(&square).GetRegressionCoefficients(y);
  EXPECT_EQ(square.GetMean(), 0);
}

TYPED_TEST(NCDataMatrixStatistics, SNVAndRegressionCoefficientsAreBuiltInTablesThatTheyRead) {
  const auto x = RandomMatrix<TypeParam>(3, 3, 0, 1), y = RandomMatrix<TypeParam>(3, 3, 0, 2);
  const auto z = CellsOf(x.SNV()), b = CellsOf(x.GetRegressionCoefficients(y));
  NCDataMatrix<TypeParam> inItself(x), inX(x), inY(y);
  inItself.Result(&inItself).SNV();
  EXPECT_EQ(CellsOf(inItself), z);
  EXPECT_TRUE(HasExactCounts(inItself));
  inX.Result(&inX).GetRegressionCoefficients(y);
  EXPECT_EQ(CellsOf(inX), b);
  x.Result(&inY).GetRegressionCoefficients(inY);
  EXPECT_EQ(CellsOf(inY), b);
  EXPECT_EQ(CellsOf(x), CellsOf(RandomMatrix<TypeParam>(3, 3, 0, 1))) << "whoever shares the table keeps the cells";
}

// SciPy 1.10.1 (Debian python3-scipy 1.10.1-2), skew and kurtosis with bias=False, of the same eight cells as on
// vectors.
TYPED_TEST(NCDataMatrixStatistics, ColumnSkewnessAndKurtosisAreSciPysUnbiasedOnes) {
  NCDataMatrix<TypeParam> m(8, 2);
  m.SetColumn(2, VectorOf<TypeParam>({2, 8, 0, 4, 1, 9, 9, 0}));
  EXPECT_NEAR(m.GetColumnSkewness(2), 0.3305821804079746, 1e-14);
  EXPECT_NEAR(m.GetColumnKurtosis(2), -2.098602258096087, 1e-14);
}

}  // namespace
