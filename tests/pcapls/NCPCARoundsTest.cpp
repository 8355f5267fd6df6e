// How many rounds a component takes.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "PCAValidationCase.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/NCError.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"

namespace {

using ::testing::Each;
using ::testing::ElementsAre;


int RoundsOf(const NCDataMatrix<float>& X, int maxIterations, const NCDataVector<float>* start = nullptr) {
  NCPCA model(&X, maxIterations);
  model.NextComponent(nullptr, nullptr, 0, start);
  return model.GetIterations();
}

/// The range of the bar, which is that of a first round's -m to 0.
std::string RangeOf(const NCDataMatrix<float>& X, const NCDataVector<float>& start) {
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  NCPCA model(&X, 1);
  model.NextComponent(bar.get(), nullptr, 0, &start);
  return log.calls[0];
}

/// Scores whose relative squared change to (2^50, 0, 0, 0) is d to the last bit: the squares of the three small cells
/// add up to d 2^100, each cell being the root of what the ones before leave of it, cut to float.
NCDataVector<float> StartAtAChangeOf(double d) {
  NCDataVector<float> start(4, 0x1p50F);
  double left = d * 0x1p100;
  for (int i = 2; i <= 4; ++i) {
    float cell = static_cast<float>(std::sqrt(left));
    while (static_cast<double>(cell) * cell > left) cell = std::nextafter(cell, 0.0F);
    start(i, cell);
    left -= static_cast<double>(cell) * cell;
  }
  return start;
}

TEST(NCPCARounds, StopAtTheLimitWhichIsNoFailureAndIsAtLeastOne) {
  const NCDataMatrix<float> X = RandomMatrix<float>(12, 6, 0.0, 1);
  const int enough = RoundsOf(X, 10000);
  ASSERT_GT(enough, 10);
  EXPECT_LT(enough, 10000);
  for (const int limit : {1, 2, 7, enough}) EXPECT_EQ(RoundsOf(X, limit), limit);
  EXPECT_EQ(RoundsOf(X, enough + 1), enough);
  EXPECT_EQ(RoundsOf(X, 0), 1);
  EXPECT_EQ(RoundsOf(X, -5), 1);
}

TEST(NCPCARounds, OfOneRowAreOneWhateverTheLimitAndAllArgumentsAreIgnored) {
  const NCDataMatrix<float> X = MatrixOf<float>({{3, kMissing, -4}});
  const NCIntegralVector<int, -99> groups(3, 1);
  const NCDataVector<float> start = VectorOf<float>({kMissing});
  ProgressLog log;
  log.stopAt = 1;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  for (const int limit : {0, 1, 50}) {
    NCPCA model(&X, limit);
    EXPECT_TRUE(model.NextComponent(bar.get(), &groups, 1, &start));
    EXPECT_THAT(CellsOf((*model.GetPprim())[1]), ElementsAre(0.6F, kMissing, -0.8F));
    EXPECT_THAT(CellsOf((*model.GetTprim())[1]), ElementsAre(5.0F));
    EXPECT_EQ(model.GetIterations(), 1);
    model.CalculateResiduals();
    // 5 times 0.6F, which is 0.6 but for 2^-26.
    for (const int k : {1, 3}) EXPECT_NEAR((*model.GetResiduals())[1][k], 0.0F, 5 * 0x1p-25);
    EXPECT_EQ((*model.GetResiduals())[1][2], kMissing);
  }
  EXPECT_TRUE(log.calls.empty());
}

TEST(NCPCARounds, EndWhenTheRelativeSquaredChangeIsOneInTenThousandMillionsAndNotBefore) {
  // With one column t is the column itself from the first round on: the change is that from the start.
  const NCDataMatrix<float> tenThousandth = MatrixOf<float>({{100000}, {0}});
  const NCDataVector<float> start = VectorOf<float>({100001, 0});
  ASSERT_EQ(static_cast<double>(tenThousandth.GetColumn(1).Difference(start)), 1e-10);
  EXPECT_EQ(RoundsOf(tenThousandth, 50, &start), 1);
  EXPECT_EQ(RangeOf(tenThousandth, start), "SetRange -0 0");

  const NCDataMatrix<float> more = MatrixOf<float>({{99999}, {0}});
  const NCDataVector<float> next = VectorOf<float>({100000, 0});
  ASSERT_GT(static_cast<double>(more.GetColumn(1).Difference(next)), 1e-10);
  EXPECT_EQ(RoundsOf(more, 50, &next), 2) << "the second changes nothing";
}

TEST(NCPCARounds, MeasureAChangeOfAtMostOneInTenToTheThirtyAsNoneAtAll) {
  const NCDataMatrix<float> X = MatrixOf<float>({{0x1p50F}, {0}, {0}, {0}});
  const NCDataVector<float> exactly = StartAtAChangeOf(1e-30);
  ASSERT_EQ(static_cast<double>(X.GetColumn(1).Difference(exactly)), 1e-30);
  EXPECT_EQ(RangeOf(X, exactly), "SetRange 1 0");
  EXPECT_EQ(RangeOf(X, VectorOf<float>({0x1p50F, 1, 0, 0})), "SetRange 1 0");  // 2^-100 is less
  EXPECT_EQ(RangeOf(X, VectorOf<float>({0x1p50F, 0, 0, 0})), "SetRange 1 0");  // none at all

  // The next number above has a logarithm again: 200 = -(-30 + 10) * 10.
  const NCDataVector<float> justMore = StartAtAChangeOf(std::nextafter(1e-30, 1.0));
  ASSERT_EQ(static_cast<double>(X.GetColumn(1).Difference(justMore)), std::nextafter(1e-30, 1.0));
  EXPECT_EQ(RangeOf(X, justMore), "SetRange 200 0");
}

TEST(NCPCARounds, OfAScoreThatVanishesDoNotFailInItsOwnRound) {
  // t = 1e-18 has a sum of squares below 1e-30, from which every change counts as large: m = (30 + 10) * 10.
  const NCDataMatrix<float> X = MatrixOf<float>({{1e-18F, 0}, {0, 0}});
  const NCDataVector<float> start = VectorOf<float>({1, 1});
  EXPECT_EQ(RoundsOf(X, 1, &start), 1);
  EXPECT_EQ(RangeOf(X, start), "SetRange -400 0");
  // The next round has nothing to regress on.
  EXPECT_THROW(RoundsOf(X, 2, &start), NCError);
}

TEST(NCPCARounds, WithoutRowsGoOnToTheLimit) {
  NCDataMatrix<float> X;
  X.SetSize(0, 3);
  NCPCA model(&X, 7);
  EXPECT_TRUE(model.NextComponent(nullptr, nullptr, 0, nullptr));
  EXPECT_EQ(model.GetIterations(), 7);
  EXPECT_THAT(CellsOf((*model.GetPprim())[1]), Each(kMissing));
  EXPECT_EQ(model.GetTprim()->SizeRows(), 1);
  EXPECT_EQ(model.GetTprim()->SizeColumns(), 0);
  model.CalculateResiduals();
  EXPECT_EQ(model.GetResiduals()->SizeRows(), 0);
}

TEST(NCPCARounds, WithAGoodStartAreFewerThanWithout) {
  const NCDataMatrix<float> X = TableOfThreeDirections(20, 8, 0.1);
  NCPCA model(&X, 200);
  model.NextComponent(nullptr, nullptr, 0, nullptr);
  const NCDataVector<float> scores = (*model.GetTprim())[1];
  EXPECT_LT(RoundsOf(X, 200, &scores), model.GetIterations());
}

}  // namespace
