#include "kalmia/kernels/product/RowDots.h"

#include <gtest/gtest.h>

#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class RowDots : public ::testing::Test {};
TYPED_TEST_SUITE(RowDots, CellTypes, CellTypeNames);

TYPED_TEST(RowDots, HaveTheBitsOfEachRowsDotProduct) {
  using T = TypeParam;
  for (int rows : {0, 1, 7, 8, 9, 40})
    for (int columns : {0, 1, 5, 16, 37, 300})
      for (double holes : {0.0, 0.2, 0.9})
        for (double holesOfV : {0.0, 0.3, 1.0}) {
          SCOPED_TRACE(::testing::Message() << rows << " x " << columns << ", " << holes << " and " << holesOfV);
          auto X = RandomMatrix<T>(rows, columns, holes, rows);
          for (int r = 2; r <= rows && holes > 0; r += 3) X.SetRow(r, RandomVector<T>(columns, 0, r));
          for (int r = 3; r <= rows && holes > 0; r += 5) X.SetRow(r, NCDataVector<T>(columns));
          const auto v = RandomVector<T>(columns, holesOfV, 7);
          std::vector<T> dots(rows + 1), expected(rows + 1);
          int missing = 0;
          const int counted = kalmia::DotRows(X, v, dots.data(), 1, rows);
          for (int r = 1; r <= rows; ++r) {
            expected[r] = static_cast<T>(X[r] * v);
            missing += dots[r] == kHole<T>;
          }
          EXPECT_TRUE(SameBits(dots, expected));
          EXPECT_EQ(counted, missing);
        }
}

TYPED_TEST(RowDots, TellASumOfZeroFromNoPair) {
  const auto X = MatrixOf<TypeParam>({{0, -99, 1}, {-99, 5, 7}, {-99, -99, -99}});
  const auto v = VectorOf<TypeParam>({5, -99, -99});
  std::vector<TypeParam> dots(4);
  EXPECT_EQ(kalmia::DotRows(X, v, dots.data(), 1, 3), 2);
  EXPECT_EQ(dots, (std::vector<TypeParam>{0, 0, -99, -99}));
}

}  // namespace
