#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
using Cells = std::vector<std::vector<T>>;

/// The witness: cell (i, k) of a factor, transposed or not, from 0.
template <class T>
T FactorCell(const NCDataMatrix<T>& m, bool transposed, int i, int k) {
  return transposed ? m[k + 1][i + 1] : m[i + 1][k + 1];
}

/// The product cell by cell, each sum in double in the order of the shared index. A sum over no pair is missing, but 0
/// where neither factor has a hole.
template <class T>
Cells<T> BruteForceProduct(const NCDataMatrix<T>& a, bool transposeA, const NCDataMatrix<T>& b, bool transposeB) {
  const int rows = transposeA ? a.SizeColumns() : a.SizeRows();
  const int columns = transposeB ? b.SizeRows() : b.SizeColumns();
  const int shared = transposeA ? a.SizeRows() : a.SizeColumns();
  const bool complete = a.GetNumMisVal() == 0 && b.GetNumMisVal() == 0;
  Cells<T> product(static_cast<std::size_t>(rows), std::vector<T>(static_cast<std::size_t>(columns)));
  for (int i = 0; i < rows; ++i)
    for (int j = 0; j < columns; ++j) {
      double sum = 0;
      int pairs = 0;
      for (int k = 0; k < shared; ++k) {
        const T x = FactorCell(a, transposeA, i, k), y = FactorCell(b, !transposeB, j, k);
        if (x == kHole<T> || y == kHole<T>) continue;
        sum += static_cast<double>(x) * static_cast<double>(y);
        ++pairs;
      }
      product[i][j] = complete || pairs > 0 ? static_cast<T>(sum) : kHole<T>;
    }
  return product;
}

/// Opens the protected forms.
template <class T>
class Open : public NCDataMatrix<T> {
 public:
  explicit Open(const NCDataMatrix<T>& m) : NCDataMatrix<T>(m) {}
  using NCDataMatrix<T>::MultiplyTransposeThis;
  using NCDataMatrix<T>::MultiplyTransposeOther;
  using NCDataMatrix<T>::MultiplyTransposeBoth;
};

template <class T>
class NCDataMatrixProducts : public testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixProducts, CellTypes, CellTypeNames);

struct Shape {
  int rows, columns, shared;
};

/// Around the sizes of tiles and blocks, and degenerate ones.
const Shape kShapes[] = {{1, 1, 1},   {1, 7, 3},     {5, 1, 4},    {4, 16, 8},  {3, 15, 9},    {5, 17, 2},
                         {1, 1, 300}, {70, 3, 20},   {2, 140, 65}, {9, 33, 64}, {65, 129, 257}, {64, 128, 256}};

/// A factor of rows by columns, stored transposed if so told.
template <class T>
NCDataMatrix<T> RandomFactor(int rows, int columns, bool transposed, double holes, unsigned seed) {
  return transposed ? RandomMatrix<T>(columns, rows, holes, seed) : RandomMatrix<T>(rows, columns, holes, seed);
}

TYPED_TEST(NCDataMatrixProducts, HaveTheBitsOfPlainSumsInTheOrderOfTheSharedIndex) {
  using T = TypeParam;
  for (const Shape& shape : kShapes)
    for (const double holes : {0.0, 0.05, 0.5, 0.97})
      for (const bool transposeA : {false, true})
        for (const bool transposeB : {false, true}) {
          SCOPED_TRACE(testing::Message() << shape.rows << " x " << shape.shared << " x " << shape.columns << ", holes "
                                          << holes << ", transposed " << transposeA << transposeB);
          const auto a = RandomFactor<T>(shape.rows, shape.shared, transposeA, holes, 1);
          const auto b = RandomFactor<T>(shape.shared, shape.columns, transposeB, holes, 2);
          const NCDataMatrix<T> product = a.MatrixMultiply(b, transposeA, transposeB);
          EXPECT_TRUE(SameBits(CellsOf(product), BruteForceProduct(a, transposeA, b, transposeB)));
          EXPECT_TRUE(HasExactCounts(product));
        }
}

TYPED_TEST(NCDataMatrixProducts, TakeHolesOfOneFactorAlone) {
  using T = TypeParam;
  const auto complete = RandomMatrix<T>(6, 6, 0, 3), holes = RandomMatrix<T>(6, 6, 0.6, 4);
  for (const bool transposeA : {false, true})
    for (const bool transposeB : {false, true}) {
      EXPECT_EQ(CellsOf(complete.MatrixMultiply(holes, transposeA, transposeB)),
                BruteForceProduct(complete, transposeA, holes, transposeB));
      EXPECT_EQ(CellsOf(holes.MatrixMultiply(complete, transposeA, transposeB)),
                BruteForceProduct(holes, transposeA, complete, transposeB));
    }
}

TYPED_TEST(NCDataMatrixProducts, HaveTheRowsThatPreMultiplyGives) {
  using T = TypeParam;
  for (const double holesInA : {0.0, 0.2, 0.9})
    for (const double holesInB : {0.0, 0.2, 0.9}) {
      auto a = RandomMatrix<T>(9, 70, holesInA, 16);
      const auto b = RandomMatrix<T>(70, 40, holesInB, 17);
      a.SetRow(5, kHole<T>);
      const auto product = a * b;
      for (int r = 1; r <= 9; ++r)
        EXPECT_TRUE(SameBits(CellsOf(product[r]), CellsOf(b.PreMultiply(a[r])))) << "row " << r;
    }
}

TYPED_TEST(NCDataMatrixProducts, OfSmallNumbersAreThoseWorkedByHand) {
  using T = TypeParam;
  const auto a = MatrixOf<T>({{1, 2}, {3, 4}, {5, 6}});
  const auto b = MatrixOf<T>({{1, 0, -1}, {2, 1, 0}});
  EXPECT_EQ(CellsOf(a * b), (Cells<T>{{5, 2, -1}, {11, 4, -3}, {17, 6, -5}}));
  const Open<T> open(a);
  EXPECT_EQ(CellsOf(open.MultiplyTransposeThis(a)), (Cells<T>{{35, 44}, {44, 56}}));
  EXPECT_EQ(CellsOf(open.MultiplyTransposeOther(a)), (Cells<T>{{5, 11, 17}, {11, 25, 39}, {17, 39, 61}}));
  EXPECT_EQ(CellsOf(open.MultiplyTransposeBoth(b)), (Cells<T>{{-4, 5}, {-4, 8}}));
}

TYPED_TEST(NCDataMatrixProducts, TakeACellThatNoCountKnowsOfForAHoleOnlyWhereThereAreOthers) {
  using T = TypeParam;
  auto a = MatrixOf<T>({{-98, 2}});
  a.TransformToDotSubRowVector(VectorOf<T>({1, 0}));  // lands on -99, uncounted
  ASSERT_EQ(a[1][1], kHole<T>);
  ASSERT_EQ(a.GetNumMisVal(), 0);
  const auto complete = MatrixOf<T>({{1, 1}, {1, 1}}), withHole = MatrixOf<T>({{1, kHole<T>}, {1, 1}});
  for (const bool transposed : {false, true}) {
    EXPECT_EQ(CellsOf(a.MatrixMultiply(complete, false, transposed)), (Cells<T>{{-97, -97}}));
    EXPECT_EQ(CellsOf(a * withHole), (Cells<T>{{2, 2}}));
  }
  EXPECT_EQ((a * VectorOf<T>({1, 1}))[1], -97);
  a.TransformToMprim_mul_M();
  EXPECT_EQ(CellsOf(a), (Cells<T>{{9801, -198}, {-198, 4}}));
}

TYPED_TEST(NCDataMatrixProducts, LeaveACellWithoutAPairMissing) {
  using T = TypeParam;
  const auto a = MatrixOf<T>({{1, kHole<T>}, {2, 3}});
  const auto b = MatrixOf<T>({{kHole<T>, 4}, {5, 6}});
  const auto product = a * b;
  EXPECT_EQ(CellsOf(product), (Cells<T>{{kHole<T>, 4}, {15, 26}}));
  EXPECT_EQ(product.GetNumMisVal(), 1);
  EXPECT_EQ(product.GetColumnMisVal(1), 1);
  EXPECT_EQ(product[1].GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixProducts, OfAnEmptyFactorAreAllMissing) {
  using T = TypeParam;
  const NCDataMatrix<T> holes(3, 4), complete(4, 2, T{1});
  for (const auto& product : {holes * complete, NCDataMatrix<T>(4, 3).MatrixMultiply(complete, true, false)}) {
    EXPECT_EQ(CellsOf(product), Cells<T>(3, std::vector<T>(2, kHole<T>)));
    EXPECT_TRUE(HasExactCounts(product));
  }
}

TYPED_TEST(NCDataMatrixProducts, AreZeroWhereCompleteFactorsShareAnEmptyIndex) {
  using T = TypeParam;
  NCDataMatrix<T> tall, wide;  // 3 x 0 and 0 x 2
  tall.SetSize(3, 0);
  wide.SetSize(0, 2);
  NCDataMatrix<T> product(3, 2);
  tall.Result(&product) * wide;
  EXPECT_EQ(CellsOf(product), Cells<T>(3, std::vector<T>(2, T{0})));
  EXPECT_TRUE(HasExactCounts(product));
  wide.TransformToMprim_mul_M();
  EXPECT_EQ(CellsOf(wide), Cells<T>(2, std::vector<T>(2, T{0})));
}

TYPED_TEST(NCDataMatrixProducts, WithoutRowsOrColumnsHaveNoCells) {
  using T = TypeParam;
  NCDataMatrix<T> none, noRows, noColumns;
  noRows.SetSize(0, 4);
  noColumns.SetSize(4, 0);
  const auto m = RandomMatrix<T>(4, 3, 0.3, 5);
  EXPECT_EQ((noRows * m).SizeRows(), 0);
  EXPECT_EQ(noColumns.MatrixMultiply(m, true, false).SizeRows(), 0);
  const auto product = m.MatrixMultiply(noColumns, true, false);
  EXPECT_EQ(product.SizeRows(), 3);
  EXPECT_EQ(product.SizeColumns(), 0);
  EXPECT_EQ((none * none).SizeRows(), 0);
  noColumns.TransformToMprim_mul_M();
  EXPECT_EQ(noColumns.SizeRows(), 0);
  EXPECT_EQ(noColumns.SizeColumns(), 0);
}

TYPED_TEST(NCDataMatrixProducts, LetAHoleTakeNoPartOppositeAnInfinity) {
  using T = TypeParam;
  const T infinity = std::numeric_limits<T>::infinity();
  const auto a = MatrixOf<T>({{kHole<T>, 2}, {infinity, kHole<T>}});
  const auto b = MatrixOf<T>({{infinity, 3}, {4, kHole<T>}});
  EXPECT_EQ(CellsOf(a * b), (Cells<T>{{8, kHole<T>}, {infinity, infinity}}));
  EXPECT_EQ(CellsOf(a.MatrixMultiply(b, false, true)), (Cells<T>{{6, kHole<T>}, {infinity, infinity}}));
  const auto product = a.MatrixMultiply(b, true, true);
  EXPECT_EQ(CellsOf(product), (Cells<T>{{infinity, kHole<T>}, {infinity, 8}}));
  EXPECT_TRUE(HasExactCounts(product));
}

TYPED_TEST(NCDataMatrixProducts, LetNotANumberSpoilTheCellsItTakesPartIn) {
  using T = TypeParam;
  const auto a = MatrixOf<T>({{std::numeric_limits<T>::quiet_NaN(), 1}, {kHole<T>, 2}});
  const auto product = a.MatrixMultiply(MatrixOf<T>({{1, 1}}), false, true);
  EXPECT_TRUE(std::isnan(product[1][1]));
  EXPECT_EQ(product[2][1], T{2});
}

TYPED_TEST(NCDataMatrixProducts, TransformToMprimMulMIsTheProductWithItsOwnTranspose) {
  using T = TypeParam;
  for (const double holes : {0.0, 0.2, 0.9}) {
    auto m = RandomMatrix<T>(37, 21, holes, 6);
    const NCDataMatrix<T> before(m);
    m.TransformToMprim_mul_M();
    EXPECT_EQ(m.SizeRows(), 21);
    EXPECT_EQ(m.SizeColumns(), 21);
    EXPECT_TRUE(SameBits(CellsOf(m), BruteForceProduct(before, true, before, false)));
    EXPECT_TRUE(HasExactCounts(m));
    EXPECT_EQ(before.SizeRows(), 37);
  }
}

TYPED_TEST(NCDataMatrixProducts, TransformToMprimMulMLeavesAWaitingResultTargetWaiting) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, 2}, {3, 4}});
  NCDataMatrix<T> target(2, 2);
  m.Result(&target);
  m.TransformToMprim_mul_M();
  EXPECT_EQ(target.GetNumMisVal(), 4);
  m * m;
  EXPECT_EQ(target.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixProducts, BuildInAResultTargetWithoutTouchingWhoSharesIt) {
  using T = TypeParam;
  const auto a = RandomMatrix<T>(5, 4, 0.2, 7), b = RandomMatrix<T>(4, 3, 0.2, 8);
  NCDataMatrix<T> target(5, 3, T{7});
  const NCDataMatrix<T> sharer(target);
  const NCDataMatrix<T> product = a.Result(&target) * b;
  EXPECT_EQ(product, target);
  EXPECT_EQ(CellsOf(target), BruteForceProduct(a, false, b, false));
  EXPECT_TRUE(HasExactCounts(target));
  EXPECT_EQ(CellsOf(sharer), Cells<T>(5, std::vector<T>(3, T{7})));
}

TYPED_TEST(NCDataMatrixProducts, MayReplaceAFactor) {
  using T = TypeParam;
  for (const double holes : {0.0, 0.3}) {
    const auto a = RandomMatrix<T>(4, 4, holes, 9), b = RandomMatrix<T>(4, 4, holes, 10);
    for (const bool transposeA : {false, true})
      for (const bool transposeB : {false, true}) {
        NCDataMatrix<T> left(a), right(b);
        left.Result(&left).MatrixMultiply(b, transposeA, transposeB);
        a.Result(&right).MatrixMultiply(right, transposeA, transposeB);
        EXPECT_EQ(CellsOf(left), BruteForceProduct(a, transposeA, b, transposeB));
        EXPECT_EQ(CellsOf(right), BruteForceProduct(a, transposeA, b, transposeB));
        EXPECT_TRUE(HasExactCounts(left));
        EXPECT_TRUE(HasExactCounts(right));
      }
  }
}

TYPED_TEST(NCDataMatrixProducts, WithAVectorAreTheRowsDotProducts) {
  using T = TypeParam;
  for (const double holes : {0.0, 0.1, 0.8}) {
    const auto m = RandomMatrix<T>(40, 23, holes, 11);
    const auto v = RandomVector<T>(23, holes, 12);
    const NCDataVector<T> product = m * v;
    std::vector<T> dots;
    for (int r = 1; r <= 40; ++r) dots.push_back(static_cast<T>(m[r] * v));
    EXPECT_TRUE(SameBits(CellsOf(product), dots));
    EXPECT_TRUE(HasExactCounts(product));
  }
}

TYPED_TEST(NCDataMatrixProducts, WithAVectorAreMissingInRowsWithoutAPair) {
  using T = TypeParam;
  const auto m = MatrixOf<T>({{1, kHole<T>}, {kHole<T>, 2}, {3, 4}});
  const NCDataVector<T> product = m * VectorOf<T>({5, kHole<T>});
  EXPECT_EQ(CellsOf(product), (std::vector<T>{5, kHole<T>, 15}));
  EXPECT_EQ(product.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataMatrixProducts, WithAVectorMayReplaceItOrARowOfTheMatrix) {
  using T = TypeParam;
  auto m = RandomMatrix<T>(6, 6, 0.1, 13);
  auto v = RandomVector<T>(6, 0.1, 14);
  const auto expected = CellsOf(m * v);
  NCDataMatrix<T> changed(m);
  changed.Result(&changed(2)) * v;
  EXPECT_EQ(CellsOf(changed[2]), expected);
  EXPECT_EQ(CellsOf(changed[3]), CellsOf(m[3]));
  m.Result(&v) * v;
  EXPECT_EQ(CellsOf(v), expected);
}

TYPED_TEST(NCDataMatrixProducts, GetSSAddsTheRowsAndLeavesEmptyOnesOut) {
  using T = TypeParam;
  const auto m = MatrixOf<T>({{1, 2, kHole<T>}, {kHole<T>, kHole<T>, kHole<T>}, {3, kHole<T>, 4}});
  EXPECT_EQ(m.GetSS(), 30);
  EXPECT_EQ((NCDataMatrix<T>(2, 3).GetSS()), 0);
  EXPECT_EQ(NCDataMatrix<T>().GetSS(), 0);
}

TYPED_TEST(NCDataMatrixProducts, GetSSAddsInTheOrderOfTheRows) {
  using T = TypeParam;
  for (const double holes : {0.0, 0.1}) {
    const auto m = RandomMatrix<T>(500, 43, holes, 15);
    double sum = 0;
    for (int r = 1; r <= 500; ++r) sum += static_cast<double>(m[r].GetSS());
    EXPECT_EQ(m.GetSS(), sum);
  }
}

}  // namespace
