#include "kalmia/pcapls/internal/ColumnMoments.h"

#include <gtest/gtest.h>

#include "testing/RandomTables.h"

namespace {

void ExpectBitsOfTheOperationsOnOneColumn(const NCDataMatrix<float>& matrix) {
  const std::vector<long double> means = kalmia::ColumnMeans(matrix);
  const std::vector<double> squares = kalmia::ColumnSquares(matrix);
  for (int j = 1; j <= matrix.SizeColumns(); ++j) {
    EXPECT_EQ(means[static_cast<std::size_t>(j)], matrix.GetColumnMean(j)) << "column " << j;
    EXPECT_EQ(squares[static_cast<std::size_t>(j)], matrix.GetColumnSS(j, 0.0L)) << "column " << j;
  }
}

TEST(ColumnMoments, AreThoseOfEachColumnToTheBit) {
  for (const double holes : {0.0, 0.3, 0.9}) {
    ExpectBitsOfTheOperationsOnOneColumn(RandomMatrix<float>(23, 1030, holes, 1));  // one block and some columns
    ExpectBitsOfTheOperationsOnOneColumn(RandomMatrix<float>(1, 5, holes, 2));
  }
}

TEST(ColumnMoments, AreMissingForAnEmptyColumnAndZeroWithoutRows) {
  NCDataMatrix<float> matrix = RandomMatrix<float>(4, 3, 0.0, 3);
  for (int r = 1; r <= 4; ++r) matrix(r, 2, kHole<float>);
  ExpectBitsOfTheOperationsOnOneColumn(matrix);
  EXPECT_EQ(kalmia::ColumnMeans(matrix)[2], -99.0L);
  EXPECT_EQ(kalmia::ColumnSquares(matrix)[2], -99.0);

  NCDataMatrix<float> none;
  none.SetSize(0, 3);
  ExpectBitsOfTheOperationsOnOneColumn(none);
  ExpectBitsOfTheOperationsOnOneColumn(NCDataMatrix<float>());
}

TEST(ColumnMoments, TrustTheCountsOfATableThatDoesNotKnowOfAHole) {
  NCDataMatrix<float> matrix = RandomMatrix<float>(5, 3, 0.0, 4);
  matrix(2)(3, kHole<float>);  // through the row: the table's counts stay at 0
  ASSERT_EQ(matrix.GetColumnMisVal(3), 0);
  ExpectBitsOfTheOperationsOnOneColumn(matrix);
}

}  // namespace
