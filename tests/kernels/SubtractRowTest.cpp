#include "kalmia/kernels/rows/SubtractRow.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

void ExpectBitsOfTheMatrix(const NCDataMatrix<float>& X, const NCDataVector<float>& v) {
  NCDataMatrix<float> shifted = X;
  NCDataMatrix<float> expected = X;
  kalmia::SubtractRow(&shifted, v);
  expected.TransformToDotSubRowVector(v);
  EXPECT_EQ(shifted.SizeRows(), expected.SizeRows());
  EXPECT_TRUE(shifted == expected);  // byte by byte
  EXPECT_EQ(shifted.GetNumMisVal(), expected.GetNumMisVal());
}

TEST(SubtractRow, GivesTheBitsOfTheMatrixOperation) {
  for (const int threads : {1, 2, 3}) {
    const Threads team(threads);
    for (const int columns : {1, 3, 16, 33, 400})
      for (const double holes : {0.0, 0.2, 1.0}) {
        SCOPED_TRACE(std::to_string(columns) + " columns, holes " + std::to_string(holes));
        const auto X = RandomMatrix<float>(100, columns, holes, 1);
        ExpectBitsOfTheMatrix(X, RandomVector<float>(columns, 0.0, 2));
        ExpectBitsOfTheMatrix(X, RandomVector<float>(columns, 0.3, 3));
      }
  }
}

TEST(SubtractRow, GivesTheBitsOfTheMatrixOperationForCellsOfAllSizes) {
  const float inf = std::numeric_limits<float>::infinity();
  const float tiny = std::numeric_limits<float>::denorm_min();
  const float cells[] = {0.0F, -0.0F, 1.0F, -99.0F, 99.0F, 3e38F, -3e38F, tiny, 1e-38F, inf, 16777217.0F, 0.1F};
  constexpr int kCells = 12;
  NCDataMatrix<float> X(kCells, kCells);
  NCDataVector<float> v(kCells);
  for (int i = 1; i <= kCells; ++i) {
    v(i, cells[i - 1]);
    for (int j = 1; j <= kCells; ++j) X(j, i, cells[j - 1]);  // each cell against each
  }
  ExpectBitsOfTheMatrix(X, v);
}

TEST(SubtractRow, LeavesHolesThatTheTableDoesNotKnowOf) {
  auto X = RandomMatrix<float>(3, 4, 0.0, 1);
  X(2)(3, kHole<float>);
  ASSERT_EQ(X.GetNumMisVal(), 0);
  ExpectBitsOfTheMatrix(X, RandomVector<float>(4, 0.0, 2));
}

TEST(SubtractRow, LeavesATableThatSharesItsCellsAlone) {
  const auto X = RandomMatrix<float>(3, 4, 0.1, 1);
  const auto before = CellsOf(X);
  NCDataMatrix<float> shifted = X;
  kalmia::SubtractRow(&shifted, RandomVector<float>(4, 0.0, 2));
  EXPECT_EQ(CellsOf(X), before);
}

TEST(SubtractRow, DoesNothingToATableWithoutCells) {
  NCDataMatrix<float> none;
  none.SetSize(0, 3);
  ExpectBitsOfTheMatrix(none, NCDataVector<float>(3, 1.0F));
  ExpectBitsOfTheMatrix(NCDataMatrix<float>(), NCDataVector<float>());
}

}  // namespace
