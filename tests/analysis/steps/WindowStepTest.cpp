// Smoothing and derivatives of signals: against the library, and where -99 is a number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "StepTables.h"
#include "kalmia/signal/Derivate.h"

namespace {

using Matrix = FloatCells;
using Vector = NCDataVector<float>;
using kalmia::analysis::LearnChain;
using kalmia::analysis::Notes;
using kalmia::analysis::ParseSteps;
using kalmia::analysis::Signals;

/// The polynomial of least squares through the present cells of a window: the normal equations of the powers of the
/// channel, solved by elimination. Its derivative of that order at a channel; not a number where the cells are too few.
double PlainFit(const std::vector<double>& window, int degree, int order, double at) {
  constexpr int kMost = 4;
  long double equations[kMost][kMost + 1] = {};
  int present = 0;
  for (std::size_t i = 0; i < window.size(); ++i) {
    if (std::isnan(window[i])) continue;
    ++present;
    for (int j = 0; j <= degree; ++j) {
      for (int k = 0; k <= degree; ++k) equations[j][k] += std::pow(static_cast<long double>(i), j + k);
      equations[j][degree + 1] += std::pow(static_cast<long double>(i), j) * window[i];
    }
  }
  if (present <= degree) return std::nan("");
  for (int j = 0; j <= degree; ++j)
    for (int k = 0; k <= degree; ++k) {
      const long double factor = j == k ? 0 : equations[k][j] / equations[j][j];
      for (int i = 0; i <= degree + 1; ++i) equations[k][i] -= factor * equations[j][i];
    }
  long double value = 0;
  for (int j = order; j <= degree; ++j) {
    long double factor = equations[j][degree + 1] / equations[j][j];
    for (int d = 0; d < order; ++d) factor *= j - d;
    value += factor * std::pow(static_cast<long double>(at), j - order);
  }
  return static_cast<double>(value);
}

/// The rows after smoothing or the derivative of that order, channels `distance` apart, window by window.
DoubleCells PlainSlid(const Matrix& x, int width, int degree, int order, double distance) {
  DoubleCells y(x.SizeRows(), x.SizeColumns());
  for (int r = 1; r <= x.SizeRows(); ++r)
    for (int c = 0; c < x.SizeColumns(); ++c) {
      const int begin = std::clamp(c - width / 2, 0, x.SizeColumns() - width);
      std::vector<double> window;
      for (int i = 1; i <= width; ++i) window.push_back(x[r][begin + i] == kHole ? std::nan("") : x[r][begin + i]);
      const double value = PlainFit(window, degree, order, c - begin) / std::pow(distance, order);
      y(r, c + 1, std::isnan(value) ? kHole : value);
    }
  return y;
}

TEST(WindowStep, FitsAPolynomialToThePresentCellsOfEachWindow) {
  for (const int holes : {0, 5, 2}) {
    const Matrix x = RandomCells(3, 20, holes);
    for (const int width : {5, 9}) {
      // The twin's long doubles lose some 1e5 of their 1e-19 to the powers, the steps' doubles a few units of 1e-16.
      constexpr double kRounding = 1e-13;
      const std::string window = std::to_string(width);
      ExpectNear(After("smooth:" + window, x, 2), PlainSlid(x, width, 2, 0, 2), kRounding);
      ExpectNear(After("smooth:" + window + ":3", x, 2), PlainSlid(x, width, 3, 0, 2), kRounding);
      for (const int order : {1, 2}) {
        const std::string step = "derivative:" + std::to_string(order) + ":" + window;
        ExpectNear(After(step, x, 2), PlainSlid(x, width, 2, order, 2), kRounding);
        ExpectNear(After(step + ":3", x, 2), PlainSlid(x, width, 3, order, 2), kRounding);
      }
      ExpectNear(After("derivative:3:" + window + ":3", x, 2), PlainSlid(x, width, 3, 3, 2), kRounding);
    }
  }
}

TEST(WindowStep, GivesThePublishedFilterOfSciPy) {
  // scipy.signal.savgol_filter(x, window, polyorder, deriv, delta=2, mode='interp') of SciPy 1.10.1, to its 1e-14.
  Matrix x(1, 9);
  const float cells[] = {2.0F, 3.5F, 1.25F, 7.0F, 6.5F, 9.75F, 8.0F, 12.5F, 11.0F};
  for (int c = 1; c <= 9; ++c) x(1, c, cells[c - 1]);
  const std::vector<std::pair<const char*, std::vector<double>>> expected = {
      {"smooth:5",
       {2.1214285714285723, 2.514285714285714, 3.478571428571427, 4.921428571428569, 8.107142857142854,
        8.035714285714281, 10.014285714285709, 10.957142857142856, 11.43571428571429}},
      {"derivative:1:5",
       {0.053571428571427604, 0.3392857142857138, 0.6249999999999998, 0.8875000000000001, 0.8125000000000003,
        0.6250000000000007, 0.5875000000000004, 0.35535714285714537, 0.1232142857142896}},
      {"derivative:1:7:3",
       {-0.8447420634920538, 0.2862103174603211, 0.9588293650793641, 1.1731150793650802, 0.8209325396825402,
        0.4781746031746037, 0.3397817460317478, 0.4305555555555607, 0.7504960317460425}},
      {"derivative:2:7:3",
       {0.6800595238095204, 0.4508928571428545, 0.22172619047618858, -0.007440476190475442, 0.02232142857142949,
        -0.126488095238094, -0.011904761904760586, 0.10267857142857356, 0.21726190476190782}}};
  for (const auto& [step, values] : expected) {
    const DoubleCells y = After(step, x, 2);
    for (int c = 1; c <= 9; ++c) EXPECT_NEAR(y[1][c], values[static_cast<std::size_t>(c) - 1], 1e-13) << step << c;
  }
}

TEST(WindowStep, IsThatOfTheLibraryWithTheSpacingOfTheChannels) {
  // The library's filters and coefficients are floats: some units of 2^-24 in each of up to seven taps.
  constexpr double kOfFloats = 2e-6;
  for (const int holes : {0, 5}) {
    const Matrix x = RandomCells(3, 20, holes);
    const Derivate<float> quadratic(Derivate<float>::Quadratic, 5), cubic(Derivate<float>::Cubic, 7);
    ExpectNear(After("smooth:5", x, 2), MappedRows(x, [&](const Vector& row) {
                 Vector smooth;
                 quadratic.Smooth(row, smooth);
                 return smooth;
               }), kOfFloats);
    for (const int order : {1, 2, 3}) {
      ExpectNear(After("derivative:" + std::to_string(order) + ":7:3", x, 2), MappedRows(x, [&](const Vector& row) {
                   Vector derived;
                   cubic.DoDerivate(row, derived, order, 2.0F);
                   return derived;
                 }), kOfFloats);
    }
  }
}

TEST(WindowStep, DerivativeOfAParabolaIsItsSlopePerUnitOfTheNames) {
  Matrix x(1, 9);
  for (int c = 1; c <= 9; ++c) x(1, c, static_cast<float>(0.5 * c * c));  // names are 2 apart: dy/dname = c / 2
  const DoubleCells y = After("derivative:1:5:2", x, 2);
  for (int c = 1; c <= 9; ++c) EXPECT_NEAR(y[1][c], c / 2.0, 1e-13) << c;  // doubles up to 40 in the window
}

/// Rows that fall by 99 a channel, or come to -99 in one way or another.
Matrix RowsAroundMinus99() {
  Matrix x(6, 9);
  for (int c = 1; c <= 9; ++c) {
    x(1, c, static_cast<float>(1000 - 99 * c));
    x(2, c, static_cast<float>(1000 - 198 * c));
    x(3, c, -98.5F - 0.5F * static_cast<float>(c % 2 * 2));  // 98.5 and 99.5 in turns
    x(4, c, static_cast<float>(-49.5 * c * c));
    x(5, c, static_cast<float>(-16.5 * c * c * c + 3 * c));
    x(6, c, (c == 5 ? 0.25F : 0.0F) + static_cast<float>(500 - 99 * c));
  }
  x(1, 9, kHole);
  return x;
}

TEST(WindowStep, LosesNoCellToASlopeOrResultOfMinus99) {
  const Matrix x = RowsAroundMinus99();
  for (const char* step : {"smooth:5", "smooth:7:3", "derivative:1:5", "derivative:2:5", "derivative:1:5:3",
                           "derivative:2:7:3", "derivative:3:7:3"}) {
    for (const int distance : {1, 2, -3}) {
      SCOPED_TRACE(std::string(step) + ' ' + std::to_string(distance));
      // With the sign turned round slopes and results are the same to the bit, but for their sign.
      Signals signals = SignalsOf(x, distance), turned = SignalsOf(Mapped(x, [](double v) { return -v; }), distance);
      Notes notes;
      LearnChain(ParseSteps(step, "steps"), &signals, &notes);
      LearnChain(ParseSteps(step, "steps"), &turned, &notes);
      for (int r = 0; r < x.SizeRows(); ++r)
        for (int c = 0; c < x.SizeColumns(); ++c) EXPECT_EQ(signals.cells.Row(r)[c], -turned.cells.Row(r)[c]);
    }
  }
}

TEST(WindowStep, LosesNoCellBesideAHugeOne) {
  for (const float huge : {1e22F, 1e30F, -3e38F}) {
    Matrix x(1, 20);
    for (int c = 1; c <= 20; ++c) x(1, c, static_cast<float>(1099 - 99 * c));
    x(1, 20, huge);
    const DoubleCells smooth = After("smooth:5", x), slopes = After("derivative:1:5", x, 2);
    for (int c = 1; c <= 17; ++c) {
      EXPECT_NEAR(smooth[1][c], 1099 - 99 * c, 1e-12) << c;  // of up to 1099 in double
      EXPECT_NEAR(slopes[1][c], -49.5, 1e-12) << c;
    }
  }
}

TEST(WindowStep, TakesLongRowsWindowByWindow) {
  for (const int holes : {0, 7}) {
    const Matrix x = RandomCells(1, 600, holes);
    for (const int width : {5, 75}) {
      const std::string parameters = std::to_string(width) + ":3";
      // The twin's powers of 75 channels up to the sixth leave it 1e-19 * 75^3 or so of the cells.
      ExpectNear(After("smooth:" + parameters, x), PlainSlid(x, width, 3, 0, 1), 1e-11);
      ExpectNear(After("derivative:2:" + parameters, x), PlainSlid(x, width, 3, 2, 1), 1e-10);
    }
  }
}

TEST(WindowStep, LosesNoCellOfWholeNumbers) {
  std::mt19937 generator(5);
  Matrix x(200, 100);
  for (int r = 1; r <= x.SizeRows(); ++r)
    for (int c = 1; c <= x.SizeColumns(); ++c) {
      x(r, c, c == 1 ? 1000.0F : x[r][c - 1] + static_cast<float>(generator() % 301U) - 150.0F);
      if (x[r][c] == kHole) x(r, c, -98.0F);
    }
  for (const char* step : {"smooth:5", "derivative:1:5", "derivative:2:5"}) {
    EXPECT_EQ(After(step, x).GetNumMisVal(), 0) << step;
  }
}

}  // namespace
