#include <gtest/gtest.h>

#include "kalmia/containers/NCDataMatrix.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

struct Shape {
  int rows, columns;
};
constexpr Shape kShapes[] = {{0, 3}, {1, 1}, {3, 0}, {7, 5}, {20, 10}, {33, 40}, {9, 1100}, {500, 300}};

/// Complete rows, rows with holes and empty rows in a mixture that fills no batch evenly.
template <class T>
NCDataMatrix<T> TableOfAllKinds(int rows, int columns, double holes) {
  NCDataMatrix<T> X = RandomMatrix<T>(rows, columns, holes, rows + columns);
  for (int r = 2; r <= rows && holes > 0; r += 3) X.SetRow(r, RandomVector<T>(columns, 0, r));
  for (int r = 5; r <= rows && holes > 0; r += 7) X.SetRow(r, NCDataVector<T>(columns));
  return X;
}

template <class T, class Check>
void ForAllTables(const Check& check) {
  for (const Shape& shape : kShapes)
    for (double holes : {0.0, 0.05, 0.5})
      for (double holesOfV : {0.0, 0.3, 1.0}) {
        SCOPED_TRACE(::testing::Message() << shape.rows << " x " << shape.columns << ", holes " << holes << " and "
                                          << holesOfV);
        check(TableOfAllKinds<T>(shape.rows, shape.columns, holes), RandomVector<T>(shape.columns, holesOfV, 3));
      }
}

/// Every cell is the coefficient of its row alone, stored as T, and the count is right.
template <class T, class Coefficient>
void ExpectRows(const NCDataMatrix<T>& X, const NCDataVector<T>& result, const Coefficient& coefficient) {
  std::vector<T> expected;
  for (const NCDataVector<T>& row : X) expected.push_back(static_cast<T>(coefficient(row)));
  EXPECT_TRUE(SameBits(CellsOf(result), expected));
  EXPECT_TRUE(HasExactCounts(result));
}

template <class T>
class NCDataMatrixRegressRows : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixRegressRows, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixRegressRows, EqualTheRegressionOfEachRowToTheBit) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    ExpectRows(X, X.RegressRows(v), [&](const NCDataVector<T>& row) { return v.Regress(row); });
  });
}

TYPED_TEST(NCDataMatrixRegressRows, WithTheFixEqualTheFixOfEachRowToTheBit) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    ExpectRows(X, X.SpecialNipalsRegressRowsFix(v, nullptr, 0),
               [&](const NCDataVector<T>& row) { return v.SpecialNipalsRegressFix(row); });
  });
}

TYPED_TEST(NCDataMatrixRegressRows, WithGroupsLeaveOutPositionsOfV) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    Groups groups(v.Size());
    for (int i = 1; i <= v.Size(); ++i) groups(i) = i % 3;
    for (int group : {0, 2, 3})
      ExpectRows(X, X.SpecialNipalsRegressRowsFix(v, &groups, group), [&](const NCDataVector<T>& row) {
        return v.SpecialNipalsRegressFixWithExclude(row, groups, group);
      });
  });
}

TYPED_TEST(NCDataMatrixRegressRows, WithAStrideLeaveOutPositionsOfV) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    for (int stride : {1, 2, 7})
      ExpectRows(X, X.SpecialNipalsRegressRowsFixWithExclude(v, 1, stride), [&](const NCDataVector<T>& row) {
        return v.SpecialNipalsRegressFixWithExclude(row, 1, stride);
      });
  });
}

TYPED_TEST(NCDataMatrixRegressRows, ARowWithoutEstimateIsMissingAndCounted) {
  const auto x = MatrixOf<TypeParam>({{1, 2}, {-99, 4}, {-99, -99}});
  const auto scores = x.SpecialNipalsRegressRowsFix(VectorOf<TypeParam>({1, 0}), nullptr, 0);
  EXPECT_EQ(CellsOf(scores), (std::vector<TypeParam>{1, -99, -99}));
  EXPECT_EQ(scores.GetNumMisVal(), 2);
}

TEST(NCDataMatrixRegressRowsOfFloats, AScoreThatIsRoundedToTheMissingValueIsMissingAndCounted) {
  const auto x = MatrixOf<float>({{-198, -0x1p-20f}});
  const NCDataVector<float> ones(2, 1), halves(2, 0.5f);
  ASSERT_EQ(ones.Regress(x[1]), -99 - 0x1p-21);  // in double; in float it is -99
  ASSERT_EQ(x[1] * halves, -99 - 0x1p-21);
  for (const auto& scores : {x.RegressRows(ones), x.SpecialNipalsRegressRowsFix(ones, nullptr, 0),
                             x.SpecialNipalsRegressRowsFixWithExclude(ones, 3, 7), x * halves}) {
    EXPECT_EQ(scores[1], -99);
    EXPECT_EQ(scores.GetNumMisVal(), 1);
  }
}

TYPED_TEST(NCDataMatrixRegressRows, TheFixHoldsTheDenominatorAtAThirdOfTheFullSum) {
  const auto x = MatrixOf<TypeParam>({{2, -99, -99}});
  const auto v = VectorOf<TypeParam>({1, 2, 2});
  EXPECT_EQ(x.RegressRows(v)[1], 2);
  EXPECT_EQ(x.SpecialNipalsRegressRowsFix(v, nullptr, 0)[1],
            static_cast<TypeParam>(2 / (9 * static_cast<long double>(0x1.5555555555555p-2))));
}

TYPED_TEST(NCDataMatrixRegressRows, BuildTheirResultInTheTargetAndLeaveItsTwinsAlone) {
  const auto x = MatrixOf<TypeParam>({{1, 3}, {-99, 4}, {-99, -99}});
  const auto v = VectorOf<TypeParam>({1, 1});
  NCDataVector<TypeParam> target(3, 7);
  const NCDataVector<TypeParam> twin = target;
  for (int form = 0; form < 3; ++form) {
    target.SetAllValues(7);
    if (form == 0) x.Result(&target).RegressRows(v);
    if (form == 1) x.Result(&target).SpecialNipalsRegressRowsFix(v, nullptr, 0);
    if (form == 2) x.Result(&target).SpecialNipalsRegressRowsFixWithExclude(v, 1, 1);
    EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{2, 4, -99})) << form;
    EXPECT_EQ(target.GetNumMisVal(), 1) << form;
  }
  EXPECT_EQ(CellsOf(twin), (std::vector<TypeParam>{7, 7, 7}));
}

TYPED_TEST(NCDataMatrixRegressRows, LargerTablesUseTheirOwnBitsForEveryRow) {
  // Long enough for a copy of v on the heap, large enough for a team.
  using T = TypeParam;
  const auto X = TableOfAllKinds<T>(70, 1500, 0.1);
  const auto v = RandomVector<T>(1500, 0, 1);
  ExpectRows(X, X.SpecialNipalsRegressRowsFixWithExclude(v, 3, 7), [&](const NCDataVector<T>& row) {
    return v.SpecialNipalsRegressFixWithExclude(row, 3, 7);
  });
}

}  // namespace
