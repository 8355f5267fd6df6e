#include "kalmia/kernels/simd/EightSums.h"

#include <gtest/gtest.h>

#include "kalmia/kernels/SideBySideSums.h"
#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

constexpr int kCounts[] = {0, 1, 2, 3, 5, 8, 13, 17};

/// Rows of one length, and eight numbers for each row and for each column.
struct Table {
  Table(int rowCount, int n)
      : cells(Cells<float>(rowCount * n, HolePattern::None, static_cast<unsigned>(rowCount + n))),
        ofRows(Cells<double>(8 * rowCount, HolePattern::None, 1)),
        ofColumns(Cells<double>(8 * n, HolePattern::None, 2)) {
    for (int i = 0; i < rowCount; ++i) rows.push_back(cells.data() + i * n);
  }

  std::vector<float> cells;
  std::vector<const float*> rows;
  std::vector<double> ofRows, ofColumns;
};

/// Calls check(count of rows, length, table) for all instruction sets, counts and lengths that tell something.
template <class Check>
void ForTables(const Check& check) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int count : kCounts)
      for (int n : {0, 1, 2, 7, 8, 9, 40, 401}) {
        SCOPED_TRACE(std::to_string(count) + " rows of " + std::to_string(n));
        check(count, n, Table(count, n));
      }
  }
}

TEST(SimdEightSums, AreThoseWorkedByHand) {
  const float first[] = {1, 2}, second[] = {3, 5};
  const float* rows[] = {first, second};
  double vectors[16] = {}, dots[16], sums[16] = {}, squares[16] = {};
  vectors[0] = 10;  // of lane 0: 10 and 1; of lane 7: -1 and 0.5
  vectors[8] = 1;
  vectors[7] = -1;
  vectors[15] = 0.5;
  simd::scalar::EightDots(rows, 2, vectors, 2, dots);
  EXPECT_EQ(dots[0], 12);
  EXPECT_EQ(dots[7], 0);
  EXPECT_EQ(dots[8], 35);
  EXPECT_EQ(dots[15], -0.5);
  EXPECT_EQ(dots[3], 0);
  simd::scalar::AddEightProducts(rows, 2, vectors, 2, sums);
  simd::scalar::AddEightProducts(rows, 2, vectors, 2, sums);
  EXPECT_EQ(sums[0], 2 * (10 + 3));
  EXPECT_EQ(sums[8], 2 * (20 + 5));
  EXPECT_EQ(sums[15], 2 * (-2 + 2.5));
  simd::scalar::AddEightSquares(rows, 2, vectors, vectors, 2, squares);
  EXPECT_EQ(squares[0], 10 * 81 + 1 * 49);
  EXPECT_EQ(squares[8], 10 * 1 + 1 * 16);
}

TEST(SimdEightSums, LanesGiveTheBitsOfTheScalarTwinForDots) {
  ForTables([](int count, int n, const Table& table) {
    std::vector<double> lanes(8 * count, 5.0), twins = lanes;
    simd::EightDots(table.rows.data(), count, table.ofColumns.data(), n, lanes.data());
    simd::scalar::EightDots(table.rows.data(), count, table.ofColumns.data(), n, twins.data());
    EXPECT_TRUE(SameBits(lanes, twins));
  });
}

TEST(SimdEightSums, LanesGiveTheBitsOfTheScalarTwinForProducts) {
  ForTables([](int count, int n, const Table& table) {
    std::vector<double> lanes(8 * n, 0.1), twins = lanes;
    simd::AddEightProducts(table.rows.data(), count, table.ofRows.data(), n, lanes.data());
    simd::scalar::AddEightProducts(table.rows.data(), count, table.ofRows.data(), n, twins.data());
    EXPECT_TRUE(SameBits(lanes, twins));
  });
}

TEST(SimdEightSums, LanesGiveTheBitsOfTheScalarTwinForSquares) {
  ForTables([](int count, int n, const Table& table) {
    std::vector<double> lanes(8 * n, 0.1), twins = lanes;
    simd::AddEightSquares(table.rows.data(), count, table.ofRows.data(), table.ofColumns.data(), n, lanes.data());
    simd::scalar::AddEightSquares(table.rows.data(), count, table.ofRows.data(), table.ofColumns.data(), n,
                                  twins.data());
    EXPECT_TRUE(SameBits(lanes, twins));
  });
}

TEST(SideBySideSums, DoNotDependOnHowRowsAreSharedOut) {
  constexpr int kRows = 21, kColumns = 30;
  const Table table(kRows, kColumns);
  std::vector<double> dots(8 * kRows), dotsInParts = dots, sums(8 * kColumns), sumsInParts = sums;
  kalmia::DotsSideBySide(table.rows.data(), kRows, table.ofColumns.data(), kColumns, dots.data());
  kalmia::AddProductsSideBySide(table.rows.data(), kRows, table.ofRows.data(), kColumns, sums.data());
  kalmia::AddSquaresSideBySide(table.rows.data(), kRows, table.ofRows.data(), table.ofColumns.data(), kColumns,
                               sums.data());
  for (int begin = 0; begin < kRows; begin += 4) {
    const int count = std::min(4, kRows - begin);
    kalmia::DotsSideBySide(&table.rows[begin], count, table.ofColumns.data(), kColumns, &dotsInParts[8 * begin]);
    kalmia::AddProductsSideBySide(&table.rows[begin], count, &table.ofRows[8 * begin], kColumns, sumsInParts.data());
  }
  for (int begin = 0; begin < kRows; begin += 4) {
    kalmia::AddSquaresSideBySide(&table.rows[begin], std::min(4, kRows - begin), &table.ofRows[8 * begin],
                                 table.ofColumns.data(), kColumns, sumsInParts.data());
  }
  EXPECT_TRUE(SameBits(dots, dotsInParts));
  EXPECT_TRUE(SameBits(sums, sumsInParts));
}

}  // namespace
