#include "kalmia/statistics/internal/ChiSquareTail.h"

#include <gtest/gtest.h>

#include <boost/math/special_functions/gamma.hpp>
#include <cmath>

namespace {

using kalmia::ChiSquareTail;

TEST(ChiSquareTail, IsTheIncompleteGammaFunctionOfBoost) {
  for (const int degrees : {1, 2, 3, 4, 5, 6, 9, 12, 25, 60, 301, 1000})
    for (const double factor : {1e-6, 0.01, 0.3, 0.8, 0.99, 1.0, 1.01, 1.3, 2.0, 5.0, 20.0}) {
      const double x = factor * degrees, expected = boost::math::gamma_q(degrees / 2.0, x / 2);
      // The exponential's argument is the rest of numbers up to 3000, that is 1e-12 or less beside rounding of sums.
      EXPECT_NEAR(ChiSquareTail(degrees)(x), expected, 2e-12 * expected) << degrees << " " << x;
    }
}

TEST(ChiSquareTail, ErrorGrowsWithTheDegreesOfFreedomAlone) {
  using Unpromoted = boost::math::policies::policy<boost::math::policies::promote_double<false>>;
  for (const int degrees : {1, 2, 3, 5, 20, 100, 301, 2001, 10000})
    for (double factor = 1e-4; factor < 30; factor *= 1.03) {
      const double x = factor * degrees;
      const long double expected = boost::math::gamma_q(degrees / 2.0L, x / 2.0L, Unpromoted());
      if (expected < 1e-290L) break;
      // (df / 2) ln(x / 2), x / 2 and the log gamma add up to 2 df ln(df), rounded to 1.1e-16: ln(1e4) = 9.2 of the
      // bound's 1e-14; sums of df logarithms stray by less than what is left.
      const double relative = static_cast<double>((ChiSquareTail(degrees)(x) - expected) / expected);
      EXPECT_LE(std::fabs(relative), 1e-14 * degrees) << degrees << " " << x;
    }
}

TEST(ChiSquareTail, IsOneWhereChiSquareIsNotAboveZero) {
  for (const double x : {0.0, -1e-300, -7.0}) EXPECT_EQ(ChiSquareTail(3)(x), 1.0);
}

TEST(ChiSquareTail, EndsAtZero) { EXPECT_EQ(ChiSquareTail(4)(1e6), 0.0); }

}  // namespace
