#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <thread>

#include "kalmia/signal/FFT.h"
#include "kalmia/signal/internal/Correlation.h"
#include "signal/PlainFourier.h"
#include "testing/RandomTables.h"

namespace {

// A cell is rounded to float when it is detrended, centred and divided, each by at most 2^-24 of itself. Both signals
// have length 1, so by Cauchy's inequality a correlation is off by at most twice three of them, and 2^-24 for its own.
constexpr double kOff = 7 * 0x1p-24;

constexpr FFT::DetrendMode kModes[] = {FFT::DetrendNone, FFT::DetrendMean, FFT::DetrendLinear};

std::vector<float> Auto(const std::vector<float>& signal, FFT::DetrendMode mode, int lags) {
  NCDataVector<float> r;
  const NCDataVector<float> input = VectorOfCells(signal);
  FFT::AutoCorrelation(&input, mode, lags, &r);
  return CellsOf(r);
}

std::vector<float> Cross(const std::vector<float>& a, const std::vector<float>& b, FFT::DetrendMode mode, int lags) {
  NCDataVector<float> r;
  const NCDataVector<float> first = VectorOfCells(a), second = VectorOfCells(b);
  FFT::CrossCorrelation(&first, &second, mode, lags, &r);
  return CellsOf(r);
}

TEST(FFTCorrelation, IsTheSumOfProductsAtEverySizeLagAndMode) {
  const int sizes[] = {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 64, 100, 128, 200, 256};
  for (const int n : sizes)
    for (const int lags : {0, 1, n / 2, n - 1, n})
      for (const FFT::DetrendMode mode : kModes) {
        if (lags > n || (n == 2 && mode == FFT::DetrendLinear)) continue;  // a line takes all of two cells
        SCOPED_TRACE(::testing::Message() << n << " cells, " << lags << " lags, mode " << mode);
        const std::vector<float> a = Signal(n, 1), b = Signal(n, 2);
        const std::vector<long double> expected = PlainCorrelation(a, b, mode, lags);
        const std::vector<long double> own = PlainCorrelation(a, a, mode, lags);
        const std::vector<float> cross = Cross(a, b, mode, lags), itself = Auto(a, mode, lags);
        ASSERT_EQ(cross.size(), expected.size());
        ASSERT_EQ(itself.size(), static_cast<std::size_t>(lags) + 1);
        for (std::size_t i = 0; i < cross.size(); ++i) EXPECT_NEAR(cross[i], expected[i], kOff) << i;
        for (std::size_t i = 0; i < itself.size(); ++i) EXPECT_NEAR(itself[i], own[i + lags], kOff) << i;
      }
}

TEST(FFTCorrelation, WithoutLagsGivesTheOneCellOfLagZero) {
  const std::vector<float> r = Auto(Signal(50, 1), FFT::DetrendMean, 0);
  ASSERT_EQ(r.size(), 1U);
  EXPECT_NEAR(r[0], 1.0, kOff);
  EXPECT_EQ(Cross(Signal(50, 1), Signal(50, 2), FFT::DetrendMean, 0).size(), 1U);
}

TEST(FFTCorrelation, OfAConstantSignalWithoutItsMeanIsZero) {
  EXPECT_EQ(Auto(std::vector<float>(12, 0.1F), FFT::DetrendMean, 5), std::vector<float>(6, 0.0F));
  for (const float r : Cross(std::vector<float>(12, 3.0F), Signal(12, 1), FFT::DetrendMean, 2))
    EXPECT_NEAR(r, 0.0, 1e-14);  // the other signal goes through the same transform, in double
}

TEST(FFTCorrelation, OfTwoCellsWithoutTheirLineIsZero) {
  EXPECT_EQ(Auto({5.0F, 7.0F}, FFT::DetrendLinear, 2), std::vector<float>(3, 0.0F));
  EXPECT_EQ(Cross({5.0F, 7.0F}, {1.0F, 0.5F}, FFT::DetrendLinear, 1), std::vector<float>(3, 0.0F));
}

TEST(FFTCorrelation, KeepsAMeanOfASumOfMinus99) {
  const std::vector<float> signal = {-50, -49};
  EXPECT_EQ(Auto(signal, FFT::DetrendMean, 2), Auto(signal, FFT::DetrendNone, 2));
  EXPECT_NE(Auto({-50, -48}, FFT::DetrendMean, 2), Auto({-50, -48}, FFT::DetrendNone, 2));
}

TEST(FFTCorrelation, OfASingleCellIsZeroUnlessPaddingStandsBesideIt) {
  EXPECT_EQ(Auto({5.0F}, FFT::DetrendNone, 0), std::vector<float>{0.0F});
  EXPECT_EQ(Cross({5.0F}, {7.0F}, FFT::DetrendNone, 0), std::vector<float>{0.0F});
  const std::vector<float> r = Auto({5.0F}, FFT::DetrendNone, 1);  // 5 and 0: centred, each the other's opposite
  ASSERT_EQ(r.size(), 2U);
  EXPECT_NEAR(r[0], 1.0, kOff);
  EXPECT_NEAR(r[1], -1.0, kOff);
}

TEST(FFTCorrelation, OfASignalWithItselfIsSymmetricAndLargestInTheMiddle) {
  const std::vector<float> a = Signal(300, 1);
  const std::vector<float> r = Cross(a, a, FFT::DetrendLinear, 40), own = Auto(a, FFT::DetrendLinear, 40);
  ASSERT_EQ(r.size(), 81U);
  for (std::size_t i = 0; i <= 40; ++i) {
    EXPECT_NEAR(r[40 + i], r[40 - i], 0x1p-24);  // both are rounded from sums in double that agree to about 1e-16
    EXPECT_EQ(r[40 + i], own[i]);
    EXPECT_LE(r[40 + i], r[40]);
  }
}

TEST(FFTCorrelation, PeaksAtANegativeLagWhereTheSecondSignalComesLater) {
  std::vector<float> first(20, 0.0F), later(20, 0.0F);
  first[4] = 1.0F;
  later[7] = 1.0F;
  const std::vector<float> r = Cross(first, later, FFT::DetrendNone, 5);
  EXPECT_EQ(std::max_element(r.begin(), r.end()) - r.begin(), 5 - 3);  // cell lags + 1 is lag 0
}

TEST(FFTCorrelation, CentresThePaddingToo) {
  // Twelve cells of 5 beside four zeros: without detrending they are a step, and correlate with themselves as one.
  const std::vector<float> r = Auto(std::vector<float>(12, 5.0F), FFT::DetrendNone, 4);
  const double high = 5 - 3.75, low = -3.75, squares = 12 * high * high + 4 * low * low;
  for (int lag = 0; lag <= 4; ++lag) {  // round the end, 2 min(lag, 4) cells stand opposite the other level
    const double products = (12 - lag) * high * high + (4 - lag) * low * low + 2 * lag * high * low;
    EXPECT_NEAR(r[lag], products / squares, kOff) << lag;
  }
}

TEST(FFTCorrelation, TakesLagsUpToTheLengthAndLeavesTheOutputAloneBeyond) {
  EXPECT_EQ(Auto(Signal(10, 1), FFT::DetrendMean, 10).size(), 11U);
  EXPECT_EQ(Cross(Signal(10, 1), Signal(10, 2), FFT::DetrendMean, 10).size(), 21U);
}

struct Refusal {
  const char* what;
  const NCDataVector<float>*first, *second;
  int lags;
};

TEST(FFTCorrelation, LeavesTheOutputUntouchedWhereItCannotBeDone) {
  const NCDataVector<float> ten = VectorOfCells(Signal(10, 1)), nine = VectorOfCells(Signal(9, 1)), none;
  const Refusal refusals[] = {{"no first signal", nullptr, &ten, 2}, {"no second signal", &ten, nullptr, 2},
                              {"empty signals", &none, &none, 0},    {"a negative lag", &ten, &ten, -1},
                              {"one lag too many", &ten, &ten, 11},  {"different sizes", &ten, &nine, 2},
                              {"the largest lag", &ten, &ten, 2147483647}};
  const NCDataVector<float> untouched = VectorOfCells({1.5F, -99.0F});
  for (const Refusal& refusal : refusals) {
    SCOPED_TRACE(refusal.what);
    NCDataVector<float> output = untouched;
    FFT::CrossCorrelation(refusal.first, refusal.second, FFT::DetrendMean, refusal.lags, &output);
    EXPECT_TRUE(output == untouched);
    if (refusal.first != nullptr && refusal.second == refusal.first) {
      FFT::AutoCorrelation(refusal.first, FFT::DetrendMean, refusal.lags, &output);
      EXPECT_TRUE(output == untouched);
    }
  }
  NCDataVector<float> output = untouched;
  FFT::AutoCorrelation(nullptr, FFT::DetrendMean, 0, &output);
  EXPECT_TRUE(output == untouched);
  FFT::AutoCorrelation(&ten, FFT::DetrendMean, 2, nullptr);
  FFT::CrossCorrelation(&ten, &ten, FFT::DetrendMean, 2, nullptr);
}

TEST(FFTCorrelation, FillsHolesAlongStraightLinesInACopyOfTheSignal) {
  std::vector<float> holes = Signal(40, 1), filled = holes;
  for (const std::size_t i : {0, 1, 10, 11, 12, 39}) holes[i] = kHole<float>;
  filled[0] = filled[1] = filled[2];
  filled[39] = filled[38];
  for (std::size_t i = 10; i < 13; ++i) {  // a quarter of the way is exact for multiples of 1/64
    filled[i] = filled[9] + static_cast<float>(i - 9) / 4 * (filled[13] - filled[9]);
  }
  EXPECT_EQ(Auto(holes, FFT::DetrendLinear, 10), Auto(filled, FFT::DetrendLinear, 10));
  EXPECT_EQ(Cross(holes, Signal(40, 2), FFT::DetrendMean, 10), Cross(filled, Signal(40, 2), FFT::DetrendMean, 10));

  const NCDataVector<float> input = VectorOfCells(holes), shared = input;
  NCDataVector<float> output;
  FFT::CrossCorrelation(&input, &input, FFT::DetrendLinear, 10, &output);
  EXPECT_EQ(CellsOf(input), holes);
  EXPECT_EQ(CellsOf(shared), holes);
  EXPECT_TRUE(HasExactCounts(input));
  EXPECT_TRUE(HasExactCounts(output));
}

TEST(FFTCorrelation, OfASignalWithNothingPresentIsThatOfAConstant) {
  const std::vector<float> r = Auto(std::vector<float>(6, kHole<float>), FFT::DetrendMean, 2);
  const std::vector<float> constant = Auto(std::vector<float>(6, -1.0F), FFT::DetrendNone, 2);
  ASSERT_EQ(r.size(), 3U);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(r[i], constant[i], 2 * kOff);
}

TEST(FFTCorrelation, MayReplaceItsOwnInput) {
  NCDataVector<float> signal = VectorOfCells(Signal(30, 1));
  const NCDataVector<float> shared = signal;
  FFT::AutoCorrelation(&signal, FFT::DetrendMean, 7, &signal);
  EXPECT_EQ(CellsOf(signal), Auto(Signal(30, 1), FFT::DetrendMean, 7));
  EXPECT_EQ(CellsOf(shared), Signal(30, 1));
}

TEST(FFTCorrelation, MayReplaceEitherOfTwoInputs) {
  const std::vector<float> expected = Cross(Signal(30, 1), Signal(30, 2), FFT::DetrendMean, 7);
  for (const bool first : {true, false}) {
    NCDataVector<float> a = VectorOfCells(Signal(30, 1)), b = VectorOfCells(Signal(30, 2));
    FFT::CrossCorrelation(&a, &b, FFT::DetrendMean, 7, first ? &a : &b);
    EXPECT_EQ(CellsOf(first ? a : b), expected);
    EXPECT_EQ(CellsOf(first ? b : a), Signal(30, first ? 2 : 1));
  }
}

TEST(FFTCorrelation, OfCellsThatAreNoNumbersIsNoNumberThroughout) {
  for (const float bad : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
    const std::vector<float> r = Auto({1.0F, bad, 2.0F}, FFT::DetrendMean, 2);
    ASSERT_EQ(r.size(), 3U);
    for (const float cell : r) EXPECT_TRUE(std::isnan(cell)) << bad;
  }
}

TEST(FFTCorrelation, MayRunAtTheSameTimeOnTheSameSignals) {
  const NCDataVector<float> a = VectorOfCells(Signal(60, 1)), b = VectorOfCells(Signal(60, 2));
  const std::vector<float> alone = Cross(Signal(60, 1), Signal(60, 2), FFT::DetrendNone, 4);
  std::vector<int> wrong(4, 0);
  std::vector<std::thread> threads;
  for (int& count : wrong)
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) {
        NCDataVector<float> r;
        FFT::CrossCorrelation(&a, &b, FFT::DetrendNone, 4, &r);
        count += CellsOf(r) != alone;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST(Correlate, GivesPositiveLagsFirstAndNegativeOnesFromTheEnd) {
  const float a[] = {0, 1, 0, 0, 0, 0, 0, 0, 0}, b[] = {0, 0, 0, 2, 0, 0, 0, 0, 0};  // cell 0 is not used
  float result[9] = {-7};
  kalmia::Correlate(a, b, 8, result);
  EXPECT_EQ(result[0], -7);
  for (int j = 1; j <= 8; ++j) EXPECT_NEAR(result[j], j == 7 ? 2.0 : 0.0, 1e-14) << j;  // lag -2; roundings of double
}

}  // namespace
