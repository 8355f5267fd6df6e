#include "kalmia/kernels/rows/UnlinkedRows.h"

#include <gtest/gtest.h>

#include <new>

#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
class UnlinkedRows : public ::testing::Test {};
TYPED_TEST_SUITE(UnlinkedRows, CellTypes, CellTypeNames);

TYPED_TEST(UnlinkedRows, LeaveWhoSharedTheCellsAlone) {
  const auto original = RandomMatrix<TypeParam>(5, 7, 0.2, 1);
  const auto before = CellsOf(original);
  NCDataMatrix<TypeParam> matrix = original;
  const kalmia::UnlinkedRows<TypeParam> rows(&matrix);
  for (int r = 5; r >= 1; --r) rows.Fetch(r)[0] = 17;
  EXPECT_EQ(CellsOf(original), before);
  for (int r = 1; r <= 5; ++r) {
    EXPECT_EQ(matrix[r][1], 17);
    EXPECT_EQ(matrix[r][7], original[r][7]);
    EXPECT_EQ(matrix[r].GetNumMisVal(), original[r].GetNumMisVal());
  }
}

TYPED_TEST(UnlinkedRows, StayWhereTheyAreIfNobodyShares) {
  auto matrix = RandomMatrix<TypeParam>(3, 4, 0.2, 1);
  const auto before = CellsOf(matrix);
  const TypeParam* second = matrix[2].begin();
  const kalmia::UnlinkedRows<TypeParam> rows(&matrix);
  EXPECT_EQ(rows.Fetch(2), second);
  EXPECT_EQ(CellsOf(matrix), before);
}

TYPED_TEST(UnlinkedRows, PartRowsThatShareWithEachOther) {
  auto matrix = RandomMatrix<TypeParam>(3, 4, 0.0, 1);
  matrix.SetRow(3, matrix[1]);
  const auto before = CellsOf(matrix);
  {
    const kalmia::UnlinkedRows<TypeParam> rows(&matrix);
    for (int r = 1; r <= 3; ++r) rows.Fetch(r);
  }
  EXPECT_EQ(CellsOf(matrix), before);
  EXPECT_NE(matrix[1].begin(), matrix[3].begin());
}

TYPED_TEST(UnlinkedRows, TellWhereToReadAndWhereToWriteARowThatNeedsNoFetch) {
  const auto original = RandomMatrix<TypeParam>(2, 4, 0.0, 1);
  NCDataMatrix<TypeParam> matrix = original;
  matrix(2).ForceUnlink();
  const TypeParam* second = matrix[2].begin();
  const kalmia::UnlinkedRows<TypeParam> rows(&matrix);
  EXPECT_EQ(rows.OldCells(1), original[1].begin());
  EXPECT_EQ(rows.NewCells(1), matrix[1].begin());
  EXPECT_NE(rows.NewCells(1), rows.OldCells(1));
  EXPECT_EQ(rows.OldCells(2), second);
  EXPECT_EQ(rows.NewCells(2), second);
}

TYPED_TEST(UnlinkedRows, OfATableWithoutCellsAreNone) {
  NCDataMatrix<TypeParam> none;
  const kalmia::UnlinkedRows<TypeParam> of(&none);
  NCDataMatrix<TypeParam> withoutColumns;
  withoutColumns.InsertRows(1, 2);
  NCDataMatrix<TypeParam> share = withoutColumns;
  const kalmia::UnlinkedRows<TypeParam> rows(&share);
  EXPECT_EQ(rows.Fetch(2), nullptr);
}

TYPED_TEST(UnlinkedRows, KeepTheirCellsWhenMemoryRunsOut) {
  const auto original = RandomMatrix<TypeParam>(4, 6, 0.2, 1);
  const auto before = CellsOf(original);
  int failures = 0;
  for (int which = 1;; ++which) {
    NCDataMatrix<TypeParam> matrix = original;
    const FailAllocation fails(which);
    try {
      const kalmia::UnlinkedRows<TypeParam> rows(&matrix);
      if (fails.HasFailed()) ADD_FAILURE() << "swallowed";
      break;
    } catch (const std::bad_alloc&) {
      ++failures;
      EXPECT_EQ(CellsOf(matrix), before) << "allocation " << which;
      EXPECT_TRUE(HasExactCounts(matrix));
    }
  }
  EXPECT_GE(failures, 4) << "one for each row at least";
}

}  // namespace
