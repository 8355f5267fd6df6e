#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "signal/WaveletCase.h"
#include "signal/WaveletPacketCase.h"

using ::testing::Each;
using ::testing::ElementsAre;

namespace {

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

TEST(WaveletPackets, WithACoefficientThatLooksLikeAHoleHaveNoInverse) {
  const SomeFilters filters;
  const auto signal = Signal({-98, -99, -100, -101});  // the hole is filled with -99
  const BoolVector decisions(3, false);
  const OwnedVector packets = InBasis(signal, decisions, filters.decomposition);
  EXPECT_THAT(CellsOf(*packets), ElementsAre(-98, -99, -100, -101));
  EXPECT_EQ(packets->GetNumMisVal(), 1);
  EXPECT_EQ(OutOfBasis(*packets, decisions, filters.reconstruction, 4), nullptr);
}

}  // namespace
