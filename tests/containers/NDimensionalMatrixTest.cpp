#include "kalmia/containers/NDimensionalMatrix.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "kalmia/support/Exception.h"
#include "testing/AllocationMeter.h"

namespace {

using Matrix = NDimensionalMatrix<int>;

void ExpectDimensionError(const std::function<void()>& misuse) {
  try {
    misuse();
    ADD_FAILURE() << "no exception";
  } catch (const Exception& error) {
    EXPECT_STREQ(error.GetMessage(), "dimension error");
  }
}

TEST(NDimensionalMatrix, HoldsItsValueUntilACellIsSet) {
  Matrix m({3, 2}, 0, -1);
  EXPECT_EQ(m.Get({3, 2}, -1), 0);
  m.Set({1, 2}, 5, -1);
  EXPECT_EQ(m.Get({1, 2}, -1), 5);
  EXPECT_EQ(Matrix({3, 2}, 7, -1).Get({2, 1}, -1), 7);
}

TEST(NDimensionalMatrix, KeepsEveryCellApart) {
  Matrix m({3, 2, 4}, -1, -1);
  for (int i = 1; i <= 3; ++i)
    for (int j = 1; j <= 2; ++j)
      for (int k = 1; k <= 4; ++k) m.Set({i, j, k}, 100 * i + 10 * j + k, -1);
  for (int i = 1; i <= 3; ++i)
    for (int j = 1; j <= 2; ++j)
      for (int k = 1; k <= 4; ++k) EXPECT_EQ(m.Get({i, j, k}, -1), 100 * i + 10 * j + k);
}

TEST(NDimensionalMatrix, TakesAsManySizesAsTheLevelSays) {
  for (const int level : {0, -1, -7, 2}) {
    Matrix m({3, 2}, 1, level);
    EXPECT_EQ(m.Get({3, 2}, -1), 1);
    EXPECT_EQ(m.Get({3, 2}, 2), 1);
  }
  Matrix row({3, 2}, 1, 1);
  EXPECT_EQ(row.Get({3}, -1), 1);
  EXPECT_EQ(row.Get({3, 2}, 1), 1) << "the index is read up to the level";
  ExpectDimensionError([&] { row.Get({3, 2}, -1); });
}

TEST(NDimensionalMatrix, RefusesALevelThatDoesNotFit) {
  ExpectDimensionError([] { Matrix({3, 2}, 0, 3); });
  ExpectDimensionError([] { Matrix({}, 0, -1); });
  Matrix m({3, 2}, 0, -1);
  ExpectDimensionError([&] { m.Get({1, 1, 1}, -1); });
  ExpectDimensionError([&] { m.Set({1, 1, 1}, 1, -1); });
  ExpectDimensionError([&] { m.Get({1}, -1); });
  ExpectDimensionError([&] { m.Get({1, 1}, 1); });
  ExpectDimensionError([&] { m.Get({1, 1}, 0); });
  ExpectDimensionError([&] { m.Get({1, 1}, 3); });
  ExpectDimensionError([&] { m.Set({}, 1, -1); });
}

TEST(NDimensionalMatrix, ChecksIndicesAndSizesAsTheStandardContainersDo) {
  Matrix m({3, 2}, 0, -1);
  EXPECT_THROW(m.Get({0, 1}, -1), std::out_of_range);
  EXPECT_THROW(m.Get({1, 3}, -1), std::out_of_range);
  EXPECT_THROW(m.Set({4, 1}, 1, -1), std::out_of_range);
  EXPECT_THROW(Matrix({3, -1}, 0, -1), std::length_error);
  EXPECT_THROW(Matrix({3, 0}, 0, -1).Get({1, 1}, -1), std::out_of_range);
}

TEST(NDimensionalMatrix, SharesItsCellsWithItsCopies) {
  Matrix m({3, 2}, 0, -1);
  Matrix copy(m);
  Matrix assigned({1}, 9, -1);
  assigned = m;
  m.Set({1, 2}, 5, -1);
  EXPECT_EQ(copy.Get({1, 2}, -1), 5);
  assigned.Set({3, 1}, 6, -1);
  EXPECT_EQ(m.Get({3, 1}, -1), 6);
}

TEST(NDimensionalMatrix, TakesMemoryForTheCellsThatAreSetAlone) {
  const PeakBytesDuring meter;
  Matrix m(std::vector<int>(20, 1000), 0, -1);  // 10^60 cells
  std::vector<int> index(20, 999);
  for (int i = 1; i <= 100; ++i) {
    index[19] = i;
    m.Set(index, i, -1);
  }
  EXPECT_EQ(m.Get(index, -1), 100);
  EXPECT_EQ(m.Get(std::vector<int>(20, 1), -1), 0);
  EXPECT_LT(meter.GetBytes(), 100 * 400);  // an index of 80 bytes, its node and its place in the table
}

}  // namespace
