#include <gtest/gtest.h>

#include "kalmia/containers/NCDataMatrix.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

/// v' X by the definition, each column in the order of its rows, in double; -99 without a pair.
template <class T>
std::vector<T> ByDefinition(const NCDataVector<T>& v, const NCDataMatrix<T>& X) {
  std::vector<T> product(X.SizeColumns(), kHole<T>);
  for (int c = 1; c <= X.SizeColumns(); ++c) {
    double sum = 0;
    int pairs = 0;
    for (int r = 1; r <= X.SizeRows(); ++r) {
      if (v[r] == kHole<T> || X[r][c] == kHole<T>) continue;
      sum += static_cast<double>(v[r]) * X[r][c];
      ++pairs;
    }
    if (pairs > 0) product[c - 1] = static_cast<T>(sum);
  }
  return product;
}

template <class T>
class NCDataMatrixPreMultiply : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixPreMultiply, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixPreMultiply, SumsOverTheRowsInTheirOrder) {
  using T = TypeParam;
  for (int rows : {1, 7, 8, 9, 40})
    for (int columns : {1, 5, 17, 1030})
      for (double holes : {0.0, 0.1, 0.9})
        for (double holesOfV : {0.0, 0.3}) {
          auto X = RandomMatrix<T>(rows, columns, holes, rows);
          if (holes > 0) X.SetColumn(1, RandomVector<T>(rows, 0, 1));
          const auto v = RandomVector<T>(rows, holesOfV, columns);
          const auto product = X.PreMultiply(v);
          SCOPED_TRACE(::testing::Message() << rows << " x " << columns << ", " << holes << " and " << holesOfV);
          EXPECT_TRUE(SameBits(CellsOf(product), ByDefinition(v, X)));
          EXPECT_TRUE(HasExactCounts(product));
        }
}

TYPED_TEST(NCDataMatrixPreMultiply, IsMissingWhereAColumnHasNoPair) {
  const auto x = MatrixOf<TypeParam>({{1, -99, 2}, {3, -99, -99}});
  EXPECT_EQ(CellsOf(x.PreMultiply(VectorOf<TypeParam>({1, 10}))), (std::vector<TypeParam>{31, -99, 2}));
  const auto product = x.PreMultiply(VectorOf<TypeParam>({-99, 10}));
  EXPECT_EQ(CellsOf(product), (std::vector<TypeParam>{30, -99, -99}));
  EXPECT_EQ(product.GetNumMisVal(), 2);
}

TYPED_TEST(NCDataMatrixPreMultiply, APairWhoseProductIsZeroIsAnEstimate) {
  const auto x = MatrixOf<TypeParam>({{1, -99}, {-99, 2}});
  EXPECT_EQ(CellsOf(x.PreMultiply(VectorOf<TypeParam>({0, -99}))), (std::vector<TypeParam>{0, -99}));
}

TYPED_TEST(NCDataMatrixPreMultiply, OfAVectorOfHolesIsMissing) {
  const auto x = MatrixOf<TypeParam>({{1, 2}, {3, 4}});
  EXPECT_EQ(x.PreMultiply(NCDataVector<TypeParam>(2)).GetNumMisVal(), 2);
}

TYPED_TEST(NCDataMatrixPreMultiply, WithoutRowsIsZero) {
  const NCDataMatrix<TypeParam> x(0, 3);
  ASSERT_EQ(x.SizeColumns(), 3);
  EXPECT_EQ(CellsOf(x.PreMultiply(NCDataVector<TypeParam>())), (std::vector<TypeParam>{0, 0, 0}));
}

TYPED_TEST(NCDataMatrixPreMultiply, WithoutHolesASumThatHappensToBeTheMissingValueIsNotCounted) {
  const auto product = MatrixOf<TypeParam>({{-100}, {1}}).PreMultiply(VectorOf<TypeParam>({1, 1}));
  EXPECT_EQ(product[1], -99);
  EXPECT_EQ(product.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixPreMultiply, WithHolesASumThatHappensToBeTheMissingValueIsCounted) {
  const auto product = MatrixOf<TypeParam>({{-100, -99}, {1, 2}}).PreMultiply(VectorOf<TypeParam>({1, 1}));
  EXPECT_EQ(CellsOf(product), (std::vector<TypeParam>{-99, 2}));
  EXPECT_EQ(product.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixPreMultiply, GoesToTheResultTargetOfTheMatrixOrOfTheVector) {
  for (const auto& x : {MatrixOf<TypeParam>({{1, 2}, {3, 4}}), MatrixOf<TypeParam>({{1, 2}, {-99, 4}})}) {
    const auto v = VectorOf<TypeParam>({1, 10});
    const auto expected = CellsOf(x.PreMultiply(v));
    NCDataVector<TypeParam> first(2, 5), second(2, 5);
    const NCDataVector<TypeParam> twin = first;
    x.Result(&first).PreMultiply(v);
    v.Result(&second) * x;
    EXPECT_EQ(CellsOf(first), expected);
    EXPECT_EQ(CellsOf(second), expected);
    EXPECT_EQ(CellsOf(v * x), expected);
    EXPECT_EQ(CellsOf(twin), (std::vector<TypeParam>{5, 5}));
  }
}

TYPED_TEST(NCDataMatrixPreMultiply, AVectorWithoutTargetLeavesTheOneOfTheMatrixInPlace) {
  const auto x = MatrixOf<TypeParam>({{1, 2}});
  NCDataVector<TypeParam> target(2, 5);
  const auto& named = x.Result(&target);
  VectorOf<TypeParam>({3}) * named;
  EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{3, 6}));
}

}  // namespace
