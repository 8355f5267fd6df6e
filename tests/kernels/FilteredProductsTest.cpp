// Steps in one pass against the steps taken singly: bits and counts.
#include "kalmia/kernels/passes/FilteredProducts.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "kalmia/kernels/simd/Lanes.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

/// A table, few rows to multiply it by, and components to filter it by.
struct Case {
  Case(int rows, int columns, int factors, int components, double holesInX = 0.0)
      : X(RandomMatrix<float>(rows, columns, holesInX, 1)),
        A(RandomMatrix<float>(factors, rows, 0.0, 2)),
        T(RandomMatrix<float>(components, rows, 0.0, 3)),
        W(RandomMatrix<float>(components, columns, 0.0, 4)),
        w(RandomVector<float>(columns, 0.0, 5)) {}

  Matrix X, A, T, W;
  Vector w;
};

Matrix DeepCopyOf(const Matrix& matrix) {
  Matrix copy;
  copy.CopyContent(matrix);
  return copy;
}

void ExpectSame(const Matrix& found, const Matrix& expected) {
  ASSERT_EQ(found.SizeRows(), expected.SizeRows());
  EXPECT_EQ(found.SizeColumns(), expected.SizeColumns());
  EXPECT_TRUE(found == expected);
  EXPECT_EQ(found.GetNumMisVal(), expected.GetNumMisVal());
  for (int r = 1; r <= found.SizeRows(); ++r) EXPECT_EQ(found[r].GetNumMisVal(), expected[r].GetNumMisVal());
  for (int c = 1; c <= found.SizeColumns(); ++c) EXPECT_EQ(found.GetColumnMisVal(c), expected.GetColumnMisVal(c));
}

void ExpectTheStepsTakenSingly(const Case& of) {
  const Matrix before = DeepCopyOf(of.X);
  ExpectSame(kalmia::MultiplyByFewRows(of.A, of.X), of.A.MatrixMultiply(of.X, false, false));

  Matrix filtered = of.X;
  for (int a = 1; a <= of.T.SizeRows(); ++a) filtered.AddVprimV(of.T[a], of.W[a], -1.0F);
  ExpectSame(kalmia::Filtered(of.X, of.T, of.W), filtered);
  ExpectSame(kalmia::MultiplyFilteredByFew(of.A, of.X, of.T, of.W), of.A.MatrixMultiply(filtered, false, false));

  Vector t(2), p(2);
  kalmia::CalcFilteredScoresAndLoadings(of.X, of.T, of.W, of.w, &t, &p);
  const Vector scores = filtered.SpecialNipalsRegressRowsFix(of.w, nullptr, 0);
  const Vector loadings = of.X.SpecialNipalsRegressColumnsFix(scores);
  EXPECT_TRUE(t == scores);
  EXPECT_TRUE(p == loadings);
  EXPECT_EQ(t.GetNumMisVal(), scores.GetNumMisVal());
  EXPECT_EQ(p.GetNumMisVal(), loadings.GetNumMisVal());

  if (of.T.SizeRows() > 0) {
    Matrix left = of.X, expected = of.X;
    expected.AddVprimV(of.T[1], of.W[1], -1.0F);
    for (const char* whose : {"shared cells", "its own cells"}) {
      SCOPED_TRACE(whose);
      ExpectSame(kalmia::DeflateAndMultiplyByFewRows(of.A, &left, of.T[1], of.W[1]),
                 of.A.MatrixMultiply(expected, false, false));
      ExpectSame(left, expected);
      expected.AddVprimV(of.T[1], of.W[1], -1.0F);
    }
  }
  ExpectSame(of.X, before);
}

struct Shape {
  int rows, columns;
};

/// Around the steps, grains and chunks of the passes.
const Shape kShapes[] = {{1, 1},    {1, 40},    {7, 3},    {8, 16},    {9, 17},     {33, 100},
                         {50, 511}, {50, 1025}, {16, 513}, {70, 2001}, {3, 23000}, {600, 9}};

TEST(FilteredProducts, GiveTheBitsOfTheStepsTakenSingly) {
  for (const int threads : {1, 2}) {
    const Threads team(threads);
    for (const Shape& shape : kShapes)
      for (const int few : {1, 3}) {
        SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.columns) + ", " + std::to_string(few) +
                     " rows, " + std::to_string(threads) + " threads");
        ExpectTheStepsTakenSingly(Case(shape.rows, shape.columns, few, /*components=*/few));
      }
  }
}

TEST(FilteredProducts, GiveTheBitsOfTheStepsHoweverManyTheFewRowsAre) {
  for (const int factors : {22, 23, 24, 25, 70}) ExpectTheStepsTakenSingly(Case(20, 40, factors, /*components=*/2));
}

TEST(FilteredProducts, GiveTheBitsOfTheStepsTakenSinglyWithTheScalarTwins) {
  kalmia::simd::UseScalarTwins(true);
  ExpectTheStepsTakenSingly(Case(33, 600, 2, 2));
  kalmia::simd::UseScalarTwins(false);
}

TEST(FilteredProducts, GiveTheBitsOfTheStepsWhereSomethingHasHoles) {
  for (const int threads : {1, 2}) {
    const Threads team(threads);
    for (const Shape& shape : {Shape{9, 17}, Shape{70, 601}}) {
      ExpectTheStepsTakenSingly(Case(shape.rows, shape.columns, 2, 2, /*holesInX=*/0.1));
      for (Matrix Case::*const matrix : {&Case::A, &Case::T, &Case::W}) {
        Case of(shape.rows, shape.columns, 2, 2);
        (of.*matrix)(2, 3, kHole<float>);
        (of.*matrix)(1, 2, kHole<float>);
        ExpectTheStepsTakenSingly(of);
      }
      Case of(shape.rows, shape.columns, 2, 2);
      of.w(3, kHole<float>);
      ExpectTheStepsTakenSingly(of);
    }
  }
}

TEST(FilteredProducts, EmptyARowWhoseScoreOrItsOppositeLooksLikeTheMissingValueAsADeflationDoes) {
  for (const float score : {99.0F, -99.0F}) {
    Case of(9, 17, 2, 2);
    of.T(1)(4, score);  // through the row, so that the matrix does not know of it
    Matrix left = of.X;
    left.AddVprimV(of.T[1], of.W[1], -1.0F);
    ASSERT_EQ(left.GetNumMisVal(), 17);
    ExpectTheStepsTakenSingly(of);
  }
}

TEST(FilteredProducts, TakeACellThatNoCountKnowsAsTheStepsDo) {
  Case of(9, 17, 2, 2);
  of.X(4)(4, kHole<float>);  // the row knows of it
  ASSERT_EQ(of.X.GetNumMisVal(), 0);
  ExpectTheStepsTakenSingly(of);
}

TEST(FilteredProducts, GiveWhatTheStepsGiveWhereNoScoreCanBeEstimatedOrNothingIsThere) {
  Case noWeights(9, 17, 2, 1);
  noWeights.w = Vector(17, 0.0F);
  ExpectTheStepsTakenSingly(noWeights);
  ExpectTheStepsTakenSingly(Case(9, 17, 2, /*components=*/0));
  ExpectTheStepsTakenSingly(Case(9, 17, /*factors=*/0, 1));
}

TEST(DeflateAndMultiplyByFewRows, ChangesNothingWhereMemoryLacks) {
  const Case of(9, 17, 2, 1);
  const Matrix before = DeepCopyOf(of.X);
  int failures = 0;
  for (int which = 1; which < 1000; ++which) {
    Matrix left = of.X;
    bool threw = false;
    {
      const FailAllocation fail(which);
      try {
        kalmia::DeflateAndMultiplyByFewRows(of.A, &left, of.T[1], of.W[1]);
      } catch (const std::bad_alloc&) {
        threw = true;
      }
    }
    if (!threw) break;
    ExpectSame(left, before);
    ++failures;
  }
  EXPECT_GT(failures, 9);  // a row each
}

}  // namespace
