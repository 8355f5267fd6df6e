#include "kalmia/statistics/ChiSquareTail.h"

#include <gtest/gtest.h>

#include <boost/math/special_functions/gamma.hpp>

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

TEST(ChiSquareTail, IsOneWhereChiSquareIsNotAboveZero) {
  for (const double x : {0.0, -1e-300, -7.0}) EXPECT_EQ(ChiSquareTail(3)(x), 1.0);
}

TEST(ChiSquareTail, EndsAtZero) { EXPECT_EQ(ChiSquareTail(4)(1e6), 0.0); }

}  // namespace
