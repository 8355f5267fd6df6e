#include <gtest/gtest.h>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

namespace {

/// One call of AddFV on row r, with counts of its own.
template <class T>
struct Call {
  Call(NCDataMatrix<T>& X, T f, const std::vector<T>& w, int mode, int r) : columnMisVal(X.SizeColumns() + 1) {
    NCDataMatrix<T>::AddFV(X, f, w.data(), mode, r, numMisVal, columnMisVal.data());
  }
  int numMisVal = 0;
  std::vector<int> columnMisVal;  ///< from 1
};

template <class T>
class NCDataMatrixAddFV : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixAddFV, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixAddFV, AddsTheMultipleToOneRow) {
  auto x = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  const Call<TypeParam> call(x, 2, {10, 20}, 0, 2);
  EXPECT_EQ(CellsOf(x), (std::vector<std::vector<TypeParam>>{{1, 2}, {23, 44}}));
  EXPECT_EQ(call.numMisVal, 0);
}

TYPED_TEST(NCDataMatrixAddFV, InModeZeroLooksAtNoCell) {
  auto x = MatrixOf<TypeParam>({{-99, 2}});
  const Call<TypeParam> call(x, 1, {1, -99}, 0, 1);
  EXPECT_EQ(CellsOf(x[1]), (std::vector<TypeParam>{-98, -97}));
  EXPECT_EQ(call.numMisVal, 0);
}

TYPED_TEST(NCDataMatrixAddFV, KeepsHolesAndEmptiesCellsOppositeAHole) {
  for (int mode : {1, 2, 3}) {
    auto x = MatrixOf<TypeParam>({{1, -99, 3, -99, 5}});
    const Call<TypeParam> call(x, 2, {10, 20, -99, -99, 30}, mode, 1);
    EXPECT_EQ(CellsOf(x[1]), (std::vector<TypeParam>{21, -99, -99, -99, 65}));
    EXPECT_EQ(x[1].GetNumMisVal(), 3);
    EXPECT_EQ(call.numMisVal, 1);
    EXPECT_EQ(call.columnMisVal, (std::vector<int>{0, 0, 0, 1, 0, 0}));
  }
}

TYPED_TEST(NCDataMatrixAddFV, AFactorOfZeroStillEmptiesCellsOppositeAHole) {
  auto x = MatrixOf<TypeParam>({{1, 2}});
  EXPECT_EQ(Call<TypeParam>(x, 0, {-99, 5}, 2, 1).numMisVal, 1);
  EXPECT_EQ(CellsOf(x[1]), (std::vector<TypeParam>{-99, 2}));
}

TYPED_TEST(NCDataMatrixAddFV, AMissingFactorEmptiesTheRow) {
  for (int mode : {0, 1, 2, 3}) {
    auto x = MatrixOf<TypeParam>({{1, -99, 3}, {4, 5, 6}});
    const Call<TypeParam> call(x, -99, {1, 1, 1}, mode, 1);
    EXPECT_EQ(CellsOf(x), (std::vector<std::vector<TypeParam>>{{-99, -99, -99}, {4, 5, 6}}));
    EXPECT_EQ(x[1].GetNumMisVal(), 3);
    EXPECT_EQ(call.numMisVal, 2);
    EXPECT_EQ(call.columnMisVal, (std::vector<int>{0, 1, 0, 1}));
  }
}

TYPED_TEST(NCDataMatrixAddFV, AMissingFactorSkipsARowOfHoles) {
  NCDataMatrix<TypeParam> x(1, 3);
  const Call<TypeParam> call(x, -99, {1, 1, 1}, 1, 1);
  EXPECT_EQ(call.numMisVal, 0);
  EXPECT_EQ(call.columnMisVal, (std::vector<int>{0, 0, 0, 0}));
}

TYPED_TEST(NCDataMatrixAddFV, DoesNothingInAModeThatDoesNotExist) {
  for (int mode : {-1, 4, 8}) {
    auto x = MatrixOf<TypeParam>({{1, 2}});
    const Call<TypeParam> call(x, 2, {-99, 1}, mode, 1);
    EXPECT_EQ(CellsOf(x[1]), (std::vector<TypeParam>{1, 2}));
    EXPECT_EQ(call.numMisVal, 0);
  }
}

TYPED_TEST(NCDataMatrixAddFV, ACellThatHappensToLandOnTheMissingValueIsNotCounted) {
  auto x = MatrixOf<TypeParam>({{-100, -99}});
  const Call<TypeParam> call(x, 1, {1, 1}, 1, 1);
  EXPECT_EQ(x[1][1], -99);
  EXPECT_EQ(call.numMisVal, 0);
  EXPECT_EQ(x[1].GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixAddFV, RoundsEachCellFromASumInDouble) {
  for (int mode : {0, 1, 3}) {
    auto x = RandomMatrix<TypeParam>(1, 70, mode == 0 ? 0 : 0.2, 1);
    const auto before = CellsOf(x[1]);
    const auto w = CellsOf(RandomVector<TypeParam>(70, 0, 2));
    const TypeParam f = TypeParam(0.7);
    const Call<TypeParam> call(x, f, w, mode, 1);
    for (int j = 0; j < 70; ++j) {
      if (before[j] == kHole<TypeParam>) continue;
      const double product = static_cast<double>(w[j]) * static_cast<double>(f);
      EXPECT_EQ(x[1][j + 1], static_cast<TypeParam>(static_cast<double>(before[j]) + product));
    }
  }
}

TYPED_TEST(NCDataMatrixAddFV, LeavesTwinsOfTheMatrixAndOfTheRowAlone) {
  auto x = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  const auto twin = x;
  const NCDataVector<TypeParam> rowTwin = x[1];
  for (TypeParam f : {TypeParam(1), TypeParam(-99)}) const Call<TypeParam> call(x, f, {1, 1}, 1, 1);
  EXPECT_EQ(CellsOf(twin), (std::vector<std::vector<TypeParam>>{{1, 2}, {3, 4}}));
  EXPECT_EQ(CellsOf(rowTwin), (std::vector<TypeParam>{1, 2}));
  EXPECT_EQ(x[1].GetNumMisVal(), 2);
}

}  // namespace
