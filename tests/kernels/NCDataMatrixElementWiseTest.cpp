#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "testing/RandomTables.h"

namespace {

template <class T>
using Cells = std::vector<std::vector<T>>;

/// cell (r, c), counted from 1, of a and of what b(r, c) says, by `operation`; missing where either is.
template <class T, class Other, class Operation>
Cells<T> CellByCell(const NCDataMatrix<T>& a, const Other& b, const Operation& operation) {
  Cells<T> cells = CellsOf(a);
  for (int r = 1; r <= a.SizeRows(); ++r)
    for (int c = 1; c <= a.SizeColumns(); ++c) {
      T& cell = cells[r - 1][c - 1];
      cell = cell == kHole<T> || b(r, c) == kHole<T> ? kHole<T> : operation(cell, b(r, c));
    }
  return cells;
}

template <class T>
class NCDataMatrixElementWise : public testing::Test {
 protected:
  // Rows without holes, rows with some, and one that is empty.
  NCDataMatrix<T> a_ = RandomMatrix<T>(6, 5, 0.25, 1), b_ = RandomMatrix<T>(6, 5, 0.25, 2);
  NCDataVector<T> alongRows_ = VectorOf<T>({2, kHole<T>, -1, 0.5, 4, 8});
  NCDataVector<T> alongColumns_ = VectorOf<T>({-2, 4, kHole<T>, 1, 0.25});

  void SetUp() override { a_.SetRow(4, kHole<T>); }
};
TYPED_TEST_SUITE(NCDataMatrixElementWise, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixElementWise, SumsAndDifferencesAreMissingWhereEitherSideIs) {
  using T = TypeParam;
  const auto b = [this](int r, int c) { return this->b_[r][c]; };
  const auto sum = this->a_ + this->b_, difference = this->a_ - this->b_;
  EXPECT_EQ(CellsOf(sum), CellByCell(this->a_, b, std::plus<T>()));
  EXPECT_EQ(CellsOf(difference), CellByCell(this->a_, b, std::minus<T>()));
  EXPECT_TRUE(HasExactCounts(sum));
  EXPECT_TRUE(HasExactCounts(difference));
}

TYPED_TEST(NCDataMatrixElementWise, AddingInPlaceEqualsAddingAndLeavesSharersAlone) {
  const auto a = CellsOf(this->a_), sum = CellsOf(this->a_ + this->b_), difference = CellsOf(this->a_ - this->b_);
  auto added(this->a_), subtracted(this->a_);
  EXPECT_EQ(&(added += this->b_), &added);
  EXPECT_EQ(&(subtracted -= this->b_), &subtracted);
  EXPECT_EQ(CellsOf(added), sum);
  EXPECT_EQ(CellsOf(subtracted), difference);
  EXPECT_TRUE(HasExactCounts(added));
  EXPECT_TRUE(HasExactCounts(subtracted));
  EXPECT_EQ(CellsOf(this->a_), a);
}

TYPED_TEST(NCDataMatrixElementWise, AMatrixCanBeAddedToAndTakenFromItself) {
  using T = TypeParam;
  auto m = MatrixOf<T>({{1, kHole<T>}, {3, 4}});
  const NCDataMatrix<T>& itself = m;
  m += itself;
  EXPECT_EQ(CellsOf(m), (Cells<T>{{2, kHole<T>}, {6, 8}}));
  m -= itself;
  EXPECT_EQ(CellsOf(m), (Cells<T>{{0, kHole<T>}, {0, 0}}));
  EXPECT_TRUE(HasExactCounts(m));
}

TYPED_TEST(NCDataMatrixElementWise, TheRightOperandMayBeTheResultTarget) {
  const auto difference = CellsOf(this->a_ - this->b_);
  this->a_.Result(&this->b_) - this->b_;
  EXPECT_EQ(CellsOf(this->b_), difference);
  EXPECT_TRUE(HasExactCounts(this->b_));
}

TYPED_TEST(NCDataMatrixElementWise, CountsASumThatLandsOnTheMissingValue) {
  using T = TypeParam;
  const auto sum = MatrixOf<T>({{-98, 1}}) + MatrixOf<T>({{-1, 1}});
  EXPECT_EQ(sum.GetNumMisVal(), 1);
  EXPECT_TRUE(HasExactCounts(sum));
}

TYPED_TEST(NCDataMatrixElementWise, MultiplyingByANumberLeavesHoles) {
  using T = TypeParam;
  const auto product = this->a_ * -2.5L;
  EXPECT_EQ(CellsOf(product),
            CellByCell(this->a_, [](int, int) { return T{-2.5}; }, std::multiplies<T>()));
  EXPECT_TRUE(HasExactCounts(product));
}

TYPED_TEST(NCDataMatrixElementWise, MultipliesInMoreThanTheTypeOfTheCells) {
  using T = TypeParam;
  const auto product = MatrixOf<T>({{3}}) * (1.0L / 3.0L);
  EXPECT_EQ(product[1][1], T{1});
  // A third rounded to T first would give 1.00000003 in float before the result is rounded.
  EXPECT_EQ((MatrixOf<T>({{16777215}}) * (1.0L / 3.0L))[1][1], static_cast<T>(5592405));
}

TYPED_TEST(NCDataMatrixElementWise, MultiplyingByTheMissingValueMakesAllMissing) {
  const auto product = this->b_ * -99.0L;
  EXPECT_EQ(product.GetNumMisVal(), 30);
  EXPECT_TRUE(HasExactCounts(product));
}

TYPED_TEST(NCDataMatrixElementWise, AVectorAlongTheRowsMultipliesAndDividesEachRow) {
  using T = TypeParam;
  const auto v = [this](int r, int) { return this->alongRows_[r]; };
  const auto product = this->b_.DotMultiplyVector(this->alongRows_), ratio = this->b_.DotDivideVector(this->alongRows_);
  EXPECT_EQ(CellsOf(product), CellByCell(this->b_, v, std::multiplies<T>()));
  EXPECT_EQ(CellsOf(ratio), CellByCell(this->b_, v, std::divides<T>()));
  EXPECT_EQ(product[2].GetNumMisVal(), 5);
  EXPECT_TRUE(HasExactCounts(product));
  EXPECT_TRUE(HasExactCounts(ratio));
}

TYPED_TEST(NCDataMatrixElementWise, AVectorAlongTheColumnsMultipliesAndDividesEachColumn) {
  using T = TypeParam;
  const auto v = [this](int, int c) { return this->alongColumns_[c]; };
  const auto product = this->b_.DotPreMultiplyVector(this->alongColumns_);
  const auto ratio = this->b_.DotPreDivideVector(this->alongColumns_);
  EXPECT_EQ(CellsOf(product), CellByCell(this->b_, v, std::multiplies<T>()));
  EXPECT_EQ(CellsOf(ratio), CellByCell(this->b_, v, std::divides<T>()));
  EXPECT_EQ(product.GetColumnMisVal(3), 6);
  EXPECT_TRUE(HasExactCounts(product));
  EXPECT_TRUE(HasExactCounts(ratio));
}

TYPED_TEST(NCDataMatrixElementWise, DivisionsDoNotTestForAZeroDivisor) {
  using T = TypeParam;
  const T infinity = std::numeric_limits<T>::infinity();
  const auto m = MatrixOf<T>({{1, -2}});
  EXPECT_EQ(CellsOf(m.DotDivideVector(VectorOf<T>({0}))), (Cells<T>{{infinity, -infinity}}));
  EXPECT_EQ(CellsOf(m.DotPreDivideVector(VectorOf<T>({0, 1}))), (Cells<T>{{infinity, -2}}));
}

TYPED_TEST(NCDataMatrixElementWise, ARowOfTheResultTargetMayBeTheVector) {
  using Matrix = NCDataMatrix<TypeParam>;
  const auto square = RandomMatrix<TypeParam>(6, 6, 0.25, 3);  // a row fits along rows and along columns
  for (const auto operation : {&Matrix::DotPreMultiplyVector, &Matrix::DotPreDivideVector, &Matrix::DotMultiplyVector,
                               &Matrix::DotDivideVector}) {
    auto m(square);
    const auto result = CellsOf((m.*operation)(m[2]));
    (m.Result(&m).*operation)(m[2]);
    EXPECT_EQ(CellsOf(m), result);
    EXPECT_TRUE(HasExactCounts(m));
  }
}

TYPED_TEST(NCDataMatrixElementWise, TablesWithoutCellsStayWithoutCells) {
  using T = TypeParam;
  NCDataMatrix<T> noColumns;
  noColumns.SetSize(3, 0);
  EXPECT_EQ((noColumns + noColumns).SizeRows(), 3);
  EXPECT_EQ((NCDataMatrix<T>() * 2.0L).SizeRows(), 0);
  EXPECT_EQ(noColumns.DotMultiplyVector(VectorOf<T>({1, 2, 3})).GetNumMisVal(), 0);
}

}  // namespace
