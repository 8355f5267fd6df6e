#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "signal/PlainWavelet.h"
#include "signal/WaveletCase.h"

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

BoolVector RandomDecisions(int cells, unsigned seed) {
  std::mt19937 random(seed);
  BoolVector decisions(cells - 1, false);
  for (int node = 1; node < cells; ++node) decisions(node) = random() % 4 != 0;
  return decisions;
}

OwnedVector OutOfBasis(const NCDataVector<float>& coefficients, const BoolVector& decisions,
                       const Wavelet::WaveletFilters& filters, int length) {
  return OwnedVector(Wavelet::BackwardTransformBestBasis(&coefficients, &decisions, filters, Wavelet::DetrendNone,
                                                         length, 0, 0, nullptr));
}

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

TEST(WaveletPackets, GiveTheSignalBackForEveryFilterAndLength) {
  for (const FamilyAndOrder& filter : AllFilters()) {
    const Filters filters(filter.type, filter.order);
    for (int n : {1, 2, 3, 5, 8, 13, 16, 50, 64})
      for (const auto mode : {Wavelet::DetrendNone, Wavelet::DetrendMean}) {
        const auto signal = RandomSignal(n, n, 2);
        const int cells = Transformed(signal, filters.decomposition, true)->Size();
        const BoolVector decisions = RandomDecisions(cells, n);
        long double mean = 0, slope = 0;
        const OwnedVector packets(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters.decomposition, mode,
                                                                     mean, slope, nullptr));
        ASSERT_EQ(packets->Size(), cells);
        const OwnedVector back(Wavelet::BackwardTransformBestBasis(packets.get(), &decisions, filters.reconstruction,
                                                                   mode, n, static_cast<double>(mean), 0, nullptr));
        // High passes of order 3 splines swell what they are applied to, again and again in a packet.
        const double swollen = std::max(Norm(signal), Norm(*packets));
        EXPECT_LT(LargestGap(*back, signal), 4 * kRoundings * swollen) << filter << ", " << n << " cells";
      }
  }
}

TEST(WaveletPackets, OfOrthogonalFamiliesKeepTheSumOfSquares) {
  for (const FamilyAndOrder& filter : OrthogonalFilters()) {
    const Filters filters(filter.type, filter.order);
    const auto signal = RandomSignal(128, 1);
    const OwnedVector packets = InBasis(signal, RandomDecisions(128, 2), filters.decomposition);
    EXPECT_NEAR(Norm(*packets), Norm(signal), kRoundings * Norm(signal)) << filter;
  }
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

TEST(WaveletPackets, AreRefusedForwardWhereSomethingDoesNotFit) {
  const SomeFilters filters;
  const auto signal = RandomSignal(6, 1);
  const NCDataVector<float> holes(6), none;
  const BoolVector decisions(7, true), tooMany(15, true), tooFew(5, true), empty;
  Wavelet::WaveletFilters noLow = filters.decomposition, noHigh = noLow;
  noLow.lowPass = nullptr;
  noHigh.highPass = nullptr;
  const struct {
    const char* what;
    const NCDataVector<float>* in;
    const BoolVector* decisions;
    Wavelet::WaveletFilters filters;
    int outLength;
  } kBad[] = {{"no signal", nullptr, &decisions, filters.decomposition, 8},
              {"only holes", &holes, &decisions, filters.decomposition, 8},
              {"no cells", &none, &empty, filters.decomposition, 1},
              {"no decisions", &signal, nullptr, filters.decomposition, 8},
              {"too many decisions", &signal, &tooMany, filters.decomposition, 8},
              {"decisions for the cells alone", &signal, &tooFew, filters.decomposition, 8},
              {"no low pass", &signal, &decisions, noLow, 8},
              {"no high pass", &signal, &decisions, noHigh, 8},
              {"an output that is not padded", &signal, &decisions, filters.decomposition, 6}};
  for (const auto& bad : kBad) {
    SCOPED_TRACE(bad.what);
    long double mean = 7, slope = 8;
    NCDataVector<float> out(bad.outLength, 1.0F);
    EXPECT_EQ(Wavelet::ForwardTransformBestBasis(bad.in, bad.decisions, bad.filters, Wavelet::DetrendMean, mean, slope,
                                                 &out),
              nullptr);
    EXPECT_THAT(CellsOf(out), Each(1.0F));
    EXPECT_EQ(mean, 7);
  }
}

TEST(WaveletPackets, AreRefusedBackwardWhereSomethingDoesNotFit) {
  const SomeFilters filters;
  const auto eight = RandomSignal(8, 1), six = RandomSignal(6, 1);
  auto holes = RandomSignal(8, 1);
  holes(3, -99.0F);
  const NCDataVector<float> none;
  const BoolVector decisions(7, true), five(5, true), tooMany(15, true), empty;
  Wavelet::WaveletFilters noLow = filters.reconstruction, noHigh = noLow;
  noLow.lowPass = nullptr;
  noHigh.highPass = nullptr;
  const struct {
    const char* what;
    const NCDataVector<float>* in;
    const BoolVector* decisions;
    Wavelet::WaveletFilters filters;
    int originalLength, outLength;
  } kBad[] = {{"no coefficients", nullptr, &decisions, filters.reconstruction, 8, 8},
              {"no cells", &none, &empty, filters.reconstruction, 0, 0},
              {"no power of two", &six, &five, filters.reconstruction, 6, 6},
              {"holes", &holes, &decisions, filters.reconstruction, 8, 8},
              {"no decisions", &eight, nullptr, filters.reconstruction, 8, 8},
              {"other decisions", &eight, &tooMany, filters.reconstruction, 8, 8},
              {"no low pass", &eight, &decisions, noLow, 8, 8},
              {"no high pass", &eight, &decisions, noHigh, 8, 8},
              {"an output of another length", &eight, &decisions, filters.reconstruction, 7, 8},
              {"more cells than there are", &eight, &decisions, filters.reconstruction, 9, 9},
              {"less than none", &eight, &decisions, filters.reconstruction, -1, 0}};
  for (const auto& bad : kBad) {
    SCOPED_TRACE(bad.what);
    NCDataVector<float> out(bad.outLength, 1.0F);
    EXPECT_EQ(Wavelet::BackwardTransformBestBasis(bad.in, bad.decisions, bad.filters, Wavelet::DetrendMean,
                                                  bad.originalLength, 1, 0, &out),
              nullptr);
    EXPECT_THAT(CellsOf(out), Each(1.0F));
  }
}

TEST(WaveletPacketsOfTables, TransformEachRowOrColumnInOneBasis) {
  const SomeFilters filters;
  const BoolVector decisions = RandomDecisions(16, 3);
  for (bool byRow : {true, false})
    for (const auto mode : kModes) {
      NCDataMatrix<float> table = RandomSignals(4, 11, 1);
      if (!byRow) table.Transpose();
      const auto transform =
          byRow ? &Wavelet::ForwardTransformBestBasisObswise : &Wavelet::ForwardTransformBestBasisVarwise;
      NCDataVector<float>*means = nullptr, *slopes = nullptr;
      const OwnedMatrix result(transform(&table, &decisions, filters.decomposition, mode, means, slopes, nullptr));
      const OwnedVector ownedMeans(means), ownedSlopes(slopes);
      ASSERT_TRUE(result);
      EXPECT_EQ(means != nullptr, mode != Wavelet::DetrendNone);
      EXPECT_EQ(slopes != nullptr, mode == Wavelet::DetrendLinear);
      EXPECT_EQ(byRow ? result->SizeColumns() : result->SizeRows(), 16);
      for (int i = 1; i <= 4; ++i) {
        const NCDataVector<float> signal = byRow ? table[i] : table.GetColumn(i);
        long double mean = 0, slope = 0;
        const OwnedVector expected(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters.decomposition, mode,
                                                                      mean, slope, nullptr));
        EXPECT_EQ(CellsOf(byRow ? (*result)[i] : result->GetColumn(i)), CellsOf(*expected));
        if (means) { EXPECT_EQ((*means)[i], static_cast<float>(mean)); }
        if (slopes) { EXPECT_EQ((*slopes)[i], static_cast<float>(slope)); }
      }
      NCDataMatrix<float> out(2, 2);
      EXPECT_EQ(transform(&table, &decisions, filters.decomposition, mode, means, slopes, &out), &out);
      EXPECT_EQ(out, *result);
    }
}

TEST(WaveletPacketsOfTables, AreRefusedLikeOtherTransformsOfTables) {
  const SomeFilters filters;
  const BoolVector decisions(15, true), others(7, true);
  for (bool byRow : {true, false}) {
    NCDataMatrix<float> table = RandomSignals(4, 11, 1), holes = table;
    holes.SetRow(2, NCDataVector<float>(11));
    if (!byRow) {
      table.Transpose();
      holes.Transpose();
    }
    const auto transform =
        byRow ? &Wavelet::ForwardTransformBestBasisObswise : &Wavelet::ForwardTransformBestBasisVarwise;
    Wavelet::WaveletFilters noLow = filters.decomposition;
    noLow.lowPass = nullptr;
    NCDataVector<float>*means = nullptr, *slopes = nullptr;
    const auto tried = [&](const NCDataMatrix<float>* in, const BoolVector* asked,
                           const Wavelet::WaveletFilters& pair) {
      return OwnedMatrix(transform(in, asked, pair, Wavelet::DetrendLinear, means, slopes, nullptr));
    };
    EXPECT_EQ(tried(nullptr, &decisions, filters.decomposition), nullptr);
    EXPECT_EQ(tried(&table, nullptr, filters.decomposition), nullptr);
    EXPECT_EQ(tried(&table, &others, filters.decomposition), nullptr);
    EXPECT_EQ(tried(&table, &decisions, noLow), nullptr);
    EXPECT_EQ(tried(&holes, &decisions, filters.decomposition), nullptr);
    EXPECT_EQ(means, nullptr);
    EXPECT_EQ(slopes, nullptr);
    NCDataVector<float> wrong(3, 7.0F);
    slopes = &wrong;
    EXPECT_EQ(tried(&table, &decisions, filters.decomposition), nullptr);
    EXPECT_EQ(means, nullptr);
    EXPECT_THAT(CellsOf(wrong), Each(7.0F));
  }
}

}  // namespace
