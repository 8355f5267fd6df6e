#include <gtest/gtest.h>

#include <cmath>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/kernels/regression/Regression.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

template <class T>
using OneColumn = void (*)(T*, int, const NCDataMatrix<T>&, const NCDataVector<T>&, long double, int, int&);

/// What the one-column function says for every column, and the count of missing cells that it leaves.
template <class T>
struct ColumnByColumn {
  ColumnByColumn(const NCDataMatrix<T>& X, const NCDataVector<T>& v, OneColumn<T> regress)
      : cells(X.SizeColumns() + 1, kHole<T>), numMisVal(X.SizeColumns()) {
    const int mode = kalmia::MisValMode(X.GetNumMisVal(), v.GetNumMisVal());
    for (int c = 1; c <= X.SizeColumns(); ++c) regress(cells.data(), c, X, v, v.GetSS(), mode, numMisVal);
    cells.erase(cells.begin());
  }
  std::vector<T> cells;
  int numMisVal;
};

/// Tables with every kind of column side by side: complete, with some holes, with one cell, all missing.
template <class T>
NCDataMatrix<T> TableOfAllKinds(int rows, int columns, double holes, unsigned seed) {
  NCDataMatrix<T> X = RandomMatrix<T>(rows, columns, holes, seed);
  for (int c = 1; c <= columns && holes > 0; c += 5) X.SetColumn(c, RandomVector<T>(rows, 0, seed + c));
  for (int c = 3; c <= columns && holes > 0; c += 5) X.SetColumn(c, NCDataVector<T>(rows));
  return X;
}

struct Shape {
  int rows, columns;
};
constexpr Shape kShapes[] = {{0, 3}, {1, 1}, {1, 20}, {7, 5}, {8, 33}, {20, 10}, {27, 1040}, {3, 33000}, {600, 700}};
constexpr double kShares[] = {0, 0.05, 0.4};

/// Calls check(X, v) for tables and vectors of all modes, some large enough for several threads.
template <class T, class Check>
void ForAllTables(const Check& check) {
  for (const Shape& shape : kShapes)
    for (double holes : kShares)
      for (double holesOfV : {0.0, 0.3, 1.0}) {
        SCOPED_TRACE(::testing::Message() << shape.rows << " x " << shape.columns << ", holes " << holes << " and "
                                          << holesOfV);
        check(TableOfAllKinds<T>(shape.rows, shape.columns, holes, shape.rows + 7),
              RandomVector<T>(shape.rows, holesOfV, shape.rows));
      }
}

template <class T>
class NCDataMatrixRegressColumns : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataMatrixRegressColumns, CellTypes, CellTypeNames);

TYPED_TEST(NCDataMatrixRegressColumns, EqualTheOneColumnFunctionToTheBit) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    const ColumnByColumn<T> expected(X, v, &NCDataMatrix<T>::RegressOneColumn);
    const NCDataVector<T> columns = X.RegressColumns(v);
    EXPECT_TRUE(SameBits(CellsOf(columns), expected.cells));
    EXPECT_EQ(columns.GetNumMisVal(), expected.numMisVal);
    EXPECT_TRUE(HasExactCounts(columns));
  });
}

TYPED_TEST(NCDataMatrixRegressColumns, WithTheFixEqualTheOneColumnFunctionToTheBit) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    const bool complete = X.GetNumMisVal() == 0 && v.GetNumMisVal() == 0;
    const ColumnByColumn<T> expected(
        X, v, complete ? &NCDataMatrix<T>::RegressOneColumn : &NCDataMatrix<T>::SpecialNipalsRegressOneColumnFix);
    const NCDataVector<T> columns = X.SpecialNipalsRegressColumnsFix(v);
    EXPECT_TRUE(SameBits(CellsOf(columns), expected.cells));
    EXPECT_EQ(columns.GetNumMisVal(), expected.numMisVal);
    EXPECT_TRUE(HasExactCounts(columns));
  });
}

/// One column by the definition, one cell after the other, in long double.
template <class T>
struct Definition {
  long double numerator = 0, pairs = 0, magnitude = 0;
  Definition(const NCDataMatrix<T>& X, int c, const NCDataVector<T>& v) {
    for (int r = 1; r <= X.SizeRows(); ++r) {
      if (v[r] == kHole<T> || X[r][c] == kHole<T>) continue;
      numerator += static_cast<long double>(v[r]) * X[r][c];
      magnitude += std::fabs(static_cast<long double>(v[r]) * X[r][c]);
      pairs += static_cast<long double>(v[r]) * v[r];
    }
  }
};

/// Rounding: up to 2 rows operations in double, then one to T.
template <class T>
void ExpectQuotient(T cell, const Definition<T>& sums, long double denominator, int rows) {
  const long double expected = sums.numerator / denominator;
  const long double u = (2 * rows + 4) * 0x1p-53L * sums.magnitude / denominator;
  EXPECT_NEAR(cell, expected, u + std::numeric_limits<T>::epsilon() * std::fabs(expected));
}

TYPED_TEST(NCDataMatrixRegressColumns, GiveTheSumOfProductsOverTheSumOfSquaresOfThePairs) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    const NCDataVector<T> columns = X.RegressColumns(v);
    for (int c = 1; c <= X.SizeColumns(); ++c) {
      const Definition<T> sums(X, c, v);
      if (sums.pairs == 0)
        EXPECT_EQ(columns[c], -99) << c;
      else
        ExpectQuotient(columns[c], sums, sums.pairs, X.SizeRows());
    }
  });
}

TYPED_TEST(NCDataMatrixRegressColumns, WithTheFixDivideByNoLessThanAThirdOfTheFullSum) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    const NCDataVector<T> columns = X.SpecialNipalsRegressColumnsFix(v);
    const long double ss = v.GetSS();
    for (int c = 1; c <= X.SizeColumns(); ++c) {
      const Definition<T> sums(X, c, v);
      const bool emptyColumn = v.GetNumMisVal() == 0 && X.GetColumnMisVal(c) == X.SizeRows();
      if (ss <= 0 || emptyColumn)
        EXPECT_EQ(columns[c], -99) << c;
      else
        ExpectQuotient(columns[c], sums, std::max(sums.pairs, ss / 3), X.SizeRows());
    }
  });
}

TYPED_TEST(NCDataMatrixRegressColumns, TheFixHoldsTheDenominatorAtAThirdOfTheFullSum) {
  const auto x = MatrixOf<TypeParam>({{2}, {-99}, {-99}});
  // numerator 2, pairs 1, a third of the full sum 1
  EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(VectorOf<TypeParam>({1, 1, 1}))[1], 2);
  // numerator 2, pairs 1, a third of the full sum 3
  EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(VectorOf<TypeParam>({1, 2, 2}))[1], static_cast<TypeParam>(2.0L / 3));
  EXPECT_EQ(x.RegressColumns(VectorOf<TypeParam>({1, 2, 2}))[1], 2);
}

TYPED_TEST(NCDataMatrixRegressColumns, AColumnOfHolesStaysMissingAndIsCounted) {
  const auto x = MatrixOf<TypeParam>({{1, -99, 2}, {3, -99, 4}});
  const auto v = VectorOf<TypeParam>({1, 1});
  for (const auto& columns : {x.RegressColumns(v), x.SpecialNipalsRegressColumnsFix(v)}) {
    EXPECT_EQ(CellsOf(columns), (std::vector<TypeParam>{2, -99, 3}));
    EXPECT_EQ(columns.GetNumMisVal(), 1);
  }
}

TYPED_TEST(NCDataMatrixRegressColumns, WhereVHasHolesAColumnWithoutPairIsZeroWithTheFixAndMissingWithout) {
  const auto x = MatrixOf<TypeParam>({{1, -99, -99}, {3, -99, 4}});
  const auto v = VectorOf<TypeParam>({2, -99});
  EXPECT_EQ(CellsOf(x.SpecialNipalsRegressColumnsFix(v)), (std::vector<TypeParam>{0.5, 0, 0}));
  EXPECT_EQ(CellsOf(x.RegressColumns(v)), (std::vector<TypeParam>{0.5, -99, -99}));
}

TYPED_TEST(NCDataMatrixRegressColumns, GiveNothingForAVectorOfHolesOrZeros) {
  const auto complete = MatrixOf<TypeParam>({{1, 2}, {3, 4}}), withHole = MatrixOf<TypeParam>({{1, 2}, {-99, 4}});
  for (const auto& x : {complete, withHole})
    for (const auto& v : {NCDataVector<TypeParam>(2), NCDataVector<TypeParam>(2, 0)}) {
      EXPECT_EQ(x.RegressColumns(v).GetNumMisVal(), 2);
      EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(v).GetNumMisVal(), 2);
      EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(v, nullptr, 0).GetNumMisVal(), 2);
    }
}

TYPED_TEST(NCDataMatrixRegressColumns, AQuotientThatHappensToBeTheMissingValueIsNotCounted) {
  const auto x = MatrixOf<TypeParam>({{-198}});
  const auto columns = x.RegressColumns(VectorOf<TypeParam>({2}));
  EXPECT_EQ(columns[1], -99);
  EXPECT_EQ(columns.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataMatrixRegressColumns, ANaNIsNoHoleInAColumnThatIsCompleteBesideOneWithHoles) {
  using T = TypeParam;
  for (const T nan : {std::numeric_limits<T>::quiet_NaN(), -std::numeric_limits<T>::quiet_NaN()}) {
    NCDataMatrix<T> x(9, 40, T(1));
    x(3, 40, kHole<T>);
    for (int c : {1, 9, 33}) x(2, c, nan);
    const NCDataVector<T> v(9, T(1));
    for (const auto& columns : {x.RegressColumns(v), x.SpecialNipalsRegressColumnsFix(v),
                                x.SpecialNipalsRegressColumnsFix(v, nullptr, 0), x.PreMultiply(v)}) {
      for (int c : {1, 9, 33}) EXPECT_TRUE(std::isnan(columns[c])) << c;
      for (int c : {2, 8, 32, 40}) EXPECT_FALSE(std::isnan(columns[c])) << c;
    }
  }
}

TYPED_TEST(NCDataMatrixRegressColumns, BuildTheirResultInTheTargetAndLeaveItsTwinsAlone) {
  const auto x = MatrixOf<TypeParam>({{1, 2}, {-99, 4}});
  const auto v = VectorOf<TypeParam>({1, 1});
  NCDataVector<TypeParam> target(2, 7);
  const NCDataVector<TypeParam> twin = target;
  for (int form = 0; form < 3; ++form) {
    target.SetAllValues(7);
    if (form == 0) x.Result(&target).RegressColumns(v);
    if (form == 1) x.Result(&target).SpecialNipalsRegressColumnsFix(v);
    if (form == 2) x.Result(&target).SpecialNipalsRegressColumnsFix(v, nullptr, 0);
    EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{1, 3})) << form;
    EXPECT_EQ(target.GetNumMisVal(), 0) << form;
  }
  EXPECT_EQ(CellsOf(twin), (std::vector<TypeParam>{7, 7}));
}

// The one-column functions.

TYPED_TEST(NCDataMatrixRegressColumns, OneColumnWithoutHolesDividesByTheSumOfSquaresThatItIsGiven) {
  const auto x = MatrixOf<TypeParam>({{1, 2}, {3, -99}});
  const auto v = VectorOf<TypeParam>({1, 1});
  std::vector<TypeParam> out(3, -99);
  int numMisVal = 2;
  for (int mode : {0, 1}) {
    NCDataMatrix<TypeParam>::RegressOneColumn(out.data(), 1, x, v, 8, mode, numMisVal);
    EXPECT_EQ(out[1], 0.5);
  }
  NCDataMatrix<TypeParam>::SpecialNipalsRegressOneColumnFix(out.data(), 1, x, v, 16, 1, numMisVal);
  EXPECT_EQ(out[1], 0.25);
  EXPECT_EQ(numMisVal, -1);  // one less for every cell written
  EXPECT_EQ(out[2], -99);
}

TYPED_TEST(NCDataMatrixRegressColumns, OneColumnWithTheFixWritesZeroInModeZero) {
  const auto x = MatrixOf<TypeParam>({{1}, {3}});
  std::vector<TypeParam> out(2, -99);
  int numMisVal = 1;
  NCDataMatrix<TypeParam>::SpecialNipalsRegressOneColumnFix(out.data(), 1, x, VectorOf<TypeParam>({1, 1}), 2, 0,
                                                            numMisVal);
  EXPECT_EQ(out[1], 0);
  EXPECT_EQ(numMisVal, 0);
}

TYPED_TEST(NCDataMatrixRegressColumns, OneColumnWritesZeroInAModeThatDoesNotExist) {
  const auto x = MatrixOf<TypeParam>({{1}, {3}});
  const auto v = VectorOf<TypeParam>({1, 1});
  for (int mode : {-1, 4, 7})
    for (auto regress : {&NCDataMatrix<TypeParam>::RegressOneColumn,
                         &NCDataMatrix<TypeParam>::SpecialNipalsRegressOneColumnFix}) {
      std::vector<TypeParam> out(2, -99);
      int numMisVal = 1;
      regress(out.data(), 1, x, v, 2, mode, numMisVal);
      EXPECT_EQ(out[1], 0);
      EXPECT_EQ(numMisVal, 0);
    }
}

TYPED_TEST(NCDataMatrixRegressColumns, OneColumnAtTheSmallestDenominatorWritesNothing) {
  const auto x = MatrixOf<TypeParam>({{1}, {3}});
  const auto v = VectorOf<TypeParam>({1, 1});
  for (auto regress : {&NCDataMatrix<TypeParam>::RegressOneColumn,
                       &NCDataMatrix<TypeParam>::SpecialNipalsRegressOneColumnFix})
    for (long double sign : {1.0L, -1.0L}) {
      std::vector<TypeParam> out(2, -99);
      int numMisVal = 1;
      regress(out.data(), 1, x, v, sign * 1e-30, 1, numMisVal);
      EXPECT_EQ(out[1], -99);
      EXPECT_EQ(numMisVal, 1);
      regress(out.data(), 1, x, v, sign * std::nextafter(1e-30, 1.0), 1, numMisVal);
      EXPECT_EQ(out[1], static_cast<TypeParam>(sign * 4 / std::nextafter(1e-30, 1.0)));
      EXPECT_EQ(numMisVal, 0);
    }
}

TEST(NCDataMatrixRegressColumnsLimit, APairSumOfExactlyTheLimitGivesNothing) {
  const double a = 0.9e-15;
  const double b = std::sqrt(1e-30 - a * a);
  ASSERT_EQ(a * a + b * b, 1e-30);
  const auto x = MatrixOf<double>({{1}, {1}, {-99}});
  EXPECT_EQ(x.RegressColumns(VectorOf<double>({a, b, 0}))[1], -99);
  EXPECT_EQ(x.SpecialNipalsRegressColumnsFix(VectorOf<double>({a, b, 0}))[1], -99);
  EXPECT_NE(x.RegressColumns(VectorOf<double>({a, b * 1.0000001, 0}))[1], -99);
  EXPECT_NE(x.SpecialNipalsRegressColumnsFix(VectorOf<double>({a, b * 1.0000001, 0}))[1], -99);
}

TYPED_TEST(NCDataMatrixRegressColumns, InOneColumnTheThirdIsTheSumOfSquaresDividedByThree) {
  const auto x = MatrixOf<TypeParam>({{1}, {-99}});
  std::vector<TypeParam> out(2, -99);
  int numMisVal = 1;
  const long double ss = 0x1.fffffffffffff8p+10L;
  NCDataMatrix<TypeParam>::SpecialNipalsRegressOneColumnFix(out.data(), 1, x, VectorOf<TypeParam>({1, 1}), ss, 1,
                                                            numMisVal);
  EXPECT_EQ(out[1], static_cast<TypeParam>(1 / (ss / 3.0)));
}

// The form that leaves out columns.

TYPED_TEST(NCDataMatrixRegressColumns, AGroupOfColumnsStaysMissing) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    const NCDataVector<T> all = X.SpecialNipalsRegressColumnsFix(v, nullptr, 0);
    Groups groups(X.SizeColumns());
    for (int c = 1; c <= X.SizeColumns(); ++c) groups(c) = c % 4;
    const NCDataVector<T> some = X.SpecialNipalsRegressColumnsFix(v, &groups, 2);
    for (int c = 1; c <= X.SizeColumns(); ++c) EXPECT_EQ(some[c], c % 4 == 2 ? T(-99) : all[c]) << c;
    EXPECT_TRUE(HasExactCounts(all));
    EXPECT_TRUE(HasExactCounts(some));
  });
}

TYPED_TEST(NCDataMatrixRegressColumns, WithoutAGroupTheFormWithGroupsIsTheFix) {
  using T = TypeParam;
  ForAllTables<T>([](const NCDataMatrix<T>& X, const NCDataVector<T>& v) {
    const NCDataVector<T> fix = X.SpecialNipalsRegressColumnsFix(v);
    const NCDataVector<T> all = X.SpecialNipalsRegressColumnsFix(v, nullptr, 0);
    EXPECT_EQ(all.GetNumMisVal(), fix.GetNumMisVal());
    // Where v has holes the form with groups adds up v's squares in their order: a rounding for each row, one for T.
    const double u = v.GetNumMisVal() > 0 ? std::numeric_limits<T>::epsilon() + (X.SizeRows() + 2) * 0x1p-53 : 0;
    for (int c = 1; c <= X.SizeColumns(); ++c) EXPECT_NEAR(all[c], fix[c], u * std::fabs(fix[c])) << c;
  });
}

TYPED_TEST(NCDataMatrixRegressColumns, WhereVHasHolesAndNoPairIsLeftTheFormWithGroupsGivesZero) {
  const auto x = MatrixOf<TypeParam>({{1, -99}, {3, 4}});
  EXPECT_EQ(CellsOf(x.SpecialNipalsRegressColumnsFix(VectorOf<TypeParam>({2, -99}), nullptr, 0)),
            (std::vector<TypeParam>{0.5, 0}));
}

TYPED_TEST(NCDataMatrixRegressColumns, TheFormWithGroupsCountsAQuotientThatHappensToBeTheMissingValue) {
  for (const auto& x : {MatrixOf<TypeParam>({{-198, 1}}), MatrixOf<TypeParam>({{-198, -99}})})
    EXPECT_TRUE(HasExactCounts(x.SpecialNipalsRegressColumnsFix(VectorOf<TypeParam>({2}), nullptr, 0)));
}

}  // namespace
