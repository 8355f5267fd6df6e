#include "kalmia/kernels/NCSVD.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>
#include <memory>
#include <type_traits>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kernels/SVDChecks.h"
#include "testing/RandomTables.h"

// The decomposition itself.

namespace {

constexpr float kNoLimit = kalmia::kMissing;

template <class T>
class NCSVDOf : public ::testing::Test {};
TYPED_TEST_SUITE(NCSVDOf, CellTypes, CellTypeNames);

template <class T>
NCDataMatrix<T> Hilbert(int n) {
  NCDataMatrix<T> h(n, n, T(0));
  for (int i = 1; i <= n; ++i)
    for (int j = 1; j <= n; ++j) h(i, j, static_cast<T>(1.0 / (i + j - 1)));
  return h;
}

TYPED_TEST(NCSVDOf, IdentityHasSingularValues1) {
  const auto svd = Decompose(Diagonal<TypeParam>({1, 1}));
  ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{1, 1}));
}

TYPED_TEST(NCSVDOf, FactorsAreOrthonormalAndTheirProductIsTheMatrix) {
  const int shapes[][2] = {{1, 1}, {5, 1}, {2, 2}, {3, 2}, {4, 4}, {9, 7}, {40, 5}, {31, 31}, {60, 45}};
  for (const auto& [rows, columns] : shapes) {
    SCOPED_TRACE(testing::Message() << rows << " x " << columns);
    const auto a = RandomMatrix<TypeParam>(rows, columns, 0, static_cast<unsigned>(rows + 100 * columns));
    const auto svd = Decompose(a);
    ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
    const double rounding = Rounding<TypeParam>(rows, columns);
    EXPECT_LT(DistanceFromOrthonormal(*svd->GetU(), columns), rounding);
    EXPECT_LT(DistanceFromOrthonormal(*svd->GetV(), columns), rounding);
    EXPECT_LT(DistanceFromProduct(*svd, a), rounding * LargestOf(*svd->GetW()));
    for (const TypeParam w : *svd->GetW()) EXPECT_GE(w, 0);
    EXPECT_TRUE(HasExactCounts(*svd->GetU()));
    EXPECT_TRUE(HasExactCounts(*svd->GetV()));
    EXPECT_TRUE(HasExactCounts(*svd->GetW()));
  }
}

TYPED_TEST(NCSVDOf, WideMatrixHasAsManySingularValuesAsColumns) {
  const int shapes[][2] = {{1, 2}, {1, 7}, {2, 3}, {5, 9}, {12, 40}};
  for (const auto& [rows, columns] : shapes) {
    SCOPED_TRACE(testing::Message() << rows << " x " << columns);
    const auto a = RandomMatrix<TypeParam>(rows, columns, 0, static_cast<unsigned>(columns));
    const auto svd = Decompose(a);
    ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
    svd->Sort();
    ASSERT_EQ(svd->GetW()->Size(), columns);
    ASSERT_EQ(svd->GetU()->SizeRows(), rows);
    ASSERT_EQ(svd->GetU()->SizeColumns(), columns);
    const double rounding = Rounding<TypeParam>(rows, columns), largest = LargestOf(*svd->GetW());
    EXPECT_LT(DistanceFromOrthonormal(*svd->GetU(), rows), rounding);
    EXPECT_LT(DistanceFromOrthonormal(*svd->GetV(), columns), rounding);
    EXPECT_LT(DistanceFromProduct(*svd, a), rounding * largest);
    for (int k = rows + 1; k <= columns; ++k) EXPECT_LT((*svd->GetW())[k], rounding * largest);
  }
}

TYPED_TEST(NCSVDOf, DiagonalMatrixKeepsItsOrderAndLosesItsSigns) {
  const std::vector<TypeParam> cells = {3, -5, 0.25, 7};
  const auto svd = Decompose(Diagonal(cells));
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{3, 5, 0.25, 7}));
  EXPECT_EQ(DistanceFromProduct(*svd, Diagonal(cells)), 0);
  EXPECT_FALSE(svd->IsSorted());
}

// The squares of the singular values of A are the eigenvalues of A'A: of (25 20; 20 25) for A = (3 0; 4 5), 45 and 5.
TYPED_TEST(NCSVDOf, TwoByTwoMatrixHasTheSingularValuesOfTheClosedForm) {
  const auto svd = Decompose(MatrixOf<TypeParam>({{3, 0}, {4, 5}}));
  svd->Sort();
  const double rounding = Rounding<TypeParam>(2, 2);
  EXPECT_NEAR((*svd->GetW())[1], std::sqrt(45.0), rounding * std::sqrt(45.0));
  EXPECT_NEAR((*svd->GetW())[2], std::sqrt(5.0), rounding * std::sqrt(45.0));
}

// The second difference matrix (-1, 2, -1) of order n has the eigenvalues 4 sin^2(k pi / (2 (n + 1))), all positive.
TYPED_TEST(NCSVDOf, SecondDifferenceMatrixHasItsEigenvaluesAsSingularValues) {
  const int n = 20;
  NCDataMatrix<TypeParam> a(n, n, TypeParam(0));
  for (int i = 1; i <= n; ++i) {
    a(i, i, 2);
    if (i > 1) a(i, i - 1, -1);
    if (i < n) a(i, i + 1, -1);
  }
  const auto svd = Decompose(a);
  svd->Sort();
  for (int k = 1; k <= n; ++k) {
    const double root = 2 * std::sin((n + 1 - k) * std::acos(-1.0) / (2 * (n + 1)));
    EXPECT_NEAR((*svd->GetW())[k], root * root, 4 * Rounding<TypeParam>(n, n));
  }
}

// NumPy 1.24.2, numpy.linalg.svd of the double matrix: 1.50021428005924e+00, 1.69141220221450e-01, 6.73827360576076e-03
// and 9.67023040225872e-05; their product is the determinant, 1 / 6048000.
TYPED_TEST(NCSVDOf, HilbertMatrixOfOrder4HasTheSingularValuesOfAnIndependentPackage) {
  const auto svd = Decompose(Hilbert<TypeParam>(4));
  svd->Sort();
  const double reference[] = {1.50021428005924, 1.69141220221450e-01, 6.73827360576076e-03, 9.67023040225872e-05};
  // Each singular value errs by what rounding does to the matrix as a whole, not by its own size (Weyl).
  for (int k = 1; k <= 4; ++k)
    EXPECT_NEAR((*svd->GetW())[k], reference[k - 1], 1.5 * Rounding<TypeParam>(4, 4)) << k;
}

TYPED_TEST(NCSVDOf, HilbertMatrixOfOrder12IsRebuilt) {
  const auto svd = Decompose(Hilbert<TypeParam>(12));
  ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
  EXPECT_LT(DistanceFromProduct(*svd, Hilbert<TypeParam>(12)), 2 * Rounding<TypeParam>(12, 12));
  EXPECT_LT(DistanceFromOrthonormal(*svd->GetU(), 12), Rounding<TypeParam>(12, 12));
}

TYPED_TEST(NCSVDOf, SumOfSquaresOfTheSingularValuesIsThatOfTheMatrix) {
  const auto a = RandomMatrix<TypeParam>(23, 11, 0, 5);
  const auto svd = Decompose(a);
  EXPECT_NEAR(svd->GetW()->GetSS() / a.GetSS(), 1, Rounding<TypeParam>(23, 11));
}

// The columns 2 and 3 are multiples of the first, whose cells are all equal: scaling by their sum, 4, is exact, and the
// reflection leaves nothing below the first row. So no rounding stands between the rank and the zeros.
TYPED_TEST(NCSVDOf, MatrixOfRank1HasOneSingularValueAndExactZeros) {
  const auto a = MatrixOf<TypeParam>({{1, 2, 3}, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}});
  const auto svd = Decompose(a);
  ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
  svd->Sort();
  EXPECT_NEAR((*svd->GetW())[1], std::sqrt(56.0), std::sqrt(56.0) * Rounding<TypeParam>(4, 3));
  EXPECT_EQ((*svd->GetW())[2], 0);
  EXPECT_EQ((*svd->GetW())[3], 0);

  svd->RemoveZeroSingularValues();
  EXPECT_EQ(svd->GetW()->Size(), 1);
  EXPECT_EQ(svd->GetU()->SizeRows(), 4);
  EXPECT_EQ(svd->GetU()->SizeColumns(), 1);
  EXPECT_EQ(svd->GetV()->SizeRows(), 3);
  EXPECT_EQ(svd->GetV()->SizeColumns(), 1);
  EXPECT_LT(DistanceFromProduct(*svd, a), 8 * Rounding<TypeParam>(4, 3));
}

// Where the reduction rounds, what should be 0 is of the size of the rounding: in float always here, in double not.
TYPED_TEST(NCSVDOf, MatrixOfRank1HasOneSingularValueAndZerosToRounding) {
  const auto a = MatrixOf<TypeParam>({{1, 2, 3}, {2, 4, 6}, {3, 6, 9}});
  const auto svd = Decompose(a);
  svd->Sort();
  EXPECT_NEAR((*svd->GetW())[1], 14, 14 * Rounding<TypeParam>(3, 3));
  const bool exact = std::is_same_v<TypeParam, double>;
  for (int k = 2; k <= 3; ++k) EXPECT_LE((*svd->GetW())[k], exact ? 0 : 14 * Rounding<TypeParam>(3, 3)) << k;
}

TYPED_TEST(NCSVDOf, GetInverseWithALimitTakesTallMatricesAndRefusesWideOnes) {
  const auto tall = Decompose(MatrixOf<TypeParam>({{1, 0}, {0, 2}, {0, 0}}));
  const std::unique_ptr<NCDataMatrix<TypeParam>> inverse(tall->GetInverse(10.0f));
  ASSERT_NE(inverse, nullptr);
  EXPECT_EQ(CellsOf(*inverse), CellsOf(MatrixOf<TypeParam>({{1, 0, 0}, {0, 0.5, 0}})));

  const auto wide = Decompose(MatrixOf<TypeParam>({{3, 0, 4}}));
  EXPECT_EQ(wide->GetInverse(10.0f), nullptr);
  EXPECT_EQ(wide->GetW()->Size(), 1) << "the zero singular values are gone for good";
  EXPECT_EQ(wide->GetV()->SizeColumns(), 1);
  EXPECT_EQ(wide->GetU()->SizeColumns(), 1);
}

TYPED_TEST(NCSVDOf, RowOfRank1HasOneSingularValueAndExactZeros) {
  const auto svd = Decompose(MatrixOf<TypeParam>({{0, 0, 0}, {3, 0, 4}}));
  svd->Sort();
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{5, 0, 0}));
}

TYPED_TEST(NCSVDOf, ZeroMatrixHasOnlyZeros) {
  const auto svd = Decompose(NCDataMatrix<TypeParam>(3, 2, TypeParam(0)));
  ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{0, 0}));
  EXPECT_EQ(DistanceFromOrthonormal(*svd->GetV(), 2), 0);
  svd->RemoveZeroSingularValues();
  EXPECT_EQ(svd->GetW()->Size(), 0);
  EXPECT_EQ(svd->GetU()->SizeColumns(), 0);
  EXPECT_EQ(svd->GetV()->SizeColumns(), 0);
}

TYPED_TEST(NCSVDOf, MatrixWithoutRowsOrColumnsSucceeds) {
  const auto nothing = Decompose(NCDataMatrix<TypeParam>());
  ASSERT_EQ(nothing->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
  EXPECT_EQ(nothing->GetW()->Size(), 0);
  nothing->RemoveZeroSingularValues();
  EXPECT_EQ(nothing->GetInverse(10), nullptr);

  NCDataMatrix<TypeParam> noRows;
  noRows.SetSize(0, 2);
  const auto zeros = Decompose(noRows);
  ASSERT_EQ(zeros->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
  EXPECT_EQ(CellsOf(*zeros->GetW()), (std::vector<TypeParam>{0, 0}));
}

// The cut-off is the larger of wmax * 1e-16 and the smallest normal float, for both types; values at it stay.
TYPED_TEST(NCSVDOf, SingularValuesBelowTheRelativeCutOffAreExactly0) {
  const TypeParam below = static_cast<TypeParam>(0.9e-16), above = static_cast<TypeParam>(1.1e-16);
  const auto svd = Decompose(Diagonal<TypeParam>({1, above, below}));
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{1, above, 0}));
}

TYPED_TEST(NCSVDOf, SingularValuesBelowTheSmallestNormalFloatAreExactly0) {
  const TypeParam smallest = std::numeric_limits<float>::min();
  const auto svd = Decompose(Diagonal<TypeParam>({smallest, smallest / 2, 2 * smallest}));
  EXPECT_EQ(CellsOf(*svd->GetW()), (std::vector<TypeParam>{smallest, 0, 2 * smallest}));
}

TYPED_TEST(NCSVDOf, MatrixWithOneHoleIsRefusedAndKeepsItsContent) {
  auto a = MatrixOf<TypeParam>({{1, 2}, {3, kHole<TypeParam>}});
  const auto before = CellsOf(a);
  const std::unique_ptr<NCSVD<TypeParam>> copied(a.GetSVD()), inPlace(a.TransformToSVD());
  for (const auto* svd : {copied.get(), inPlace.get()}) {
    EXPECT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusMissingCells);
    EXPECT_EQ(svd->GetStatus(), 1);
    EXPECT_EQ(svd->GetU(), nullptr);
    EXPECT_EQ(svd->GetV(), nullptr);
    EXPECT_EQ(svd->GetW(), nullptr);
  }
  EXPECT_EQ(CellsOf(a), before);
  copied->Sort();
  copied->RemoveZeroSingularValues();
  EXPECT_FALSE(copied->IsSorted());
  EXPECT_EQ(copied->GetInverse(kNoLimit), nullptr);
}

TYPED_TEST(NCSVDOf, GetSVDLeavesTheMatrixAndItsSharersAlone) {
  const auto a = RandomMatrix<TypeParam>(4, 3, 0, 1);
  const auto before = CellsOf(a);
  const NCDataMatrix<TypeParam> sharer(a);
  Decompose(a)->Sort();
  EXPECT_EQ(CellsOf(a), before);
  EXPECT_EQ(CellsOf(sharer), before);
}

TYPED_TEST(NCSVDOf, TransformToSVDTurnsAHeapMatrixIntoU) {
  const auto a = RandomMatrix<TypeParam>(4, 3, 0, 1);
  const auto before = CellsOf(a);
  auto* const u = new NCDataMatrix<TypeParam>(a);
  const std::unique_ptr<NCSVD<TypeParam>> svd(u->TransformToSVD());  // and owns it
  EXPECT_EQ(svd->GetU(), u);
  EXPECT_EQ(CellsOf(*u), CellsOf(*Decompose(a)->GetU()));
  EXPECT_EQ(CellsOf(a), before);
}

TYPED_TEST(NCSVDOf, NumbersThatAreNotFiniteEndAtOnce) {
  for (const double bad : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity(),
                           -std::numeric_limits<double>::infinity()}) {
    for (const int place : {1, 60, 120}) {
      auto a = RandomMatrix<TypeParam>(120, 120, 0, 3);
      a(place, 121 - place, static_cast<TypeParam>(bad));
      const auto start = std::chrono::steady_clock::now();
      const auto svd = Decompose(a);
      EXPECT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusNotConverged);
      EXPECT_EQ(svd->GetU(), nullptr);
      EXPECT_EQ(svd->GetW(), nullptr);
      // The reduction alone takes milliseconds; 32000 rounds of 120 rotations of 240 cells would take a minute.
      EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    }
  }
}

TYPED_TEST(NCSVDOf, AMatrixThatFailsInPlaceStaysItsCallersOwn) {
  NCDataMatrix<TypeParam> a(3, 3, std::numeric_limits<TypeParam>::quiet_NaN());
  const std::unique_ptr<NCSVD<TypeParam>> svd(a.TransformToSVD());
  EXPECT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusNotConverged);
  EXPECT_EQ(svd->GetStatus(), 2);
  EXPECT_EQ(svd->GetU(), nullptr);
}

TYPED_TEST(NCSVDOf, NumbersNearTheEndsOfTheRangeAreDecomposed) {
  const TypeParam huge = std::numeric_limits<TypeParam>::max() / 64, tiny = std::numeric_limits<float>::min();
  for (const TypeParam scale : {huge, tiny}) {
    auto a = RandomMatrix<TypeParam>(6, 4, 0, 9);
    for (int r = 1; r <= 6; ++r) a.MultiplyRow(r, scale);
    const auto svd = Decompose(a);
    ASSERT_EQ(svd->GetStatus(), NCSVD<TypeParam>::StatusSuccess);
    EXPECT_LT(DistanceFromOrthonormal(*svd->GetU(), 4), Rounding<TypeParam>(6, 4));
    EXPECT_LT(DistanceFromOrthonormal(*svd->GetV(), 4), Rounding<TypeParam>(6, 4));
    const auto plain = Decompose(RandomMatrix<TypeParam>(6, 4, 0, 9));
    const double rounding = LargestOf(*plain->GetW()) * Rounding<TypeParam>(6, 4);
    for (int k = 1; k <= 4; ++k) EXPECT_NEAR((*svd->GetW())[k] / scale, (*plain->GetW())[k], rounding);
  }
}

TYPED_TEST(NCSVDOf, SingularValuesBeyondTheRangeAreAFailure) {
  const NCDataMatrix<TypeParam> a(4, 4, std::numeric_limits<TypeParam>::max());
  EXPECT_EQ(Decompose(a)->GetStatus(), NCSVD<TypeParam>::StatusNotConverged);
}

TYPED_TEST(NCSVDOf, CannotBeCopiedNorMadeByOthers) {
  EXPECT_FALSE(std::is_copy_constructible_v<NCSVD<TypeParam>>);
  EXPECT_FALSE(std::is_copy_assignable_v<NCSVD<TypeParam>>);
  EXPECT_FALSE(std::is_default_constructible_v<NCSVD<TypeParam>>);
  EXPECT_TRUE(std::is_default_constructible_v<SVDBuilder<TypeParam>>);
  EXPECT_TRUE(std::has_virtual_destructor_v<NCSVD<TypeParam>>);
}

}  // namespace
