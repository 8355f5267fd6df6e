#include "kalmia/kernels/ComponentPasses.h"

#include <gtest/gtest.h>
#include <omp.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "testing/RandomTables.h"
#include "testing/Threads.h"

namespace {

struct Shape {
  int rows, columns;
};

/// Around the steps and grains of the passes, and so wide or long that a pass has several blocks.
const Shape kShapes[] = {{1, 1},   {1, 40},   {7, 3},     {16, 16},    {17, 15},    {33, 100},
                         {50, 401}, {300, 2000}, {40, 17000}, {5000, 9}};

TEST(CalcScoresAndLoadings, GivesTheBitsOfBothStepsTakenSingly) {
  for (const int threads : {1, 2, 3}) {
    const Threads team(threads);
    for (const Shape& shape : kShapes) {
      SCOPED_TRACE(std::to_string(shape.rows) + " x " + std::to_string(shape.columns) + ", " +
                   std::to_string(threads) + " threads");
      const auto X = RandomMatrix<float>(shape.rows, shape.columns, 0.0, 1);
      const auto w = RandomVector<float>(shape.columns, 0.0, 2);
      NCDataVector<float> t(3);
      NCDataVector<float> p(3);
      ASSERT_TRUE(kalmia::CalcScoresAndLoadings(X, w, &t, &p));
      const NCDataVector<float> scores = X.SpecialNipalsRegressRowsFix(w, nullptr, 0);
      EXPECT_TRUE(t == scores);
      EXPECT_TRUE(p == X.SpecialNipalsRegressColumnsFix(scores));
      EXPECT_TRUE(HasExactCounts(t));
      EXPECT_TRUE(HasExactCounts(p));
    }
  }
}

/// Whether the pass declines, and leaves both vectors as they are.
bool IsDeclined(const NCDataMatrix<float>& X, const NCDataVector<float>& w) {
  const auto before = RandomVector<float>(4, 0.3, 9);
  NCDataVector<float> t = before;
  NCDataVector<float> p = before;
  if (kalmia::CalcScoresAndLoadings(X, w, &t, &p)) return false;
  EXPECT_TRUE(t == before);
  EXPECT_TRUE(p == before);
  return true;
}

TEST(CalcScoresAndLoadings, LeavesHolesAndWhatCannotBeEstimatedToTheSingleSteps) {
  const auto X = RandomMatrix<float>(4, 3, 0.0, 1);
  const auto w = RandomVector<float>(3, 0.0, 2);
  EXPECT_FALSE(IsDeclined(X, w));
  EXPECT_TRUE(IsDeclined(RandomMatrix<float>(4, 3, 0.5, 1), w)) << "holes in the table";
  EXPECT_TRUE(IsDeclined(X, RandomVector<float>(3, 0.5, 7))) << "holes in the weights";
  EXPECT_TRUE(IsDeclined(X, NCDataVector<float>(3, 0.0F))) << "no score";
  EXPECT_TRUE(IsDeclined(NCDataMatrix<float>(4, 3, 0.0F), w)) << "no loading";
  EXPECT_TRUE(IsDeclined(NCDataMatrix<float>(), NCDataVector<float>()));
  NCDataMatrix<float> none;
  none.SetSize(0, 3);
  EXPECT_TRUE(IsDeclined(none, w)) << "no rows";
}

TEST(CalcScoresAndLoadings, LeavesALoadingThatHappensToBeTheMissingValueToTheSingleSteps) {
  // t = x1 w = 1, and the loading of the second column is -99 itself: present by the count of a single step.
  const auto X = MatrixOf<float>({{1.0F, -98.0F}, {0.0F, -1.0F}});
  const auto w = VectorOf<float>({1.0F, 0.0F});
  EXPECT_FALSE(IsDeclined(X, w));
  NCDataMatrix<float> unlucky = X;
  unlucky(1)(2, kHole<float>);  // through the row, so that the table does not know of it
  ASSERT_EQ(unlucky.GetNumMisVal(), 0);
  EXPECT_TRUE(IsDeclined(unlucky, w));
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
