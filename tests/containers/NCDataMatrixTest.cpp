#include "kalmia/containers/NCDataMatrix.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "TableWithTwin.h"
#include "testing/RandomTables.h"

// Life, sharing and access.

namespace {

/// The protected sharing of a matrix, for tests.
template <class T>
struct Exposed : NCDataMatrix<T> {
  using NCDataMatrix<T>::NCDataMatrix;
  using NCDataMatrix<T>::Unlink;
  using NCDataMatrix<T>::UnlinkMe;
};

template <class T>
class NCDataMatrixLife : public ::testing::Test {};
template <class T>
class NCDataMatrixSharing : public ::testing::Test {};
template <class T>
class NCDataMatrixAccess : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixLife, CellTypes, CellTypeNames);
TYPED_TEST_SUITE(NCDataMatrixSharing, CellTypes, CellTypeNames);
TYPED_TEST_SUITE(NCDataMatrixAccess, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixLife, BeginsWithoutRowsAndColumns) {
  const NCDataMatrix<TypeParam> m;
  EXPECT_EQ(m.SizeRows(), 0);
  EXPECT_EQ(m.SizeColumns(), 0);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_EQ(m.begin(), m.end());
}

TYPED_TEST(NCDataMatrixLife, CountsEveryCellOfATableMadeMissing) {
  const NCDataMatrix<TypeParam> m(3, 2, kHole<TypeParam>);
  EXPECT_EQ(m.GetNumMisVal(), 6);
  EXPECT_EQ(m.GetColumnMisVal(1), 3);
  EXPECT_TRUE(HasExactCounts(m));
  EXPECT_EQ(CellsOf(m), CellsOf(NCDataMatrix<TypeParam>(3, 2))) << "missing is the default";
}

TYPED_TEST(NCDataMatrixLife, CountsNoCellOfATableMadeOfAValue) {
  const NCDataMatrix<TypeParam> m(3, 2, 0);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_EQ(m.GetColumnMisVal(1), 0);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{0, 0}, {0, 0}, {0, 0}}));
}

TYPED_TEST(NCDataMatrixLife, KeepsItsColumnsWithoutRows) {
  const NCDataMatrix<TypeParam> m(0, 3, 1);
  EXPECT_EQ(m.SizeRows(), 0);
  EXPECT_EQ(m.SizeColumns(), 3);
  EXPECT_EQ(m.GetColumnMisVal(3), 0);
}

TYPED_TEST(NCDataMatrixLife, KeepsItsRowsWithoutColumns) {
  const NCDataMatrix<TypeParam> m(2, 0, 1);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{}, {}}));
}

TYPED_TEST(NCDataMatrixLife, IsEmptyAfterClearAndLeavesItsTwinAlone) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  const NCDataMatrix<TypeParam> twin(m);
  m.Clear();
  EXPECT_EQ(m.SizeRows(), 0);
  EXPECT_EQ(m.SizeColumns(), 0);
  EXPECT_EQ(CellsOf(twin), (Table<TypeParam>{{1, 1}, {1, 1}}));
}

TYPED_TEST(NCDataMatrixSharing, ACopySharesTheRowsThemselves) {
  const NCDataMatrix<TypeParam> a(3, 2, 1);
  const NCDataMatrix<TypeParam> b(a);
  EXPECT_EQ(&a[1], &b[1]);
  NCDataMatrix<TypeParam> c;
  c = b;
  EXPECT_EQ(&a[1], &c[1]);
}

TYPED_TEST(NCDataMatrixSharing, AWriteSplitsOffOnlyTheRowThatIsWritten) {
  const NCDataMatrix<TypeParam> a = RandomMatrix<TypeParam>(4, 3, 0.2, 1);
  const Table<TypeParam> before = CellsOf(a);
  NCDataMatrix<TypeParam> b;
  b = a;
  b(1, 1, 7);
  EXPECT_EQ(CellsOf(a), before);
  EXPECT_TRUE(HasExactCounts(a));
  EXPECT_EQ(b[1][1], 7);
  EXPECT_TRUE(HasExactCounts(b));
  EXPECT_NE(b[1].GetVector(), a[1].GetVector());
  for (int r = 2; r <= 4; ++r) EXPECT_EQ(b[r].GetVector(), a[r].GetVector()) << "row " << r;
}

TYPED_TEST(NCDataMatrixSharing, AWriteToAnUnsharedTableMovesNothing) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  { const NCDataMatrix<TypeParam> gone(m); }
  const NCDataVector<TypeParam>* row = &m[1];
  const TypeParam* cells = m[1].GetVector();
  m(1, 1, 2);
  EXPECT_EQ(&m[1], row);
  EXPECT_EQ(m[1].GetVector(), cells);
}

TYPED_TEST(NCDataMatrixSharing, CountsOfColumnsAreSplitOffToo) {
  NCDataMatrix<TypeParam> a(2, 2, 1);
  NCDataMatrix<TypeParam> b(a);
  b(2, 1, kHole<TypeParam>);
  a(1, 2, kHole<TypeParam>);
  EXPECT_TRUE(HasExactCounts(a));
  EXPECT_TRUE(HasExactCounts(b));
}

TYPED_TEST(NCDataMatrixSharing, AssigningATableToItselfOrToItsShareDoesNothing) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  NCDataMatrix<TypeParam>& self = m;
  m = self;
  NCDataMatrix<TypeParam> share(m);
  share = m;
  share(1, 1, 5);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{1, 1}, {1, 1}}));
  NCDataMatrix<TypeParam> empty;
  NCDataMatrix<TypeParam>& emptySelf = empty;
  empty = emptySelf;
  EXPECT_EQ(empty.SizeRows(), 0);
}

TYPED_TEST(NCDataMatrixSharing, SharesOfAnEmptyTableGrowApart) {
  NCDataMatrix<TypeParam> a;
  NCDataMatrix<TypeParam> b(a);
  b.SetSize(1, 1);
  a.push_back(VectorOf<TypeParam>({1, 2}));
  EXPECT_EQ(CellsOf(a), (Table<TypeParam>{{1, 2}}));
  EXPECT_EQ(CellsOf(b), (Table<TypeParam>{{kHole<TypeParam>}}));
}

TYPED_TEST(NCDataMatrixSharing, UnlinkingSplitsTheRowsAndKeepsTheirCellsShared) {
  Exposed<TypeParam> a(3, 2, 1);
  const NCDataMatrix<TypeParam> b(a);
  a.Unlink();
  EXPECT_NE(&a[1], &b[1]);
  for (int r = 1; r <= 3; ++r) EXPECT_EQ(a[r].GetVector(), b[r].GetVector());
  const NCDataVector<TypeParam>* row = &a[1];
  a.UnlinkMe();
  EXPECT_EQ(&a[1], row) << "unshared already";
}

TYPED_TEST(NCDataMatrixSharing, UnlinkingLeavesRoomForTheRowsThereAre) {
  Exposed<TypeParam> a(3, 2, 1);
  a.ReserveRows(10);
  const NCDataMatrix<TypeParam> b(a);
  a.UnlinkMe();
  const NCDataVector<TypeParam>* row = &a[1];
  a.InsertRows(4, 1);
  EXPECT_NE(&a[1], row) << "no room for a fourth";
}

TYPED_TEST(NCDataMatrixSharing, ForceUnlinkLeavesNothingShared) {
  NCDataMatrix<TypeParam> a(3, 2, 1);
  const NCDataMatrix<TypeParam> b(a);
  a.ForceUnlink();
  for (int r = 1; r <= 3; ++r) EXPECT_NE(a[r].GetVector(), b[r].GetVector());
  EXPECT_EQ(CellsOf(a), CellsOf(b));
}

TYPED_TEST(NCDataMatrixSharing, ForceUnlinkSplitsRowsThatShareWithinOneTable) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  m.SetRow(1, m[2]);
  ASSERT_EQ(m[1].GetVector(), m[2].GetVector());
  m.ForceUnlink();
  EXPECT_NE(m[1].GetVector(), m[2].GetVector());
}

TYPED_TEST(NCDataMatrixSharing, CopyContentSharesNothingWithItsSource) {
  const NCDataMatrix<TypeParam> source = RandomMatrix<TypeParam>(3, 4, 0.3, 2);
  for (NCDataMatrix<TypeParam> target : {NCDataMatrix<TypeParam>(), NCDataMatrix<TypeParam>(3, 4), source}) {
    target.CopyContent(source);
    EXPECT_EQ(CellsOf(target), CellsOf(source));
    EXPECT_TRUE(HasExactCounts(target));
    for (int r = 1; r <= 3; ++r) EXPECT_NE(target[r].GetVector(), source[r].GetVector());
  }
}

// A copy that shared with the table in passing would lose counts of sharing here, and so free the table's rows.
TYPED_TEST(NCDataMatrixSharing, CopyContentRunsOnSeveralThreadsOnTheSameTable) {
  const NCDataMatrix<TypeParam> source = RandomMatrix<TypeParam>(1, 1, 0.0, 2);
  const Table<TypeParam> cells = CellsOf(source);
  std::atomic<int> waiting{3};
  const auto copy = [&] {
    NCDataMatrix<TypeParam> copy;
    for (--waiting; waiting > 0;) std::this_thread::yield();
    for (int round = 0; round < 50000; ++round) copy.CopyContent(source);
    EXPECT_EQ(CellsOf(copy), cells);
  };
  std::thread first(copy), second(copy), third(copy);
  first.join();
  second.join();
  third.join();
  EXPECT_EQ(CellsOf(source), cells);
}

TYPED_TEST(NCDataMatrixSharing, CopyContentTakesTheShapeOfASmallerOrLargerTable) {
  const int sizes[][2] = {{2, 2}, {9, 8}, {0, 3}, {3, 0}, {0, 0}};
  for (const auto& [rows, columns] : sizes) {
    SCOPED_TRACE(::testing::Message() << rows << " by " << columns);
    const NCDataMatrix<TypeParam> source = RandomMatrix<TypeParam>(rows, columns, 0.3, 3);
    NCDataMatrix<TypeParam> m = RandomMatrix<TypeParam>(4, 5, 0.3, 4);
    m.CopyContent(source);
    EXPECT_EQ(CellsOf(m), CellsOf(source));
    EXPECT_EQ(m.SizeColumns(), columns);
    EXPECT_TRUE(HasExactCounts(m));
    m.InsertRows(1, 3);
    EXPECT_TRUE(HasExactCounts(m));
    EXPECT_EQ(m.GetNumMisVal(), source.GetNumMisVal() + 3 * columns);
  }
}

TYPED_TEST(NCDataMatrixSharing, CopyContentTakesATableThatHasTheTargetsOwnRows) {
  NCDataMatrix<TypeParam> m = RandomMatrix<TypeParam>(3, 4, 0.3, 2);
  const NCDataMatrix<TypeParam> last = m.GetRowSubMatrix(2, 3);
  const Table<TypeParam> cells = CellsOf(last);
  m.CopyContent(last);
  EXPECT_EQ(CellsOf(m), cells);
  EXPECT_EQ(CellsOf(last), cells);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixSharing, CopyContentOfItselfKeepsTheCellsAndSharesThemNoMore) {
  NCDataMatrix<TypeParam> m = RandomMatrix<TypeParam>(3, 4, 0.3, 2);
  const NCDataMatrix<TypeParam> share = m;
  const Table<TypeParam> before = CellsOf(m);
  m.CopyContent(m);
  EXPECT_EQ(CellsOf(m), before);
  EXPECT_TRUE(HasExactCounts(m));
  for (int r = 1; r <= 3; ++r) EXPECT_NE(m[r].GetVector(), share[r].GetVector());
}

TYPED_TEST(NCDataMatrixAccess, WritesACellWithAllCountsAndReturnsTheValue) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  EXPECT_EQ(m(2, 1, kHole<TypeParam>), kHole<TypeParam>);
  EXPECT_EQ(m.GetNumMisVal(), 1);
  EXPECT_EQ(m.GetColumnMisVal(1), 1);
  EXPECT_EQ(m(2, 1, kHole<TypeParam>), kHole<TypeParam>) << "once more changes no count";
  EXPECT_EQ(m.GetNumMisVal(), 1);
  EXPECT_EQ(m(2, 1, 3), 3);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixAccess, AWriteThroughTheRowReachesTheRowsCountOnly) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  const NCDataMatrix<TypeParam> twin(m);
  m(2)(1, kHole<TypeParam>);
  EXPECT_EQ(m[2].GetNumMisVal(), 1);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_EQ(m.GetColumnMisVal(1), 0);
  EXPECT_EQ(CellsOf(twin), (Table<TypeParam>{{1, 1}, {1, 1}}));
}

TYPED_TEST(NCDataMatrixAccess, IteratesOverItsRows) {
  const auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}, {5, 6}});
  EXPECT_EQ(m.end() - m.begin(), 3);
  EXPECT_EQ(m.begin(), &m[1]);
  EXPECT_EQ(CellsOf(m.back()), (std::vector<TypeParam>{5, 6}));
}

TYPED_TEST(NCDataMatrixAccess, GivesAColumnWithItsHoles) {
  const auto m = MatrixOf<TypeParam>({{1, 2}, {3, kHole<TypeParam>}, {5, 6}});
  const NCDataVector<TypeParam> column = m.GetColumn(2);
  EXPECT_EQ(CellsOf(column), (std::vector<TypeParam>{2, kHole<TypeParam>, 6}));
  EXPECT_TRUE(HasExactCounts(column));
  EXPECT_EQ(NCDataMatrix<TypeParam>(0, 3).GetColumn(2).Size(), 0);
}

TYPED_TEST(NCDataMatrixAccess, BuildsAColumnInTheTargetThatWasNamed) {
  const auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  NCDataVector<TypeParam> target(2);
  const NCDataVector<TypeParam> twin(target);
  const NCDataVector<TypeParam> column = m.Result(&target).GetColumn(2);
  EXPECT_EQ(column.GetVector(), target.GetVector());
  EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{2, 4}));
  EXPECT_TRUE(HasExactCounts(target));
  EXPECT_EQ(twin.GetNumMisVal(), 2) << "whoever shared the target's old cells keeps them";
  EXPECT_NE(m.GetColumn(1).GetVector(), target.GetVector()) << "a target serves once";
}

TYPED_TEST(NCDataMatrixAccess, BuildsAColumnInARowOfItsOwn) {
  for (int c = 1; c <= 2; ++c)
    for (int r = 1; r <= 2; ++r) {
      SCOPED_TRACE(::testing::Message() << "column " << c << " in row " << r);
      auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
      const std::vector<TypeParam> cells = CellsOf(m.GetColumn(c));
      NCDataVector<TypeParam>& row = m(r);
      const NCDataVector<TypeParam> column = m.Result(&row).GetColumn(c);
      EXPECT_EQ(CellsOf(m[r]), cells);
      EXPECT_EQ(column.GetVector(), m[r].GetVector());
      EXPECT_NE(m.GetColumn(c).GetVector(), m[r].GetVector()) << "a target serves once";
    }
}

TYPED_TEST(NCDataMatrixAccess, GivesAllOfItsRowsAsAShare) {
  const auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  const NCDataMatrix<TypeParam> all = m.GetRowSubMatrix(1, 2);
  EXPECT_EQ(&all[1], &m[1]);
  EXPECT_TRUE(all == m);
}

TYPED_TEST(NCDataMatrixAccess, GivesSomeOfItsRowsAsSharesRowByRow) {
  const auto m = MatrixOf<TypeParam>({{1, kHole<TypeParam>}, {3, 4}, {kHole<TypeParam>, 6}});
  NCDataMatrix<TypeParam> part = m.GetRowSubMatrix(2, 3);
  EXPECT_EQ(CellsOf(part), (Table<TypeParam>{{3, 4}, {kHole<TypeParam>, 6}}));
  EXPECT_TRUE(HasExactCounts(part));
  EXPECT_EQ(part[1].GetVector(), m[2].GetVector());
  EXPECT_EQ(part[2].GetVector(), m[3].GetVector());
  part(1, 1, 0);
  EXPECT_EQ(m[2][1], 3);
  EXPECT_EQ(m.GetRowSubMatrix(3, 2).SizeRows(), 0);
}

TYPED_TEST(NCDataMatrixAccess, AliasesItsCellsAsPointersWhenItKeepsThem) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  TypeParam** cells = NCDataMatrix<TypeParam>::GetMatrixAsPointerPointer(m, /*keep=*/true);
  EXPECT_EQ(cells[1], m[1].GetVector());
  EXPECT_EQ(cells[2][1], 3);
  NCDataMatrix<TypeParam>::ReleasePointerPointer(cells, 2, /*cells=*/false);
  EXPECT_EQ(CellsOf(m), (Table<TypeParam>{{1, 2}, {3, 4}}));
}

TYPED_TEST(NCDataMatrixAccess, GivesItsCellsAwayAsPointers) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  const NCDataMatrix<TypeParam> twin(m);
  TypeParam** cells = NCDataMatrix<TypeParam>::GetMatrixAsPointerPointer(m, /*keep=*/false);
  cells[2][1] = 9;
  EXPECT_EQ(m.SizeRows(), 0);
  EXPECT_EQ(m.SizeColumns(), 0);
  EXPECT_EQ(m.GetNumMisVal(), 0);
  EXPECT_EQ(CellsOf(twin), (Table<TypeParam>{{1, 2}, {3, 4}}));
  NCDataMatrix<TypeParam>::ReleasePointerPointer(cells, 2, /*cells=*/true);
  m = twin;
  EXPECT_EQ(CellsOf(m), CellsOf(twin));
}

TYPED_TEST(NCDataMatrixAccess, AliasesTheCellsOfASharedTableAndLeavesThemShared) {
  NCDataMatrix<TypeParam> m(2, 2, 1);
  const NCDataMatrix<TypeParam> twin(m);
  TypeParam** cells = NCDataMatrix<TypeParam>::GetMatrixAsPointerPointer(m, /*keep=*/true);
  EXPECT_EQ(cells[2], twin[2].GetVector());
  EXPECT_EQ(&m[1], &twin[1]);
  NCDataMatrix<TypeParam>::ReleasePointerPointer(cells, 2, /*cells=*/false);
}

TYPED_TEST(NCDataMatrixAccess, GivesRowsThatShareCellsAwayAsCellsOfTheirOwn) {
  auto m = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  m.SetRow(1, m[2]);
  const NCDataVector<TypeParam> share(m[2]);
  TypeParam** cells = NCDataMatrix<TypeParam>::GetMatrixAsPointerPointer(m, /*keep=*/false);
  cells[1][1] = 8;
  cells[2][1] = 9;
  EXPECT_EQ(cells[1][1], 8);
  EXPECT_EQ(CellsOf(share), (std::vector<TypeParam>{3, 4}));
  NCDataMatrix<TypeParam>::ReleasePointerPointer(cells, 2, /*cells=*/true);
}

TYPED_TEST(NCDataMatrixAccess, GivesRowsWithoutColumnsAway) {
  NCDataMatrix<TypeParam> m(2, 0);
  NCDataMatrix<TypeParam> emptied(2, 1);
  emptied.RemoveColumns(1, 1);  // its rows have memory and no cells
  for (NCDataMatrix<TypeParam>* table : {&m, &emptied}) {
    TypeParam** cells = NCDataMatrix<TypeParam>::GetMatrixAsPointerPointer(*table, /*keep=*/false);
    EXPECT_EQ(table->SizeRows(), 0);
    NCDataMatrix<TypeParam>::ReleasePointerPointer(cells, 2, /*cells=*/true);
  }
}

TYPED_TEST(NCDataMatrixAccess, GivesAwayWhatAnEmptyTableHas) {
  NCDataMatrix<TypeParam> m;
  TypeParam** cells = NCDataMatrix<TypeParam>::GetMatrixAsPointerPointer(m, /*keep=*/false);
  NCDataMatrix<TypeParam>::ReleasePointerPointer(cells, 0, /*cells=*/true);
  NCDataMatrix<TypeParam>::ReleasePointerPointer(nullptr, 0, /*cells=*/true);
}

TYPED_TEST(NCDataMatrixSharing, SwapExchangesTheTablesAndSplitsNothing) {
  auto a = MatrixOf<TypeParam>({{1, 2}});
  auto b = MatrixOf<TypeParam>({{3}, {kHole<TypeParam>}});
  const NCDataVector<TypeParam>* row = &a[1];
  a.swap(b);
  EXPECT_EQ(CellsOf(a), (Table<TypeParam>{{3}, {kHole<TypeParam>}}));
  EXPECT_EQ(&b[1], row);
  EXPECT_TRUE(HasExactCounts(a));
  EXPECT_TRUE(HasExactCounts(b));
}

}  // namespace
