// Numbers of groups, and group numbers, by which nothing can be cross-validated.
#include <gtest/gtest.h>

#include <limits>

#include "O2PLSCase.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "kalmia/o2pls/O2PLSPredictiveComponentEstimator.h"
#include "testing/AllocationMeter.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

constexpr const char* kBadGroups = "Internal error in O2PLSCrossValidation::O2PLSCrossValidation";
constexpr int kRows = 12;

/// So many rounds may hold nobody out.
constexpr int kMostEmptyRounds = 10000;

FloatBlocks SmallBlocks() { return MakeFloatBlocks({kRows, 2, 2, 1, 0, 0}, 0.1, 3); }

O2PLSCVResults Validate(const FloatBlocks& blocks, int cvGroups, Groups* groups, int numbers) {
  return O2PLSCrossValidation(&blocks.X, &blocks.Y, cvGroups, nullptr, groups, 100, numbers, numbers, numbers)
      .GetResults();
}

void ExpectNothing(const O2PLSPredictiveComponentEstimator& estimator) {
  EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 0);
  for (const auto& series : {estimator.GetQ2(), estimator.GetQ2X(), estimator.GetQ2Y(), estimator.GetR2(),
                             estimator.GetR2X(), estimator.GetR2Y()})
    EXPECT_EQ(series.Size(), 0);
  EXPECT_EQ(estimator.GetSignificance().Size(), 0);
}

TEST(O2PLSGroups, AreRefusedWhereNoneAreGivenAndNoneCanBeMade) {
  const FloatBlocks blocks = SmallBlocks();
  for (const int cvGroups : {0, -3, std::numeric_limits<int>::min()})
    for (const int numbers : {-1, 0, 1}) {
      SCOPED_TRACE(cvGroups);
      EXPECT_EQ(TextOf([&] { Validate(blocks, cvGroups, nullptr, numbers); }), kBadGroups);
      ExpectNothing(O2PLSPredictiveComponentEstimator(&blocks.X, &blocks.Y, cvGroups, nullptr, numbers));
    }
}

TEST(O2PLSGroups, OneAndMoreThanThereAreRowsCanBeMade) {
  const FloatBlocks blocks = SmallBlocks();
  EXPECT_EQ(Validate(blocks, 1, nullptr, -1).PredictiveComponents, 0) << "there is nothing to train with";
  EXPECT_EQ(Validate(blocks, std::numeric_limits<int>::max(), nullptr, 1).SSTable.SizeColumns(), kRows + 1)
      << "each row its own group, and nobody in group 0";
}

TEST(O2PLSGroups, TheirNumberIsNotReadWhereTheyAreGiven) {
  const FloatBlocks blocks = SmallBlocks();
  Groups groups(kRows, 0);
  for (int i = 1; i <= kRows; ++i) groups(i) = i % 3;
  for (const int cvGroups : {0, -3}) {
    EXPECT_EQ(Validate(blocks, cvGroups, &groups, 1).SSTable.SizeColumns(), 3);
    const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, cvGroups, &groups, 1);
    EXPECT_EQ(estimator.GetNumberOfPredictiveComponents(), 1);
  }
}

TEST(O2PLSGroups, OfAnEnormousNumberAreRefusedBeforeMemoryIsTakenForThem) {
  const FloatBlocks blocks = SmallBlocks();
  for (const int number : {kRows + kMostEmptyRounds, 1000000000, std::numeric_limits<int>::max()})
    for (const int numbers : {-1, 1}) {
      SCOPED_TRACE(number);
      Groups groups(kRows, 0);
      groups(5) = number;
      const PeakBytesDuring meter;
      EXPECT_EQ(TextOf([&] { Validate(blocks, -1, &groups, numbers); }), kBadGroups);
      ExpectNothing(O2PLSPredictiveComponentEstimator(&blocks.X, &blocks.Y, -1, &groups, numbers));
      EXPECT_LT(meter.GetBytes(), 1 << 14) << "copies of small tables, a text: less than two bytes a round";
    }
}

TEST(O2PLSGroups, MayLeaveTenThousandNumbersOut) {
  const FloatBlocks blocks = SmallBlocks();
  Groups groups(kRows, 0);
  for (int i = 1; i <= kRows; ++i) groups(i) = i % 3;
  const O2PLSPredictiveComponentEstimator without(&blocks.X, &blocks.Y, -1, &groups, 1);
  for (int i = 3; i <= kRows; i += 3) groups(i) = kRows + kMostEmptyRounds - 1;  // in place of group 0
  const O2PLSPredictiveComponentEstimator estimator(&blocks.X, &blocks.Y, -1, &groups, 1);
  ASSERT_EQ(estimator.GetNumberOfPredictiveComponents(), 1);
  // Empty rounds add nothing, and three others are added up from another one on: some roundings to float.
  EXPECT_NEAR(estimator.GetQ2()[1], without.GetQ2()[1], 1e-6F);
}

}  // namespace
