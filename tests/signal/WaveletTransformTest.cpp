#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "signal/PlainWavelet.h"
#include "signal/WaveletCase.h"

using ::testing::ElementsAre;
using ::testing::Each;

namespace {

struct OpenWavelet : Wavelet {
  using Wavelet::PadVector;
  using Wavelet::SubBackwardTransform;
  using Wavelet::SubForwardTransform;
};

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

OwnedVector Back(const NCDataVector<float>& coefficients, const Wavelet::WaveletFilters& filters, int length) {
  return OwnedVector(
      Wavelet::BackwardTransform(&coefficients, filters, Wavelet::DetrendNone, length, 0, 0, nullptr));
}

class WaveletTransform : public ::testing::TestWithParam<FamilyAndOrder> {
 protected:
  WaveletTransform() : filters_(GetParam().type, GetParam().order) {}

  const Filters filters_;
};

TEST_P(WaveletTransform, GivesTheSignalBackForEveryLengthWithAndWithoutPaddingInModes0And1) {
  std::vector<int> lengths = {255, 256, 257, 511, 1000, 1023, 1025, 2048};
  for (int n = 1; n <= 140; ++n) lengths.push_back(n);
  for (const int n : lengths)
    for (bool pad : {false, true})
      for (const auto mode : {Wavelet::DetrendNone, Wavelet::DetrendMean}) {
        const auto signal = RandomSignal(n, n, 3);
        long double mean = 0, slope = 0;
        const OwnedVector forward(
            Wavelet::ForwardTransform(&signal, filters_.decomposition, mode, mean, slope, nullptr, pad));
        ASSERT_TRUE(forward);
        const OwnedVector back(Wavelet::BackwardTransform(forward.get(), filters_.reconstruction, mode, n,
                                                          static_cast<double>(mean), static_cast<double>(slope),
                                                          nullptr));
        ASSERT_TRUE(back);
        EXPECT_LT(LargestGap(*back, signal), kRoundings * Norm(signal)) << n << " cells, pad " << pad;
      }
}

TEST_P(WaveletTransform, HasTheBitsOfThePlainOneForEveryLength) {
  for (int n = 1; n <= 140; ++n) {
    const auto signal = RandomSignal(n, 100 + n);
    const OwnedVector forward = Transformed(signal, filters_.decomposition, /*pad=*/false);
    const PlainCells expected = PlainForward(PlainCellsOf(signal), filters_.decomposition);
    ASSERT_EQ(PlainCellsOf(*forward), expected) << n;
    const OwnedVector back = Back(signal, filters_.reconstruction, n);
    ASSERT_EQ(PlainCellsOf(*back), PlainBackward(PlainCellsOf(signal), filters_.reconstruction)) << n;
  }
}

TEST_P(WaveletTransform, OneLevelHasTheBitsOfThePlainOneWhereverItsHalvesLie) {
  for (int n = 2; n <= 70; n += 2)
    for (bool lowFirst : {true, false}) {
      const int start = 3, low = lowFirst ? start : start + n / 2, high = lowFirst ? start + n / 2 : start;
      const auto signal = RandomSignal(n + 5, n);
      auto forward = RandomSignal(n + 5, n + 1), back = forward;
      PlainCells plainForward = PlainCellsOf(forward), plainBack = plainForward;
      OpenWavelet::SubForwardTransform(&signal, &forward, n, low, high, filters_.decomposition);
      PlainForwardStep(PlainCellsOf(signal), plainForward, n, low, high, filters_.decomposition);
      EXPECT_EQ(PlainCellsOf(forward), plainForward) << n;
      OpenWavelet::SubBackwardTransform(&signal, &back, n, low, high, filters_.reconstruction);
      PlainBackwardStep(PlainCellsOf(signal), plainBack, n, low, high, filters_.reconstruction);
      EXPECT_EQ(PlainCellsOf(back), plainBack) << n;
    }
}

TEST_P(WaveletTransform, OfAConstantIsAScaledConstantWithoutDetails) {
  const NCDataVector<float> signal(64, 1.0F);
  const OwnedVector coefficients = Transformed(signal, filters_.decomposition, false);
  EXPECT_NEAR((*coefficients)[1], 8, kRoundings * 8);  // the root of 64
  for (int i = 2; i <= 64; ++i) EXPECT_NEAR((*coefficients)[i], 0, kRoundings * 8) << i;
}

INSTANTIATE_TEST_SUITE_P(EveryFilter, WaveletTransform, ::testing::ValuesIn(AllFilters()));

TEST(WaveletTransformOfOrthogonalFamilies, KeepsTheSumOfSquares) {
  for (const FamilyAndOrder& filter : OrthogonalFilters()) {
    const Filters filters(filter.type, filter.order);
    for (int n : {2, 8, 64, 512, 7, 100}) {
      const auto signal = RandomSignal(n, n);
      const OwnedVector coefficients = Transformed(signal, filters.decomposition, false);
      EXPECT_NEAR(Norm(*coefficients), Norm(signal), kRoundings * Norm(signal)) << filter << ", " << n << " cells";
    }
  }
}

TEST(WaveletTransformWithFiltersOfTheCallersOwn, HasTheBitsOfThePlainOne) {
  for (int taps : {0, 2, 4, 14, 100}) {
    auto low = RandomSignal(taps, 1), high = RandomSignal(taps, 2);
    Wavelet::WaveletFilters filters;
    filters.lowPass = &low;
    filters.highPass = &high;
    for (int n : {2, 6, 8, 31, 64}) {
      const auto signal = RandomSignal(n, n);
      EXPECT_EQ(PlainCellsOf(*Transformed(signal, filters, false)), PlainForward(PlainCellsOf(signal), filters));
      EXPECT_EQ(PlainCellsOf(*Back(signal, filters, n)), PlainBackward(PlainCellsOf(signal), filters));
    }
  }
}

TEST(WaveletTransformWithFiltersOfTheCallersOwn, TakesOddAndUnequalLengthsForwardAndStaysWithinItsCellsBackward) {
  for (const auto& [lowTaps, highTaps] : {std::pair(1, 1), {3, 3}, {2, 5}, {9, 4}, {1, 30}}) {
    auto low = RandomSignal(lowTaps, 1), high = RandomSignal(highTaps, 2);
    Wavelet::WaveletFilters filters;
    filters.lowPass = &low;
    filters.highPass = &high;
    for (int n : {2, 8, 32}) {
      const auto signal = RandomSignal(n, n);
      EXPECT_EQ(PlainCellsOf(*Transformed(signal, filters, false)), PlainForward(PlainCellsOf(signal), filters));
      EXPECT_EQ(Back(signal, filters, n)->GetNumMisVal(), 0);  // for the sanitizers
    }
  }
}

TEST(WaveletTransformByHand, OfHaarTakesScaledSumsAndDifferences) {
  const Filters filters(Wavelet::FunctionBiorthogonal1, 1);
  const OwnedVector coefficients = Transformed(Signal({1, 2, 3, 6}), filters.decomposition, false);
  // Approximation 12 / 2, then (1 + 2 - 3 - 6) / 2, then (1 - 2) / sqrt 2 and (3 - 6) / sqrt 2.
  const double expected[] = {6, -3, -std::sqrt(0.5), -3 * std::sqrt(0.5)};
  for (int i = 1; i <= 4; ++i) EXPECT_NEAR((*coefficients)[i], expected[i - 1], 1e-6) << i;
}

TEST(WaveletTransformWithoutPadding, LeavesTheLastCellOfEachOddLengthWhereItIs) {
  const SomeFilters filters;
  const auto signal = RandomSignal(7, 1);
  const OwnedVector coefficients = Transformed(signal, filters.decomposition, false);
  EXPECT_EQ((*coefficients)[7], signal[7]);
  // The other six give three approximations; the third stays, and two are taken to the second level.
  NCDataVector<float> level(6, 0.0F);
  OpenWavelet::SubForwardTransform(&signal, &level, 6, 1, 4, filters.decomposition);
  EXPECT_EQ((*coefficients)[3], level[3]);
  for (int i = 4; i <= 6; ++i) EXPECT_EQ((*coefficients)[i], level[i]);
}

TEST(WaveletTransformWithPadding, HasThePowerOfTwoAbove) {
  const SomeFilters filters;
  for (const auto& [n, power] : {std::pair(1, 1), {2, 2}, {3, 4}, {5, 8}, {8, 8}, {9, 16}, {1000, 1024}})
    EXPECT_EQ(Transformed(RandomSignal(n, 1), filters.decomposition, true)->Size(), power) << n;
}

TEST(WaveletTransformWithPadding, IsThatOfThePaddedSignal) {
  const SomeFilters filters;
  const auto signal = RandomSignal(11, 1);
  NCDataVector<float> padded;
  padded.CopyContent(signal);
  OpenWavelet::PadVector(&padded, 16);
  EXPECT_EQ(CellsOf(*Transformed(signal, filters.decomposition, true)),
            CellsOf(*Transformed(padded, filters.decomposition, false)));
}

TEST(WaveletTransformInMode2, ComesBackLowerByOneSlope) {
  const SomeFilters filters;
  NCDataVector<float> line(20, 0.0F);
  for (int i = 1; i <= 20; ++i) line(i, 10 + 0.5F * i);
  long double mean = 0, slope = 0;
  const OwnedVector coefficients(Wavelet::ForwardTransform(&line, filters.decomposition, Wavelet::DetrendLinear, mean,
                                                           slope, nullptr, true));
  EXPECT_NEAR(static_cast<double>(mean), 10, 1e-12);  // sums of small whole numbers and halves, in long double
  EXPECT_NEAR(static_cast<double>(slope), 0.5, 1e-12);
  EXPECT_THAT(CellsOf(*coefficients), Each(0.0F));
  const OwnedVector back(Wavelet::BackwardTransform(coefficients.get(), filters.reconstruction,
                                                    Wavelet::DetrendLinear, 20, 10, 0.5, nullptr));
  for (int i = 1; i <= 20; ++i) EXPECT_EQ((*back)[i], line[i] - 0.5F) << i;
}

TEST(WaveletTransformOfFewCells, LeavesTheTrendOfALineUnwrittenBelowTwoCells) {
  const SomeFilters filters;
  const auto signal = Signal({4});
  long double mean = 7, slope = 8;
  const OwnedVector out(Wavelet::ForwardTransform(&signal, filters.decomposition, Wavelet::DetrendLinear, mean, slope,
                                                  nullptr, true));
  EXPECT_THAT(CellsOf(*out), ElementsAre(4));
  EXPECT_EQ(mean, 7);
  EXPECT_EQ(slope, 8);
}

TEST(WaveletTransform, FillsHolesBeforeAnythingElse) {
  const SomeFilters filters;
  const auto holes = Signal({-99, 2, -99, -99, 5, 4, -99, -99}), filled = Signal({2, 2, 3, 4, 5, 4, 4, 4});
  for (const auto mode : kModes) {
    long double mean = 0, slope = 0, expectedMean = 0, expectedSlope = 0;
    const OwnedVector found(
        Wavelet::ForwardTransform(&holes, filters.decomposition, mode, mean, slope, nullptr, true));
    const OwnedVector expected(Wavelet::ForwardTransform(&filled, filters.decomposition, mode, expectedMean,
                                                         expectedSlope, nullptr, true));
    EXPECT_EQ(CellsOf(*found), CellsOf(*expected)) << mode;
    EXPECT_EQ(mean, expectedMean);
    EXPECT_EQ(slope, expectedSlope);
  }
  EXPECT_EQ(holes.GetNumMisVal(), 5);
}

TEST(WaveletTransform, WritesIntoTheGivenVectorWhateverItsLengthAndMayBeTheInput) {
  const SomeFilters filters;
  auto signal = RandomSignal(6, 1);
  long double mean = 0, slope = 0;
  const OwnedVector expected = Transformed(signal, filters.decomposition, true);
  NCDataVector<float> out(3, 1.0F);
  const NCDataVector<float> share(out);
  EXPECT_EQ(Wavelet::ForwardTransform(&signal, filters.decomposition, Wavelet::DetrendNone, mean, slope, &out, true),
            &out);
  EXPECT_EQ(CellsOf(out), CellsOf(*expected));
  EXPECT_THAT(CellsOf(share), ElementsAre(1, 1, 1));
  EXPECT_EQ(
      Wavelet::ForwardTransform(&signal, filters.decomposition, Wavelet::DetrendNone, mean, slope, &signal, true),
      &signal);
  EXPECT_EQ(CellsOf(signal), CellsOf(*expected));
}

TEST(WaveletTransform, CountsACoefficientOfMinus99AsAHoleOfItsVector) {
  const Filters haar(Wavelet::FunctionBiorthogonal1, 1);
  const auto low = (*haar.decomposition.lowPass)[1];
  const auto signal = Signal({-49.5F / low, -49.5F / low});
  const OwnedVector coefficients = Transformed(signal, haar.decomposition, false);
  ASSERT_EQ((*coefficients)[1], -99.0F);
  EXPECT_EQ(coefficients->GetNumMisVal(), 1);
  EXPECT_THAT(CellsOf(*Back(*coefficients, haar.reconstruction, 2)), ElementsAre(0, 0));
}

TEST(WaveletForwardTransform, RefusesWhatItCannotTransformAndLeavesTheOutputAlone) {
  const SomeFilters filters;
  const auto signal = Signal({1, 2, 3});
  const NCDataVector<float> holes(4), none;
  Wavelet::WaveletFilters noLow = filters.decomposition, noHigh = noLow;
  noLow.lowPass = nullptr;
  noHigh.highPass = nullptr;
  const struct {
    const char* what;
    const NCDataVector<float>* in;
    Wavelet::WaveletFilters filters;
  } kBad[] = {{"no signal", nullptr, filters.decomposition}, {"no low pass", &signal, noLow},
              {"no high pass", &signal, noHigh},             {"only holes", &holes, filters.decomposition},
              {"no cells", &none, filters.decomposition}};
  for (const auto& bad : kBad)
    for (bool pad : {false, true}) {
      SCOPED_TRACE(bad.what);
      long double mean = 7, slope = 8;
      NCDataVector<float> out(2, 1.0F);
      EXPECT_EQ(Wavelet::ForwardTransform(bad.in, bad.filters, Wavelet::DetrendMean, mean, slope, &out, pad), nullptr);
      EXPECT_EQ(Wavelet::ForwardTransform(bad.in, bad.filters, Wavelet::DetrendMean, mean, slope, nullptr, pad),
                nullptr);
      EXPECT_THAT(CellsOf(out), ElementsAre(1, 1));
      EXPECT_EQ(mean, 7);
      EXPECT_EQ(slope, 8);
    }
}

TEST(WaveletBackwardTransform, RefusesLengthsThatDoNotFitAndLeavesTheOutputAlone) {
  const SomeFilters filters;
  const auto eight = RandomSignal(8, 1), seven = RandomSignal(7, 1);
  Wavelet::WaveletFilters noLow = filters.reconstruction, noHigh = noLow;
  noLow.lowPass = nullptr;
  noHigh.highPass = nullptr;
  const struct {
    const char* what;
    const NCDataVector<float>* in;
    Wavelet::WaveletFilters filters;
    int originalLength;
  } kBad[] = {{"no coefficients", nullptr, filters.reconstruction, 8},
              {"no low pass", &eight, noLow, 8},
              {"no high pass", &eight, noHigh, 8},
              {"neither a power of two nor the original length", &seven, filters.reconstruction, 6},
              {"more cells than there are", &eight, filters.reconstruction, 9},
              {"less than none", &eight, filters.reconstruction, -1}};
  for (const auto& bad : kBad) {
    SCOPED_TRACE(bad.what);
    NCDataVector<float> out(std::max(bad.originalLength, 0), 1.0F);
    for (NCDataVector<float>* given : {&out, static_cast<NCDataVector<float>*>(nullptr)})
      EXPECT_EQ(Wavelet::BackwardTransform(bad.in, bad.filters, Wavelet::DetrendMean, bad.originalLength, 1, 0, given),
                nullptr);
    EXPECT_THAT(CellsOf(out), Each(1.0F));
  }
}

TEST(WaveletBackwardTransform, RefusesAnOutputOfAnotherLengthThanTheOriginal) {
  const SomeFilters filters;
  const auto eight = RandomSignal(8, 1);
  for (const int outLength : {0, 7, 9}) {
    NCDataVector<float> out(outLength, 1.0F);
    EXPECT_EQ(Wavelet::BackwardTransform(&eight, filters.reconstruction, Wavelet::DetrendMean, 8, 1, 0, &out), nullptr);
    EXPECT_THAT(CellsOf(out), Each(1.0F));
  }
  NCDataVector<float> whole(8, 1.0F);
  EXPECT_EQ(Wavelet::BackwardTransform(&eight, filters.reconstruction, Wavelet::DetrendMean, 7, 1, 0, &whole), nullptr);
  EXPECT_THAT(CellsOf(whole), Each(1.0F));
}

TEST(WaveletBackwardTransform, WritesIntoAnOutputOfTheOriginalLengthAndMayBeTheInput) {
  const SomeFilters filters;
  const auto signal = RandomSignal(6, 1);
  const OwnedVector coefficients = Transformed(signal, filters.decomposition, true);
  NCDataVector<float> out(6, 1.0F);
  EXPECT_EQ(Wavelet::BackwardTransform(coefficients.get(), filters.reconstruction, Wavelet::DetrendNone, 6, 0, 0, &out),
            &out);
  EXPECT_EQ(CellsOf(out), CellsOf(*Back(*coefficients, filters.reconstruction, 6)));
  const auto whole = Back(*coefficients, filters.reconstruction, 8);
  EXPECT_EQ(Wavelet::BackwardTransform(coefficients.get(), filters.reconstruction, Wavelet::DetrendNone, 8, 0, 0,
                                       coefficients.get()),
            coefficients.get());
  EXPECT_EQ(CellsOf(*coefficients), CellsOf(*whole));
}

TEST(WaveletBackwardTransform, GivesNoCellsWhereNoneAreAskedFor) {
  const SomeFilters filters;
  const OwnedVector none = Back(RandomSignal(8, 1), filters.reconstruction, 0);
  ASSERT_TRUE(none);
  EXPECT_EQ(none->Size(), 0);
  const OwnedVector ofNothing = Back(NCDataVector<float>(), filters.reconstruction, 0);  // its length is the original
  ASSERT_TRUE(ofNothing);
  EXPECT_EQ(ofNothing->Size(), 0);
  EXPECT_EQ(Back(NCDataVector<float>(), filters.reconstruction, 1), nullptr);
}

TEST(WaveletBackwardTransform, TakesHolesForZeros) {
  const SomeFilters filters;
  const auto holes = Signal({1, -99, 3, -99}), zeros = Signal({1, 0, 3, 0});
  EXPECT_EQ(CellsOf(*Back(holes, filters.reconstruction, 4)), CellsOf(*Back(zeros, filters.reconstruction, 4)));
  EXPECT_EQ(holes.GetNumMisVal(), 2);
  const NCDataVector<float> onlyHoles(4);
  EXPECT_THAT(CellsOf(*Back(onlyHoles, filters.reconstruction, 4)), Each(0.0F));
}

}  // namespace
