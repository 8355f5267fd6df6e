#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "signal/PlainWavelet.h"
#include "signal/WaveletCase.h"

using ::testing::Each;

namespace {

struct OpenWavelet : Wavelet {
  using Wavelet::CalcEntropy;
  using Wavelet::MakeEntropyTree;
};

double EntropyOfAll(const NCDataVector<float>& v, double norm) {
  return OpenWavelet::CalcEntropy(&v, 1, v.Size(), norm);
}

TEST(WaveletEntropy, IsThatOfTheSharesOfEnergy) {
  const auto v = Signal({9, 3, 4, 0, -9});
  // Shares 9 / 25 and 16 / 25; a cell of 0 has none.
  const double expected = -(0.36 * std::log(0.36) + 0.64 * std::log(0.64));
  EXPECT_NEAR(OpenWavelet::CalcEntropy(&v, 2, 3, 5), expected, 1e-15);  // two terms in double
  EXPECT_EQ(OpenWavelet::CalcEntropy(&v, 4, 1, 5), 0);
  EXPECT_EQ(OpenWavelet::CalcEntropy(&v, 1, 0, 5), 0);
  EXPECT_EQ(OpenWavelet::CalcEntropy(&v, 1, -1, 5), 0);
}

TEST(WaveletEntropy, OfASignalOfZerosIsZeroAlthoughItsNormIsZero) {
  const NCDataVector<float> zeros(4, 0.0F);
  EXPECT_EQ(OpenWavelet::CalcEntropy(&zeros, 1, 4, 0), 0);
}

TEST(WaveletEntropy, LeavesOutSharesThatAreNoNumbers) {
  const auto v = Signal({3, std::numeric_limits<float>::quiet_NaN(), 4}), finite = Signal({3, 0, 4});
  EXPECT_EQ(OpenWavelet::CalcEntropy(&v, 1, 3, 5), OpenWavelet::CalcEntropy(&finite, 1, 3, 5));
}

TEST(WaveletEntropyTree, HoldsTheEntropyOfEveryBlockOfPackets) {
  const SomeFilters filters;
  const auto signal = RandomSignal(16, 1);
  const OwnedVector tree(OpenWavelet::MakeEntropyTree(&signal, filters.decomposition));
  ASSERT_EQ(tree->Size(), 31);
  PlainCells a = PlainCellsOf(signal), b = a;
  EXPECT_EQ((*tree)[1], static_cast<float>(EntropyOfAll(signal, Norm(signal))));
  for (int d = 1; d <= 4; ++d) {
    const int m = 16 >> (d - 1);
    for (int block = 1; block <= 1 << (d - 1); ++block) {
      const int s = (block - 1) * m + 1, p = block % 2;
      PlainForwardStep(a, b, m, (1 - p) * m / 2 + s, p * m / 2 + s, filters.decomposition);
      const auto cells = Signal(std::vector<float>(b.begin() + 1, b.end()));
      EXPECT_EQ((*tree)[(1 << d) + 2 * block - 2],
                static_cast<float>(OpenWavelet::CalcEntropy(&cells, s, m / 2, Norm(signal))));
      EXPECT_EQ((*tree)[(1 << d) + 2 * block - 1],
                static_cast<float>(OpenWavelet::CalcEntropy(&cells, s + m / 2, m / 2, Norm(signal))));
    }
    std::swap(a, b);
  }
}

TEST(WaveletEntropyTree, OfASpikeHasNoEntropyAtItsRootAndThatOfZerosNowhere) {
  const SomeFilters filters;
  for (const float height : {3.0F, 0.1F, -7.3F, 1e-15F, 1e15F}) {
    NCDataVector<float> spike(16, 0.0F);
    spike(5, height);
    EXPECT_EQ(EntropyOfAll(spike, Norm(spike)), 0) << height;
    EXPECT_EQ((*OwnedVector(OpenWavelet::MakeEntropyTree(&spike, filters.decomposition)))[1], 0.0F) << height;
  }
  const NCDataVector<float> zeros(16, 0.0F);
  EXPECT_THAT(CellsOf(*OwnedVector(OpenWavelet::MakeEntropyTree(&zeros, filters.decomposition))), Each(0.0F));
}

}  // namespace
