#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

// Result targets: used once, built in without touching who shares them, and allowed to be what the operation reads.

namespace {

constexpr int kSize = 200;  // of a square table, so that every result fits; more cells than pay for a team

template <class T>
struct Operation {
  const char* what;
  std::function<NCDataVector<T>(const NCDataMatrix<T>&, const NCDataVector<T>&)> run;
};

/// Every operation of a table and a vector that returns a vector through the table's target.
template <class T>
std::vector<Operation<T>> Operations() {
  using M = const NCDataMatrix<T>&;
  using V = const NCDataVector<T>&;
  return {
      {"PreMultiply", [](M x, V v) { return x.PreMultiply(v); }},
      {"matrix times vector", [](M x, V v) { return x * v; }},
      {"RegressColumns", [](M x, V v) { return x.RegressColumns(v); }},
      {"SpecialNipalsRegressColumnsFix", [](M x, V v) { return x.SpecialNipalsRegressColumnsFix(v); }},
      {"SpecialNipalsRegressColumnsFix with groups",
       [](M x, V v) {
         NCIntegralVector<int, -99> groups(kSize, 1);
         groups(7) = 2;
         return x.SpecialNipalsRegressColumnsFix(v, &groups, 2);
       }},
      {"RegressRows", [](M x, V v) { return x.RegressRows(v); }},
      {"SpecialNipalsRegressRowsFix", [](M x, V v) { return x.SpecialNipalsRegressRowsFix(v, nullptr, 0); }},
      {"SpecialNipalsRegressRowsFixWithExclude",
       [](M x, V v) { return x.SpecialNipalsRegressRowsFixWithExclude(v, 2, 5); }},
      {"GetNIPALSStartColumn", [](M x, V) { return x.GetNIPALSStartColumn(); }},
  };
}

template <class T>
class ResultTargets : public testing::Test {
 protected:
  /// Calls check(operation, table, vector, expected cells) for every operation, without holes and with some.
  template <class Check>
  void ForAllOperations(const Check& check) {
    const Threads two(2);
    for (const double holes : {0.0, 0.1})
      for (const Operation<T>& operation : Operations<T>()) {
        SCOPED_TRACE(testing::Message() << operation.what << ", holes " << holes);
        auto x = RandomMatrix<T>(kSize, kSize, holes, 1);
        auto v = RandomVector<T>(kSize, holes, 2);
        check(operation, x, v, CellsOf(operation.run(x, v)));
      }
  }
};
TYPED_TEST_SUITE(ResultTargets, CellTypes, CellTypeNames);

TYPED_TEST(ResultTargets, MayBeTheVectorOperand) {
  this->ForAllOperations([](const auto& operation, const auto& x, auto& v, const auto& expected) {
    const auto twin = v;
    const auto cells = CellsOf(v);
    operation.run(x.Result(&v), v);
    EXPECT_TRUE(SameBits(CellsOf(v), expected));
    EXPECT_TRUE(HasExactCounts(v));
    EXPECT_TRUE(SameBits(CellsOf(twin), cells));
  });
}

TYPED_TEST(ResultTargets, MayBeARowOfTheTable) {
  this->ForAllOperations([](const auto& operation, auto& x, const auto& v, const auto& expected) {
    const auto twin = x;
    const auto cells = CellsOf(x);
    operation.run(x.Result(&x(3)), v);
    EXPECT_TRUE(SameBits(CellsOf(x[3]), expected));
    EXPECT_TRUE(HasExactCounts(x[3]));
    EXPECT_EQ(CellsOf(twin), cells);
  });
}

TYPED_TEST(ResultTargets, MayBeARowOfTheTableThatIsTheVectorOperand) {
  this->ForAllOperations([](const auto& operation, auto& x, const auto&, const auto&) {
    const auto expected = CellsOf(operation.run(x, x[3]));
    operation.run(x.Result(&x(3)), x[3]);
    EXPECT_TRUE(SameBits(CellsOf(x[3]), expected));
  });
}

TYPED_TEST(ResultTargets, AreUsedOnceAndLeaveTheirTwinsAlone) {
  using T = TypeParam;
  this->ForAllOperations([](const auto& operation, const auto& x, const auto& v, const auto& expected) {
    const std::vector<T> sevens(kSize, T(7));
    NCDataVector<T> target(kSize, T(7));
    const NCDataVector<T> twin = target;
    EXPECT_TRUE(SameBits(CellsOf(operation.run(x.Result(&target), v)), expected));
    EXPECT_TRUE(SameBits(CellsOf(target), expected));
    EXPECT_TRUE(HasExactCounts(target));
    EXPECT_EQ(CellsOf(twin), sevens);
    target.SetAllValues(T(7));
    operation.run(x, v);
    EXPECT_EQ(CellsOf(target), sevens);
  });
}

template <class T>
struct MatrixOperation {
  const char* what;
  std::function<NCDataMatrix<T>(const NCDataMatrix<T>&, const NCDataMatrix<T>&)> run;
};

constexpr int kOrder = 40;

/// Every operation that returns a matrix through the target of its first operand; row 2 of b serves as a vector.
template <class T>
std::vector<MatrixOperation<T>> MatrixOperations() {
  using M = const NCDataMatrix<T>&;
  return {
      {"A B", [](M a, M b) { return a * b; }},
      {"A' B", [](M a, M b) { return a.MatrixMultiply(b, true, false); }},
      {"A B'", [](M a, M b) { return a.MatrixMultiply(b, false, true); }},
      {"A' B'", [](M a, M b) { return a.MatrixMultiply(b, true, true); }},
      {"A + B", [](M a, M b) { return a + b; }},
      {"A - B", [](M a, M b) { return a - b; }},
      {"A times a number", [](M a, M) { return a * 0.3L; }},
      {"A times the missing value", [](M a, M) { return a * -99.0L; }},
      {"DotMultiplyVector", [](M a, M b) { return a.DotMultiplyVector(b[2]); }},
      {"DotDivideVector", [](M a, M b) { return a.DotDivideVector(b[2]); }},
      {"DotPreMultiplyVector", [](M a, M b) { return a.DotPreMultiplyVector(b[2]); }},
      {"DotPreDivideVector", [](M a, M b) { return a.DotPreDivideVector(b[2]); }},
  };
}

/// Calls check(operation, a, b, expected cells) for every operation, without holes and with some.
template <class T, class Check>
void ForAllMatrixOperations(const Check& check) {
  for (const double holes : {0.0, 0.2})
    for (const MatrixOperation<T>& operation : MatrixOperations<T>()) {
      SCOPED_TRACE(testing::Message() << operation.what << ", holes " << holes);
      auto a = RandomMatrix<T>(kOrder, kOrder, holes, 3), b = RandomMatrix<T>(kOrder, kOrder, holes, 4);
      check(operation, a, b, CellsOf(operation.run(a, b)));
    }
}

TYPED_TEST(ResultTargets, OfMatricesAreUsedOnceAndLeaveTheirTwinsAlone) {
  using T = TypeParam;
  ForAllMatrixOperations<T>([](const auto& operation, const auto& a, const auto& b, const auto& expected) {
    NCDataMatrix<T> target(kOrder, kOrder, T(7));
    const NCDataMatrix<T> twin = target, rows = target.GetRowSubMatrix(2, kOrder);
    const auto sevens = CellsOf(target);
    EXPECT_TRUE(SameBits(CellsOf(operation.run(a.Result(&target), b)), expected));
    EXPECT_TRUE(SameBits(CellsOf(target), expected));
    EXPECT_TRUE(HasExactCounts(target));
    EXPECT_EQ(CellsOf(twin), sevens);
    EXPECT_EQ(rows[1][1], T(7));
    target.SetAllValues(T(7));
    operation.run(a, b);
    EXPECT_EQ(CellsOf(target), sevens);
  });
}

TYPED_TEST(ResultTargets, OfMatricesMayBeEitherOperand) {
  using T = TypeParam;
  ForAllMatrixOperations<T>([](const auto& operation, auto& a, auto& b, const auto& expected) {
    const NCDataMatrix<T> left = a, right = b;
    const auto leftCells = CellsOf(left), rightCells = CellsOf(right);
    operation.run(a.Result(&a), right);
    EXPECT_TRUE(SameBits(CellsOf(a), expected));
    EXPECT_TRUE(HasExactCounts(a));
    operation.run(left.Result(&b), b);
    EXPECT_TRUE(SameBits(CellsOf(b), expected));
    EXPECT_TRUE(HasExactCounts(b));
    EXPECT_EQ(CellsOf(left), leftCells);
    EXPECT_EQ(CellsOf(right), rightCells);
  });
}

TYPED_TEST(ResultTargets, OfAVectorTimesATableMayBeTheVector) {
  for (const double holes : {0.0, 0.1}) {
    const auto x = RandomMatrix<TypeParam>(kSize, kSize, holes, 1);
    auto v = RandomVector<TypeParam>(kSize, holes, 2);
    const auto expected = CellsOf(v * x);
    v.Result(&v) * x;
    EXPECT_TRUE(SameBits(CellsOf(v), expected));
  }
}

}  // namespace
