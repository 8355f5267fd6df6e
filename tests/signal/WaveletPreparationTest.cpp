#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

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

TEST(WaveletPadding, LeavesAVectorWithoutCellsAlone) {
  NCDataVector<float> none;
  OpenWavelet::PadVector(&none, 4);
  EXPECT_EQ(none.Size(), 0);
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

TEST(WaveletTrend, OfAMeanOrSumOfMinus99StaysInTheTransformAndIsPutBackAllTheSame) {
  const SomeFilters filters;
  const struct {
    const char* what;
    std::vector<float> signal, back;
  } kCases[] = {{"a sum of -99", {-33, -33, -33}, {-132, -132, -132}},
                {"a mean of -99", {-100, -98, -100, -98}, {-199, -197, -199, -197}}};
  for (const auto& trend : kCases) {
    SCOPED_TRACE(trend.what);
    const auto signal = Signal(trend.signal);
    const int n = signal.Size();
    long double mean = 0, slope = 7;
    const OwnedVector forward(
        Wavelet::ForwardTransform(&signal, filters.decomposition, Wavelet::DetrendMean, mean, slope, nullptr, true));
    EXPECT_EQ(CellsOf(*forward), CellsOf(*Transformed(signal, filters.decomposition, true)));
    EXPECT_EQ(mean, -99);
    EXPECT_EQ(slope, 7);
    const OwnedVector back(Wavelet::BackwardTransform(forward.get(), filters.reconstruction, Wavelet::DetrendMean, n,
                                                      static_cast<double>(mean), 0, nullptr));
    EXPECT_LT(LargestGap(*back, Signal(trend.back)), kRoundings * Norm(*back));
  }
}

TEST(WaveletTrend, OfMinus99IsAHoleOfTheMeansOfATable) {
  const SomeFilters filters;
  NCDataMatrix<float> table(2, 4, 1.0F);
  table.SetRow(2, Signal({-100, -98, -100, -98}));
  NCDataVector<float>*means = nullptr, *slopes = nullptr;
  const OwnedMatrix result(Wavelet::ForwardTransformObswise(&table, filters.decomposition, Wavelet::DetrendMean, means,
                                                            slopes, nullptr, true));
  const OwnedVector owned(means);
  EXPECT_THAT(CellsOf(*means), ElementsAre(1, -99));
  EXPECT_EQ(means->GetNumMisVal(), 1);
}

TEST(WaveletTrend, OfALineLeavesTheTransformOfTheResiduals) {
  const Filters haar(Wavelet::FunctionBiorthogonal1, 1);
  // By least squares 1 + 0.75 i, with the residuals -0.75, 1.5, -1.25, 4, -3.75, -2.5, 2.75: all of them exact.
  const auto signal = Signal({1, 4, 2, 8, 1, 3, 9});
  long double mean = 0, slope = 0;
  const OwnedVector found(Wavelet::ForwardTransform(&signal, haar.decomposition, Wavelet::DetrendLinear, mean, slope,
                                                    nullptr, /*pad=*/false));
  EXPECT_EQ(mean, 1);
  EXPECT_EQ(slope, 0.75L);
  // Of the pairs: the second level from the first two sums, the sum that is set aside, the differences; the last cell.
  const double r = std::sqrt(0.5);
  const double expected[] = {1.75, -1, -6.25 * r, -2.25 * r, -5.25 * r, -1.25 * r, 2.75};
  for (int i = 1; i <= 7; ++i) EXPECT_NEAR((*found)[i], expected[i - 1], kRoundings * 10) << i;
  const OwnedVector back(Wavelet::BackwardTransform(found.get(), haar.reconstruction, Wavelet::DetrendLinear, 7, 1,
                                                    0.75, nullptr));
  for (int i = 1; i <= 7; ++i) EXPECT_NEAR((*back)[i], signal[i] - 0.75F, kRoundings * 10) << i;
}

}  // namespace
