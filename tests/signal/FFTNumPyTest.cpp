#include <gtest/gtest.h>

#include <cmath>

#include "signal/NumPyFourier.h"
#include "signal/PlainFourier.h"

namespace {

TEST(FFTBesideNumPy, CorrelatesAsNumPyDoesAtSizesUpTo4096) {
  for (const NumPyCorrelation& known : kNumPyCorrelations) {
    SCOPED_TRACE(::testing::Message() << known.n << " cells, " << known.lags << " lags, mode " << known.detrend);
    const NCDataVector<float> a = VectorOfCells(Signal(known.n, 1)), b = VectorOfCells(Signal(known.n, 2));
    NCDataVector<float> itself, cross;
    FFT::AutoCorrelation(&a, known.detrend, known.lags, &itself);
    FFT::CrossCorrelation(&a, &b, known.detrend, known.lags, &cross);
    const int lags[] = {-known.lags, -(known.lags / 2), 0, known.lags / 2, known.lags};
    for (int i = 0; i < 5; ++i) {
      // Cells of signals of length 1 are rounded three times by 2^-24 of themselves, and the result once.
      EXPECT_NEAR(itself[std::abs(lags[i]) + 1], known.itself[i], 7 * 0x1p-24) << lags[i];
      EXPECT_NEAR(cross[lags[i] + known.lags + 1], known.cross[i], 7 * 0x1p-24) << lags[i];
    }
  }
}

TEST(FFTBesideNumPy, HasThePowerThatNumPyHasInSegmentsUpTo4096) {
  for (const NumPyPower& known : kNumPyPowers) {
    SCOPED_TRACE(::testing::Message() << known.n << " cells, segments of " << known.segment << ", " << known.overlap);
    const std::vector<float> power = PowerOf(
        Signal(known.n, 1), {known.segment, known.overlap, known.detrend, known.scaling, known.window});
    ASSERT_EQ(power.size(), static_cast<std::size_t>(known.segment) / 2 + 1);
    const int places[] = {0, 1, known.segment / 4, known.segment / 2};
    for (int i = 0; i < 4; ++i) {
      // A cell is rounded twice, which moves |X| by at most 2^-23 of the root of the whole power (Cauchy, Parseval). A
      // weight that NumPy's cosine has one bit off may be rounded to another float: 2^-24 of a sum of them.
      const double off = 0x1p-23 * std::sqrt(known.whole);
      EXPECT_NEAR(power[places[i]], known.power[i],
                  2 * std::sqrt(known.power[i]) * off + off * off + 0x1p-22 * known.power[i])
          << places[i];
    }
  }
}

}  // namespace
