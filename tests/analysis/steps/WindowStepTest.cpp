// Smoothing and derivatives of signals: against the library, and where -99 is a number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "StepTables.h"
#include "kalmia/signal/Derivate.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

TEST(WindowStep, IsThatOfTheLibraryWithTheSpacingOfTheChannels) {
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

TEST(WindowStep, DerivativeOfAParabolaIsItsSlopePerUnitOfTheNames) {
  Matrix x(1, 9);
  for (int c = 1; c <= 9; ++c) x(1, c, static_cast<float>(0.5 * c * c));  // names are 2 apart: dy/dname = c / 2
  const Matrix y = After("derivative:1:5:2", x, 2);
  for (int c = 1; c <= 9; ++c) EXPECT_NEAR(y[1][c], c / 2.0, 1e-5) << c;  // floats up to 40 in the window
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
  // With the sign turned round slopes and results are the same to the bit, but for their sign: 99 is no missing cell,
  // and stays where -99 becomes its neighbour.
  const auto moved = [](float v) { return v == 99.0F ? std::nextafter(99.0F, 100.0F) : v; };
  const Matrix x = RowsAroundMinus99();
  int found = 0;
  for (const char* step : {"smooth:5", "smooth:7:3", "derivative:1:5", "derivative:2:5", "derivative:1:5:3",
                           "derivative:2:7:3", "derivative:3:7:3"}) {
    for (const int distance : {1, 2, -3}) {
      SCOPED_TRACE(std::string(step) + ' ' + std::to_string(distance));
      const Matrix y = After(step, x, distance);
      const Matrix turned = After(step, Mapped(x, [](double v) { return -v; }), distance);
      EXPECT_EQ(y.GetNumMisVal(), 0);
      for (int r = 1; r <= y.SizeRows(); ++r)
        for (int c = 1; c <= y.SizeColumns(); ++c) {
          found += turned[r][c] == 99.0F ? 1 : 0;
          EXPECT_EQ(moved(y[r][c]), -moved(turned[r][c])) << r << ' ' << c;
        }
    }
  }
  EXPECT_GT(found, 20);
}

TEST(WindowStep, LosesNoCellBesideAHugeOne) {
  for (const float huge : {1e22F, 1e30F, -3e38F}) {
    Matrix x(1, 20);
    for (int c = 1; c <= 20; ++c) x(1, c, static_cast<float>(1099 - 99 * c));
    x(1, 20, huge);
    const Matrix smooth = After("smooth:5", x), slopes = After("derivative:1:5", x, 2);
    for (int c = 1; c <= 17; ++c) {
      EXPECT_FLOAT_EQ(smooth[1][c], static_cast<float>(1099 - 99 * c)) << c;
      EXPECT_FLOAT_EQ(slopes[1][c], -49.5F) << c;
    }
  }
}

TEST(WindowStep, GivesLongRowsTheBitsOfTheLibrary) {
  for (const int holes : {0, 7}) {
    const Matrix x = RandomCells(2, 1500, holes);
    for (const int window : {5, 301, 1499}) {
      const Derivate<float> cubic(Derivate<float>::Cubic, window);
      const std::string parameters = std::to_string(window) + ":3";
      ExpectSame(After("smooth:" + parameters, x), MappedRows(x, [&](const Vector& row) {
                   Vector smooth;
                   cubic.Smooth(row, smooth);
                   return smooth;
                 }));
      ExpectSame(After("derivative:2:" + parameters, x), MappedRows(x, [&](const Vector& row) {
                   Vector derived;
                   cubic.DoDerivate(row, derived, 2, 1.0F);
                   return derived;
                 }));
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
