#include "kalmia/kernels/passes/ComponentPasses.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "kalmia/kernels/simd/Lanes.h"
#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

struct Shape {
  int rows, columns;
};

/// Around the steps and grains of the passes, and so wide or long that a pass has several blocks.
const Shape kShapes[] = {{1, 1},   {1, 40},   {7, 3},     {16, 16},    {17, 15},    {33, 100},
                         {50, 401}, {300, 2000}, {40, 17000}, {5000, 9}};

/// Both forms against the steps taken singly: bits and counts.
void ExpectTheStepsTakenSingly(const NCDataMatrix<float>& X, const NCDataVector<float>& w,
                               const NCIntegralVector<int, -99>& groups) {
  NCDataVector<float> t(3);
  NCDataVector<float> p(3);
  const auto expect = [&](const NCDataVector<float>& scores, const NCDataVector<float>& loadings) {
    EXPECT_TRUE(t == scores);
    EXPECT_TRUE(p == loadings);
    EXPECT_EQ(t.GetNumMisVal(), scores.GetNumMisVal());
    EXPECT_EQ(p.GetNumMisVal(), loadings.GetNumMisVal());
  };
  kalmia::CalcScoresAndLoadings(X, w, &t, &p);
  const NCDataVector<float> scores = X.SpecialNipalsRegressRowsFix(w, nullptr, 0);
  expect(scores, X.SpecialNipalsRegressColumnsFix(scores));
  kalmia::CalcScoresAndLoadings(X, w, nullptr, 0, &t, &p);
  expect(scores, X.SpecialNipalsRegressColumnsFix(scores, nullptr, 0));
  for (const int group : {2, 7}) {  // some of the variables, none
    kalmia::CalcScoresAndLoadings(X, w, &groups, group, &t, &p);
    const NCDataVector<float> some = X.SpecialNipalsRegressRowsFix(w, &groups, group);
    expect(some, X.SpecialNipalsRegressColumnsFix(some, &groups, group));
  }
}

NCIntegralVector<int, -99> GroupsOf(int columns) {
  NCIntegralVector<int, -99> groups(columns);
  for (int c = 1; c <= columns; ++c) groups(c) = c % 3;
  return groups;
}

TEST(CalcScoresAndLoadings, GivesTheBitsOfBothStepsTakenSingly) {
  for (const int threads : {1, 2, 3}) {
    const Threads team(threads);
    for (const Shape& shape : kShapes)
      for (const double holes : {0.0, 0.001, 0.3}) {
        SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.columns) + ", holes " +
                     std::to_string(holes) + ", " + std::to_string(threads) + " threads");
        const auto X = RandomMatrix<float>(shape.rows, shape.columns, holes, 1);
        for (const double holesInW : {0.0, 0.3})
          ExpectTheStepsTakenSingly(X, RandomVector<float>(shape.columns, holesInW, 2), GroupsOf(shape.columns));
      }
  }
}

TEST(CalcScoresAndLoadings, GivesTheBitsOfBothStepsWithTheScalarTwins) {
  kalmia::simd::UseScalarTwins(true);
  for (const double holes : {0.0, 0.2})
    ExpectTheStepsTakenSingly(RandomMatrix<float>(33, 100, holes, 1), RandomVector<float>(100, 0.0, 2), GroupsOf(100));
  kalmia::simd::UseScalarTwins(false);
}

TEST(CalcScoresAndLoadings, TakesTheStepsSinglyWhereAScoreCannotBeEstimated) {
  const auto w = RandomVector<float>(3, 0.0, 2);
  auto emptyRow = RandomMatrix<float>(4, 3, 0.1, 1);
  emptyRow.SetRow(2, kHole<float>);
  ExpectTheStepsTakenSingly(emptyRow, w, GroupsOf(3));
  auto emptyColumn = RandomMatrix<float>(4, 3, 0.1, 1);
  emptyColumn.SetColumn(2, kHole<float>);
  ExpectTheStepsTakenSingly(emptyColumn, w, GroupsOf(3));
  ExpectTheStepsTakenSingly(RandomMatrix<float>(4, 3, 0.0, 1), NCDataVector<float>(3, 0.0F), GroupsOf(3));
  ExpectTheStepsTakenSingly(RandomMatrix<float>(4, 3, 0.0, 1), NCDataVector<float>(3), GroupsOf(3));
  ExpectTheStepsTakenSingly(NCDataMatrix<float>(4, 3, 0.0F), w, GroupsOf(3));
  ExpectTheStepsTakenSingly(NCDataMatrix<float>(4, 3), w, GroupsOf(3));
  ExpectTheStepsTakenSingly(NCDataMatrix<float>(), NCDataVector<float>(), GroupsOf(0));
  NCDataMatrix<float> none;
  none.SetSize(0, 3);
  ExpectTheStepsTakenSingly(none, w, GroupsOf(3));
}

TEST(CalcScoresAndLoadings, CountsALoadingThatHappensToBeTheMissingValueAsTheSingleStepDoes) {
  // t = x1 w = 1, and the loading of the second column is -99 itself: present by the count of a single step.
  auto X = MatrixOf<float>({{1.0F, -98.0F}, {0.0F, -1.0F}});
  const auto w = VectorOf<float>({1.0F, 0.0F});
  ExpectTheStepsTakenSingly(X, w, GroupsOf(2));
  X(1)(2, kHole<float>);  // through the row, so that the table does not know of it
  ASSERT_EQ(X.GetNumMisVal(), 0);
  ExpectTheStepsTakenSingly(X, w, GroupsOf(2));
}

TEST(CalcScoresAndLoadings, WaitsForNobodyWhereOneThreadOfTheCallersRegionTakesAComponent) {
  const Threads two(2);
  const auto X = RandomMatrix<float>(20, 10, 0.0, 1);
  const auto w = RandomVector<float>(10, 0.0, 2);
  std::atomic<bool> done{false};
  bool seen = false;
#pragma omp parallel num_threads(2)
  if (omp_get_thread_num() == 0) {
    NCDataVector<float> t, p;
    kalmia::CalcScoresAndLoadings(X, w, &t, &p);
    done = true;
  } else {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!done && std::chrono::steady_clock::now() < end) std::this_thread::yield();
    seen = done;
    if (!seen) {  // let it go, so that the test ends
#pragma omp barrier
    }
  }
  EXPECT_TRUE(seen);
}

TEST(SumSquaresWithout, GivesTheBitsOfADeflationAndOfTheSumOfSquares) {
  for (const Shape& shape : kShapes)
    for (const double holes : {0.0, 0.2, 1.0}) {
      SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.columns) + ", holes " +
                   std::to_string(holes));
      const auto Y = RandomMatrix<float>(shape.rows, shape.columns, holes, 1);
      for (const double holesInVectors : {0.0, 0.2}) {
        const auto t = RandomVector<float>(shape.rows, holesInVectors, 2);
        const auto c = RandomVector<float>(shape.columns, holesInVectors, 3);
        NCDataMatrix<float> rest = Y;
        rest.AddVprimV(t, c, -1.0F);
        EXPECT_EQ(kalmia::SumSquaresWithout(Y, t, c), rest.GetSS());
      }
    }
}

TEST(SumSquaresWithout, LeavesOutARowWhoseFactorIsTheMissingValueAsADeflationDoes) {
  const auto Y = RandomMatrix<float>(3, 4, 0.0, 1);
  const auto t = VectorOf<float>({1.0F, 99.0F, 2.0F});  // times -1
  const auto c = RandomVector<float>(4, 0.0, 2);
  NCDataMatrix<float> rest = Y;
  rest.AddVprimV(t, c, -1.0F);
  ASSERT_EQ(rest.GetNumMisVal(), 4);
  EXPECT_EQ(kalmia::SumSquaresWithout(Y, t, c), rest.GetSS());
}

}  // namespace
