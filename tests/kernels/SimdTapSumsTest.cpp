#include "kalmia/kernels/simd/TapSums.h"

#include <gtest/gtest.h>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

std::vector<double> Widened(const std::vector<float>& cells) { return {cells.begin(), cells.end()}; }

/// `taps` windows into one array, at all alignments, in no order.
std::vector<const double*> Windows(const std::vector<double>& cells, int taps) {
  std::vector<const double*> windows;
  for (int t = 0; t < taps; ++t) windows.push_back(cells.data() + (t * 7) % (taps + 1));
  return windows;
}

TEST(SimdTapSums, AddsTheShiftedInputsEachTimesItsTap) {
  const double x[] = {1, 2, 3, 4}, h[] = {10, -1};
  const double* const from[] = {x, x + 1};
  float out[3];
  simd::scalar::SumTaps(from, h, 2, out, 3);
  EXPECT_EQ(std::vector<float>(out, out + 3), (std::vector<float>{8, 17, 26}));
}

TEST(SimdTapSums, GivesZerosWithoutTaps) {
  std::vector<float> out(20, 1.0F);
  simd::SumTaps(nullptr, nullptr, 0, out.data(), 20);
  EXPECT_EQ(out, std::vector<float>(20, 0.0F));
}

TEST(SimdTapSums, LanesGiveTheBitsOfTheScalarTwin) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths())
      for (int taps : {0, 1, 2, 5, 50})
        for (bool special : {false, true}) {
          const auto cells = Widened(special ? SpecialCells<float>(n + taps, n)
                                             : Cells<float>(n + taps, HolePattern::None, n));
          const auto h = Widened(Cells<float>(taps, HolePattern::None, taps));
          const auto from = Windows(cells, taps);
          std::vector<float> lanes(n), twins(n);
          simd::SumTaps(from.data(), h.data(), taps, lanes.data(), n);
          simd::scalar::SumTaps(from.data(), h.data(), taps, twins.data(), n);
          EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << taps << " taps, " << n << " outputs";
        }
  }
}

}  // namespace
