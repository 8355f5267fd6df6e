#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

// Rows and columns of cells: set, copied, scaled, shifted, compared.

namespace {

template <class T>
std::uint64_t BitsOf(T cell) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &cell, sizeof cell);
  return bits;
}

template <class T>
struct Exposed : NCDataMatrix<T> {
  using NCDataMatrix<T>::SetNoMisVal;
};

template <class T>
class NCDataMatrixCells : public TableWithTwin<T> {};
TYPED_TEST_SUITE(NCDataMatrixCells, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixCells, ASetRowSharesTheVectorsCells) {
  const auto v = VectorOf<TypeParam>({this->kGap, 8, 7});
  this->table_.SetRow(1, v);
  this->Expect(this->table_, {{this->kGap, 8, 7}, {4, 5, 6}, {this->kGap, this->kGap, 9}});
  EXPECT_EQ(this->table_[1].GetVector(), v.GetVector());
}

TYPED_TEST(NCDataMatrixCells, ARowOfTheTableCanBeSetAsAnotherOrAsItself) {
  auto m = MatrixOf<TypeParam>({{1, this->kGap}, {3, 4}});
  m.SetRow(2, m[1]);
  m.SetRow(1, m[1]);
  this->Expect(m, {{1, this->kGap}, {1, this->kGap}});
}

TYPED_TEST(NCDataMatrixCells, SetsARowToAValue) {
  this->table_.SetRow(1, TypeParam(7));
  this->table_.SetRow(2, this->kGap);
  this->Expect(this->table_, {{7, 7, 7}, {this->kGap, this->kGap, this->kGap}, {this->kGap, this->kGap, 9}});
}

TYPED_TEST(NCDataMatrixCells, SettingAMissingRowMissingDoesNotEvenUnlink) {
  NCDataMatrix<TypeParam> m(2, 2);
  const NCDataMatrix<TypeParam> twin(m);
  m.SetRow(1, this->kGap);
  EXPECT_EQ(&m[1], &twin[1]);
}

TYPED_TEST(NCDataMatrixCells, SetsAColumnFromPositionsThatRunFromOne) {
  const TypeParam cells[] = {0, 7, this->kGap, 8};
  this->table_.SetColumn(2, cells);
  this->Expect(this->table_, {{1, 7, 3}, {4, this->kGap, 6}, {this->kGap, 8, 9}});
}

TYPED_TEST(NCDataMatrixCells, SetsAColumnFromAVector) {
  this->table_.SetColumn(3, VectorOf<TypeParam>({this->kGap, 8, 7}));
  this->Expect(this->table_, {{1, this->kGap, this->kGap}, {4, 5, 8}, {this->kGap, this->kGap, 7}});
}

TYPED_TEST(NCDataMatrixCells, ARowOfASquareTableCanBeSetAsAColumn) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, this->kGap}});
  m.SetColumn(1, m[1]);
  this->Expect(m, {{1, 2}, {2, this->kGap}});
}

TYPED_TEST(NCDataMatrixCells, SetsAColumnToAValue) {
  this->table_.SetColumn(1, TypeParam(7));
  this->table_.SetColumn(3, this->kGap);
  this->Expect(this->table_, {{7, this->kGap, this->kGap}, {7, 5, this->kGap}, {7, this->kGap, this->kGap}});
}

TYPED_TEST(NCDataMatrixCells, SettingAColumnMissingStopsAtAsManyHolesAsThereAreColumns) {
  const TypeParam gap = this->kGap;
  auto m = MatrixOf<TypeParam>({{gap, 1}, {gap, 2}, {3, 4}});
  m.SetColumn(1, gap);
  this->Expect(m, {{gap, 1}, {gap, 2}, {3, 4}});  // two holes, two columns
  m.SetColumn(2, gap);
  this->Expect(m, {{gap, gap}, {gap, gap}, {3, gap}});
  m.SetColumn(1, TypeParam(5));
  this->Expect(m, {{5, gap}, {5, gap}, {5, gap}});
}

TYPED_TEST(NCDataMatrixCells, CopyRowOfACompleteUnsharedTableCopiesTheRow) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}, {5, 6}});
  m.CopyRow(3, 1);
  this->Expect(m, {{5, 6}, {3, 4}, {5, 6}});
  EXPECT_EQ(m[1].GetVector(), m[3].GetVector());
}

TYPED_TEST(NCDataMatrixCells, CopyRowCountsAlongTheDiagonalAndLeavesTheTotal) {
  const TypeParam gap = this->kGap;
  auto m = MatrixOf<TypeParam>({{gap, 2, 3}, {4, 5, gap}, {7, gap, 9}});
  m.CopyRow(2, 3);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{gap, 2, 3}, {4, 5, gap}, {4, 5, gap}}));
  EXPECT_EQ(m.GetColumnMisVal(1), 0) << "cell (1, 1) is a hole, cell (2, 1) is none: 1 - 1";
  EXPECT_EQ(m.GetColumnMisVal(2), 1) << "cells (2, 2) and (2, 2): 1 + 0";
  EXPECT_EQ(m.GetColumnMisVal(3), 2) << "cell (3, 3) is none, cell (2, 3) is a hole: 1 + 1";
  EXPECT_EQ(m.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataMatrixCells, CopyRowDoesNotUnlink) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  const NCDataMatrix<TypeParam> twin(m);
  m.CopyRow(1, 2);
  EXPECT_EQ(CellsOf(twin), (Table<TypeParam>{{1, 2}, {1, 2}}));
}

TYPED_TEST(NCDataMatrixCells, CopyRowOfAWideTableStaysInside) {
  const TypeParam gap = this->kGap;
  auto m = MatrixOf<TypeParam>({{1, 2, 3}, {4, 5, 6}});
  m.CopyRow(1, 2);
  this->Expect(m, {{1, 2, 3}, {1, 2, 3}});
  auto holes = MatrixOf<TypeParam>({{1, 2, gap}, {4, 5, 6}});
  holes.CopyRow(1, 2);
  EXPECT_EQ(CellsOf(holes), (Table<TypeParam>{{1, 2, gap}, {1, 2, gap}}));
  EXPECT_EQ(holes.GetColumnMisVal(3), 1) << "column 3 has no cell on the diagonal";
  EXPECT_EQ(holes.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixCells, CopyRowOfATallTableCountsAlongItsDiagonal) {
  const TypeParam gap = this->kGap;
  auto m = MatrixOf<TypeParam>({{gap, 2}, {3, 4}, {5, gap}});
  m.CopyRow(3, 2);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{gap, 2}, {5, gap}, {5, gap}}));
  EXPECT_EQ(m.GetColumnMisVal(1), 0) << "cell (1, 1) is a hole, cell (3, 1) is none: 1 - 1";
  EXPECT_EQ(m.GetColumnMisVal(2), 2) << "cell (2, 2) is none, cell (3, 2) is a hole: 1 + 1";
  EXPECT_EQ(m.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataMatrixCells, CopyRowOntoItselfCountsAlongTheDiagonalToo) {
  const TypeParam gap = this->kGap;
  auto m = MatrixOf<TypeParam>({{gap, 2}, {3, gap}});
  m.CopyRow(1, 1);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{gap, 2}, {3, gap}}));
  EXPECT_EQ(m.GetColumnMisVal(1), 1);
  EXPECT_EQ(m.GetColumnMisVal(2), 0) << "cell (2, 2) is a hole, cell (1, 2) is none: 1 - 1";
  EXPECT_EQ(m.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataMatrixCells, CopiesAColumnWithinTheTable) {
  this->table_.CopyColumn(/*from=*/1, /*to=*/3);
  this->Expect(this->table_, {{1, this->kGap, 1}, {4, 5, 4}, {this->kGap, this->kGap, this->kGap}});
}

TYPED_TEST(NCDataMatrixCells, CopiesAColumnOfAnotherTable) {
  const auto m = MatrixOf<TypeParam>({{1, 7}, {2, this->kGap}, {3, 8}});
  this->table_.CopyColumn(/*to=*/1, m, /*from=*/2);
  this->Expect(this->table_, {{7, this->kGap, 3}, {this->kGap, 5, 6}, {8, this->kGap, 9}});
}

TYPED_TEST(NCDataMatrixCells, SetsAllCells) {
  this->table_.SetAllValues(2);
  this->Expect(this->table_, {{2, 2, 2}, {2, 2, 2}, {2, 2, 2}});
  this->table_.SetAllValues(this->kGap);
  EXPECT_EQ(this->table_.GetNumMisVal(), 9);
  EXPECT_EQ(this->table_.GetColumnMisVal(2), 3);
  EXPECT_TRUE(HasExactCounts(this->table_));
}

TYPED_TEST(NCDataMatrixCells, IsDeclaredFreeOfHolesWithoutALook) {
  Exposed<TypeParam> m;
  m.ConcatRows(this->table_);
  m.ForceUnlink();
  m.SetNoMisVal();
  EXPECT_EQ(m.GetNumMisVal(), 0);
  for (int i = 1; i <= 3; ++i) {
    EXPECT_EQ(m[i].GetNumMisVal(), 0);
    EXPECT_EQ(m.GetColumnMisVal(i), 0);
  }
  EXPECT_EQ(CellsOf(m), CellsOf(this->twin_));
}

TYPED_TEST(NCDataMatrixCells, MultipliesThePresentCellsOfARow) {
  this->table_.MultiplyRow(1, -2);
  this->Expect(this->table_, {{-2, this->kGap, -6}, {4, 5, 6}, {this->kGap, this->kGap, 9}});
}

TYPED_TEST(NCDataMatrixCells, MultipliesAColumnIntoAnotherOrItself) {
  const TypeParam gap = this->kGap;
  this->table_.MultiplyColumn(1, 2, /*to=*/3);
  this->Expect(this->table_, {{1, gap, 2}, {4, 5, 8}, {gap, gap, gap}});
  this->table_.MultiplyColumn(2, 3, /*to=*/2);
  this->Expect(this->table_, {{1, gap, 2}, {4, 15, 8}, {gap, gap, gap}});
}

TYPED_TEST(NCDataMatrixCells, MultiplyingByTheMissingValueEmptiesTheSourceColumn) {
  const TypeParam gap = this->kGap;
  this->table_.MultiplyColumn(1, gap, /*to=*/3);
  this->Expect(this->table_, {{gap, gap, 3}, {gap, 5, 6}, {gap, gap, 9}});
  auto tall = MatrixOf<TypeParam>({{gap, 1}, {gap, 2}, {3, 4}});  // as many holes in column 1 as columns
  tall.MultiplyColumn(1, gap, /*to=*/2);
  this->Expect(tall, {{gap, 1}, {gap, 2}, {gap, 4}});
}

TYPED_TEST(NCDataMatrixCells, MultipliesTwoColumns) {
  this->table_.MultiplyColumns(1, 3, /*to=*/1);
  this->Expect(this->table_, {{3, this->kGap, 3}, {24, 5, 6}, {this->kGap, this->kGap, 9}});
  this->table_.MultiplyColumns(2, 3, /*to=*/3);
  this->Expect(this->table_, {{3, this->kGap, this->kGap}, {24, 5, 30}, {this->kGap, this->kGap, this->kGap}});
}

TYPED_TEST(NCDataMatrixCells, ProductsOfMinus99AreHolesThatAreCounted) {
  const TypeParam gap = this->kGap;
  const auto m = MatrixOf<TypeParam>({{33, 1, -3}});
  NCDataMatrix<TypeParam> row(m), column(m), columns(m);
  row.MultiplyRow(1, -3);
  this->Expect(row, {{gap, -3, 9}});
  column.MultiplyColumn(1, -3, /*to=*/2);
  this->Expect(column, {{33, gap, -3}});
  columns.MultiplyColumns(1, 3, /*to=*/2);
  this->Expect(columns, {{33, gap, -3}});
}

TYPED_TEST(NCDataMatrixCells, ANumberForAColumnIsNotRoundedToTheTypeOfTheCells) {
  constexpr long double kTenth = 0.1L;
  constexpr TypeParam kRounded = static_cast<TypeParam>(kTenth);
  const TypeParam cell = kRounded;
  const auto m = MatrixOf<TypeParam>({{cell, 0}});
  NCDataMatrix<TypeParam> difference(m), product(m);
  difference.SubtractFromColumn(1, kTenth);
  EXPECT_EQ(difference[1][1], static_cast<TypeParam>(cell - kTenth));
  EXPECT_NE(difference[1][1], 0) << "what the rounded number would leave";
  int otherProducts = 0;
  for (int i = 1; i <= 100; ++i) {
    product(1, 1, static_cast<TypeParam>(i));
    product.MultiplyColumn(1, kTenth, /*to=*/2);
    EXPECT_EQ(product[1][2], static_cast<TypeParam>(i * kTenth)) << i;
    otherProducts += product[1][2] != static_cast<TypeParam>(static_cast<TypeParam>(i) * kRounded);
  }
  EXPECT_GT(otherProducts, 0) << "the rounded number would give the same everywhere";
}

TYPED_TEST(NCDataMatrixCells, SubtractsFromThePresentCellsOfAColumn) {
  this->table_.SubtractFromColumn(1, 0.5L);
  this->Expect(this->table_, {{0.5, this->kGap, 3}, {3.5, 5, 6}, {this->kGap, this->kGap, 9}});
}

TYPED_TEST(NCDataMatrixCells, SubtractingTheMissingValueEmptiesTheColumn) {
  const TypeParam gap = this->kGap;
  this->table_.SubtractFromColumn(3, gap);
  this->Expect(this->table_, {{1, gap, gap}, {4, 5, gap}, {gap, gap, gap}});
}

TYPED_TEST(NCDataMatrixCells, SubtractionNeverMakesAHole) {
  NCDataMatrix<TypeParam> m(1, 1, -98);
  m.SubtractFromColumn(1, 1.0f);
  const std::uint64_t below = sizeof(TypeParam) == sizeof(float) ? 0xC2C60001 : 0xC058C00029F16B12;
  EXPECT_EQ(BitsOf(m[1][1]), below);
  EXPECT_LT(m[1][1], this->kGap);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixCells, ADifferenceThatRoundsToMinus99IsNoHoleEither) {
  // The difference itself lies below -99, by less than half of the distance to the next cell value.
  const long double d = sizeof(TypeParam) == sizeof(float) ? 1.0000001L : 1 + 1e-17L;
  NCDataMatrix<TypeParam> m(1, 1, -98);
  m.SubtractFromColumn(1, d);
  EXPECT_LT(m[1][1], this->kGap);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixCells, TheCellThatStandsForMinus99Stays) {
  const TypeParam below = static_cast<TypeParam>(-99.00000762939453);
  NCDataMatrix<TypeParam> m(1, 1, below);
  m.SubtractFromColumn(1, 0);
  EXPECT_EQ(BitsOf(m[1][1]), BitsOf(below));
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixCells, LagsAColumnDownAndUp) {
  const TypeParam gap = this->kGap;
  const auto m = MatrixOf<TypeParam>({{1, 0}, {gap, 0}, {3, 0}, {4, 0}});
  const struct {
    int shift;
    std::vector<TypeParam> lagged;
  } cases[] = {{0, {1, gap, 3, 4}},
               {1, {gap, 1, gap, 3}},
               {3, {gap, gap, gap, 1}},
               {4, {gap, gap, gap, gap}},
               {1000, {gap, gap, gap, gap}},
               {-1, {gap, 3, 4, gap}},
               {-3, {4, gap, gap, gap}},
               {-4, {gap, gap, gap, gap}},
               {std::numeric_limits<int>::min(), {gap, gap, gap, gap}}};
  for (const auto& [shift, lagged] : cases) {
    SCOPED_TRACE(shift);
    NCDataMatrix<TypeParam> lag(m);
    lag.LagColumn(1, shift);
    EXPECT_EQ(CellsOf(lag.GetColumn(1)), lagged);
    EXPECT_EQ(CellsOf(lag.GetColumn(2)), CellsOf(m.GetColumn(2)));
    EXPECT_TRUE(HasExactCounts(lag));
  }
}

TYPED_TEST(NCDataMatrixCells, ScalesColumnsInPlaceAndLeavesThoseOfAMissingScale) {
  this->table_.ForceUnlink();
  const auto scales = VectorOf<TypeParam>({2, this->kGap, -1});
  this->table_.TransformToColumnScaled(scales);
  this->Expect(this->table_, {{2, this->kGap, -3}, {8, 5, -6}, {this->kGap, this->kGap, -9}});
}

TYPED_TEST(NCDataMatrixCells, ScalesColumnsByARowOfItsOwnAsItWasBefore) {
  auto m = MatrixOf<TypeParam>({{2, 3}, {4, 5}});
  m.TransformToColumnScaled(m[1]);
  this->Expect(m, {{4, 9}, {8, 15}});
  const NCDataVector<TypeParam> share(m[1]);
  m.TransformToColumnScaled(share);
  this->Expect(m, {{16, 81}, {32, 135}});
}

TYPED_TEST(NCDataMatrixCells, AScaledCellOfMinus99IsNotCounted) {
  auto m = MatrixOf<TypeParam>({{33, 2}});
  m.TransformToColumnScaled(VectorOf<TypeParam>({-3, 1}));
  EXPECT_EQ(m[1][1], this->kGap);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_EQ(m[1].GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixCells, ScalingColumnsUnlinksNeitherTableNorRows) {
  auto m = MatrixOf<TypeParam>({{1, 2}});
  const NCDataMatrix<TypeParam> twin(m);
  const NCDataVector<TypeParam> row(m[1]);
  m.TransformToColumnScaled(VectorOf<TypeParam>({2, 2}));
  EXPECT_EQ(CellsOf(twin), (Table<TypeParam>{{2, 4}}));
  EXPECT_EQ(CellsOf(row), (std::vector<TypeParam>{2, 4}));
}

TYPED_TEST(NCDataMatrixCells, SubtractsAVectorFromEveryRow) {
  this->table_.TransformToDotSubRowVector(VectorOf<TypeParam>({1, 1, this->kGap}));
  this->Expect(this->table_, {{0, this->kGap, 3}, {3, 4, 6}, {this->kGap, this->kGap, 9}});
  for (int r = 1; r <= 3; ++r) EXPECT_NE(this->table_[r].GetVector(), this->twin_[r].GetVector());
}

TYPED_TEST(NCDataMatrixCells, SubtractsARowOfItsOwnFromEveryRow) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  m.TransformToDotSubRowVector(m[1]);
  this->Expect(m, {{0, 0}, {2, 2}});
}

TYPED_TEST(NCDataMatrixCells, ADifferenceOfMinus99BetweenVectorsIsNotCounted) {
  auto m = MatrixOf<TypeParam>({{-98, 2}});
  m.TransformToDotSubRowVector(VectorOf<TypeParam>({1, 1}));
  EXPECT_EQ(m[1][1], this->kGap);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_EQ(m[1].GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixCells, AreEqualWhereTheBytesOfTheLeftRowsAreThoseOfTheRightOnes) {
  const auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  NCDataMatrix<TypeParam> copy;
  copy.CopyContent(m);
  EXPECT_TRUE(copy == m);
  EXPECT_FALSE(copy != m);
  copy(2, 2, 5);
  EXPECT_TRUE(copy != m);
  EXPECT_FALSE((MatrixOf<TypeParam>({{0.0}}) == MatrixOf<TypeParam>({{TypeParam(-0.0)}})));
}

TYPED_TEST(NCDataMatrixCells, EqualNaNsAreEqual) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  EXPECT_TRUE((MatrixOf<TypeParam>({{1, nan}}) == MatrixOf<TypeParam>({{1, nan}})));
  EXPECT_TRUE((MatrixOf<TypeParam>({{1, nan}}) != MatrixOf<TypeParam>({{1, -nan}})));
}

TYPED_TEST(NCDataMatrixCells, OnlyTheLeftSidesRowsAreCompared) {
  const auto one = MatrixOf<TypeParam>({{1, 2}});
  const auto two = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  EXPECT_TRUE(one == two);
  EXPECT_FALSE(two == one);
  EXPECT_TRUE(NCDataMatrix<TypeParam>() == two);
  EXPECT_FALSE(two == NCDataMatrix<TypeParam>());
  EXPECT_FALSE((one == MatrixOf<TypeParam>({{1, 2, 3}})));
}

}  // namespace
