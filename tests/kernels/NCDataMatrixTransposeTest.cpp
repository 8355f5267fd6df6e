#include <gtest/gtest.h>

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
using Cells = std::vector<std::vector<T>>;

template <class T>
Cells<T> Transposed(const NCDataMatrix<T>& m) {
  Cells<T> cells(static_cast<std::size_t>(m.SizeColumns()));
  for (int c = 1; c <= m.SizeColumns(); ++c)
    for (int r = 1; r <= m.SizeRows(); ++r) cells[c - 1].push_back(m[r][c]);
  return cells;
}

struct Shape {
  int rows, columns;
};

/// Square, wide and tall, around the squares that are moved at a time, and without cells.
const Shape kShapes[] = {{1, 1},   {2, 3},   {3, 2},   {32, 32}, {33, 33}, {31, 65},  {65, 31}, {1, 100},
                         {100, 1}, {40, 41}, {41, 40}, {7, 300}, {300, 7}, {100, 66}, {0, 0}};

template <class T>
class NCDataMatrixTranspose : public testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixTranspose, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixTranspose, ExchangesRowsAndColumnsAndTheirCounts) {
  using T = TypeParam;
  for (const Shape& shape : kShapes)
    for (const double holes : {0.0, 0.1, 0.9, 1.0}) {
      SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns << ", holes " << holes);
      const auto before = RandomMatrix<T>(shape.rows, shape.columns, holes, 1);
      NCDataMatrix<T> m(before);
      m.Transpose();
      EXPECT_EQ(m.SizeRows(), shape.columns);
      EXPECT_EQ(m.SizeColumns(), shape.rows);
      EXPECT_EQ(CellsOf(m), Transposed(before));
      EXPECT_TRUE(HasExactCounts(m));
      EXPECT_EQ(before.SizeRows(), shape.rows);
      EXPECT_TRUE(HasExactCounts(before));
    }
}

TYPED_TEST(NCDataMatrixTranspose, TwiceIsTheIdentity) {
  using T = TypeParam;
  for (const Shape& shape : kShapes) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    const auto before = RandomMatrix<T>(shape.rows, shape.columns, 0.2, 2);
    NCDataMatrix<T> m(before);
    m.Transpose();
    m.Transpose();
    EXPECT_EQ(CellsOf(m), CellsOf(before));
    EXPECT_TRUE(HasExactCounts(m));
  }
}

TYPED_TEST(NCDataMatrixTranspose, TakesAHoleWithIt) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, 2, kHole<T>}, {4, 5, 6}});
  m.Transpose();
  EXPECT_EQ(CellsOf(m), (Cells<T>{{1, 4}, {2, 5}, {kHole<T>, 6}}));
  EXPECT_EQ(m.GetColumnMisVal(1), 1);
  EXPECT_EQ(m.GetColumnMisVal(2), 0);
  EXPECT_EQ(m[3].GetNumMisVal(), 1);
  EXPECT_EQ(m.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixTranspose, ExchangesCountsWithoutALookAtTheCells) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, 2, 3}, {4, 5, 6}});
  m(1)(3, kHole<T>);  // through the row, so that neither column nor table knows of it
  m.Transpose();
  EXPECT_EQ(CellsOf(m), (Cells<T>{{1, 4}, {2, 5}, {kHole<T>, 6}}));
  EXPECT_EQ(m.GetColumnMisVal(1), 1);
  EXPECT_EQ(m[3].GetNumMisVal(), 0);
  EXPECT_EQ(m.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixTranspose, KeepsTheSizeThatHasNoCells) {
  using T = TypeParam;
  NCDataMatrix<T> m;
  m.SetSize(0, 5);
  m.Transpose();
  EXPECT_EQ(m.SizeRows(), 5);
  EXPECT_EQ(m.SizeColumns(), 0);
  EXPECT_TRUE(HasExactCounts(m));
  m.Transpose();
  EXPECT_EQ(m.SizeRows(), 0);
  EXPECT_EQ(m.SizeColumns(), 5);
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixTranspose, LeavesOnesThatShareRowsAlone) {
  using T = TypeParam;
  const auto source = RandomMatrix<T>(6, 4, 0.2, 3);
  const auto cells = CellsOf(source);
  NCDataMatrix<T> m = source.GetRowSubMatrix(2, 5);
  const NCDataMatrix<T> part(m);
  m.Transpose();
  EXPECT_EQ(CellsOf(source), cells);
  EXPECT_EQ(CellsOf(m), Transposed(part));
}

/// For how many rows m has room: the row array moves as soon as there is one more.
template <class T>
int RowsThatFit(NCDataMatrix<T>& m) {
  const NCDataVector<T>* first = m.begin();
  while (m.begin() == first) m.InsertRow(m.SizeRows() + 1, NCDataVector<T>(m.SizeColumns()));
  return m.SizeRows() - 1;
}

TYPED_TEST(NCDataMatrixTranspose, GivesBackWhatWasReserved) {
  using T = TypeParam;
  for (const Shape& shape : {Shape{3, 3}, Shape{2, 5}, Shape{5, 2}, Shape{40, 40}}) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    auto m = RandomMatrix<T>(shape.rows, shape.columns, 0.2, 5);
    m.ReserveRows(100);
    m.ReserveColumns(200);
    const auto expected = Transposed(m);
    m.Transpose();
    EXPECT_EQ(CellsOf(m), expected);
    EXPECT_TRUE(HasExactCounts(m));
    EXPECT_EQ(RowsThatFit(m), shape.columns);
  }
}

TYPED_TEST(NCDataMatrixTranspose, LeavesATableThatCanGrowAgain) {
  using T = TypeParam;
  for (const Shape& shape : kShapes) {
    SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.columns);
    auto m = RandomMatrix<T>(shape.rows, shape.columns, 0.2, 4);
    m.Transpose();
    const auto cells = CellsOf(m);
    m.InsertRows(1, 2);
    m.InsertColumns(m.SizeColumns() + 1, 3);
    EXPECT_TRUE(HasExactCounts(m));
    m.RemoveRows(1, 2);
    m.RemoveColumns(m.SizeColumns() - 2, 3);
    EXPECT_EQ(CellsOf(m), cells);
    EXPECT_TRUE(HasExactCounts(m));
  }
}

}  // namespace
