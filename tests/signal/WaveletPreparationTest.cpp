#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "signal/WaveletCase.h"

using ::testing::ElementsAre;

// What becomes of a signal before its transform, and after the way back.

namespace {

struct OpenWavelet : Wavelet {
  using Wavelet::DetrendVector;
  using Wavelet::PadVector;
  using Wavelet::RetrendVector;
};

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

TEST(WaveletPadding, OfSeveralCellsIsARampFromTheEndToTheStart) {
  auto v = Signal({1, 5, 5, 5, 4});
  OpenWavelet::PadVector(&v, 8);
  EXPECT_THAT(CellsOf(v), ElementsAre(1, 5, 5, 5, 4, 4, 2.5F, 1));
  v = Signal({1, 5, 2});
  OpenWavelet::PadVector(&v, 5);
  EXPECT_THAT(CellsOf(v), ElementsAre(1, 5, 2, 2, 1));
}

TEST(WaveletPadding, OfOneCellIsHalfTheDifferenceOfEndAndStart) {
  auto v = Signal({1, 2, 3, 4, 5, 6, 8});
  OpenWavelet::PadVector(&v, 8);
  EXPECT_EQ(v[8], 3.5F);  // (8 - 1) / 2, where the mean would be 4.5
}

TEST(WaveletPadding, LeavesAVectorOfTheLengthAlone) {
  auto v = Signal({1, 2});
  OpenWavelet::PadVector(&v, 2);
  EXPECT_THAT(CellsOf(v), ElementsAre(1, 2));
}

TEST(WaveletPadding, EndsAtTheVeryStartWhateverTheStep) {
  for (int n = 5; n <= 60; ++n) {
    auto v = RandomSignal(n, n);
    OpenWavelet::PadVector(&v, 64);
    EXPECT_EQ(v[n + 1], v[n]);
    EXPECT_FLOAT_EQ(v[64], v[1]);
  }
}

TEST(WaveletTrend, IsTakenOffByItsMode) {
  const auto signal = Signal({1, 2, 4});
  for (const auto mode : kModes) {
    NCDataVector<float> found, expected;
    found.CopyContent(signal);
    expected.CopyContent(signal);
    long double mean = 7, slope = 7, expectedMean = 7, expectedSlope = 7;
    OpenWavelet::DetrendVector(&found, mode, mean, slope);
    if (mode == Wavelet::DetrendMean) expected.DetrendMean(expectedMean);
    if (mode == Wavelet::DetrendLinear) expected.DetrendLinear(expectedMean, expectedSlope);
    EXPECT_EQ(found, expected) << mode;
    EXPECT_EQ(mean, expectedMean) << mode;
    EXPECT_EQ(slope, expectedSlope) << mode;
  }
}

TEST(WaveletTrend, IsPutBackFromTheFirstCellOn) {
  const std::vector<float> expected[] = {{1, 1, 1}, {3, 3, 3}, {3, 3.5F, 4}};
  for (const auto mode : kModes) {
    NCDataVector<float> v(3, 1.0F);
    OpenWavelet::RetrendVector(&v, mode, 2, 0.5);
    EXPECT_EQ(CellsOf(v), expected[mode]) << mode;
  }
}

TEST(WaveletTrend, IsPutBackToEveryCellAlsoToOneThatLooksLikeAHole) {
  auto v = Signal({-99, 1});
  OpenWavelet::RetrendVector(&v, Wavelet::DetrendMean, 99, 0);  // operator+= would empty v
  EXPECT_THAT(CellsOf(v), ElementsAre(0, 100));
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TEST(WaveletPadding, LeavesAVectorWithoutCellsAlone) {
  NCDataVector<float> none;
  OpenWavelet::PadVector(&none, 4);
  EXPECT_EQ(none.Size(), 0);
}

}  // namespace
