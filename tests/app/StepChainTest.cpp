// Steps of preprocessing at work: each against its formula or the library's operation, holes, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <random>

#include "app/Failure.h"
#include "app/StepChain.h"
#include "kalmia/signal/Derivate.h"
#include "kalmia/signal/Wavelet.h"

namespace {

using kalmia::app::ApplyChain;
using kalmia::app::EndsCompressed;
using kalmia::app::ExitCode;
using kalmia::app::Failure;
using kalmia::app::LearnChain;
using kalmia::app::Notes;
using kalmia::app::OutputNames;
using kalmia::app::ParseSteps;
using kalmia::app::RestoreSignals;
using kalmia::app::Signals;
using kalmia::app::StepChain;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr float kHole = -99.0F;

/// Rows r1, r2... and columns from 100 on, `distance` apart.
Signals SignalsOf(const Matrix& cells, int distance = 1) {
  Signals signals{"t", {}, {}, {}, cells};
  for (int r = 1; r <= cells.SizeRows(); ++r) signals.rowPlaces.push_back("row 'r" + std::to_string(r) + "'");
  for (int c = 0; c < cells.SizeColumns(); ++c) signals.names.push_back(std::to_string(100 + c * distance));
  return signals;
}

/// Numbers from 0.5 to 2.5, of which every `holes`-th is missing; 0: none.
Matrix RandomCells(int rows, int columns, int holes = 0) {
  std::mt19937 generator(static_cast<unsigned>(rows * 1000 + columns));
  Matrix cells(rows, columns);
  int count = 0;
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= columns; ++c) {
      const auto number = static_cast<float>(0.5 + static_cast<double>(generator() % 2001U) / 1000.0);
      cells(r, c, holes > 0 && ++count % holes == 0 ? kHole : number);
    }
  return cells;
}

Matrix After(const std::string& steps, const Matrix& cells, int distance = 1) {
  Signals signals = SignalsOf(cells, distance);
  Notes notes;
  LearnChain(ParseSteps(steps, "steps"), &signals, &notes);
  EXPECT_THAT(notes.Lines(), IsEmpty());
  EXPECT_EQ(static_cast<int>(signals.names.size()), signals.cells.SizeColumns());
  return signals.cells;
}

/// The cells, each replaced by a function of it; missing ones stay.
template <class Function>
Matrix Mapped(Matrix cells, const Function& function) {
  for (int r = 1; r <= cells.SizeRows(); ++r)
    for (int c = 1; c <= cells.SizeColumns(); ++c)
      if (cells[r][c] != kHole) cells(r, c, static_cast<float>(function(static_cast<double>(cells[r][c]))));
  return cells;
}

/// The rows, each replaced by a function of it.
template <class Function>
Matrix MappedRows(const Matrix& cells, const Function& function) {
  Matrix mapped;
  for (const Vector& row : cells) mapped.push_back(function(row));
  return mapped;
}

void ExpectSame(const Matrix& a, const Matrix& b) {
  ASSERT_EQ(a.SizeRows(), b.SizeRows());
  ASSERT_EQ(a.SizeColumns(), b.SizeColumns());
  EXPECT_EQ(a.GetNumMisVal(), b.GetNumMisVal());
  for (int r = 1; r <= a.SizeRows(); ++r)
    for (int c = 1; c <= a.SizeColumns(); ++c) EXPECT_EQ(a[r][c], b[r][c]) << r << ' ' << c;
}

std::string RefusalOf(const std::string& steps, const Matrix& cells) {
  Signals signals = SignalsOf(cells);
  Notes notes;
  try {
    LearnChain(ParseSteps(steps, "steps"), &signals, &notes);
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), ExitCode::BadData);
    return failure.what();
  }
  return "";
}

TEST(StepChain, TransformsEachCellByTheFormulaOfTheStep) {
  for (const int holes : {0, 3}) {
    const Matrix x = RandomCells(4, 6, holes);
    ExpectSame(After("linear:2:-3", x), Mapped(x, [](double v) { return 2 * v - 3; }));
    ExpectSame(After("log:0.5:1", x), Mapped(x, [](double v) { return std::log10(0.5 * v + 1); }));
    ExpectSame(After("neglog:2", x), Mapped(x, [](double v) { return -std::log10(2 * v); }));
    ExpectSame(After("logit:0:4", x), Mapped(x, [](double v) { return std::log10(v / (4 - v)); }));
    ExpectSame(After("exp:-1:0.5", x), Mapped(x, [](double v) { return std::exp(-v + 0.5); }));
    ExpectSame(After("power:1.5:2:1", x), Mapped(x, [](double v) { return std::pow(2 * v + 1, 1.5); }));
  }
}

TEST(StepChain, SnvAndDetrendAreThoseOfTheLibraryRowByRow) {
  for (const int holes : {0, 4}) {
    const Matrix x = RandomCells(3, 9, holes);
    ExpectSame(After("snv", x), MappedRows(x, [](const Vector& row) { return row.SNV(); }));
    ExpectSame(After("detrend:mean", x), MappedRows(x, [](Vector row) {
                 long double mean = 0;
                 row.DetrendMean(mean);
                 return row;
               }));
    ExpectSame(After("detrend", x), MappedRows(x, [](Vector row) {
                 long double intercept = 0, slope = 0;
                 row.DetrendLinear(intercept, slope);
                 return row;
               }));
  }
}

TEST(StepChain, DetrendTakesOffAMeanOfMinus99AndTheOnlyCellOfARow) {
  Matrix x(2, 3, kHole);
  x(1, 1, -98.0F);
  x(1, 2, -100.0F);
  x(2, 2, 7.0F);
  for (const char* step : {"detrend:mean", "detrend:linear"}) {
    const Matrix y = After(step, x);
    EXPECT_EQ(y[1][1] - y[1][2], std::string(step) == "detrend:mean" ? 2.0F : 0.0F);
    EXPECT_NEAR(y[1][1] + y[1][2], 0.0, 1e-12);  // both cells are whole numbers: no rounding but that of the line
    EXPECT_EQ(y[2][2], 0.0F);
    EXPECT_EQ(y.GetNumMisVal(), 3);
  }
}

TEST(StepChain, SmoothAndDerivativeAreThoseOfTheLibraryWithTheSpacingOfTheChannels) {
  for (const int holes : {0, 5}) {
    const Matrix x = RandomCells(3, 20, holes);
    const Derivate<float> quadratic(Derivate<float>::Quadratic, 5), cubic(Derivate<float>::Cubic, 7);
    ExpectSame(After("smooth:5", x, 2), MappedRows(x, [&](const Vector& row) {
                 Vector smooth;
                 quadratic.Smooth(row, smooth);
                 return smooth;
               }));
    for (const int order : {1, 2, 3}) {
      ExpectSame(After("derivative:" + std::to_string(order) + ":7:3", x, 2), MappedRows(x, [&](const Vector& row) {
                   Vector derived;
                   cubic.DoDerivate(row, derived, order, 2.0F);
                   return derived;
                 }));
    }
  }
}

TEST(StepChain, DerivativeOfAParabolaIsItsSlopePerUnitOfTheNames) {
  Matrix x(1, 9);
  for (int c = 1; c <= 9; ++c) x(1, c, static_cast<float>(0.5 * c * c));  // names are 2 apart: dy/dname = c / 2
  const Matrix y = After("derivative:1:5:2", x, 2);
  for (int c = 1; c <= 9; ++c) EXPECT_NEAR(y[1][c], c / 2.0, 1e-5) << c;  // floats up to 40 in the window
}

TEST(StepChain, NotesWhereTheNamesTellNoSpacingAndCountsChannelsThen) {
  Signals named = SignalsOf(RandomCells(2, 9), 4), nameless = named;
  nameless.names[3] = "water";
  Notes notes;
  const StepChain chain = LearnChain(ParseSteps("derivative:1:5", "steps"), &nameless, &notes);
  EXPECT_THAT(notes.Lines(), ElementsAre("step 1, derivative:1:5:2: per channel, for the names of the columns are no "
                                         "equally spaced numbers"));
  EXPECT_EQ(chain.steps[0].spacing, 1.0F);
  LearnChain(ParseSteps("derivative:1:5", "steps"), &named, &notes);
  for (int c = 1; c <= 9; ++c) EXPECT_EQ(named.cells[1][c] * 4.0F, nameless.cells[1][c]);  // a power of two
  EXPECT_EQ(notes.Lines().size(), 1U);
}

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

TEST(StepChain, WaveletCompressKeepsTheCoefficientsOfLargestMeanSquare) {
  const Matrix x = RandomCells(5, 13, 7);  // padded to 16
  for (const int count : {1, 4, 16}) {
    Signals signals = SignalsOf(x);
    Notes notes;
    const auto steps = ParseSteps("wavelet-compress:" + std::to_string(count) + ":daubechies:6", "steps");
    const StepChain chain = LearnChain(steps, &signals, &notes);
    EXPECT_EQ(chain.steps[0].positions, LargestByHand(x, count, 16));
    ASSERT_EQ(signals.cells.SizeColumns(), count);
    for (int k = 1; k <= count; ++k) {
      const int position = chain.steps[0].positions[static_cast<std::size_t>(k) - 1];
      EXPECT_EQ(signals.names[static_cast<std::size_t>(k) - 1], "wavelet_" + std::to_string(position));
      for (int r = 1; r <= 5; ++r) {
        EXPECT_EQ(signals.cells[r][k], (*Coefficients(x[r], Wavelet::FunctionDaubechies, 2))[position]);
      }
    }
  }
}

TEST(StepChain, WaveletRestoreGivesTheSignalsBackWhereAllCoefficientsAreKept) {
  for (const int channels : {1, 2, 13, 16}) {
    const Matrix x = RandomCells(3, channels);
    int cells = 1;
    while (cells < channels) cells *= 2;
    const std::string compress = "wavelet-compress:" + std::to_string(cells);
    const Matrix back = After(compress + ",wavelet-restore", x);
    Signals signals = SignalsOf(x);
    Notes notes;
    const StepChain chain = LearnChain(ParseSteps(compress, "steps"), &signals, &notes);
    RestoreSignals(chain, &signals);
    ExpectSame(signals.cells, back);
    EXPECT_EQ(signals.names, chain.inputNames);
    ASSERT_EQ(back.SizeColumns(), channels);
    for (int r = 1; r <= 3; ++r)
      // Four levels there and back of floats up to 2.5, whose filters were rounded to floats.
      for (int c = 1; c <= channels; ++c) EXPECT_NEAR(back[r][c], x[r][c], 1e-5) << channels;
  }
}

TEST(StepChain, WaveletRestoreLeavesOutNoMoreThanTheCoefficientsThatWereNot) {
  const Matrix x = RandomCells(3, 16);
  const Matrix few = After("wavelet-compress:6:daubechies:8", x);
  const Matrix back = After("wavelet-compress:6:daubechies:8,wavelet-restore", x);
  // Orthogonal filters: the sum of squares of the signals is that of the kept coefficients, to floats' rounding.
  for (int r = 1; r <= 3; ++r) EXPECT_NEAR(back[r].GetSS() / few[r].GetSS(), 1.0, 1e-5);
}

TEST(StepChain, WaveletDenoiseShrinksDetailsByTheUniversalThreshold) {
  const Matrix x = RandomCells(2, 16);
  const Matrix y = After("wavelet-denoise:daubechies:6", x);
  for (int r = 1; r <= 2; ++r) {
    const auto before = Coefficients(x[r], Wavelet::FunctionDaubechies, 2);
    const auto after = Coefficients(y[r], Wavelet::FunctionDaubechies, 2);
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

TEST(StepChain, WaveletDenoiseTakesItsMeasureFromTheChannelsNotFromThePadding) {
  Matrix x = RandomCells(1, 33);  // of 64 cells 31 are a smooth ramp
  const Matrix y = After("wavelet-denoise:daubechies:4", x);
  double before = 0, after = 0;
  for (int c = 2; c <= 33; ++c) {
    before += std::fabs(x[1][c] - x[1][c - 1]);
    after += std::fabs(y[1][c] - y[1][c - 1]);
  }
  EXPECT_LT(after, 0.25 * before);  // noise alone: next to nothing is left of it
}

TEST(StepChain, LeavesHolesOfDenoisedSignalsAndRowsWithoutACell) {
  Matrix x = RandomCells(4, 12, 5);
  for (int c = 1; c <= 12; ++c) x(2, c, kHole);
  const Matrix denoised = After("wavelet-denoise", x);
  for (int r = 1; r <= 4; ++r)
    for (int c = 1; c <= 12; ++c) EXPECT_EQ(denoised[r][c] == kHole, x[r][c] == kHole);
  for (const char* steps : {"log", "linear", "snv", "detrend", "detrend:mean", "smooth:5", "derivative:1:5",
                            "wavelet-compress:7", "wavelet-compress:7,wavelet-restore"}) {
    const Matrix y = After(steps, x);
    EXPECT_EQ(y[2].GetNumMisVal(), y.SizeColumns()) << steps;
    EXPECT_LT(y[1].GetNumMisVal(), y.SizeColumns()) << steps;
  }
}

TEST(StepChain, LosesNoCellThatHappensToBecomeTheMissingValue) {
  Matrix x(1, 2, 1.0F);
  x(1, 2, 2.0F);
  const Matrix y = After("linear:1:-100", x);
  EXPECT_EQ(y[1][1], std::nextafter(-99.0F, -200.0F));
  EXPECT_EQ(y[1][2], -98.0F);
  EXPECT_EQ(y.GetNumMisVal(), 0);
  Matrix z(1, 2, 99.0F);
  z(1, 2, 297.0F);  // mean 198
  EXPECT_EQ(After("detrend:mean", z)[1][1], std::nextafter(-99.0F, -200.0F));
}

TEST(StepChain, GivesEachRowTheSameBitsWhateverRowsAreWithIt) {
  const Matrix x = RandomCells(6, 21, 9);
  const char* chains[] = {"log",
                          "snv,derivative:2:7:3",
                          "detrend,smooth:5",
                          "wavelet-denoise:coiflet:3",
                          "linear:2,wavelet-compress:9",
                          "wavelet-compress:9,wavelet-restore,derivative:1:5"};
  for (const char* steps : chains) {
    SCOPED_TRACE(steps);
    Signals all = SignalsOf(x, 3);
    Notes notes;
    const StepChain chain = LearnChain(ParseSteps(steps, "steps"), &all, &notes);
    EXPECT_EQ(all.names, OutputNames(chain));
    for (int r = 1; r <= 6; ++r) {
      Signals alone = SignalsOf(x.GetRowSubMatrix(r, r), 3);
      ApplyChain(chain, &alone);
      ExpectSame(alone.cells, all.cells.GetRowSubMatrix(r, r));
      EXPECT_EQ(alone.names, all.names);
    }
  }
}

TEST(StepChain, EndsCompressedOnlyWithWaveletCompressAsItsLastStep) {
  for (const auto& [steps, ends] :
       std::vector<std::pair<const char*, bool>>{{"snv,wavelet-compress:3", true},
                                                 {"wavelet-compress:3,snv", false},
                                                 {"wavelet-compress:3,wavelet-restore", false}}) {
    Signals signals = SignalsOf(RandomCells(3, 8));
    Notes notes;
    EXPECT_EQ(EndsCompressed(LearnChain(ParseSteps(steps, "steps"), &signals, &notes)), ends) << steps;
  }
  EXPECT_FALSE(EndsCompressed({}));
}

TEST(StepChain, RefusesCellsByTableStepRowAndColumn) {
  Matrix x = RandomCells(3, 8);
  x(3, 2, -0.25F);
  EXPECT_EQ(RefusalOf("snv,linear,log", Matrix(x)).substr(0, 22), "t: step 3, log:1:0: ro");
  EXPECT_EQ(RefusalOf("log", x),
            "t: step 1, log:1:0: row 'r3', column '101' is -0.25, of which the step makes no number");
  EXPECT_EQ(RefusalOf("linear:-1,power:0.5", Matrix(1, 2, 4.0F)),
            "t: step 2, power:0.5:1:0: row 'r1', column '100' is -4, of which the step makes no number");
  x(3, 2, 0.0F);
  EXPECT_THAT(RefusalOf("neglog", x), HasSubstr("row 'r3', column '101' is 0,"));
  EXPECT_THAT(RefusalOf("logit:0:2", x), HasSubstr("of which the step makes no number"));
  EXPECT_THAT(RefusalOf("exp:1000", x), HasSubstr("of which the step makes no number"));
  EXPECT_THAT(RefusalOf("linear:3e38", x), HasSubstr("t: step 1, linear:3e+38:0: row 'r1', column '10"));
  EXPECT_THAT(RefusalOf("linear:3e38", x), HasSubstr("becomes no finite number"));
}

TEST(StepChain, RefusesSnvOfARowWithoutVariance) {
  Matrix x = RandomCells(3, 5);
  for (int c = 1; c <= 5; ++c) x(2, c, 0.1F);  // no binary fraction: rounding must not make a variance
  EXPECT_EQ(RefusalOf("snv", x), "t: step 1, snv: row 'r2' has no variance");
  for (int c = 2; c <= 5; ++c) x(2, c, kHole);
  EXPECT_EQ(RefusalOf("snv", x), "t: step 1, snv: row 'r2' has no variance");
}

TEST(StepChain, RefusesStepsThatAskMoreThanTheSignalsHave) {
  const Matrix x = RandomCells(3, 9);
  EXPECT_EQ(RefusalOf("smooth:9", x), "");
  EXPECT_EQ(RefusalOf("smooth:11", x),
            "t: step 1, smooth:11:2: the window is wider than the signals, which have 9 channels");
  EXPECT_EQ(RefusalOf("derivative:1:11", x),
            "t: step 1, derivative:1:11:2: the window is wider than the signals, which have 9 channels");
  EXPECT_EQ(RefusalOf("wavelet-compress:16", x), "");
  EXPECT_EQ(RefusalOf("wavelet-compress:17", x),
            "t: step 1, wavelet-compress:17:symmlet:8: signals of 9 channels have no more than 16 coefficients");
  EXPECT_THAT(RefusalOf("wavelet-compress:4,smooth:5", x), HasSubstr("step 2, smooth:5:2: the window is wider"));
}

TEST(StepChain, RefusesSignalsWhoseCoefficientsGoBeyondTheFloats) {
  const Matrix x(2, 8, std::numeric_limits<float>::max());
  for (const char* step : {"wavelet-compress:2", "wavelet-denoise"}) {
    EXPECT_THAT(RefusalOf(step, x), HasSubstr("becomes no finite number")) << step;
  }
}

}  // namespace
