#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

// Rows and columns that come and go.

namespace {

NCIntegralVector<int, -99> Indices(const std::vector<int>& list) {
  return NCIntegralVector<int, -99>(list.data(), static_cast<int>(list.size()));
}

template <class T>
class NCDataMatrixStructure : public TableWithTwin<T> {};
TYPED_TEST_SUITE(NCDataMatrixStructure, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixStructure, SetSizeToThePresentSizeKeepsCellsAndSharing) {
  this->table_.SetSize(3, 3);
  EXPECT_EQ(&this->table_[1], &this->twin_[1]);
}

TYPED_TEST(NCDataMatrixStructure, SetSizeToAnyOtherSizeErasesAllCells) {
  const int sizes[][2] = {{3, 2}, {2, 3}, {4, 3}, {1, 1}, {9, 7}, {0, 3}, {3, 0}, {0, 0}};
  for (const auto& [rows, columns] : sizes) {
    SCOPED_TRACE(std::to_string(rows) + " by " + std::to_string(columns));
    NCDataMatrix<TypeParam> m(this->table_);
    m.SetSize(rows, columns);
    EXPECT_EQ(m.SizeRows(), rows);
    EXPECT_EQ(m.SizeColumns(), columns);
    EXPECT_EQ(m.GetNumMisVal(), rows * columns);
    EXPECT_TRUE(HasExactCounts(m));
  }
}

TYPED_TEST(NCDataMatrixStructure, RowsThatComeBackAfterAShrinkAreMissing) {
  NCDataMatrix<TypeParam> m(3, 2, 1);
  m.SetSize(1, 2);
  m.SetAllValues(5);
  m.InsertRows(2, 2);
  this->Expect(m, {{5, 5}, {this->kGap, this->kGap}, {this->kGap, this->kGap}});
}

TYPED_TEST(NCDataMatrixStructure, ResizeKeepsTheCellsThatStayAndMakesTheOthersMissing) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  m.Resize(3, 3);
  const TypeParam gap = this->kGap;
  this->Expect(m, {{1, 2, gap}, {3, 4, gap}, {gap, gap, gap}});
  EXPECT_EQ(m.GetNumMisVal(), 5);
  m.Resize(1, 2);
  this->Expect(m, {{1, 2}});
  this->table_.Resize(2, 4);
  this->Expect(this->table_, {{1, gap, 3, gap}, {4, 5, 6, gap}});
}

TYPED_TEST(NCDataMatrixStructure, InsertsMissingRowsAndMovesTheOthersUp) {
  const TypeParam gap = this->kGap;
  this->table_.InsertRows(2, 2);
  this->Expect(this->table_, {{1, gap, 3}, {gap, gap, gap}, {gap, gap, gap}, {4, 5, 6}, {gap, gap, 9}});
  EXPECT_EQ(this->table_.GetNumMisVal(), 9);
}

TYPED_TEST(NCDataMatrixStructure, CutsARowPositionBeyondTheEnd) {
  const TypeParam gap = this->kGap;
  auto m = MatrixOf<TypeParam>({{1, 2}});
  m.InsertRows(7, 1);
  m.InsertRow(9, VectorOf<TypeParam>({3, 4}));
  this->Expect(m, {{1, 2}, {gap, gap}, {3, 4}});
}

TYPED_TEST(NCDataMatrixStructure, InsertingOrRemovingNothingDoesNotEvenUnlink) {
  this->table_.InsertRows(1, 0);
  this->table_.RemoveRows(1, 0);
  this->table_.RemoveRows(NCIntegralVector<int, -99>());
  this->table_.InsertColumns(1, 0);
  this->table_.InsertColumns(1, NCDataMatrix<TypeParam>(3, 0));
  this->table_.RemoveColumns(1, 0);
  this->table_.ConcatRows(NCDataMatrix<TypeParam>(0, 3));
  this->table_.ConcatColumns(NCDataMatrix<TypeParam>(3, 0));
  this->table_.SwapRows(2, 2);
  this->table_.SwapColumns(2, 2);
  EXPECT_EQ(&this->table_[1], &this->twin_[1]);
}

TYPED_TEST(NCDataMatrixStructure, AnInsertedRowSharesTheVectorsCells) {
  const auto v = VectorOf<TypeParam>({7, this->kGap, 8});
  this->table_.InsertRow(2, v);
  this->Expect(this->table_, {{1, this->kGap, 3}, {7, this->kGap, 8}, {4, 5, 6}, {this->kGap, this->kGap, 9}});
  EXPECT_EQ(this->table_[2].GetVector(), v.GetVector());
}

TYPED_TEST(NCDataMatrixStructure, ARowWhoseCountIsLowIsCountedAsItSays) {
  auto low = VectorOf<TypeParam>({1, 2});
  low.TransformTo_Sub_d_x_Vt(1.0L, VectorOf<TypeParam>({this->kGap, 1}));  // makes a hole and leaves the count at 0
  NCDataMatrix<TypeParam> inserted(1, 2, 3), set(1, 2, 3);
  inserted.InsertRow(1, low);
  set.SetRow(1, low);
  for (const auto& m : {inserted, set}) {
    EXPECT_EQ(CellsOf(m[1]), (std::vector<TypeParam>{this->kGap, 1}));
    EXPECT_EQ(m.GetColumnMisVal(1), 0);
    EXPECT_EQ(m.GetNumMisVal(), 0);
  }
}

TYPED_TEST(NCDataMatrixStructure, TheFirstRowSettlesTheColumns) {
  for (NCDataMatrix<TypeParam> m : {NCDataMatrix<TypeParam>(), NCDataMatrix<TypeParam>(0, 5)}) {
    const NCDataVector<TypeParam>* end = m.push_back(VectorOf<TypeParam>({1, this->kGap}));
    EXPECT_EQ(end, m.end());
    this->Expect(m, {{1, this->kGap}});
  }
}

TYPED_TEST(NCDataMatrixStructure, ARowOfTheTableCanBeInsertedIntoIt) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, this->kGap}});
  m.InsertRow(1, m[2]);
  m.InsertRow(1, m[2]);
  m.InsertRow(5, m[1]);
  this->Expect(m, {{1, 2}, {3, this->kGap}, {1, 2}, {3, this->kGap}, {1, 2}});
}

TYPED_TEST(NCDataMatrixStructure, RemovesARangeOfRowsWithItsHoles) {
  this->table_.RemoveRows(1, 2);
  this->Expect(this->table_, {{this->kGap, this->kGap, 9}});
  this->table_.RemoveRows(1, 1);
  this->Expect(this->table_, {});
  EXPECT_EQ(this->table_.SizeColumns(), 3);
}

TYPED_TEST(NCDataMatrixStructure, RemovesListedRowsInAnyOrderAndOnceOnly) {
  auto m = MatrixOf<TypeParam>({{1}, {this->kGap}, {3}, {this->kGap}, {5}});
  const NCIntegralVector<int, -99> unsorted = Indices({4, 1, 4});
  m.RemoveRows(unsorted);
  this->Expect(m, {{this->kGap}, {3}, {5}});
  EXPECT_EQ(unsorted[1], 4) << "the list itself stays as it is";
  m.RemoveRows(Indices({1, 3}));
  this->Expect(m, {{3}});
}

TYPED_TEST(NCDataMatrixStructure, InsertsMissingColumns) {
  const TypeParam gap = this->kGap;
  this->table_.InsertColumns(2, 1);
  this->Expect(this->table_, {{1, gap, gap, 3}, {4, gap, 5, 6}, {gap, gap, gap, 9}});
  auto m = MatrixOf<TypeParam>({{1}, {2}});
  m.InsertColumns(9, 2);
  this->Expect(m, {{1, gap, gap}, {2, gap, gap}});
}

TYPED_TEST(NCDataMatrixStructure, InsertsTheColumnsOfAnotherTable) {
  const TypeParam gap = this->kGap;
  const auto m = MatrixOf<TypeParam>({{10, gap}, {20, 21}, {gap, 31}});
  this->table_.InsertColumns(2, m);
  this->Expect(this->table_, {{1, 10, gap, gap, 3}, {4, 20, 21, 5, 6}, {gap, gap, 31, gap, 9}});
}

TYPED_TEST(NCDataMatrixStructure, InsertsColumnsBeyondTheEndBehindTheLast) {
  const TypeParam gap = this->kGap;
  this->table_.InsertColumns(9, MatrixOf<TypeParam>({{10, gap}, {20, 21}, {gap, 31}}));
  this->Expect(this->table_, {{1, gap, 3, 10, gap}, {4, 5, 6, 20, 21}, {gap, gap, 9, gap, 31}});
}

TYPED_TEST(NCDataMatrixStructure, InsertsItsOwnColumns) {
  auto m = MatrixOf<TypeParam>({{1, this->kGap}, {3, 4}});
  m.InsertColumns(1, m);
  this->Expect(m, {{1, this->kGap, 1, this->kGap}, {3, 4, 3, 4}});
  m.InsertColumns(2, m);
  EXPECT_EQ(m.SizeColumns(), 8);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixStructure, AnEmptyTableTakesColumnsWithTheirRows) {
  NCDataMatrix<TypeParam> m;
  m.ConcatColumns(this->table_);
  this->Expect(m, CellsOf(this->twin_));
  m(1, 1, 5);
}

TYPED_TEST(NCDataMatrixStructure, InsertsAColumnAtTheSmallerOfPositionAndColumns) {
  const TypeParam gap = this->kGap;
  this->table_.InsertColumn(1, VectorOf<TypeParam>({gap, 8, 9}));
  this->Expect(this->table_, {{gap, 1, gap, 3}, {8, 4, 5, 6}, {9, gap, gap, 9}});
  auto m = MatrixOf<TypeParam>({{1}, {2}});
  m.InsertColumn(7, VectorOf<TypeParam>({3, 4}));
  this->Expect(m, {{1, 3}, {2, 4}});
}

TYPED_TEST(NCDataMatrixStructure, TheFirstColumnSettlesTheRows) {
  for (NCDataMatrix<TypeParam> m : {NCDataMatrix<TypeParam>(), NCDataMatrix<TypeParam>(5, 0)}) {
    m.InsertColumn(3, VectorOf<TypeParam>({1, this->kGap}));
    this->Expect(m, {{1}, {this->kGap}});
  }
}

TYPED_TEST(NCDataMatrixStructure, ARowOfASquareTableCanBeInsertedAsAColumn) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, this->kGap}});
  m.InsertColumn(1, m[2]);
  this->Expect(m, {{3, 1, 2}, {this->kGap, 3, this->kGap}});
}

TYPED_TEST(NCDataMatrixStructure, RemovesColumnsWithTheirHoles) {
  this->table_.RemoveColumns(1, 2);
  this->Expect(this->table_, {{3}, {6}, {9}});
  this->table_.RemoveColumns(1, 1);
  this->Expect(this->table_, {{}, {}, {}});
}

TYPED_TEST(NCDataMatrixStructure, ReducesToTheListedColumnsInTheirOrder) {
  const TypeParam gap = this->kGap;
  this->table_.ReduceColumns(Indices({3, 2, 3}));
  this->Expect(this->table_, {{3, gap, 3}, {6, 5, 6}, {9, gap, 9}});
  auto complete = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  complete.ReduceColumns(Indices({2}));
  this->Expect(complete, {{2}, {4}});
  complete.InsertColumns(2, 1);
  this->Expect(complete, {{2, gap}, {4, gap}});
  complete.ReduceColumns(Indices({}));
  this->Expect(complete, {{}, {}});
}

TYPED_TEST(NCDataMatrixStructure, ReducingATableWithoutCountedHolesDoesNotLookForThem) {
  NCDataMatrix<TypeParam> m = this->TableWithLowCounts();
  m.ReduceColumns(Indices({2, 1, 1}));
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{1, this->kGap, this->kGap}, {4, 3, 3}}));
  EXPECT_EQ(m.GetNumMisVal(), 0);
  for (int c = 1; c <= 3; ++c) EXPECT_EQ(m.GetColumnMisVal(c), 0) << c;
}

TYPED_TEST(NCDataMatrixStructure, ConcatenatesRowsAsShares) {
  const auto m = MatrixOf<TypeParam>({{this->kGap, 11, 12}});
  this->table_.ConcatRows(m);
  this->Expect(this->table_, {{1, this->kGap, 3}, {4, 5, 6}, {this->kGap, this->kGap, 9}, {this->kGap, 11, 12}});
  EXPECT_EQ(this->table_[4].GetVector(), m[1].GetVector());
  EXPECT_EQ(this->table_[1].GetVector(), this->twin_[1].GetVector());
}

TYPED_TEST(NCDataMatrixStructure, ConcatenatesItsOwnRows) {
  auto m = MatrixOf<TypeParam>({{1, this->kGap}});
  m.ConcatRows(m);
  m.ConcatRows(m);
  this->Expect(m, {{1, this->kGap}, {1, this->kGap}, {1, this->kGap}, {1, this->kGap}});
}

TYPED_TEST(NCDataMatrixStructure, AnEmptyTableTakesRowsWithTheirColumns) {
  NCDataMatrix<TypeParam> m;
  m.ConcatRows(this->table_);
  this->Expect(m, CellsOf(this->twin_));
}

TYPED_TEST(NCDataMatrixStructure, ConcatenatesColumnsItsOwnIncluded) {
  const TypeParam gap = this->kGap;
  this->table_.ConcatColumns(MatrixOf<TypeParam>({{7}, {gap}, {8}}));
  this->Expect(this->table_, {{1, gap, 3, 7}, {4, 5, 6, gap}, {gap, gap, 9, 8}});
  auto m = MatrixOf<TypeParam>({{1, gap}});
  m.ConcatColumns(m);
  this->Expect(m, {{1, gap, 1, gap}});
}

TYPED_TEST(NCDataMatrixStructure, RearrangesColumnsWithRepeats) {
  const TypeParam gap = this->kGap;
  this->table_.RearrangeColumns({3, 1, 1});
  this->Expect(this->table_, {{3, 1, 1}, {6, 4, 4}, {9, gap, gap}});
  this->table_.RearrangeColumns({});
  EXPECT_EQ(this->table_.SizeRows(), 0);
  EXPECT_EQ(this->table_.SizeColumns(), 0);
}

TYPED_TEST(NCDataMatrixStructure, RearrangedColumnsAreCountedAnew) {
  NCDataMatrix<TypeParam> m = this->TableWithLowCounts();
  m.RearrangeColumns({2, 1});
  this->Expect(m, {{1, this->kGap}, {4, 3}});
}

TYPED_TEST(NCDataMatrixStructure, RearrangingDropsTheTargetsThatWereNamed) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  NCDataVector<TypeParam> target(2, 7);
  m.Result(&target);
  m.RearrangeColumns({2, 1});
  EXPECT_EQ(CellsOf(m.GetColumn(1)), (std::vector<TypeParam>{2, 4}));
  EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{7, 7}));
}

TYPED_TEST(NCDataMatrixStructure, RearrangesATableWithoutRows) {
  NCDataMatrix<TypeParam> m(0, 3);
  m.RearrangeColumns({3, 1});
  EXPECT_EQ(m.SizeRows(), 0);
  EXPECT_EQ(m.SizeColumns(), 2);
}

TYPED_TEST(NCDataMatrixStructure, SwapsRowsWithoutACopy) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, this->kGap}});
  const TypeParam* cells = m[1].GetVector();
  m.SwapRows(1, 2);
  this->Expect(m, {{3, this->kGap}, {1, 2}});
  EXPECT_EQ(m[2].GetVector(), cells);
}

TYPED_TEST(NCDataMatrixStructure, SwapsColumnsWithTheirCounts) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, this->kGap}});
  m.SwapColumns(1, 2);
  this->Expect(m, {{2, 1}, {this->kGap, 3}});
}

TYPED_TEST(NCDataMatrixStructure, SwappingDoesNotUnlinkASharedTable) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, this->kGap}});
  const NCDataMatrix<TypeParam> twin(m);
  m.SwapRows(1, 2);
  m.SwapColumns(1, 2);
  EXPECT_EQ(&m[1], &twin[1]);
  EXPECT_EQ(CellsOf(twin), (Table<TypeParam>{{this->kGap, 3}, {2, 1}}));
}

TYPED_TEST(NCDataMatrixStructure, SwappingColumnsChangesARowForAllWhoShareIt) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  const NCDataVector<TypeParam> row(m[2]);
  m.SwapColumns(1, 2);
  EXPECT_EQ(CellsOf(row), (std::vector<TypeParam>{4, 3}));
}

}  // namespace
