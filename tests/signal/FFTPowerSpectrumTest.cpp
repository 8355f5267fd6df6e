#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <new>
#include <numeric>
#include <thread>

#include "kalmia/signal/WindowedPower.h"
#include "kalmia/support/NCError.h"
#include "signal/PlainFourier.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

namespace {

constexpr FFT::DataWindowMode kWindows[] = {FFT::WindowBartlett, FFT::WindowHann, FFT::WindowWelch};
constexpr FFT::DetrendMode kModes[] = {FFT::DetrendNone, FFT::DetrendMean, FFT::DetrendLinear};
constexpr const char* kText = "Power spectrum could not be computed.";

/// A cell is rounded to float when it is detrended or padded, by 2^-24 of itself. By Cauchy's inequality and Parseval's
/// equation that changes the length |X| of a transform by at most 2^-24 of the root of the whole power, all frequencies
/// taken; twice that for the sums of several segments and the rounding of the power itself.
void ExpectPower(const std::vector<float>& power, const std::vector<long double>& expected) {
  ASSERT_EQ(power.size(), expected.size());
  const long double whole = std::accumulate(expected.begin(), expected.end(), 0.0L);
  for (std::size_t i = 0; i < power.size(); ++i) {
    const long double off = 0x1p-23L * std::sqrt(whole);
    EXPECT_NEAR(power[i], expected[i], 2 * std::sqrt(expected[i]) * off + off * off) << i;
  }
}

TEST(FFTPowerSpectrum, IsThatOfTheDefinitionForEveryCut) {
  for (const int segment : {2, 4, 8, 16, 32, 64, 128})
    for (const int n : {1, segment / 2 + 1, segment, 2 * segment - 1, 2 * segment, 3 * segment + 1, 131})
      for (const bool overlap : {false, true})
        for (const FFT::DataWindowMode window : kWindows) {
          if (overlap && n <= segment / 2) continue;
          const FFT::DetrendMode mode = n == 2 ? FFT::DetrendMean : kModes[(n + window) % 3];  // two cells are a line
          const SpectrumCase how = {segment, overlap, mode, FFT::ScalingMode((n + segment) % 2), window};
          SCOPED_TRACE(::testing::Message() << n << " cells, segments of " << segment << (overlap ? ", overlap" : "")
                                            << ", mode " << mode << ", window " << window);
          ExpectPower(PowerOf(Signal(n, 1), how), PlainPower(Signal(n, 1), how));
        }
}

TEST(FFTPowerSpectrum, HasWindowsByTheirFormulas) {
  for (const FFT::DataWindowMode window : kWindows)
    for (const int m : {1, 2, 4, 32}) {
      long double squares = 0;
      for (int j = 1; j <= 2 * m; ++j) squares += PlainWindow(window, j, m) * PlainWindow(window, j, m);
      for (int j = 1; j <= 2 * m; ++j) {  // a single 1 has the power w(j)^2 at every frequency
        std::vector<float> impulse(4 * m, 0.0F);
        impulse[j - 1] = 1.0F;
        const SpectrumCase how = {2 * m, false, FFT::DetrendNone, FFT::ScalingPlain, window};
        const long double expected = PlainWindow(window, j, m) * PlainWindow(window, j, m) / (2 * squares);
        // The sum of the squares has 2 m roundings to float, of weights and of sums.
        EXPECT_NEAR(PowerOf(impulse, how)[0], expected, 4 * m * 0x1p-24 * expected) << window << ", " << m << ", " << j;
      }
    }
}

TEST(FFTPowerSpectrum, CountsWindowCellsFromOneForHannAndFromZeroForTheOthers) {
  EXPECT_DOUBLE_EQ(kalmia::WindowAt(FFT::WindowBartlett, 1, 2), 1 - 1.5 / 2.5);
  EXPECT_DOUBLE_EQ(kalmia::WindowAt(FFT::WindowBartlett, 4, 2), 1 - 1.5 / 2.5);
  EXPECT_DOUBLE_EQ(kalmia::WindowAt(FFT::WindowWelch, 1, 2), 1 - 0.36);
  EXPECT_DOUBLE_EQ(kalmia::WindowAt(FFT::WindowWelch, 4, 2), 1 - 0.36);
  EXPECT_DOUBLE_EQ(kalmia::WindowAt(FFT::WindowHann, 1, 2), (1 - std::cos(std::acos(-1.0) / 2.5)) / 2);
  EXPECT_DOUBLE_EQ(kalmia::WindowAt(FFT::WindowHann, 4, 2), kalmia::WindowAt(FFT::WindowHann, 1, 2));
  EXPECT_EQ(kalmia::WindowAt(static_cast<FFT::DataWindowMode>(3), 1, 2), 0.0);
  EXPECT_EQ(kalmia::WindowAt(static_cast<FFT::DataWindowMode>(-1), 1, 2), 0.0);
}

TEST(FFTPowerSpectrum, AddsUpToTheSquaresOfTheWindowedCells) {  // Parseval; no padding at this length
  const int m = 512;
  const std::vector<float> signal = Signal(8 * m, 1);
  for (const FFT::DataWindowMode window : kWindows) {
    long double squares = 0, weights = 0;
    for (int i = 0; i < 8 * m; ++i) {
      const long double w = PlainWindow(window, i % (2 * m) + 1, m);
      squares += w * w * signal[i] * signal[i];
      weights += w * w / 4;
    }
    const std::vector<float> power =
        PowerOf(signal, {2 * m, false, FFT::DetrendNone, FFT::ScalingPlain, window});
    const long double sum = std::accumulate(power.begin(), power.end(), 0.0L);
    // Sums of a thousand floats, the window's: their rounding walks by some 30 steps of 2^-25.
    EXPECT_NEAR(sum / (squares * 2 * m / (4 * weights)), 1.0, 100 * 0x1p-25) << window;
  }
}

TEST(FFTPowerSpectrum, FindsTheFrequencyOfASine) {
  std::vector<float> sine;
  for (int i = 0; i < 1000; ++i) sine.push_back(static_cast<float>(3 + std::sin(2 * std::acos(-1.0) * 5 * i / 64)));
  for (const bool overlap : {false, true})
    for (const FFT::DataWindowMode window : kWindows) {
      const std::vector<float> power = PowerOf(sine, {64, overlap, FFT::DetrendMean, FFT::ScalingPlain, window});
      ASSERT_EQ(power.size(), 33U);
      EXPECT_EQ(std::max_element(power.begin(), power.end()) - power.begin(), 5);
    }
}

TEST(FFTPowerSpectrum, DividesByTheWindowsOwnGainWhereAsked) {
  const std::vector<float> signal = Signal(100, 1);
  SpectrumCase how = {32, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowWelch};
  const std::vector<float> plain = PowerOf(signal, how);
  how.scaling = FFT::ScalingWindow;
  const std::vector<float> scaled = PowerOf(signal, how);
  float sum = 0, squares = 0;
  for (int j = 1; j <= 32; ++j) {
    const double w = kalmia::WindowAt(FFT::WindowWelch, j, 16);
    sum += static_cast<float>(w);
    squares += static_cast<float>(w * w);
  }
  const double gain = static_cast<double>(sum) * sum / squares;
  for (std::size_t i = 0; i < plain.size(); ++i)
    EXPECT_NEAR(plain[i] / scaled[i], gain, 2 * 0x1p-24 * gain);  // both are rounded once
  for (const int other : {2, -1, 100}) {
    how.scaling = static_cast<FFT::ScalingMode>(other);
    EXPECT_EQ(PowerOf(signal, how), plain) << other;
  }
}

TEST(FFTPowerSpectrum, LeavesTheOutputUntouchedForLengthsThatAreNoPowerOfTwoAndNulls) {
  const NCDataVector<float> signal = VectorOfCells(Signal(40, 1)), untouched = VectorOfCells({1.5F, -99.0F});
  NCDataVector<float> output = untouched;
  for (const int segment : {0, -1, -2, -8, 3, 6, 12, 1000, 2147483647, -2147483647 - 1}) {
    FFT::PowerSpectrum(&signal, segment, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann, &output);
    EXPECT_TRUE(output == untouched) << segment;
  }
  FFT::PowerSpectrum(nullptr, 8, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann, &output);
  EXPECT_TRUE(output == untouched);
  FFT::PowerSpectrum(&signal, 8, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann, nullptr);
}

struct Failing {
  const char* what;
  std::vector<float> signal;
  int segment;
  bool overlap;
  int window = FFT::WindowHann;
};

TEST(FFTPowerSpectrum, FailsWithItsTextAndLeavesTheOutputUntouched) {
  const float infinity = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  std::vector<float> small = Signal(40, 1);
  for (float& cell : small) cell *= 1e-21F;  // the power, of the order of 1e-40, is denormal
  const Failing failures[] = {{"segments of one cell", Signal(40, 1), 1, false},
                              {"segments of one cell that overlap", Signal(40, 1), 1, true},
                              {"a window of zeros", Signal(40, 1), 8, true, 3},
                              {"another window of zeros", Signal(40, 1), 8, false, -1},
                              {"no segment", {}, 8, false},
                              {"no segment that overlaps", {}, 8, true},
                              {"half a segment, which has no pair", Signal(4, 1), 8, true},
                              {"a segment beyond all signals", Signal(4, 1), 1 << 30, true},
                              {"more cells than a vector has", Signal(4, 1), 1 << 30, false},
                              {"an infinite cell", {1, infinity, 2, 3}, 4, false},
                              {"a cell that is no number", {1, nan, 2, 3}, 4, false},
                              {"a power beyond the floats", {1e30F, -1e30F, 1e30F, -1e30F}, 4, false},
                              {"a denormal power", small, 8, true}};
  for (const Failing& failure : failures) {
    SCOPED_TRACE(failure.what);
    const NCDataVector<float> signal = VectorOfCells(failure.signal), untouched = VectorOfCells({1.5F, -99.0F});
    NCDataVector<float> output = untouched;
    try {
      FFT::PowerSpectrum(&signal, failure.segment, failure.overlap, FFT::DetrendNone, FFT::ScalingPlain,
                         static_cast<FFT::DataWindowMode>(failure.window), &output);
      ADD_FAILURE() << "no failure";
    } catch (const NCError& error) {
      EXPECT_STREQ(error.GetMessage(), kText);
      EXPECT_EQ(error.GetLevel(), NCError::Level0);
    }
    EXPECT_TRUE(output == untouched);
  }
}

TEST(FFTPowerSpectrum, TakesOneCellMoreThanHalfASegment) {
  EXPECT_EQ(PowerOf(Signal(5, 1), {8, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann}).size(), 5U);
}

TEST(FFTPowerSpectrum, OfNothingButZerosIsZeroAndNoFailure) {
  const std::vector<float> constant(40, 7.0F);
  EXPECT_EQ(PowerOf(constant, {8, true, FFT::DetrendMean, FFT::ScalingWindow, FFT::WindowBartlett}),
            std::vector<float>(5, 0.0F));
}

TEST(FFTPowerSpectrum, HasNoFailureWhereRoundingLeavesADenormalTraceOfNoPower) {
  // A triangle over whole periods has no power at every other frequency, so neither has a constant beside it.
  const struct {
    float constant;
    int segment;
  } kCases[] = {{0.1F, 256}, {0.001F, 64}, {0.001F, 1024}, {0.3F, 1024}, {1e-10F, 256}};
  for (const auto& it : kCases) {
    SCOPED_TRACE(testing::Message() << it.constant << " in segments of " << it.segment);
    const std::vector<float> signal(2 * it.segment, it.constant);
    const SpectrumCase how = {it.segment, true, FFT::DetrendNone, FFT::ScalingPlain, FFT::WindowBartlett};
    const std::vector<float> power = PowerOf(signal, how);
    ExpectPower(power, PlainPower(signal, how));
    for (const float cell : power) EXPECT_TRUE(cell == 0 || std::isnormal(cell)) << cell;
    EXPECT_GT(power[1], 0);
  }
}

TEST(FFTPowerSpectrum, IsZeroWhereThePowerIsBelowAllFloats) {
  std::vector<float> tiny = Signal(40, 1);
  for (float& cell : tiny) cell *= 1e-25F;
  EXPECT_EQ(PowerOf(tiny, {8, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann}),
            std::vector<float>(5, 0.0F));
}

TEST(FFTPowerSpectrum, OfASignalWithNothingPresentIsThatOfAConstant) {
  for (const FFT::DetrendMode mode : kModes) {
    const SpectrumCase how = {8, true, mode, FFT::ScalingPlain, FFT::WindowHann};
    const std::vector<float> signal(40, kHole<float>);
    ExpectPower(PowerOf(signal, how), PlainPower(signal, {8, true, FFT::DetrendNone, how.scaling, how.window}));
  }
}

TEST(FFTPowerSpectrum, KeepsAMeanOfASumOfMinus99) {
  const std::vector<float> signal = {-50, -49};
  const SpectrumCase how = {2, false, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowWelch};
  EXPECT_EQ(PowerOf(signal, how), PowerOf(signal, {2, false, FFT::DetrendNone, how.scaling, how.window}));
}

TEST(FFTPowerSpectrum, FillsHolesInACopyOfTheSignal) {
  std::vector<float> holes = Signal(40, 1), filled = holes;
  for (const std::size_t i : {0, 10, 11, 12, 39}) holes[i] = kHole<float>;
  filled[0] = filled[1];
  filled[39] = filled[38];
  for (std::size_t i = 10; i < 13; ++i) {
    filled[i] = filled[9] + static_cast<float>(i - 9) / 4 * (filled[13] - filled[9]);
  }
  const SpectrumCase how = {16, true, FFT::DetrendLinear, FFT::ScalingPlain, FFT::WindowHann};
  EXPECT_EQ(PowerOf(holes, how), PowerOf(filled, how));

  NCDataVector<float> signal = VectorOfCells(holes);
  const NCDataVector<float> shared = signal;
  FFT::PowerSpectrum(&signal, 16, true, FFT::DetrendLinear, FFT::ScalingPlain, FFT::WindowHann, &signal);
  EXPECT_EQ(CellsOf(signal), PowerOf(filled, how));
  EXPECT_TRUE(HasExactCounts(signal));
  EXPECT_EQ(CellsOf(shared), holes);
}

TEST(FFTPowerSpectrum, MayRunAtTheSameTimeOnDifferentSignals) {
  const SpectrumCase how = {64, true, FFT::DetrendLinear, FFT::ScalingPlain, FFT::WindowHann};
  std::vector<std::vector<float>> alone, together(4);
  for (int kind = 1; kind <= 4; ++kind) alone.push_back(PowerOf(Signal(1000, kind), how));
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back([&, i] { together[i] = PowerOf(Signal(1000, i + 1), how); });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(together, alone);
}

TEST(FFTPowerSpectrum, MayRunAtTheSameTimeOnTheSameSignal) {
  const SpectrumCase how = {64, true, FFT::DetrendNone, FFT::ScalingPlain, FFT::WindowHann};
  const NCDataVector<float> signal = VectorOfCells(Signal(160, 1));
  const std::vector<float> alone = PowerOf(Signal(160, 1), how);
  std::vector<int> wrong(4, 0);
  std::vector<std::thread> threads;
  for (int& count : wrong)
    threads.emplace_back([&] {
      for (int round = 0; round < 100; ++round) {
        NCDataVector<float> power;
        FFT::PowerSpectrum(&signal, 64, true, FFT::DetrendNone, FFT::ScalingPlain, FFT::WindowHann, &power);
        count += CellsOf(power) != alone;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST(FFTPowerSpectrum, TakesNoShareOfItsSignal) {
  NCDataVector<float> signal = VectorOfCells(Signal(16, 1));  // neither holes nor a trend nor padding: no cell changes
  const float* const block = signal.GetVector();
  FFT::PowerSpectrum(&signal, 4, false, FFT::DetrendNone, FFT::ScalingPlain, FFT::WindowHann, &signal);
  EXPECT_EQ(signal.Size(), 3);
  EXPECT_EQ(signal.GetVector(), block);  // a block that is shared gives way to a new one
}

TEST(FFTPowerSpectrum, IsCutByAQuotientInFloat) {
  using kalmia::CutIntoSegments;
  const int twoTo24 = 1 << 24;  // from here on a float leaves out every other number
  EXPECT_EQ(CutIntoSegments(twoTo24, 1, false).rounds, twoTo24 / 4);
  EXPECT_EQ(CutIntoSegments(twoTo24 + 1, 1, false).rounds, twoTo24 / 4);  // exactly, one more
  EXPECT_EQ(CutIntoSegments(twoTo24 + 2, 1, false).rounds, twoTo24 / 4 + 1);
  EXPECT_EQ(CutIntoSegments(3 * twoTo24 / 2 + 1, twoTo24 / 2, true).rounds, 1);  // exactly, 2
  EXPECT_EQ(CutIntoSegments(3 * twoTo24 / 2 + 2, twoTo24 / 2, true).rounds, 2);
  EXPECT_EQ(CutIntoSegments(2147483647, 1, true).rounds, 1 << 30);
  EXPECT_EQ(CutIntoSegments(2147483647, 1, true).cells, (std::int64_t{1} << 31) + 1);
  EXPECT_EQ(CutIntoSegments(2147483647, 1, false).cells, std::int64_t{1} << 31);
}

TEST(FFTPowerSpectrum, IsTheSameFailureWhereItsBuffersFindNoMemory) {
  const NCDataVector<float> signal = VectorOfCells(Signal(64, 1)), untouched = VectorOfCells({1.5F, -99.0F});
  int failures = 0;
  for (int which = 1;; ++which) {
    NCDataVector<float> output = untouched;
    try {
      const FailAllocation fail(which);
      FFT::PowerSpectrum(&signal, 16, true, FFT::DetrendMean, FFT::ScalingPlain, FFT::WindowHann, &output);
      if (!fail.HasFailed()) break;
    } catch (const NCError& error) {
      EXPECT_STREQ(error.GetMessage(), kText);
      ++failures;
    } catch (const std::bad_alloc&) {  // of the copy that is prepared, or of the output
    }
    EXPECT_TRUE(output == untouched);
  }
  EXPECT_GE(failures, 3);  // window, transform, powers
}

}  // namespace
