// Whatever the cells, sums, means and slopes of a row come to: a table times 4 gives what goes with it. The two are
// never both at -99, the missing value, so that no step can take a number for it unseen.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "StepTables.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

constexpr int kColumns = 12;

/// Changes the last cell so that the row sums to this.
void SetSum(float sum, int r, Matrix* x) {
  float others = 0;
  for (int c = 1; c < kColumns; ++c) others += (*x)[r][c] == kHole ? 0.0F : (*x)[r][c];
  (*x)(r, kColumns, sum - others);
}

/// Small whole numbers, but no -99. In turns rows sum to -99, have that mean, or fall by 99 from channel to channel,
/// with a cell of 1e30 or without. Every other row has two holes.
Matrix RowsAroundMinus99() {
  std::mt19937 generator(11);
  Matrix x(120, kColumns);
  for (int r = 1; r <= x.SizeRows(); ++r) {
    for (int c = 1; c <= kColumns; ++c) x(r, c, static_cast<float>(generator() % 81U) - 40.0F);
    for (int c = 1; r % 4 >= 2 && c <= kColumns; ++c) x(r, c, static_cast<float>(1000 - 99 * c));
    if (r % 8 >= 4) {
      x(r, 3, kHole);
      x(r, 8, kHole);
    }
    if (r % 4 == 0) SetSum(-99.0F, r, &x);
    if (r % 4 == 1) SetSum(-99.0F * static_cast<float>(kColumns - x[r].GetNumMisVal()), r, &x);
    if (r % 4 == 3) x(r, kColumns, 1e30F);
    for (int c = 1; c <= kColumns; ++c) {
      if (x[r][c] == kHole && !(r % 8 >= 4 && (c == 3 || c == 8))) x(r, c, -98.0F);
    }
  }
  return x;
}

/// Logarithms and powers have 44 binary digits; where the tests call -99 a hole it is the next number.
bool IsNearly(double a, double b, double room) { return std::fabs(a - b) <= 0x1p-43 * std::fabs(b) + room; }

/// What the step makes of the cells, times `factor`, is what another step makes of four times the cells. `room`: what
/// a cell may be off besides, as a share of the largest of the row.
void ExpectScaled(const std::string& step, const std::string& ofFourfold, double factor, const Matrix& x, double room) {
  SCOPED_TRACE(step);
  const DoubleCells y = After(step, x), z = After(ofFourfold, Mapped(x, [](double v) { return 4 * v; }));
  ASSERT_EQ(y.SizeColumns(), z.SizeColumns());
  for (int r = 1; r <= x.SizeRows(); ++r) {
    double largest = 0;
    for (const float cell : x[r]) largest = std::max(largest, std::fabs(double{cell}));
    for (int c = 1; c <= y.SizeColumns(); ++c) {
      ASSERT_EQ(y[r][c] == kHole, z[r][c] == kHole) << r << ' ' << c;
      const double expected = y[r][c] == kHole ? kHole : factor * y[r][c];
      EXPECT_TRUE(IsNearly(z[r][c], expected, room * factor * largest)) << r << ' ' << c << ": " << z[r][c] << ' '
                                                                       << expected;
    }
  }
}

TEST(StepScale, RowsTimesFourGiveFourTimesWhatTheRowsGive) {
  const Matrix x = RowsAroundMinus99();
  ExpectScaled("snv", "snv", 1, x, 0);
  for (const char* step : {"linear:-3", "detrend:mean", "detrend:linear", "smooth:5", "smooth:7:3", "derivative:1:5",
                           "derivative:2:5:3", "derivative:3:7:3"}) {
    ExpectScaled(step, step, 4, x, 0);
  }
  ExpectScaled("linear:2:-9", "linear:0.5:-9", 1, x, 0);
}

TEST(StepScale, WaveletsOfRowsTimesFourAreFourTimesThoseOfTheRows) {
  const Matrix x = RowsAroundMinus99();
  for (const char* step : {"wavelet-compress:16:biorthogonal1:1", "wavelet-compress:16", "wavelet-denoise:daubechies:4",
                           "wavelet-compress:16:daubechies:4,wavelet-restore", "wavelet-denoise:biorthogonal1:1"}) {
    ExpectScaled(step, step, 4, x, 1e-6);  // a coefficient that is made the next number is one of many in a cell
  }
}

TEST(StepScale, TransformationsOfCellsTimesFourAreThoseOfTheCells) {
  const Matrix x = RandomCells(20, 12, 5);
  ExpectScaled("log", "log:0.25", 1, x, 0);
  ExpectScaled("neglog", "neglog:0.25", 1, x, 0);
  ExpectScaled("logit:0:4", "logit:0:16", 1, x, 0);
  ExpectScaled("exp:-1", "exp:-0.25", 1, x, 0);
  ExpectScaled("power:2", "power:2", 16, x, 0);
  ExpectScaled("power:1.5", "power:1.5:0.25", 1, x, 0);
}

}  // namespace
