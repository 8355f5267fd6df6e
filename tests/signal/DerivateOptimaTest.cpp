#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kalmia/signal/Derivate.h"
#include "kalmia/signal/internal/WindowFit.h"
#include "testing/RandomTables.h"

namespace {

using Filter = Derivate<float>;
using Signal = NCDataVector<float>;


/// a (i - vertex)^2 + height, i = 1 to n.
Signal Parabola(int n, double a, double vertex, double height) {
  Signal y(n);
  for (int i = 1; i <= n; ++i) y(i, static_cast<float>(a * (i - vertex) * (i - vertex) + height));
  return y;
}

struct Optimum {
  float place;
  float height = 1234;  ///< what stays where nothing is written
};

Optimum Find(const Signal& y, bool minimum, bool limitBelow = false, float spacing = 1,
             Filter::PolynomialOrder order = Filter::Quadratic, int window = 7) {
  Optimum optimum;
  optimum.place = Filter(order, window).GetOptima(y, spacing, minimum, limitBelow, optimum.height);
  return optimum;
}

// A window of 7 and cells below 100: sums of products in double, coefficients in float, some units of 2^-24 of what the
// terms reach.
constexpr double kPlaceLost = 7 * 16 * 0x1p-24, kHeightLost = 100 * 16 * 0x1p-24;

TEST(DerivateOptima, FindsTheMinimumInTheMiddleOfTheWindow) {
  const Optimum optimum = Find(Parabola(7, 2, 4, 3), /*minimum=*/true, /*limitBelow=*/true, /*spacing=*/0.5F);
  EXPECT_EQ(optimum.place, 4 * 0.5F);
  EXPECT_NEAR(optimum.height, 3, kHeightLost);
}

TEST(DerivateOptima, FindsMinimaAndMaximaAnywhereInTheWindow) {
  for (const double vertex : {1.25, 2.5, 4.75, 6.5})
    for (const double a : {1.5, -1.5}) {
      const Optimum optimum = Find(Parabola(7, a, vertex, 3), /*minimum=*/a > 0, /*limitBelow=*/true);
      EXPECT_NEAR(optimum.place, vertex, kPlaceLost);
      EXPECT_NEAR(optimum.height, 3, kHeightLost);
    }
}

TEST(DerivateOptima, LooksAtTheFirstWindowOnly) {
  Signal y = Parabola(12, 2, 3.5, 3);
  const Optimum before = Find(y, true);
  for (int i = 8; i <= 12; ++i) y(i, -1e6F);
  const Optimum optimum = Find(y, true);
  EXPECT_EQ(optimum.place, before.place);
  EXPECT_EQ(optimum.height, before.height);
  EXPECT_NEAR(optimum.place, 3.5, kPlaceLost);
}

TEST(DerivateOptima, RefusesAnOptimumOfTheOtherKindWithoutAHeight) {
  for (const double a : {1.5, -1.5}) {
    const Optimum optimum = Find(Parabola(7, a, 4, 3), /*minimum=*/a < 0);
    EXPECT_EQ(optimum.place, kMissing);
    EXPECT_EQ(optimum.height, 1234);
  }
}

TEST(DerivateOptima, FindsNoneInAConstant) {
  for (const bool minimum : {true, false}) {
    const Optimum optimum = Find(Signal(7, 2.0F), minimum);
    EXPECT_EQ(optimum.place, kMissing);
    EXPECT_EQ(optimum.height, 1234);
  }
}

TEST(DerivateOptima, LimitsThePlaceBelowOnRequestAndAboveAlways) {
  const Signal left = Parabola(7, 1, -2, 3), right = Parabola(7, 1, 9, 3);
  const Optimum unlimited = Find(left, true, /*limitBelow=*/false), limited = Find(left, true, /*limitBelow=*/true);
  EXPECT_NEAR(unlimited.place, -2, kPlaceLost);
  EXPECT_EQ(limited.place, kMissing);
  EXPECT_NEAR(limited.height, 3, kHeightLost) << "written although it lies outside";
  for (const bool limitBelow : {false, true}) {
    const Optimum above = Find(right, true, limitBelow);
    EXPECT_EQ(above.place, kMissing);
    EXPECT_NEAR(above.height, 3, kHeightLost);
  }
}

TEST(DerivateOptima, TakesTheEndsOfTheWindowIn) {
  // Whole cells of a window of 3: slope and curvature come out exactly.
  for (const double vertex : {1.0, 3.0}) {
    const Signal y = Parabola(3, 1, vertex, 0);
    EXPECT_EQ(Find(y, true, true, 1, Filter::Quadratic, 3).place, vertex);
  }
}

TEST(DerivateOptima, HasAHeightHoweverFarAwayTheVertexIs) {
  // c0 = 0.4 * 2^50, and c1 of about 1/7: the vertex is so far away that its cube is no float. There the parabola of
  // c0 and c1 stands at c0 x / 2, next to which its other terms are nothing.
  const float large = 0x1p50F;
  Signal y(5, -1.0F);
  y(1, -large);
  y(3, 0.0F);
  y(5, large);
  const Optimum optimum = Find(y, true, false, 1, Filter::Quadratic, 5);
  EXPECT_LT(optimum.place, -1e13F);
  const double height = 0.2 * large * optimum.place;
  EXPECT_NEAR(optimum.height, height, 8 * 0x1p-24 * std::abs(height));  // filter, c0, c1, x and place are floats
}

TEST(DerivateOptima, HasTheHeightOfTheParabolaWhereACubicHasNoCubicTerm) {
  kalmia::WindowFit fit;
  fit.coefficients[0] = -2;
  fit.coefficients[1] = 0x1p-45F;
  fit.x3Mean = 7;  // takes no part either
  const float vertex = 0x1p45F;  // its cube is beyond a float
  EXPECT_EQ(fit.GetYHat(vertex), -0x1p45F);
  fit.coefficients[2] = 0x1p-100F;
  EXPECT_EQ(fit.GetYHat(vertex), std::numeric_limits<float>::infinity());
}

TEST(DerivateOptima, FindsNoneWhereACellIsNoNumber) {
  for (const float odd : {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()})
    for (const bool minimum : {true, false}) {
      Signal y = Parabola(7, 1, 4, 3);
      y(2, odd);
      const Optimum optimum = Find(y, minimum);
      EXPECT_EQ(optimum.place, kMissing);
      EXPECT_EQ(optimum.height, 1234);
    }
}

TEST(DerivateOptima, IgnoresTheCubicTermForThePlaceButNotForTheHeight) {
  // y = x^2 + 2 x + x^3 around the middle: c0 = 2, c1 = c2 = 1, hence x = -1, where the polynomial is -2.
  Signal y(7);
  for (int x = -3; x <= 3; ++x) y(x + 4, static_cast<float>(x * x + 2 * x + x * x * x));
  const Optimum optimum = Find(y, true, true, 1, Filter::Cubic);
  EXPECT_NEAR(optimum.place, 3, kPlaceLost);
  EXPECT_NEAR(optimum.height, -2, kHeightLost);
}

TEST(DerivateOptima, ShiftsThePlaceByTheMeanPositionWhereThereAreHoles) {
  // y = (x - 1)^2 + 3 without its last two cells: positions -3 to 1, mean -1. In d = x + 1 it is (d - 2)^2 + 3, so that
  // -c0 / (2 c1) = 2. That is taken as x: the height is that at d = 3, and the place 2 + 1 + 4.
  Signal y = Parabola(7, 1, 5, 3);
  y(6, kMissing);
  y(7, kMissing);
  const Optimum optimum = Find(y, true);
  EXPECT_NEAR(optimum.place, 7, kPlaceLost);
  EXPECT_NEAR(optimum.height, 4, kHeightLost);
}

TEST(DerivateOptima, FindsNoneWhereTheFitFailsOrTheSignalIsTooShort) {
  Signal holes(7, kMissing);
  holes(1, 1.0F);
  holes(2, 0.0F);
  for (const Signal& y : {holes, Signal(6, 1.0F), Signal()}) {
    const Optimum optimum = Find(y, true);
    EXPECT_EQ(optimum.place, kMissing);
    EXPECT_EQ(optimum.height, 1234);
  }
}

TEST(DerivateOptima, TakesASlopeOrCurvatureOfMinusNinetyNineForAFailure) {
  Signal slope(3), curvature(3);
  for (int x = -1; x <= 1; ++x) {
    slope(x + 2, static_cast<float>(x * x - 99 * x));
    curvature(x + 2, static_cast<float>(-99 * x * x + 10));
  }
  for (const Optimum& optimum : {Find(slope, true, false, 1, Filter::Quadratic, 3),
                                 Find(curvature, false, false, 1, Filter::Quadratic, 3)}) {
    EXPECT_EQ(optimum.place, kMissing);
    EXPECT_EQ(optimum.height, 1234);
  }
}

}  // namespace
