// Steps with wavelets: what is kept, what comes back, what is shrunk.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <utility>

#include "StepTables.h"
#include "kalmia/signal/Wavelet.h"

namespace {

using kalmia::analysis::LearnChain;
using kalmia::analysis::Notes;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::RestoreSignals;
using kalmia::analysis::Signals;
using kalmia::analysis::StepChain;
using ::testing::HasSubstr;
using Matrix = FloatCells;
using Vector = NCDataVector<float>;

std::unique_ptr<Vector> Coefficients(const Vector& row, Wavelet::WaveletFunctionType family, int order) {
  Wavelet::WaveletFilters filters = Wavelet::GetDecompositionFilter(family, order);
  long double mean = 0, slope = 0;
  std::unique_ptr<Vector> result(
      Wavelet::ForwardTransform(&row, filters, Wavelet::DetrendNone, mean, slope, nullptr, /*pad=*/true));
  filters.CleanUp();
  return result;
}

/// Positions, in rising order, of the `count` largest sums of squares: the plainest search that can be right.
std::vector<int> LargestByHand(const Matrix& x, int count, int cells) {
  std::vector<double> squares(static_cast<std::size_t>(cells), 0.0);
  for (const Vector& row : x) {
    const auto coefficients = Coefficients(row, Wavelet::FunctionDaubechies, 2);
    for (int i = 1; i <= cells; ++i) {
      squares[static_cast<std::size_t>(i) - 1] += static_cast<double>((*coefficients)[i]) * (*coefficients)[i];
    }
  }
  std::vector<bool> taken(squares.size(), false);
  for (int k = 0; k < count; ++k) {
    std::size_t best = squares.size();
    for (std::size_t i = 0; i < squares.size(); ++i) {
      if (!taken[i] && (best == squares.size() || squares[i] > squares[best])) best = i;
    }
    taken[best] = true;
  }
  std::vector<int> positions;
  for (std::size_t i = 0; i < taken.size(); ++i) {
    if (taken[i]) positions.push_back(static_cast<int>(i) + 1);
  }
  return positions;
}

TEST(WaveletSteps, WaveletCompressKeepsTheCoefficientsOfLargestMeanSquare) {
  const Matrix x = RandomCells(5, 13, 7);  // padded to 16
  for (const int count : {1, 4, 16}) {
    Signals signals = SignalsOf(x);
    Notes notes;
    const auto steps = ParseSteps("wavelet-compress:" + std::to_string(count) + ":daubechies:6", "steps");
    const StepChain chain = LearnChain(steps, &signals, &notes);
    EXPECT_EQ(chain.steps[0].positions, LargestByHand(x, count, 16));
    ASSERT_EQ(signals.cells.Columns(), count);
    for (int k = 1; k <= count; ++k) {
      const int position = chain.steps[0].positions[static_cast<std::size_t>(k) - 1];
      EXPECT_EQ(signals.names[static_cast<std::size_t>(k) - 1], "wavelet_" + std::to_string(position));
      for (int r = 1; r <= 5; ++r) {
        // The library's filters and coefficients are floats: four levels of some units of 2^-24 of cells up to 2.5.
        const auto library = Coefficients(x[r], Wavelet::FunctionDaubechies, 2);
        EXPECT_NEAR(signals.cells.Row(r - 1)[k - 1], (*library)[position], 5e-6);
      }
    }
  }
}

TEST(WaveletSteps, WaveletRestoreGivesTheSignalsBackWhereAllCoefficientsAreKept) {
  for (const int channels : {1, 2, 13, 16}) {
    const Matrix x = RandomCells(3, channels);
    int cells = 1;
    while (cells < channels) cells *= 2;
    const std::string compress = "wavelet-compress:" + std::to_string(cells);
    const DoubleCells back = After(compress + ",wavelet-restore", x);
    Signals signals = SignalsOf(x);
    Notes notes;
    const StepChain chain = LearnChain(ParseSteps(compress, "steps"), &signals, &notes);
    RestoreSignals(chain, &signals);
    ExpectSame(MatrixOfCells(signals.cells), back);
    EXPECT_EQ(signals.names, chain.inputNames);
    ASSERT_EQ(back.SizeColumns(), channels);
    for (int r = 1; r <= 3; ++r)
      // Four levels there and back of doubles up to 2.5, by filters that are orthogonal to 5e-16.
      for (int c = 1; c <= channels; ++c) EXPECT_NEAR(back[r][c], x[r][c], 1e-13) << channels;
  }
}

TEST(WaveletSteps, WaveletRestoreInvertsWaveletCompressWithEveryFilter) {
  const Matrix x = RandomCells(3, 21);
  const char* families[] = {"beylkin:N/A", "coiflet:2", "coiflet:5", "daubechies:50", "symmlet:4", "biorthogonal1:1",
                            "biorthogonal1:5", "biorthogonal2:2", "biorthogonal2:8", "biorthogonal3:1",
                            "biorthogonal3:9", "biorthogonal4:4", "biorthogonal5:5", "biorthogonal6:8"};
  for (const char* family : families) {
    const DoubleCells back = After(std::string("wavelet-compress:32:") + family + ",wavelet-restore", x);
    for (int r = 1; r <= 3; ++r)
      // Five levels there and back of doubles up to 2.5; biorthogonal filters stretch them before they shrink again.
      for (int c = 1; c <= 21; ++c) EXPECT_NEAR(back[r][c], x[r][c], 1e-12) << family;
  }
}

TEST(WaveletSteps, WaveletRestoreLeavesOutNoMoreThanTheCoefficientsThatWereNot) {
  const Matrix x = RandomCells(3, 16);
  const DoubleCells few = After("wavelet-compress:6:daubechies:8", x);
  const DoubleCells back = After("wavelet-compress:6:daubechies:8,wavelet-restore", x);
  // Orthogonal filters: the sum of squares of the signals is that of the kept coefficients, to doubles' rounding.
  for (int r = 1; r <= 3; ++r) EXPECT_NEAR(static_cast<double>(back[r].GetSS() / few[r].GetSS()), 1.0, 1e-13);
}

TEST(WaveletSteps, WaveletDenoiseShrinksDetailsByTheUniversalThreshold) {
  const Matrix x = RandomCells(2, 16);
  const DoubleCells y = After("wavelet-denoise:daubechies:6", x);
  Matrix rounded(2, 16);
  for (int r = 1; r <= 2; ++r) {
    for (int c = 1; c <= 16; ++c) rounded(r, c, static_cast<float>(y[r][c]));
    const auto before = Coefficients(x[r], Wavelet::FunctionDaubechies, 2);
    const auto after = Coefficients(rounded[r], Wavelet::FunctionDaubechies, 2);
    Vector finest;
    for (int i = 9; i <= 16; ++i) finest.push_back(std::fabs((*before)[i]));
    const double threshold = static_cast<double>(finest.GetMedian()) / 0.6745 * std::sqrt(2.0 * std::log(16.0));
    EXPECT_GT(threshold, 0.0);
    for (int i = 1; i <= 16; ++i) {
      const double d = (*before)[i];
      const double expected = i == 1 ? d : std::copysign(std::max(0.0, std::fabs(d) - threshold), d);
      EXPECT_NEAR((*after)[i], expected, 1e-5) << i;  // back and forth again in floats up to 6
    }
  }
}

/// Around -24.75: four levels of orthogonal filters double the mean twice, to -99.
TEST(WaveletSteps, WaveletDenoiseLosesNoSignalWhoseCoarsestCoefficientIsMinus99) {
  for (const char* family : {"symmlet:8", "daubechies:6", "biorthogonal1:3"}) {
    SCOPED_TRACE(family);
    const std::string step = std::string("wavelet-denoise:") + family;
    const Matrix flat(1, 16, -24.75F);
    Matrix noisy = flat;
    for (int c = 1; c <= 16; ++c) noisy(1, c, -24.75F + (c % 2 == 0 ? 0.0078125F : -0.0078125F));
    for (const Matrix& x : {flat, noisy}) {
      const DoubleCells y = After(step, x);
      // Noise of 0.008 is shrunk.
      for (int c = 1; c <= 16; ++c) EXPECT_NEAR(y[1][c], -24.75, 0.01) << c;
    }
  }
}

TEST(WaveletSteps, WaveletDenoiseTakesItsMeasureFromTheChannelsNotFromThePadding) {
  Matrix x = RandomCells(1, 33);  // of 64 cells 31 are a smooth ramp
  const DoubleCells y = After("wavelet-denoise:daubechies:4", x);
  double before = 0, after = 0;
  for (int c = 2; c <= 33; ++c) {
    before += std::fabs(x[1][c] - x[1][c - 1]);
    after += std::fabs(y[1][c] - y[1][c - 1]);
  }
  EXPECT_LT(after, 0.25 * before);  // noise alone: next to nothing is left of it
}

/// Noise of standard deviation 1, near enough, around 10.
Matrix Noise(int rows, int columns) {
  std::mt19937 generator(7);
  Matrix x(rows, columns);
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= columns; ++c) {
      double sum = 4.0;  // twelve uniform numbers have variance 1
      for (int i = 0; i < 12; ++i) sum += static_cast<double>(generator() % 10001U) / 10000.0;
      x(r, c, static_cast<float>(sum));
    }
  return x;
}

/// The root mean square of what a step takes off the first columns.
double TakenOff(const std::string& step, const Matrix& x, int columns) {
  const DoubleCells y = After(step, x);
  double squares = 0;
  for (int r = 1; r <= x.SizeRows(); ++r)
    for (int c = 1; c <= columns; ++c) squares += std::pow(static_cast<double>(x[r][c]) - y[r][c], 2);
  return std::sqrt(squares / x.SizeRows() / columns);
}

TEST(WaveletSteps, WaveletDenoiseTakesAsMuchOffRowsOfWhichALongStretchIsMissing) {
  for (const char* step : {"wavelet-denoise", "wavelet-denoise:daubechies:4", "wavelet-denoise:biorthogonal2:2"}) {
    const Matrix x = Noise(200, 64);
    const double whole = TakenOff(step, x, 24);
    for (const int missing : {20, 34, 40}) {
      Matrix cut = x;
      for (int r = 1; r <= 200; ++r)
        for (int c = 65 - missing; c <= 64; ++c) cut(r, c, kHole);
      // All noise is taken off, and of a row that is mostly filled a part of its mean and slope too, which the details
      // of the coarse levels hold then: up to a ninth more.
      EXPECT_NEAR(TakenOff(step, cut, 24) / whole, 1.0, 0.15) << step << ' ' << missing;
    }
  }
}

/// 256 channels of a signal, of which only those from `first` to `last` are there.
Matrix Stretch(const std::function<double(int)>& signal, int first, int last) {
  Matrix x(1, 256, kHole);
  for (int c = first; c <= last; ++c) x(1, c, static_cast<float>(signal(c)));
  return x;
}

double Line(int i) { return 100 + 3 * i; }
double Bell(int i) { return 1000 * std::exp(-std::pow((i - 60) / 15.0, 2)); }
double Sine(int i) { return 1000 * std::sin(std::acos(-1.0) * i / 256); }

TEST(WaveletSteps, WaveletDenoiseTakesNothingOffSignalsWithoutNoise) {
  for (const char* step : {"wavelet-denoise", "wavelet-denoise:coiflet:5", "wavelet-denoise:daubechies:50"})
    for (const auto signal : {Line, Bell, Sine})
      for (const auto& [first, last] : {std::pair(1, 256), {1, 64}, {1, 40}, {20, 39}, {1, 200}, {101, 256}}) {
        const Matrix x = Stretch(signal, first, last);
        const DoubleCells y = After(step, x);
        double largest = 0;
        for (int c = first; c <= last; ++c) largest = std::max(largest, std::fabs(double{x[1][c]} - y[1][c]));
        // The cells are floats around 1000, whose rounding is noise of 2e-5; t is 3.3 times it, in each of 8 levels.
        EXPECT_LT(largest, 0.0006) << step << ' ' << signal(1) << ' ' << first << ' ' << last;
      }
}

TEST(WaveletSteps, WaveletDenoiseTakesNoMoreThanTheNoiseOffSignalsOfWhichAStretchIsMissing) {
  const Matrix noise = Noise(1, 256);
  const auto noisy = [&noise](int i) { return Sine(i) + 0.1 * (double{noise[1][i]} - 10); };
  for (const char* step : {"wavelet-denoise", "wavelet-denoise:coiflet:5", "wavelet-denoise:daubechies:50"})
    for (const int last : {24, 40, 64, 200, 256}) {
      // The noise is 0.1. Of the details that hold the signal, and the kink where it is filled, t = 0.33 is taken off:
      // 0.67 at most if 64 cells had it all.
      EXPECT_LT(TakenOff(step, Stretch(noisy, 1, last), last), 0.5) << step << ' ' << last;
    }
}

TEST(WaveletSteps, WaveletDenoiseLeavesRowsAsTheyAreWhereFewerThanFourDetailsTellTheNoise) {
  Matrix x = Noise(1, 64);
  for (int c = 1; c <= 64; ++c)
    if (c > 22) x(1, c, kHole);
  EXPECT_GT(TakenOff("wavelet-denoise", x, 22), 0.1);  // 16 taps: four details lie on the cells
  for (int c = 21; c <= 22; ++c) x(1, c, kHole);
  EXPECT_LT(TakenOff("wavelet-denoise", x, 20), 1e-12);  // six levels there and back of doubles up to 80
}

TEST(WaveletSteps, RefuseCoefficientsBeyondSinglePrecisionButNotOnTheWay) {
  const Matrix x(2, 8, 3e38F);
  EXPECT_THAT(RefusalOf("wavelet-compress:2", x), HasSubstr("becomes no finite number"));
  const DoubleCells y = After("wavelet-denoise", x);
  // Three levels there and back in double, which has room for what is sqrt(8) times as large.
  for (int c = 1; c <= 8; ++c) EXPECT_NEAR(y[2][c] / double{3e38F}, 1.0, 1e-14);
}

}  // namespace
