#include "kalmia/kernels/passes/SequentialScores.h"

#include <gtest/gtest.h>

#include <string>

#include "kalmia/kernels/simd/Lanes.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

using Matrix = NCDataMatrix<float>;

/// Against the steps taken singly: bits and counts.
void ExpectTheStepsTakenSingly(const Matrix& X, const Matrix& along, const Matrix& away) {
  const auto before = CellsOf(X);
  const Matrix found = kalmia::SequentialScores(X, along, away);
  ASSERT_EQ(found.SizeRows(), along.SizeRows());
  Matrix left = X;
  int missing = 0;
  for (int a = 1; a <= along.SizeRows(); ++a) {
    const NCDataVector<float> t = left.SpecialNipalsRegressRowsFix(along[a], nullptr, 0);
    EXPECT_TRUE(found[a] == t) << a;
    EXPECT_EQ(found[a].GetNumMisVal(), t.GetNumMisVal()) << a;
    missing += t.GetNumMisVal();
    if (a < along.SizeRows()) left.AddVprimV(t, away[a], -1.0F);
  }
  EXPECT_EQ(found.GetNumMisVal(), missing);
  EXPECT_EQ(CellsOf(X), before);
}

struct Shape {
  int rows, columns;
};

const Shape kShapes[] = {{1, 1}, {1, 40}, {7, 3}, {8, 16}, {9, 17}, {33, 100}, {50, 1025}, {70, 601}, {3700, 9}};

TEST(SequentialScores, HaveTheBitsOfTheStepsTakenSingly) {
  for (const int threads : {1, 2}) {
    const Threads team(threads);
    for (const Shape& shape : kShapes)
      for (const int components : {1, 2, 4})
        for (const double holes : {0.0, 0.1}) {
          SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.columns) + ", " +
                       std::to_string(components) + " components, holes " + std::to_string(holes) + ", " +
                       std::to_string(threads) + " threads");
          const auto along = RandomMatrix<float>(components, shape.columns, 0.0, 2);
          ExpectTheStepsTakenSingly(RandomMatrix<float>(shape.rows, shape.columns, holes, 1), along,
                                    RandomMatrix<float>(components - 1, shape.columns, 0.0, 3));
        }
  }
}

TEST(SequentialScores, HaveTheBitsOfTheStepsWithTheScalarTwins) {
  kalmia::simd::UseScalarTwins(true);
  ExpectTheStepsTakenSingly(RandomMatrix<float>(33, 100, 0.0, 1), RandomMatrix<float>(3, 100, 0.0, 2),
                            RandomMatrix<float>(3, 100, 0.0, 3));
  kalmia::simd::UseScalarTwins(false);
}

TEST(SequentialScores, HaveTheBitsOfTheStepsWhereWhatTheyRunAlongOrTakeOutHasHoles) {
  const auto X = RandomMatrix<float>(33, 100, 0.0, 1), complete = RandomMatrix<float>(3, 100, 0.0, 2);
  const auto holes = RandomMatrix<float>(3, 100, 0.2, 3);
  ExpectTheStepsTakenSingly(X, holes, complete);
  ExpectTheStepsTakenSingly(X, complete, holes);
}

TEST(SequentialScores, EmptyARowWhoseScoreOrItsOppositeLooksLikeTheMissingValueAsADeflationDoes) {
  Matrix X = RandomMatrix<float>(9, 3, 0.0, 1);
  X(4, 1, 99.0F);  // the score along the first variable, or minus the score along its opposite
  for (const float sign : {1.0F, -1.0F})
    ExpectTheStepsTakenSingly(X, MatrixOf<float>({{sign, 0, 0}, {1, 2, 3}}), MatrixOf<float>({{1, 1, 0}, {0, 1, 1}}));
}

TEST(SequentialScores, AreMissingWhereNothingCanBeEstimated) {
  const auto X = RandomMatrix<float>(9, 3, 0.0, 1);
  ExpectTheStepsTakenSingly(X, MatrixOf<float>({{0, 0, 0}, {1, 2, 3}}), MatrixOf<float>({{1, 1, 0}, {0, 1, 1}}));
  ExpectTheStepsTakenSingly(Matrix(9, 3), MatrixOf<float>({{1, 2, 3}}), Matrix());
}

TEST(SequentialScores, OfNothingOrAlongNothingAreNone) {
  EXPECT_EQ(kalmia::SequentialScores(RandomMatrix<float>(9, 3, 0.0, 1), Matrix(), Matrix()).SizeRows(), 0);
  Matrix none;
  none.SetSize(0, 3);
  ExpectTheStepsTakenSingly(none, MatrixOf<float>({{1, 2, 3}, {3, 2, 1}}), MatrixOf<float>({{1, 1, 0}}));
}

}  // namespace
