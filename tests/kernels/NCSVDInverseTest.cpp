#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/NCSVD.h"
#include "kernels/SVDChecks.h"
#include "testing/RandomTables.h"

// What is done with a decomposition: sorting, removing zeros, the pseudo-inverse.

namespace {

constexpr float kNoLimit = kalmia::kMissing;

template <class T>
class NCSVDUse : public ::testing::Test {};
TYPED_TEST_SUITE(NCSVDUse, CellTypes, CellTypeNames);

TYPED_TEST(NCSVDUse, SortOrdersDescendingWithTheColumnsOfBothFactors) {
  const auto a = RandomMatrix<TypeParam>(9, 7, 0, 4);
  const auto svd = Decompose(a);
  const double before = DistanceFromProduct(*svd, a);
  auto expected = CellsOf(*svd->GetW());
  std::sort(expected.rbegin(), expected.rend());
  EXPECT_FALSE(svd->IsSorted());
  svd->Sort();
  EXPECT_TRUE(svd->IsSorted());
  EXPECT_EQ(CellsOf(*svd->GetW()), expected);
  // The same seven products are added in another order: double rounding only.
  EXPECT_NEAR(DistanceFromProduct(*svd, a), before, LargestOf(*svd->GetW()) * 7 * 0x1p-53);
}

TYPED_TEST(NCSVDUse, SortKeepsTheOrderOfEqualSingularValues) {
  const auto svd = Decompose(Diagonal<TypeParam>({2, 5, 2, 5, 3}));
  svd->Sort();
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{5, 5, 3, 2, 2}));
  const int home[] = {2, 4, 5, 1, 3};  // which axis each column of V is
  for (int k = 1; k <= 5; ++k) EXPECT_EQ(std::abs((*svd->GetV())[home[k - 1]][k]), 1) << k;
}

TYPED_TEST(NCSVDUse, SortLeavesACopyOfAFactorAlone) {
  const auto svd = Decompose(Diagonal<TypeParam>({1, 2}));
  const NCDataMatrix<TypeParam> u(*svd->GetU());
  const auto before = CellsOf(u);
  svd->Sort();
  EXPECT_EQ(CellsOf(u), before);
  EXPECT_NE(CellsOf(*svd->GetU()), before);
}

TYPED_TEST(NCSVDUse, RemoveZeroSingularValuesRemovesNothingWhereThereIsNone) {
  const auto svd = Decompose(Diagonal<TypeParam>({1, 2}));
  svd->RemoveZeroSingularValues();
  EXPECT_TRUE(svd->IsSorted());
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{2, 1}));
  EXPECT_EQ(svd->GetU()->SizeColumns(), 2);
}

TYPED_TEST(NCSVDUse, InverseOfADiagonalMatrixIsExact) {
  const auto svd = Decompose(Diagonal<TypeParam>({2, -4, 0.5}));
  const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(svd->GetInverse(kNoLimit));
  ASSERT_NE(inverse, nullptr);
  EXPECT_EQ(CellsOf(*inverse), CellsOf(Diagonal<TypeParam>({0.5, -0.25, 2})));
}

TYPED_TEST(NCSVDUse, InverseAgreesWithTransformToInverse) {
  for (const int n : {1, 2, 5, 12}) {
    SCOPED_TRACE(n);
    auto a = RandomMatrix<TypeParam>(n, n, 0, static_cast<unsigned>(n));
    for (int i = 1; i <= n; ++i) a(i, i, 3 * static_cast<TypeParam>(n));  // outweighs its row: condition below 10
    const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(Decompose(a)->GetInverse(kNoLimit));
    ASSERT_NE(inverse, nullptr);
    ASSERT_TRUE(a.TransformToInverse());
    for (int r = 1; r <= n; ++r)
      for (int c = 1; c <= n; ++c) EXPECT_NEAR((*inverse)[r][c], a[r][c], 10 * Rounding<TypeParam>(n, n));
  }
}

TYPED_TEST(NCSVDUse, PseudoInverseOfATallMatrixSolvesLeastSquares) {
  const auto a = RandomMatrix<TypeParam>(9, 4, 0, 8);
  const auto svd = Decompose(a);
  const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(svd->GetInverse(kNoLimit));
  ASSERT_NE(inverse, nullptr);
  ASSERT_EQ(inverse->SizeRows(), 4);
  ASSERT_EQ(inverse->SizeColumns(), 9);
  const double condition = LargestOf(*svd->GetW()) / *std::min_element(svd->GetW()->begin(), svd->GetW()->end());
  for (int i = 1; i <= 4; ++i)
    for (int j = 1; j <= 4; ++j) {
      double sum = 0;
      for (int r = 1; r <= 9; ++r) sum += static_cast<double>((*inverse)[i][r]) * a[r][j];
      EXPECT_NEAR(sum, i == j, 2 * condition * Rounding<TypeParam>(9, 4));
    }
}

TYPED_TEST(NCSVDUse, InverseIsNullAboveTheConditionLimitOnly) {
  const auto svd = Decompose(Diagonal<TypeParam>({1, 100}));
  EXPECT_EQ(svd->GetInverse(10), nullptr);
  EXPECT_EQ(svd->GetInverse(99.5f), nullptr);
  const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(svd->GetInverse(100));
  ASSERT_NE(inverse, nullptr);
  EXPECT_EQ((*inverse)[1][1], 1);
}

TYPED_TEST(NCSVDUse, InverseWithALimitRemovesZeroSingularValuesForGoodAndIsNull) {
  const auto svd = Decompose(Diagonal<TypeParam>({2, 0, 4}));
  EXPECT_EQ(svd->GetInverse(1e30f), nullptr);
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{4, 2}));
  EXPECT_EQ(svd->GetV()->SizeColumns(), 2);
  // Without a limit what is left gives the pseudo-inverse.
  const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(svd->GetInverse(kNoLimit));
  ASSERT_NE(inverse, nullptr);
  EXPECT_EQ(CellsOf(*inverse), CellsOf(Diagonal<TypeParam>({0.5, 0, 0.25})));
}

TYPED_TEST(NCSVDUse, InverseWithoutALimitDividesByAZeroSingularValue) {
  const auto svd = Decompose(Diagonal<TypeParam>({2, 0}));
  const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(svd->GetInverse(kNoLimit));
  ASSERT_NE(inverse, nullptr);
  EXPECT_EQ(svd->GetW()->Size(), 2);
  EXPECT_TRUE(std::isinf((*inverse)[2][2]));
}

TYPED_TEST(NCSVDUse, InverseOfAZeroMatrixWithALimitIsNull) {
  EXPECT_EQ(Decompose(NCDataMatrix<TypeParam>(2, 2, TypeParam(0)))->GetInverse(10), nullptr);
}

}  // namespace
