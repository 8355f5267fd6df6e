#include <gtest/gtest.h>
#include <sys/mman.h>

#include <new>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

// Where operations build what they return.

namespace {

template <class T>
class NCDataMatrixResult : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixResult, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixResult, MakesAMissingTableWhereNoTargetWasNamed) {
  const NCDataMatrix<TypeParam> m;
  MatrixDestroyer<TypeParam> holder;
  m.GetReturnMatrix(holder, 2, 3);
  EXPECT_TRUE(holder.owner);
  EXPECT_EQ(CellsOf(*holder.matrix), CellsOf(NCDataMatrix<TypeParam>(2, 3)));
  EXPECT_TRUE(HasExactCounts(*holder.matrix));
}

TYPED_TEST(NCDataMatrixResult, HasRowsWithoutColumnsButNoColumnsWithoutRows) {
  const NCDataMatrix<TypeParam> m;
  MatrixDestroyer<TypeParam> rowsOnly, columnsOnly;
  m.GetReturnMatrix(rowsOnly, 2, 0);
  EXPECT_EQ(rowsOnly.matrix->SizeRows(), 2);
  EXPECT_EQ(rowsOnly.matrix->SizeColumns(), 0);
  m.GetReturnMatrix(columnsOnly, 0, 3);
  EXPECT_EQ(columnsOnly.matrix->SizeRows(), 0);
  EXPECT_EQ(columnsOnly.matrix->SizeColumns(), 0);
}

TYPED_TEST(NCDataMatrixResult, UsesATargetOnceUnlinkedAndNotResized) {
  const NCDataMatrix<TypeParam> m;
  NCDataMatrix<TypeParam> target(1, 1, 4);
  const NCDataMatrix<TypeParam> twin(target);
  {
    MatrixDestroyer<TypeParam> holder;
    m.Result(&target).GetReturnMatrix(holder, 2, 3);
    EXPECT_EQ(holder.matrix, &target);
    EXPECT_FALSE(holder.owner);
  }
  EXPECT_EQ(CellsOf(target), (Table<TypeParam>{{4}}));
  EXPECT_NE(&target[1], &twin[1]);
  MatrixDestroyer<TypeParam> next;
  m.GetReturnMatrix(next, 2, 3);
  EXPECT_NE(next.matrix, &target);
}

TYPED_TEST(NCDataMatrixResult, TakesVectorTargetsOnTheirOwn) {
  const NCDataMatrix<TypeParam> m;
  NCDataVector<TypeParam> vectorTarget(1, 4);
  NCDataMatrix<TypeParam> matrixTarget;
  m.Result(&vectorTarget).Result(&matrixTarget);
  {
    VectorDestroyer<TypeParam> holder;
    m.GetReturnVector(holder, 5);
    EXPECT_EQ(holder.vector, &vectorTarget);
    EXPECT_EQ(vectorTarget.Size(), 1) << "a target is never resized";
  }
  MatrixDestroyer<TypeParam> matrixHolder;
  m.GetReturnMatrix(matrixHolder, 1, 1);
  EXPECT_EQ(matrixHolder.matrix, &matrixTarget);
  VectorDestroyer<TypeParam> fresh, none;
  m.GetReturnVector(fresh, 5);
  EXPECT_EQ(fresh.vector->GetNumMisVal(), 5);
  m.GetReturnVector(none, 0);
  EXPECT_EQ(none.vector->Size(), 0);
}

TYPED_TEST(NCDataMatrixResult, IsDroppedByClear) {
  NCDataMatrix<TypeParam> m(1, 1, 1), matrixTarget;
  NCDataVector<TypeParam> vectorTarget(1);
  m.Result(&vectorTarget).Result(&matrixTarget);
  m.Clear();
  VectorDestroyer<TypeParam> vector;
  MatrixDestroyer<TypeParam> matrix;
  m.GetReturnVector(vector, 1);
  m.GetReturnMatrix(matrix, 1, 1);
  EXPECT_TRUE(vector.owner);
  EXPECT_TRUE(matrix.owner);
}

TYPED_TEST(NCDataMatrixResult, OfATableIsSwappedToo) {
  NCDataMatrix<TypeParam> a(1, 1, 1), b, target;
  a.Result(&target);
  a.streamVisited = true;
  a.swap(b);
  EXPECT_TRUE(a.streamVisited) << "the stream's part stays";
  EXPECT_FALSE(b.streamVisited);
  MatrixDestroyer<TypeParam> ofA, ofB;
  a.GetReturnMatrix(ofA, 1, 1);
  b.GetReturnMatrix(ofB, 1, 1);
  EXPECT_TRUE(ofA.owner);
  EXPECT_EQ(ofB.matrix, &target);
}

TYPED_TEST(NCDataMatrixResult, IsNotCopiedOrAssignedButSwapped) {
  NCDataMatrix<TypeParam> a(1, 1, 1), b;
  NCDataVector<TypeParam> target(1);
  const auto usesTarget = [&target](const NCDataMatrix<TypeParam>& m) {
    VectorDestroyer<TypeParam> holder;
    m.GetReturnVector(holder, 1);
    return holder.vector == &target;
  };
  EXPECT_EQ(&a.Result(&target), &a);
  const NCDataMatrix<TypeParam> copy(a);
  EXPECT_FALSE(usesTarget(copy));
  b = a;
  EXPECT_FALSE(usesTarget(b));
  a = NCDataMatrix<TypeParam>(2, 2);
  EXPECT_TRUE(usesTarget(a)) << "assignment leaves it";
  a.Result(&target);
  a.swap(b);
  EXPECT_TRUE(usesTarget(b));
  EXPECT_FALSE(usesTarget(a));
}

/// A table in memory that can be locked against writing: who writes then ends the test program.
template <class T>
class LockableTable {
 public:
  explicit LockableTable(const NCDataMatrix<T>& m)
      : page_(mmap(nullptr, sizeof m, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)),
        table_(new (page_) NCDataMatrix<T>(m)) {}
  LockableTable(const LockableTable&) = delete;
  LockableTable& operator=(const LockableTable&) = delete;
  ~LockableTable() {
    mprotect(page_, sizeof(NCDataMatrix<T>), PROT_READ | PROT_WRITE);
    table_->~NCDataMatrix<T>();
    munmap(page_, sizeof(NCDataMatrix<T>));
  }

  const NCDataMatrix<T>& Locked() {
    EXPECT_EQ(mprotect(page_, sizeof(NCDataMatrix<T>), PROT_READ), 0);
    return *table_;
  }

 private:
  void* page_;
  NCDataMatrix<T>* table_;
};

TYPED_TEST(NCDataMatrixResult, IsNotWrittenWhereNoTargetWasNamedSoThatSeveralThreadsMayReadATable) {
  LockableTable<TypeParam> lockable(NCDataMatrix<TypeParam>(2, 3, 4));
  const NCDataMatrix<TypeParam>& table = lockable.Locked();
  EXPECT_EQ(table.GetColumn(2)[1], 4);
  EXPECT_EQ(table.RegressColumns(NCDataVector<TypeParam>(2, 1))[3], 4);
  EXPECT_EQ(table.RegressRows(NCDataVector<TypeParam>(3, 1))[2], 4);
}

}  // namespace
