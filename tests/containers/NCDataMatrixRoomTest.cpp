#include <gtest/gtest.h>

#include <cstdint>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

// Room for rows and cells: reserved, taken by the rule of growth, given back.

namespace {

template <class T>
class NCDataMatrixRoom : public TableWithTwin<T> {
 protected:
  /// How many rows a table of one column has room for; it has more of them afterwards.
  static int RowsUntilTheyMove(NCDataMatrix<T>* m) {
    const NCDataVector<T>* rows = m->begin();
    while (true) {
      m->push_back(NCDataVector<T>(1));
      if (m->begin() != rows) return m->SizeRows() - 1;
    }
  }
};
TYPED_TEST_SUITE(NCDataMatrixRoom, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixRoom, ReservedRowsComeWithoutMovingTheOthers) {
  NCDataMatrix<TypeParam> m(this->table_);
  m.ReserveRows(20);
  this->Expect(m, CellsOf(this->twin_));
  EXPECT_EQ(m[1].GetVector(), this->twin_[1].GetVector()) << "rows go on sharing their cells";
  const NCDataVector<TypeParam>* first = &m[1];
  m.ReserveRows(5);
  m.InsertRows(4, 17);
  EXPECT_EQ(&m[1], first);
}

TYPED_TEST(NCDataMatrixRoom, ReservedColumnsComeWithoutMovingTheCells) {
  this->table_.ReserveColumns(50);
  const TypeParam* cells = this->table_[1].GetVector();
  this->table_.InsertColumns(4, 47);
  EXPECT_EQ(this->table_[1].GetVector(), cells);
}

TYPED_TEST(NCDataMatrixRoom, ReservesExactlyTheRoomThatIsAskedFor) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  m.ReserveRows(5);
  const NCDataVector<TypeParam>* row = &m[1];
  m.InsertRows(3, 3);
  EXPECT_EQ(&m[1], row);
  m.InsertRows(3, 1);
  EXPECT_NE(&m[1], row);
  m.ReserveColumns(5);
  const TypeParam* cells = m[1].GetVector();
  m.InsertColumns(3, 3);
  EXPECT_EQ(m[1].GetVector(), cells);
  m.InsertColumns(3, 1);
  EXPECT_NE(m[1].GetVector(), cells);
}

TYPED_TEST(NCDataMatrixRoom, ReservingRowsOfAnUnsharedTableKeepsItsCellsWhereTheyAre) {
  auto m = MatrixOf<TypeParam>({{1, this->kGap}, {3, 4}});
  const TypeParam* cells = m[2].GetVector();
  m.ReserveRows(9);
  EXPECT_EQ(m[2].GetVector(), cells);
  m(2, 2, 5);
  EXPECT_EQ(m[2].GetVector(), cells) << "nobody shares them";
  this->Expect(m, {{1, this->kGap}, {3, 5}});
}

TYPED_TEST(NCDataMatrixRoom, RowsGrowByDoublingBelow3000AndBy3000FromThereOn) {
  struct {
    int rows, capacity;
  } const steps[] = {{4, 8}, {2999, 5998}, {3000, 6000}};
  const NCDataVector<TypeParam> row(1, 1);
  for (const auto& [rows, capacity] : steps) {
    SCOPED_TRACE(rows);
    NCDataMatrix<TypeParam> m(rows, 1, 0);
    const NCDataMatrix<TypeParam> keepsTheOldArray(m);
    m.push_back(row);
    const NCDataVector<TypeParam>* first = &m[1];
    while (m.SizeRows() < capacity) m.push_back(row);
    EXPECT_EQ(&m[1], first) << "room for all of these";
    m.ReserveRows(capacity);
    EXPECT_EQ(&m[1], first) << "room was there already";
    const NCDataMatrix<TypeParam> keepsThisArray(m);
    m.push_back(row);
    EXPECT_NE(&m[1], first);
  }
}

TYPED_TEST(NCDataMatrixRoom, RowsCanBeAddedAfterAConcatenation) {
  NCDataMatrix<TypeParam> m(8, 1, 1);
  m.SetSize(1, 1);
  m.ConcatRows(NCDataMatrix<TypeParam>(1, 1, 2));
  for (int i = 0; i < 8; ++i) m.push_back(VectorOf<TypeParam>({3}));
  EXPECT_EQ(m.SizeRows(), 10);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixRoom, TheFirstRowsComeWithRoomForFour) {
  NCDataMatrix<TypeParam> appended, inserted, sized;
  appended.push_back(NCDataVector<TypeParam>(1));
  inserted.InsertRows(1, 1);
  sized.SetSize(1, 1);
  for (NCDataMatrix<TypeParam>* m : {&appended, &inserted, &sized}) EXPECT_EQ(this->RowsUntilTheyMove(m), 4);
}

TYPED_TEST(NCDataMatrixRoom, AnotherSizeTakesRoomForRowsByTheRule) {
  NCDataMatrix<TypeParam> larger(10, 1), farLarger(10, 1), smaller(10, 1), shared(10, 1);
  larger.SetSize(11, 1);
  EXPECT_EQ(this->RowsUntilTheyMove(&larger), 20);
  farLarger.SetSize(50, 1);
  EXPECT_EQ(this->RowsUntilTheyMove(&farLarger), 50);
  smaller.SetSize(3, 1);
  EXPECT_EQ(this->RowsUntilTheyMove(&smaller), 10);
  shared.ReserveRows(100);
  const NCDataMatrix<TypeParam> twin(shared);
  shared.SetSize(11, 1);  // unlinked first, to an array of its 10 rows
  EXPECT_EQ(this->RowsUntilTheyMove(&shared), 20);
}

TYPED_TEST(NCDataMatrixRoom, AConcatenationTakesRoomForExactlyTheRowsOfBoth) {
  NCDataMatrix<TypeParam> m(2, 1), roomy(2, 1);
  m.ConcatRows(NCDataMatrix<TypeParam>(3, 1));
  EXPECT_EQ(this->RowsUntilTheyMove(&m), 5);
  roomy.ReserveRows(100);
  roomy.ConcatRows(NCDataMatrix<TypeParam>(3, 1));
  EXPECT_EQ(this->RowsUntilTheyMove(&roomy), 5);
}

TYPED_TEST(NCDataMatrixRoom, ReducingTheColumnsKeepsTheRoomForRows) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  m.ReserveRows(9);
  m.ReduceColumns(NCIntegralVector<int, -99>(1, 2));
  EXPECT_EQ(this->RowsUntilTheyMove(&m), 9);
}

TYPED_TEST(NCDataMatrixRoom, RowsThatGoGiveTheirCellsUp) {
  NCDataMatrix<TypeParam> removed(4, 1000, 1), listed(4, 1000, 1), sized(4, 1000, 1), copied(4, 1000, 1);
  const NCDataMatrix<TypeParam> source(2, 1000, 2);
  const int last[] = {3, 4};
  const std::int64_t cells = std::int64_t{2} * 1000 * static_cast<int>(sizeof(TypeParam));
  const auto freed = [](NCDataMatrix<TypeParam>& m, const auto& shrink) {
    const PeakBytesDuring meter;
    shrink(m);
    return -meter.GetLiveBytes();
  };
  EXPECT_GE(freed(removed, [](auto& m) { m.RemoveRows(1, 2); }), cells);
  EXPECT_GE(freed(listed, [&](auto& m) { m.RemoveRows(NCIntegralVector<int, -99>(last, 2)); }), cells);
  EXPECT_GE(freed(sized, [](auto& m) { m.SetSize(2, 1000); }), cells);
  EXPECT_GE(freed(copied, [&](auto& m) { m.CopyContent(source); }), cells);
}

TYPED_TEST(NCDataMatrixRoom, ReservedColumnsOfASharedTableAreItsOwn) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  const NCDataMatrix<TypeParam> twin(m);
  m.ReserveColumns(9);
  EXPECT_NE(&m[1], &twin[1]);
  EXPECT_NE(m[1].GetVector(), twin[1].GetVector());
  EXPECT_EQ(CellsOf(m), CellsOf(twin));
}

}  // namespace
