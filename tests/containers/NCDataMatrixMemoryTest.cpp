#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <string>
#include <vector>

#include "TableWithTwin.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

// What is left of a table when memory runs out in the middle of an operation: each allocation fails in turn.

namespace {

template <class T>
struct Change {
  const char* name;
  std::function<void(NCDataMatrix<T>&)> run;
};

constexpr int kRows = 3, kColumns = 4;

/// Operations that are done whole or not at all.
template <class T>
std::vector<Change<T>> WholeChanges() {
  using M = NCDataMatrix<T>;
  const auto row = VectorOf<T>({7, kHole<T>, 8, 9});
  const auto column = VectorOf<T>({7, kHole<T>, 8});
  const M other = RandomMatrix<T>(kRows, kColumns, 0.3, 5), larger = RandomMatrix<T>(7, 9, 0.3, 6);
  const int list[] = {3, 1, 3};
  const NCIntegralVector<int, -99> indices(list, 3);
  return {{"SetSize, more rows", [](M& m) { m.SetSize(9, kColumns); }},
          {"SetSize, more columns", [](M& m) { m.SetSize(kRows, 9); }},
          {"SetSize, fewer of both", [](M& m) { m.SetSize(1, 2); }},
          {"SetSize, none", [](M& m) { m.SetSize(0, 0); }},
          {"ReserveRows", [](M& m) { m.ReserveRows(20); }},
          {"ReserveColumns", [](M& m) { m.ReserveColumns(20); }},
          {"InsertRows", [](M& m) { m.InsertRows(2, 3); }},
          {"InsertRow", [=](M& m) { m.InsertRow(2, row); }},
          {"RemoveRows", [](M& m) { m.RemoveRows(1, 2); }},
          {"RemoveRows of a list", [=](M& m) { m.RemoveRows(indices); }},
          {"InsertColumns", [](M& m) { m.InsertColumns(2, 3); }},
          {"InsertColumns of a table", [=](M& m) { m.InsertColumns(2, other); }},
          {"InsertColumn", [=](M& m) { m.InsertColumn(2, column); }},
          {"RemoveColumns", [](M& m) { m.RemoveColumns(2, 2); }},
          {"ReduceColumns", [=](M& m) { m.ReduceColumns(indices); }},
          {"ConcatRows", [=](M& m) { m.ConcatRows(other); }},
          {"ConcatColumns", [=](M& m) { m.ConcatColumns(other); }},
          {"RearrangeColumns", [](M& m) { m.RearrangeColumns({4, 4, 1}); }},
          {"CopyContent", [=](M& m) { m.CopyContent(other); }},
          {"CopyContent of a larger table", [=](M& m) { m.CopyContent(larger); }},
          {"Clear", [](M& m) { m.Clear(); }},
          {"ForceUnlink", [](M& m) { m.ForceUnlink(); }},
          {"SetAllValues", [](M& m) { m.SetAllValues(2); }},
          {"SetAllValues, missing", [](M& m) { m.SetAllValues(kHole<T>); }},
          {"SetRow", [=](M& m) { m.SetRow(2, row); }},
          {"SetRow to a value", [](M& m) { m.SetRow(2, kHole<T>); }},
          {"a cell", [](M& m) { m(2, 3, m[2][3] == kHole<T> ? T(1) : kHole<T>); }},
          {"a row for writing", [](M& m) { m(2)(1, m[2][1]); }},
          {"TransformToColumnScaled", [=](M& m) { m.TransformToColumnScaled(row); }},
          {"TransformToDotSubRowVector", [=](M& m) { m.TransformToDotSubRowVector(row); }},
          {"GetColumn", [](M& m) { m.GetColumn(1); }},
          {"GetRowSubMatrix", [](M& m) { m.GetRowSubMatrix(1, 2); }}};
}

/// Operations that may be left half done.
template <class T>
std::vector<Change<T>> StepwiseChanges() {
  using M = NCDataMatrix<T>;
  const auto column = VectorOf<T>({7, kHole<T>, 8});
  return {{"Resize, larger", [](M& m) { m.Resize(9, 9); }},
          {"Resize, smaller and larger", [](M& m) { m.Resize(1, 9); }},
          {"SetColumn", [=](M& m) { m.SetColumn(2, column); }},
          {"SetColumn to a value", [](M& m) { m.SetColumn(2, kHole<T>); }},
          {"CopyColumn", [](M& m) { m.CopyColumn(1, 2); }},
          {"MultiplyRow", [](M& m) { m.MultiplyRow(1, 2); }},
          {"MultiplyColumn", [](M& m) { m.MultiplyColumn(1, 2, 3); }},
          {"MultiplyColumns", [](M& m) { m.MultiplyColumns(1, 2, 3); }},
          {"SubtractFromColumn", [](M& m) { m.SubtractFromColumn(1, 2); }},
          {"LagColumn", [](M& m) { m.LagColumn(1, 1); }}};
}

/// On an empty table.
template <class T>
std::vector<Change<T>> FirstChanges() {
  using M = NCDataMatrix<T>;
  const auto cells = VectorOf<T>({7, kHole<T>, 8});
  const M other = RandomMatrix<T>(kRows, kColumns, 0.3, 5);
  return {{"SetSize", [](M& m) { m.SetSize(2, 3); }},
          {"InsertRow", [=](M& m) { m.InsertRow(1, cells); }},
          {"InsertColumn", [=](M& m) { m.InsertColumn(1, cells); }},
          {"ConcatRows", [=](M& m) { m.ConcatRows(other); }},
          {"ConcatColumns", [=](M& m) { m.ConcatColumns(other); }}};
}

template <class T>
class NCDataMatrixMemory : public ::testing::Test {
 protected:
  /// Runs `change` on what `make` makes, with each allocation failing in turn, and looks at what a failure left.
  void FailEachAllocation(const Change<T>& change, const std::function<NCDataMatrix<T>()>& make, bool whole) {
    SCOPED_TRACE(change.name);
    bool failed = true;
    for (int which = 1; failed && !::testing::Test::HasFailure(); ++which) {
      SCOPED_TRACE("allocation " + std::to_string(which));
      const PeakBytesDuring meter;
      failed = FailOnce(change, make, whole, which);
      EXPECT_EQ(meter.GetLiveBytes(), 0) << "leaks";
      if (failed) ++failures_;
    }
  }
  void TearDown() override { EXPECT_GE(failures_, 5) << "hardly anything needed memory"; }

 private:
  static bool FailOnce(const Change<T>& change, const std::function<NCDataMatrix<T>()>& make, bool whole, int which) {
    NCDataMatrix<T> m = make();
    const Table<T> before = CellsOf(m);
    const int columns = m.SizeColumns();
    bool failed = false;
    {
      const FailAllocation failure(which);
      try {
        change.run(m);
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }
    EXPECT_TRUE(HasExactCounts(m));
    if (failed && whole) {
      EXPECT_EQ(CellsOf(m), before);
      EXPECT_EQ(m.SizeColumns(), columns);
    }
    m.Resize(5, 5);
    m.SetAllValues(1);
    m.push_back(m[2]);
    EXPECT_EQ(CellsOf(m), Table<T>(6, std::vector<T>(5, 1))) << "of no use any more";
    EXPECT_TRUE(HasExactCounts(m));
    return failed;
  }

  int failures_ = 0;
};
TYPED_TEST_SUITE(NCDataMatrixMemory, CellTypes, CellTypeNames);
template <class T>
class NCDataMatrixResultMemory : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixResultMemory, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixMemory, ThatRunsOutLeavesTheTableAsItWas) {
  const auto source = RandomMatrix<TypeParam>(kRows, kColumns, 0.3, 7);
  const auto unshared = [&source] {
    NCDataMatrix<TypeParam> m;
    m.CopyContent(source);
    return m;
  };
  for (const auto& change : WholeChanges<TypeParam>()) this->FailEachAllocation(change, unshared, /*whole=*/true);
}

TYPED_TEST(NCDataMatrixMemory, ThatRunsOutLeavesASharedTableAndItsTwinAsTheyWere) {
  const auto source = RandomMatrix<TypeParam>(kRows, kColumns, 0.3, 7);
  const Table<TypeParam> before = CellsOf(source);
  for (const auto& change : WholeChanges<TypeParam>()) {
    if (change.name == std::string("TransformToColumnScaled")) continue;  // does not unlink: the twin changes
    this->FailEachAllocation(change, [&source] { return source; }, /*whole=*/true);
    EXPECT_EQ(CellsOf(source), before) << change.name;
    EXPECT_TRUE(HasExactCounts(source)) << change.name;
  }
}

TYPED_TEST(NCDataMatrixMemory, ThatRunsOutLeavesATableWhoseRowsAreSharedAsItWas) {
  const auto source = RandomMatrix<TypeParam>(kRows, kColumns, 0.3, 7);
  const Table<TypeParam> before = CellsOf(source);
  const auto sharedRows = [&source] {
    NCDataMatrix<TypeParam> m;
    for (const auto& row : source) m.push_back(row);
    return m;
  };
  for (const auto& change : WholeChanges<TypeParam>()) {
    if (change.name == std::string("TransformToColumnScaled")) continue;  // does not unlink: the source changes
    this->FailEachAllocation(change, sharedRows, /*whole=*/true);
    EXPECT_EQ(CellsOf(source), before) << change.name;
  }
}

TYPED_TEST(NCDataMatrixMemory, ThatRunsOutLeavesAnEmptyTableEmpty) {
  for (const auto& change : FirstChanges<TypeParam>())
    this->FailEachAllocation(change, [] { return NCDataMatrix<TypeParam>(); }, /*whole=*/true);
}

TYPED_TEST(NCDataMatrixMemory, ThatRunsOutBetweenTwoStepsLeavesATableThatCountsItsHoles) {
  const auto source = RandomMatrix<TypeParam>(kRows, kColumns, 0.3, 7);
  const Table<TypeParam> before = CellsOf(source);
  for (const auto& change : StepwiseChanges<TypeParam>()) {
    this->FailEachAllocation(change, [&source] { return source; }, /*whole=*/false);
    EXPECT_EQ(CellsOf(source), before) << change.name;
    EXPECT_TRUE(HasExactCounts(source)) << change.name;
  }
}

TYPED_TEST(NCDataMatrixResultMemory, ThatRunsOutUsesUpATarget) {
  const NCDataMatrix<TypeParam> m(2, 2, 1);
  NCDataVector<TypeParam> vectorTarget(2);
  const NCDataVector<TypeParam> vectorTwin(vectorTarget);
  NCDataMatrix<TypeParam> matrixTarget(2, 2);
  const NCDataMatrix<TypeParam> matrixTwin(matrixTarget);
  m.Result(&vectorTarget).Result(&matrixTarget);
  VectorDestroyer<TypeParam> vector;
  MatrixDestroyer<TypeParam> matrix;
  {
    const FailAllocation failure(1);
    EXPECT_THROW(m.GetReturnVector(vector, 2), std::bad_alloc);
  }
  {
    const FailAllocation failure(1);
    EXPECT_THROW(m.GetReturnMatrix(matrix, 2, 2), std::bad_alloc);
  }
  m.GetReturnVector(vector, 2);
  m.GetReturnMatrix(matrix, 2, 2);
  EXPECT_TRUE(vector.owner);
  EXPECT_TRUE(matrix.owner);
}

}  // namespace
