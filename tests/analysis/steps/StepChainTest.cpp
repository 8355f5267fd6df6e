// Steps of preprocessing at work: each against its formula or the library's operation, holes, and what is refused.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "StepTables.h"
#include "kalmia/analysis/text/Failure.h"
#include "testing/AllocationMeter.h"

namespace {

using kalmia::analysis::ApplyChain;
using kalmia::analysis::EndsCompressed;
using kalmia::analysis::LearnChain;
using kalmia::analysis::Notes;
using kalmia::analysis::OutputNames;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Signals;
using kalmia::analysis::StepChain;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Matrix = FloatCells;
using Vector = NCDataVector<float>;

TEST(StepChain, CalculatesWithTheNumbersThatParametersAndChannelNamesName) {
  const Matrix ones(1, 9, 1.0F);
  EXPECT_EQ(After("linear:0.1", ones)[1][4], 0.1);
  Signals line = SignalsOf(Mapped(ones, [](double) { return 0.0; }));
  for (int c = 0; c < 9; ++c) {
    line.names[static_cast<std::size_t>(c)] = "900." + std::to_string(c + 1);
    line.cells.Row(0)[c] = 2.5 * c;  // 25 per unit of the names, which are tenths
  }
  Notes notes;
  LearnChain(ParseSteps("derivative:1:5", "steps"), &line, &notes);
  for (int c = 0; c < 9; ++c) EXPECT_NEAR(line.cells.Row(0)[c], 25.0, 1e-13);
}

/// What a transformation may be off: half a unit of its 44 binary digits.
constexpr double kOf44Digits = 0x1p-44;

TEST(StepChain, TransformsEachCellByTheFormulaOfTheStep) {
  for (const int holes : {0, 3}) {
    const Matrix x = RandomCells(4, 6, holes);
    ExpectSame(After("linear:2:-3", x), Mapped(x, [](double v) { return 2 * v - 3; }));
    ExpectNear(After("log:0.5:1", x), Mapped(x, [](double v) { return std::log10(0.5 * v + 1); }), kOf44Digits);
    ExpectNear(After("neglog:2", x), Mapped(x, [](double v) { return -std::log10(2 * v); }), kOf44Digits);
    ExpectNear(After("logit:0:4", x), Mapped(x, [](double v) { return std::log10(v / (4 - v)); }), kOf44Digits);
    ExpectNear(After("exp:-1:0.5", x), Mapped(x, [](double v) { return std::exp(-v + 0.5); }), kOf44Digits);
    ExpectNear(After("power:1.5:2:1", x), Mapped(x, [](double v) { return std::pow(2 * v + 1, 1.5); }), kOf44Digits);
  }
}

TEST(StepChain, KeepsTheFortyFourDigitsOfATransformationThatAllProcessorsAgreeOn) {
  const DoubleCells y = After("log", RandomCells(4, 50));
  for (int r = 1; r <= 4; ++r)
    for (int c = 1; c <= 50; ++c) {
      int exponent = 0;
      const double digits = std::ldexp(std::frexp(y[r][c], &exponent), 44);
      EXPECT_EQ(digits, std::floor(digits)) << r << ' ' << c;
    }
}

TEST(StepChain, SnvAndDetrendAreThoseOfTheLibraryRowByRow) {
  // The library rounds each cell to a float: by 2^-24 of it, and of what the sums are off in double next to nothing.
  const double rounding = 0x1.001p-24;
  for (const int holes : {0, 4}) {
    const Matrix x = RandomCells(3, 9, holes);
    ExpectNear(After("snv", x), MappedRows(x, [](const Vector& row) { return row.SNV(); }), rounding);
    ExpectNear(After("detrend:mean", x), MappedRows(x, [](Vector row) {
                 long double mean = 0;
                 row.DetrendMean(mean);
                 return row;
               }), rounding);
    ExpectNear(After("detrend", x), MappedRows(x, [](Vector row) {
                 long double intercept = 0, slope = 0;
                 row.DetrendLinear(intercept, slope);
                 return row;
               }), rounding);
  }
}

TEST(StepChain, KeepsTheDigitsOfCellsFarFromZero) {
  // Halves of whole numbers, which a float at 1e8 has not; what the steps see of them is the same there.
  const Matrix near = RandomCells(3, 12, 5);
  const DoubleCells halves = Mapped(near, [](double v) { return std::floor(200 * v) / 2; });
  DoubleCells far = halves;
  for (int r = 1; r <= 3; ++r)
    for (int c = 1; c <= 12; ++c)
      if (halves[r][c] != kHole) far(r, c, halves[r][c] + 1e8);
  // Cells, means and what becomes of them are off by some units of 1e8 in double, 1e-8 each; the halves are up to 250.
  for (const char* step : {"snv", "detrend", "detrend:mean", "derivative:1:5", "smooth:5,detrend:mean"}) {
    SCOPED_TRACE(step);
    ExpectNear(After(step, far), After(step, halves), 1e-8);
  }
}

TEST(StepChain, DetrendTakesOffAMeanOfMinus99AndTheOnlyCellOfARow) {
  Matrix x(2, 3, kHole);
  x(1, 1, -98.0F);
  x(1, 2, -100.0F);
  x(2, 2, 7.0F);
  for (const char* step : {"detrend:mean", "detrend:linear"}) {
    const DoubleCells y = After(step, x);
    EXPECT_EQ(y[1][1] - y[1][2], std::string(step) == "detrend:mean" ? 2.0F : 0.0F);
    EXPECT_NEAR(y[1][1] + y[1][2], 0.0, 1e-12);  // both cells are whole numbers: no rounding but that of the line
    EXPECT_EQ(y[2][2], 0.0F);
    EXPECT_EQ(y.GetNumMisVal(), 3);
  }
}

TEST(StepChain, DetrendTakesOffTheMeanOfCellsThatSumToMinus99) {
  Matrix x(2, 5, kHole);
  const float cells[] = {-50.0F, -59.0F, 10.0F, 0.0F};
  for (int c = 1; c <= 4; ++c) {
    x(1, c, cells[c - 1]);
    x(2, c, 4 * cells[c - 1]);
  }
  const DoubleCells y = After("detrend:mean", x);
  for (int c = 1; c <= 4; ++c) {
    EXPECT_EQ(y[1][c], cells[c - 1] + 24.75F);
    EXPECT_EQ(y[2][c], 4 * y[1][c]);
  }
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
  for (int c = 0; c < 9; ++c) EXPECT_EQ(named.cells.Row(0)[c] * 4.0, nameless.cells.Row(0)[c]);  // a power of two
  EXPECT_EQ(notes.Lines().size(), 1U);
}

TEST(StepChain, NotesThatCoefficientsHaveNoDistance) {
  Signals signals = SignalsOf(RandomCells(3, 16), 2);
  Notes notes;
  const StepChain chain = LearnChain(ParseSteps("wavelet-compress:9,derivative:1:5", "steps"), &signals, &notes);
  EXPECT_THAT(notes.Lines(), ElementsAre("step 2, derivative:1:5:2: per channel, for wavelet coefficients have no "
                                         "distance from one another"));
  EXPECT_EQ(chain.steps[1].spacing, 1.0F);
}

TEST(StepChain, NotesThatRestoredCoefficientsHaveNoDistanceButRestoredSignalsHave) {
  const std::string twice = "wavelet-compress:9,wavelet-compress:9,wavelet-restore,";
  Signals signals = SignalsOf(RandomCells(3, 16), 2);
  Notes notes;
  EXPECT_EQ(LearnChain(ParseSteps(twice + "derivative:1:5", "steps"), &signals, &notes).steps[3].spacing, 1.0F);
  EXPECT_THAT(notes.Lines(), ElementsAre(HasSubstr("wavelet coefficients have no distance from one another")));
  signals = SignalsOf(RandomCells(3, 16), 2);
  const auto steps = ParseSteps("wavelet-compress:9,wavelet-restore,derivative:1:5", "steps");
  EXPECT_EQ(LearnChain(steps, &signals, &notes).steps[2].spacing, 2.0F);
  EXPECT_EQ(notes.Lines().size(), 1U);
}

TEST(StepChain, NotesColumnsWithoutACellThatItTakesAsChannels) {
  Matrix x = RandomCells(3, 8);
  for (int r = 1; r <= 3; ++r) {
    x(r, 3, kHole);
    x(r, 8, kHole);
  }
  Signals signals = SignalsOf(x);
  Notes notes;
  const StepChain chain = LearnChain(ParseSteps("smooth:7", "steps"), &signals, &notes);
  EXPECT_THAT(notes.Lines(), ElementsAre("no cell, but taken as a channel: 102 and 107"));
}

TEST(StepChain, LeavesHolesOfDenoisedSignalsAndRowsWithoutACell) {
  Matrix x = RandomCells(4, 12, 5);
  for (int c = 1; c <= 12; ++c) x(2, c, kHole);
  const DoubleCells denoised = After("wavelet-denoise", x);
  for (int r = 1; r <= 4; ++r)
    for (int c = 1; c <= 12; ++c) EXPECT_EQ(denoised[r][c] == kHole, x[r][c] == kHole);
  for (const char* steps : {"log", "linear", "snv", "detrend", "detrend:mean", "smooth:5", "derivative:1:5",
                            "wavelet-compress:7", "wavelet-compress:7,wavelet-restore"}) {
    const DoubleCells y = After(steps, x);
    EXPECT_EQ(y[2].GetNumMisVal(), y.SizeColumns()) << steps;
    EXPECT_LT(y[1].GetNumMisVal(), y.SizeColumns()) << steps;
  }
}

TEST(StepChain, LosesNoCellThatHappensToBecomeMinus99) {
  Matrix x(1, 2, 1.0F);
  x(1, 2, 2.0F);
  Signals signals = SignalsOf(x);
  Notes notes;
  LearnChain(ParseSteps("linear:1:-100", "steps"), &signals, &notes);
  EXPECT_EQ(signals.cells.Row(0)[0], -99.0);
  EXPECT_EQ(signals.cells.Row(0)[1], -98.0);
  EXPECT_EQ(After("linear:1:-100,linear:2", x)[1][1], -198.0) << "and the next step sees it";
  Matrix z(1, 2, 99.0F);
  z(1, 2, 297.0F);  // mean 198
  EXPECT_EQ(After("detrend:mean,linear:3", z)[1][1], -297.0);
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
      EXPECT_EQ(std::memcmp(alone.cells.Row(0), all.cells.Row(r - 1), sizeof(double) * alone.names.size()), 0);
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

TEST(StepChain, TakesNoMemoryForAllTheCellsThatItRefuses) {
  Signals signals = SignalsOf(Matrix(300, 200, -1.0F));
  const std::vector<kalmia::analysis::Step> steps = ParseSteps("log", "steps");
  Notes notes;
  const PeakBytesDuring peak;
  EXPECT_THROW(LearnChain(steps, &signals, &notes), kalmia::analysis::Failure);
  EXPECT_LT(peak.GetBytes(), 1 << 20);  // the table has 480 kB; a text for each cell would take some 6 MB
}

TEST(StepChain, RefusesSnvOfARowWithoutVariance) {
  Matrix x = RandomCells(3, 5);
  for (int c = 1; c <= 5; ++c) x(2, c, 0.1F);  // no binary fraction: rounding must not make a variance
  EXPECT_EQ(RefusalOf("snv", x), "t: step 1, snv: row 'r2' has no variance");
  for (int c = 2; c <= 5; ++c) x(2, c, kHole);
  EXPECT_EQ(RefusalOf("snv", x), "t: step 1, snv: row 'r2' has no variance");
}

TEST(StepChain, StandardisesRowsWhoseSquaresUnderflow) {
  // Of 1, 2, 3 times any number the mean is 2 and the standard deviation 1 of that number. A product with 1e-160 or
  // 1e-300 has a relative error of 2^-53, and the difference from the mean one of some 2^-52: 1e-15 is four of these.
  for (const double unit : {1e-160, 1e-300, 0x1p-1060}) {
    Signals signals = SignalsOf(NCDataMatrix<double>(1, 4, 0.0));
    for (int c = 0; c < 3; ++c) signals.cells.Row(0)[c] = (c + 1) * unit;
    signals.cells.Row(0)[3] = std::nan("");
    Notes notes;
    LearnChain(ParseSteps("snv", "steps"), &signals, &notes);
    for (int c = 0; c < 3; ++c) EXPECT_NEAR(signals.cells.Row(0)[c], c - 1.0, 1e-15) << unit;
    EXPECT_TRUE(std::isnan(signals.cells.Row(0)[3]));
  }
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
  EXPECT_THAT(RefusalOf("wavelet-compress:2", RandomCells(3, 1)), HasSubstr("have no more than 1 coefficient"));
}

}  // namespace
