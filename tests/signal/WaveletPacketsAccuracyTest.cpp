#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "kalmia/signal/SignalLength.h"
#include "signal/WaveletCase.h"
#include "signal/WaveletPacketCase.h"

// What packets lose of a signal: rounding, and nothing else.

namespace {

constexpr Wavelet::DetrendMode kModes[] = {Wavelet::DetrendNone, Wavelet::DetrendMean, Wavelet::DetrendLinear};

/// The most that a level, forward or backward, stretches a vector: the largest singular value of its two filters over
/// all frequencies.
double LargestStretch(Wavelet::WaveletFunctionType type) {
  switch (type) {
    case Wavelet::FunctionBiorthogonal2: return std::sqrt(2.0);  // whatever the order
    case Wavelet::FunctionBiorthogonal3: return 2;               // the same
    case Wavelet::FunctionBiorthogonal1:
    case Wavelet::FunctionBiorthogonal4:
    case Wavelet::FunctionBiorthogonal5:
    case Wavelet::FunctionBiorthogonal6: return 1.3;  // 1.28 for the pair 5.5, the others less
    default: return 1;  // orthogonal
  }
}

/// What `levels` levels of packets of this length, there and back, may lose of a signal. A level rounds its results to
/// float, which errs by 2^-24 of their length; and its taps are rounded, which errs by 2^-24 of what it reads,
/// stretched by s, the most that its filters stretch with their signs left out. If no level stretches more than g-fold,
/// the cells of a level are longer than the packets by g for each level from it to them at most, and its errors grow by
/// g for each level from it to the signal: by g^levels in all, wherever it lies. There and back a level so loses 2 + s
/// (g + 1 / g): at most 8.6, with the filters of 50 taps (g = 1, s = 3.3); splines of order 3 have 7.8 (g = 2, s =
/// 2.3).
double LossOf(const NCDataVector<float>& packets, Wavelet::WaveletFunctionType type, int levels) {
  return levels * std::pow(LargestStretch(type), levels) * 8.6 * 0x1p-24 * Norm(packets);
}

TEST(WaveletPackets, GiveTheSignalBackForEveryFilterLengthAndTrend) {
  for (const FamilyAndOrder& filter : AllFilters()) {
    const Filters filters(filter.type, filter.order);
    for (int n : {1, 2, 3, 5, 8, 13, 16, 50, 64, 100, 128})
      for (const auto mode : kModes) {
        const auto signal = RandomSignal(n, n, 2);
        const int cells = Transformed(signal, filters.decomposition, true)->Size();
        const BoolVector decisions = RandomDecisions(cells, n);
        long double mean = 0, slope = 0;
        const OwnedVector packets(Wavelet::ForwardTransformBestBasis(&signal, &decisions, filters.decomposition, mode,
                                                                     mean, slope, nullptr));
        ASSERT_EQ(packets->Size(), cells);
        const OwnedVector back(Wavelet::BackwardTransformBestBasis(packets.get(), &decisions, filters.reconstruction,
                                                                   mode, n, static_cast<double>(mean),
                                                                   static_cast<double>(slope), nullptr));
        ASSERT_EQ(back->Size(), n);
        double gap = 0;  // a line comes back lower by one slope
        for (int i = 1; i <= n; ++i)
          gap = std::max(gap, std::fabs(double{(*back)[i]} - (double{signal[i]} - static_cast<double>(slope))));
        // Taking the trend off and putting it back rounds each cell once more, without and with its trend.
        const double trend = 0x1p-24 * (2 * Norm(signal) + std::fabs(static_cast<double>(slope)));
        EXPECT_LE(gap, LossOf(*packets, filter.type, kalmia::Levels(cells)) + trend)
            << filter << ", " << n << " cells, mode " << mode;
      }
  }
}

TEST(WaveletPackets, OfOrthogonalFamiliesKeepTheSumOfSquares) {
  for (const FamilyAndOrder& filter : OrthogonalFilters()) {
    const Filters filters(filter.type, filter.order);
    for (int n : {2, 64, 128}) {
      const auto signal = RandomSignal(n, 1);
      const OwnedVector packets = InBasis(signal, RandomDecisions(n, 2), filters.decomposition);
      EXPECT_NE(CellsOf(*packets), CellsOf(signal));  // it was split
      // One way loses half of both.
      EXPECT_NEAR(Norm(*packets), Norm(signal), LossOf(*packets, filter.type, kalmia::Levels(n)) / 2) << filter;
    }
  }
}

}  // namespace
