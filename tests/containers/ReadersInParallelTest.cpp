#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/NCSVD.h"
#include "testing/RandomTables.h"

// Several threads read one table, vector or list at the same time. A read that marks what it reads, or shares it in
// passing, gets in the way of the other one: cells of one result land in the other, or a use count is lost.

namespace {

/// Runs work() on two threads, so often on each, both at once.
template <class Work>
void OnTwoThreads(int rounds, const Work& work) {
  std::atomic<int> waiting{2};
  const auto run = [&] {
    for (--waiting; waiting > 0;) std::this_thread::yield();
    for (int round = 0; round < rounds; ++round) work();
  };
  std::thread other(run);
  run();
  other.join();
}

template <class T>
using Cells = std::vector<T>;

template <class T>
Cells<T> AllCellsOf(const NCDataMatrix<T>& m) {
  Cells<T> cells;
  for (const NCDataVector<T>& row : m) cells.insert(cells.end(), row.begin(), row.end());
  return cells;
}

/// What two threads may read: a table with holes and one without, of as many rows as columns, and vectors for both.
template <class T>
struct Shared {
  static constexpr int kSize = 12;
  NCDataMatrix<T> holed = RandomMatrix<T>(kSize, kSize, 0.2, 1);
  NCDataMatrix<T> complete = RandomMatrix<T>(kSize, kSize, 0, 2);
  NCDataVector<T> vector = RandomVector<T>(kSize, 0.2, 3);
  NCIntegralVector<int, -99> groups{kSize, 1};
};

template <class T>
struct Reading {
  const char* what;
  std::function<Cells<T>(const Shared<T>&)> cells;
};

template <class T>
std::vector<Reading<T>> ReadingsOfTables() {
  using S = const Shared<T>&;
  const auto one = [](long double x) { return Cells<T>{static_cast<T>(x)}; };
  return {
      {"SNV", [](S s) { return AllCellsOf(s.holed.SNV()); }},
      {"GetColumn", [](S s) { return CellsOf(s.holed.GetColumn(3)); }},
      {"GetSVD",
       [](S s) {
         const std::unique_ptr<NCSVD<T>> svd(s.complete.GetSVD());
         return CellsOf(*svd->GetW());
       }},
      {"GetSVD of a table with holes",
       [](S s) {
         const std::unique_ptr<NCSVD<T>> svd(s.holed.GetSVD());
         return Cells<T>{static_cast<T>(svd->GetStatus())};
       }},
      {"GetRegressionCoefficients",
       [](S s) { return AllCellsOf(s.complete.GetRegressionCoefficients(s.complete)); }},
      {"GetDensity", [](S s) { return CellsOf(s.complete.GetDensity(0, 0, true)); }},
      {"GetColumnCorrelation", [](S s) { return CellsOf(s.holed.GetColumnCorrelation(s.vector)); }},
      {"GetMean", [one](S s) { return one(s.holed.GetMean()); }},
      {"GetColumnSkewness", [one](S s) { return one(s.holed.GetColumnSkewness(2)); }},
      {"GetColumnMedian", [one](S s) { return one(s.holed.GetColumnMedian(2)); }},
      {"GetSSAroundColumnMeans", [one](S s) { return one(s.holed.GetSSAroundColumnMeans()); }},
      {"RegressColumns", [](S s) { return CellsOf(s.holed.RegressColumns(s.vector)); }},
      {"SpecialNipalsRegressColumnsFix",
       [](S s) { return CellsOf(s.holed.SpecialNipalsRegressColumnsFix(s.vector, &s.groups, 2)); }},
      {"RegressRows", [](S s) { return CellsOf(s.holed.RegressRows(s.vector)); }},
      {"SpecialNipalsRegressRowsFix",
       [](S s) { return CellsOf(s.holed.SpecialNipalsRegressRowsFix(s.vector, &s.groups, 2)); }},
      {"GetNIPALSStartColumn", [](S s) { return CellsOf(s.holed.GetNIPALSStartColumn()); }},
      {"PreMultiply", [](S s) { return CellsOf(s.holed.PreMultiply(s.vector)); }},
      {"a table times itself", [](S s) { return AllCellsOf(s.holed * s.holed); }},
      {"a table transposed times itself", [](S s) { return AllCellsOf(s.holed.MatrixMultiply(s.holed, true, false)); }},
      {"a table times a vector", [](S s) { return CellsOf(s.holed * s.vector); }},
      {"a vector times a table", [](S s) { return CellsOf(s.vector * s.holed); }},
      {"a table times a number", [](S s) { return AllCellsOf(s.holed * 3.0L); }},
      {"a sum of tables", [](S s) { return AllCellsOf(s.holed + s.complete); }},
      {"a difference of tables", [](S s) { return AllCellsOf(s.holed - s.complete); }},
      {"DotMultiplyVector", [](S s) { return AllCellsOf(s.holed.DotMultiplyVector(s.vector)); }},
      {"DotPreDivideVector", [](S s) { return AllCellsOf(s.holed.DotPreDivideVector(s.vector)); }},
  };
}

template <class T>
std::vector<Reading<T>> ReadingsOfVectors() {
  using S = const Shared<T>&;
  const auto one = [](long double x) { return Cells<T>{static_cast<T>(x)}; };
  return {
      {"SNV", [](S s) { return CellsOf(s.vector.SNV()); }},
      {"a sum", [](S s) { return CellsOf(s.vector + s.complete[1]); }},
      {"a difference", [](S s) { return CellsOf(s.vector - s.complete[1]); }},
      {"a product with a number", [](S s) { return CellsOf(s.vector * 2.0L); }},
      {"DotMultiplication", [](S s) { return CellsOf(s.vector.DotMultiplication(s.complete[1])); }},
      {"DotDivide", [](S s) { return CellsOf(s.vector.DotDivide(s.complete[1])); }},
      {"VectorDivide", [](S s) { return CellsOf(s.vector.VectorDivide(2)); }},
      {"GetSkewness", [one](S s) { return one(s.vector.GetSkewness()); }},
      {"GetMedian", [one](S s) { return one(s.vector.GetMedian()); }},
      {"LeastSquare",
       [one](S s) {
         long double intercept = 0, slope = 0;
         s.vector.LeastSquare(nullptr, intercept, slope);
         return one(slope);
       }},
      {"Difference", [one](S s) { return one(s.vector.Difference(s.complete[1])); }},
      {"a dot product", [one](S s) { return one(s.vector * s.complete[1]); }},
      {"Regress", [one](S s) { return one(s.vector.Regress(s.complete[1])); }},
  };
}

/// Calls that take a table, a vector or a list in to write something of the caller's own. None keeps a share of it.
template <class T>
std::vector<Reading<T>> ReadingsOfArguments() {
  using S = const Shared<T>&;
  constexpr int n = Shared<T>::kSize;
  const auto own = [] { return NCDataMatrix<T>(n, 2, T(1)); };
  return {
      {"CopyContent of a table",
       [](S s) {
         NCDataMatrix<T> m;
         m.CopyContent(s.holed);
         return AllCellsOf(m);
       }},
      {"SetColumn",
       [own](S s) {
         NCDataMatrix<T> m = own();
         m.SetColumn(1, s.vector);
         return AllCellsOf(m);
       }},
      {"InsertColumn",
       [own](S s) {
         NCDataMatrix<T> m = own();
         m.InsertColumn(2, s.vector);
         return AllCellsOf(m);
       }},
      {"InsertColumns",
       [own](S s) {
         NCDataMatrix<T> m = own();
         m.InsertColumns(2, s.holed);
         return AllCellsOf(m);
       }},
      {"CopyColumn",
       [own](S s) {
         NCDataMatrix<T> m = own();
         m.CopyColumn(2, s.holed, 1);
         return AllCellsOf(m);
       }},
      {"TransformToDotSubRowVector",
       [](S s) {
         NCDataMatrix<T> m(2, n, T(1));
         m.TransformToDotSubRowVector(s.vector);
         return AllCellsOf(m);
       }},
      {"TransformToColumnScaled",
       [](S s) {
         NCDataMatrix<T> m(2, n, T(1));
         m.TransformToColumnScaled(s.vector);
         return AllCellsOf(m);
       }},
      {"a deflation",
       [](S s) {
         NCDataMatrix<T> m(n, n, T(1));
         m.TransformToSub_V_x_Vt(s.vector, s.vector);
         return AllCellsOf(m);
       }},
      {"RemoveRows",
       [own](S s) {
         NCDataMatrix<T> m = own();
         m.RemoveRows(s.groups);
         return AllCellsOf(m);
       }},
      {"InsertValues of a vector",
       [](S s) {
         NCDataVector<T> v(2, T(1));
         v.InsertValues(2, s.vector);
         return CellsOf(v);
       }},
      {"InsertValues and Remove of a list",
       [](S s) {
         NCIntegralVector<int, -99> list(2, 7);
         list.InsertValues(2, s.groups);
         list.Remove(s.groups);
         return Cells<T>(list.begin(), list.end());
       }},
  };
}

template <class T>
void ExpectTheSameOnTwoThreads(const std::vector<Reading<T>>& readings) {
  constexpr int kRounds = 500;
  Shared<T> shared;
  for (const Reading<T>& reading : readings) {
    SCOPED_TRACE(reading.what);
    const Cells<T> expected = reading.cells(shared);
    std::atomic<int> wrong{0};
    OnTwoThreads(kRounds, [&] { wrong += reading.cells(shared) == expected ? 0 : 1; });
    EXPECT_EQ(wrong, 0);
  }
  // Had a use count been left too high, unlinking would move the cells of what nobody shares.
  const T* const cells = shared.vector.GetVector();
  shared.vector.ForceUnlink();
  EXPECT_EQ(shared.vector.GetVector(), cells);
  const NCDataVector<T>* const row = &shared.holed[1];
  shared.holed.ForceUnlink();
  EXPECT_EQ(&shared.holed[1], row);
  const int* const list = shared.groups.GetPtr();
  shared.groups.ForceUnlink();
  EXPECT_EQ(shared.groups.GetPtr(), list);
}

template <class T>
class ReadersInParallel : public ::testing::Test {};
TYPED_TEST_SUITE(ReadersInParallel, CellTypes, CellTypeNames);

TYPED_TEST(ReadersInParallel, GetFromOneTableWhatOneOfThemGetsAlone) {
  ExpectTheSameOnTwoThreads(ReadingsOfTables<TypeParam>());
}

TYPED_TEST(ReadersInParallel, GetFromOneVectorWhatOneOfThemGetsAlone) {
  ExpectTheSameOnTwoThreads(ReadingsOfVectors<TypeParam>());
}

TYPED_TEST(ReadersInParallel, PutOneTableVectorOrListIntoTablesOfTheirOwn) {
  ExpectTheSameOnTwoThreads(ReadingsOfArguments<TypeParam>());
}

// The rows are long enough that both threads are in the same row most of the time.
TYPED_TEST(ReadersInParallel, TakeTheStandardNormalVariatesOfOneTable) {
  const auto table = RandomMatrix<TypeParam>(40, 2000, 0.1, 4);
  const auto expected = CellsOf(table.SNV());
  OnTwoThreads(20, [&] { EXPECT_EQ(CellsOf(table.SNV()), expected); });
}

}  // namespace
