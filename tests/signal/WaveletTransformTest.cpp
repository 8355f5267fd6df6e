#include <gtest/gtest.h>

#include <cmath>

#include "signal/WaveletCase.h"

namespace {

double LargestGap(const NCDataVector<float>& a, const NCDataVector<float>& b) {
  double gap = 0;
  for (int i = 1; i <= a.Size(); ++i) gap = std::max(gap, std::fabs(double(a[i]) - double(b[i])));
  return gap;
}

double Norm(const NCDataVector<float>& v) { return std::sqrt(static_cast<double>(v.GetSS())); }

class WaveletRoundTrip : public ::testing::TestWithParam<FamilyAndOrder> {
 protected:
  WaveletRoundTrip() : filters_(GetParam().type, GetParam().order) {}

  const Filters filters_;
};

// Each tap and each coefficient is rounded once to float, by at most 2^-24 of itself. A level is a sum of few terms of
// either, there and back, on at most eight levels; biorthogonal ones of order 3 can swell a level by up to 4. Errors
// are random: 64 roundings of the signal's length are beyond all that, and far below a wrong tap.
constexpr double kRoundings = 64 * 0x1p-24;

TEST_P(WaveletRoundTrip, GivesTheSignalBackForEveryLengthWithAndWithoutPaddingInModes0And1) {
  for (int n = 1; n <= 140; ++n)
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
        ASSERT_EQ(back->Size(), n);
        EXPECT_LT(LargestGap(*back, signal), kRoundings * Norm(signal)) << n << " cells, pad " << pad;
      }
}

INSTANTIATE_TEST_SUITE_P(EveryFilter, WaveletRoundTrip, ::testing::ValuesIn(AllFilters()));

}  // namespace
