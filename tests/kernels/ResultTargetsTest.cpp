#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kernels/SimdCases.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

// Result targets that the operation reads as well.

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
