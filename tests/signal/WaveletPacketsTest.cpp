#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

#include "signal/PlainWavelet.h"
#include "signal/WaveletCase.h"
#include "signal/WaveletPacketCase.h"

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

struct OpenWavelet : Wavelet {
  using Wavelet::PadVector;
  using Wavelet::SubBackwardTransFormBestBasis;
  using Wavelet::SubForwardTransFormBestBasis;
};

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

TEST(WaveletPackets, HaveTheBitsOfPlainOnesForAnyDecisions) {
  for (const FamilyAndOrder& filter : AllFilters()) {
    const Filters filters(filter.type, filter.order);
    for (int n : {2, 4, 16, 64})
      for (unsigned seed = 1; seed <= 5; ++seed)
        for (bool sequency : {false, true}) {
          const BoolVector decisions = RandomDecisions(n, seed);
          auto work = RandomSignal(n, seed), out = RandomSignal(n, seed + 50);
          PlainCells plainWork = PlainCellsOf(work), plainOut = PlainCellsOf(out);
          OpenWavelet::SubForwardTransFormBestBasis(&work, &out, &decisions, filters.decomposition, 1, 1, sequency);
          PlainForwardPackets(plainWork, plainOut, decisions, filters.decomposition, 1, 1, sequency);
          ASSERT_EQ(PlainCellsOf(out), plainOut) << filter << ' ' << n;
          NCDataVector<float> coefficients;
          coefficients.CopyContent(out);
          plainWork = plainOut;
          OpenWavelet::SubBackwardTransFormBestBasis(&coefficients, &out, &decisions, filters.reconstruction, 1, 1,
                                                     sequency);
          PlainBackwardPackets(plainWork, plainOut, decisions, filters.reconstruction, 1, 1, sequency);
          ASSERT_EQ(PlainCellsOf(out), plainOut) << filter << ' ' << n;
        }
  }
}

TEST(WaveletPackets, OfANodeTouchNothingButItsBlock) {
  const SomeFilters filters;
  const BoolVector decisions(15, true);
  auto work = RandomSignal(16, 1), out = RandomSignal(16, 2), back = RandomSignal(16, 3);
  PlainCells plainWork = PlainCellsOf(work), plainOut = PlainCellsOf(out), plainBack = PlainCellsOf(back);
  OpenWavelet::SubForwardTransFormBestBasis(&work, &out, &decisions, filters.decomposition, 3, 2, true);
  PlainForwardPackets(plainWork, plainOut, decisions, filters.decomposition, 3, 2, true);
  EXPECT_EQ(PlainCellsOf(out), plainOut);
  work = RandomSignal(16, 4);
  plainWork = PlainCellsOf(work);
  OpenWavelet::SubBackwardTransFormBestBasis(&work, &back, &decisions, filters.reconstruction, 3, 2, true);
  PlainBackwardPackets(plainWork, plainBack, decisions, filters.reconstruction, 3, 2, true);
  EXPECT_EQ(PlainCellsOf(back), plainBack);
}

TEST(WaveletPackets, AlongTheLowPassesAloneAreTheWaveletTransform) {
  for (const FamilyAndOrder& filter : AllFilters()) {
    const Filters filters(filter.type, filter.order);
    const auto signal = RandomSignal(32, 1);
    BoolVector decisions(31, false);
    for (int level = 1; level <= 5; ++level) decisions(Wavelet::Node(level, 1)) = true;
    EXPECT_EQ(CellsOf(*InBasis(signal, decisions, filters.decomposition)),
              CellsOf(*Transformed(signal, filters.decomposition, true)))
        << filter;
  }
}

TEST(WaveletPackets, LieInTheOrderOfTheirFrequency) {
  const Filters filters(Wavelet::FunctionDaubechies, 7);  // fifty taps: blocks of eight have steep flanks
  BoolVector decisions(255, false);
  for (int node = 1; node <= 7; ++node) decisions(node) = true;  // eight blocks of 32
  for (int block = 1; block <= 8; ++block) {
    NCDataVector<float> wave(256, 0.0F);
    const double frequency = (block - 0.5) / 16;  // cycles per cell: in the middle of the block's band
    for (int i = 1; i <= 256; ++i) wave(i, static_cast<float>(std::cos(2 * M_PI * frequency * i)));
    const OwnedVector packets = InBasis(wave, decisions, filters.decomposition);
    double inBlock = 0;
    for (int i = 32 * (block - 1) + 1; i <= 32 * block; ++i) inBlock += double((*packets)[i]) * (*packets)[i];
    EXPECT_GT(inBlock, 0.9 * 128) << block;  // of the wave's sum of squares, half a unit per cell
  }
}

TEST(WaveletPackets, SplitABlockOfTwoOnlyOnItsOwnDecision) {
  const SomeFilters filters;
  const auto signal = RandomSignal(4, 1);
  BoolVector decisions(3, false);
  decisions(1) = true;
  const auto once = CellsOf(*InBasis(signal, decisions, filters.decomposition));
  decisions(3) = true;
  const auto twice = CellsOf(*InBasis(signal, decisions, filters.decomposition));
  EXPECT_EQ(once[0], twice[0]);
  EXPECT_EQ(once[1], twice[1]);
  EXPECT_NE(once[2], twice[2]);
  EXPECT_NE(once[3], twice[3]);
}

TEST(WaveletPackets, OfFilledHolesAreThoseOfTheFilledSignal) {
  const SomeFilters filters;
  const auto holes = Signal({2, -99, 4, 7, 1, 3, 9, 8, -99, 2, 5}), filled = Signal({2, 3, 4, 7, 1, 3, 9, 8, 5, 2, 5});
  const BoolVector decisions = RandomDecisions(16, 1);
  EXPECT_EQ(CellsOf(*InBasis(holes, decisions, filters.decomposition)),
            CellsOf(*InBasis(filled, decisions, filters.decomposition)));
}

TEST(WaveletPackets, PassOnWhatIsNotFiniteAndNoFurtherThanTheFiltersReach) {
  const SomeFilters filters;
  BoolVector decisions(15, false);
  decisions(1) = true;
  const auto finite = RandomSignal(16, 1);
  const OwnedVector expected = InBasis(finite, decisions, filters.decomposition);
  for (const float odd : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    auto signal = finite;
    signal(7, odd);
    const OwnedVector packets = InBasis(signal, decisions, filters.decomposition);
    int reached = 0;
    for (int i = 1; i <= 16; ++i) {
      reached += !std::isfinite((*packets)[i]);
      if (std::isfinite((*packets)[i])) { EXPECT_EQ((*packets)[i], (*expected)[i]) << i; }
    }
    EXPECT_EQ(reached, 4);  // of four taps, two of each filter meet a cell
    const OwnedVector back = OutOfBasis(*packets, decisions, filters.reconstruction, 16);
    ASSERT_TRUE(back);
    EXPECT_FALSE(std::isfinite((*back)[7]));
    EXPECT_TRUE(std::isfinite((*back)[15]));
  }
}

TEST(WaveletPackets, OfSeveralThreadsShareSignalDecisionsAndFilters) {
  const SomeFilters filters;
  const auto signal = RandomSignal(256, 1);
  const BoolVector decisions = RandomDecisions(256, 1);
  const OwnedVector packets = InBasis(signal, decisions, filters.decomposition);
  const auto expected = CellsOf(*packets);
  const auto expectedBack = CellsOf(*OutOfBasis(*packets, decisions, filters.reconstruction, 256));
  const std::unique_ptr<BoolVector> best(
      Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendNone, nullptr));
  std::vector<int> wrong(4, 0);
  std::vector<std::thread> threads;
  for (int& count : wrong)
    threads.emplace_back([&] {
      for (int round = 0; round < 20; ++round) {
        count += CellsOf(*InBasis(signal, decisions, filters.decomposition)) != expected;
        count += CellsOf(*OutOfBasis(*packets, decisions, filters.reconstruction, 256)) != expectedBack;
        const std::unique_ptr<BoolVector> found(
            Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendNone, nullptr));
        count += CellsOf(*found) != CellsOf(*best);
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_THAT(wrong, Each(0));
}

TEST(WaveletPackets, WithoutASplitAreTheDetrendedAndPaddedSignal) {
  const SomeFilters filters;
  const auto signal = RandomSignal(11, 1, 4);
  BoolVector decisions(15, true);
  decisions(1) = false;  // the others are never asked
  for (const auto mode : kModes) {
    NCDataVector<float> expected;
    expected.CopyContent(signal);
    long double mean = 0, slope = 0, expectedMean = 0, expectedSlope = 0;
    if (mode == Wavelet::DetrendMean) expected.DetrendMean(expectedMean);
    if (mode == Wavelet::DetrendLinear) expected.DetrendLinear(expectedMean, expectedSlope);
    OpenWavelet::PadVector(&expected, 16);
    const OwnedVector found(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters.decomposition, mode, mean,
                                                               slope, nullptr));
    EXPECT_EQ(CellsOf(*found), CellsOf(expected));
    EXPECT_EQ(mean, expectedMean);
    EXPECT_EQ(slope, expectedSlope);
    const OwnedVector back(Wavelet::BackwardTransformBestBasis(found.get(), &decisions, filters.reconstruction, mode,
                                                               11, static_cast<double>(mean),
                                                               static_cast<double>(slope), nullptr));
    for (int i = 1; i <= 11; ++i)  // a line comes back lower by one slope; the trend is put back to a rounded cell
      EXPECT_NEAR((*back)[i], signal[i] - static_cast<double>(slope), 16 * 0x1p-24) << i;
  }
}

TEST(WaveletPackets, OfOneCellHaveNoDecisions) {
  const SomeFilters filters;
  const auto signal = Signal({4});
  const std::unique_ptr<BoolVector> decisions(
      Wavelet::FindBestBasis(&signal, filters.decomposition, Wavelet::DetrendNone, nullptr));
  EXPECT_THAT(CellsOf(*decisions), IsEmpty());
  const OwnedVector packets = InBasis(signal, *decisions, filters.decomposition);
  EXPECT_THAT(CellsOf(*packets), ElementsAre(4));
  EXPECT_THAT(CellsOf(*OutOfBasis(*packets, *decisions, filters.reconstruction, 1)), ElementsAre(4));
}

TEST(WaveletPackets, AreWrittenIntoAnOutputOfTheRightSizeWhichMayBeTheInput) {
  const SomeFilters filters;
  auto signal = RandomSignal(8, 1);
  const BoolVector decisions(7, true);
  const OwnedVector expected = InBasis(signal, decisions, filters.decomposition);
  long double mean = 0, slope = 0;
  EXPECT_EQ(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters.decomposition, Wavelet::DetrendNone, mean,
                                               slope, &signal),
            &signal);
  EXPECT_EQ(CellsOf(signal), CellsOf(*expected));
  const OwnedVector whole = OutOfBasis(signal, decisions, filters.reconstruction, 8);
  NCDataVector<float> out(5, 1.0F);
  EXPECT_EQ(Wavelet::BackwardTransformBestBasis(&signal, &decisions, filters.reconstruction, Wavelet::DetrendNone, 5, 0,
                                                0, &out),
            &out);
  for (int i = 1; i <= 5; ++i) EXPECT_EQ(out[i], (*whole)[i]);
  EXPECT_EQ(Wavelet::BackwardTransformBestBasis(&signal, &decisions, filters.reconstruction, Wavelet::DetrendNone, 8, 0,
                                                0, &signal),
            &signal);
  EXPECT_EQ(CellsOf(signal), CellsOf(*whole));
}

}  // namespace
