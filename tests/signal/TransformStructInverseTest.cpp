#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "signal/Transforms.h"

namespace {

using T = TransformE;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

TEST(TransformStructInverse, FollowsTheInverseFormulas) {
  for (const float x : {-1.3F, -0.2F, 0.4F, 1.9F}) {
    const long double a = 2.5F, b = 0.3F, below = 0.01F, above = 5.1F, p = std::pow(10.0L, x);
    ExpectRounded(Back(TransformOf(T::TransformLinear, 2.5F, 0.3F), x), (x - b) / a);
    ExpectRounded(Back(TransformOf(T::TransformLog, 2.5F, 0.3F), x), (p - b) / a);
    ExpectRounded(Back(TransformOf(T::TransformNegLog, 2.5F, 0.3F), x), (std::pow(10.0L, -x) - b) / a);
    ExpectRounded(Back(TransformOf(T::TransformLogit, 0.01F, 5.1F), x), (above * p + below) / (p + 1));
  }
  for (const float x : {0.2F, 0.9F, 1.9F, 40.0F}) {
    const long double a = 2.5F, b = 0.3F, c = 1.7F, y = x;
    ExpectRounded(Back(TransformOf(T::TransformPower, 2.5F, 0.3F, 1.7F), x), (std::pow(y, 1 / c) - b) / a);
    const float logarithm = static_cast<float>(std::log(double{x}));
    ExpectRounded(Back(TransformOf(T::TransformExp, 2.5F, 0.3F), x), (logarithm - b) / a);
  }
}

TEST(TransformStructInverse, RoundsTheLogarithmOfAnInverseExponentialToFloat) {
  const float x = 3.0F;
  const double a = 0x1p-23, b = std::log(3.0F);  // what is left of ln(x) - b is the rounding of either to float
  const Outcome outcome = Back(TransformOf(T::TransformExp, static_cast<float>(a), static_cast<float>(b)), x);
  ExpectDone(outcome, 0.0F);
}

TEST(TransformStructInverse, ComesBackFromWhereItWent) {
  // The rounding of y to float, half a unit in its last place times |dx/dy|, is at most 3.9 2^-24 of x here: that of
  // the logarithm at 3.2, where y = 0.92 and dx/dy = ln(10) 8.3 / 2.5 (the line at 3.2 has 8 2^-24 / 2.5). That of the
  // result, which is below 4, is at most 2 2^-24. The inverse exponential rounds ln(x) too, and comes to 1.2 2^-24 for
  // y, 1 / 0.5 2^-24 for ln(x), which is below 2, and as much again for the result.
  const TransformStruct transforms[] = {TransformOf(T::TransformLinear, 2.5F, 0.3F),
                                        TransformOf(T::TransformLog, 2.5F, 0.3F),
                                        TransformOf(T::TransformNegLog, 2.5F, 0.3F),
                                        TransformOf(T::TransformLogit, -1.0F, 5.0F),
                                        TransformOf(T::TransformExp, 0.5F, 0.3F),
                                        TransformOf(T::TransformPower, 2.5F, 0.3F, 1.7F)};
  for (const TransformStruct& transform : transforms)
    for (const float x : {0.013F, 0.7F, 1.9F, 3.2F}) {
      const Outcome there = Forward(transform, x);
      const Outcome back = Back(transform, there.cell);
      EXPECT_EQ(there.code, 1);
      EXPECT_EQ(back.code, 1);
      EXPECT_NEAR(back.cell, x, 6 * 0x1p-24) << transform.GetTransformName();
    }
}

TEST(TransformStructInverse, LeavesTheCellWhereALinearInverseHasNoSlope) {
  const Outcome outcome = Back(TransformOf(T::TransformLinear, 0, 3), 7);
  EXPECT_EQ(outcome.code, 2);
  EXPECT_EQ(outcome.cell, 7);
}

TEST(TransformStructInverse, HasNoInverseWithoutASlope) {
  for (const T::Transform type : {T::TransformLog, T::TransformNegLog, T::TransformExp, T::TransformPower})
    for (const float x : {1.0F, 2.0F}) ExpectFailed(Back(TransformOf(type, 0, 3, 2), x));
}

TEST(TransformStructInverse, HasNoInverseWithoutASlopeAlsoWhereTheNumeratorIsZero) {
  for (const float a : {0.0F, -0.0F}) {  // 0 / 0 is no number, where other numerators make an infinite quotient
    ExpectFailed(Back(TransformOf(T::TransformLog, a, 10), 1));
    ExpectFailed(Back(TransformOf(T::TransformNegLog, a, 10), -1));
    ExpectFailed(Back(TransformOf(T::TransformExp, a, 0), 1));
    ExpectFailed(Back(TransformOf(T::TransformPower, a, 2, 1), 2));
    for (const float b : {3.0F, 7.0F}) {
      const Outcome outcome = Back(TransformOf(T::TransformLinear, a, b), 7);
      EXPECT_EQ(outcome.code, 2);
      EXPECT_EQ(outcome.cell, 7);
    }
  }
}

TEST(TransformStructInverse, TestsTheRangeOfInverseLogarithms) {
  for (const int sign : {1, -1}) {
    const T::Transform type = sign > 0 ? T::TransformLog : T::TransformNegLog;
    ExpectFailed(Back(TransformOf(type, 1, 0), kNaN));
    ExpectFailed(Back(TransformOf(type, 1, 0), sign * 39.0F));   // 1e39 is no float
    ExpectFailed(Back(TransformOf(type, 1, 0), sign * 400.0F));  // infinite
    ExpectFailed(Back(TransformOf(type, 1, 0), sign * -310.0F)); // a denormal double
    ExpectDone(Back(TransformOf(type, 1, 0), sign * -400.0F), 0);
    ExpectDone(Back(TransformOf(type, 1, -1), sign * -310.0F), 1);  // only the result is asked for its range
  }
}

TEST(TransformStructInverse, TestsTheInverseLogit) {
  const TransformStruct logit = TransformOf(T::TransformLogit, 1, 5);
  ExpectFailed(Back(logit, 400));  // 10^x is infinite
  ExpectFailed(Back(logit, kNaN));
  ExpectDone(Back(logit, -400), 1);
  ExpectDone(Back(logit, 0), 3);
  ExpectFailed(Back(TransformOf(T::TransformLogit, 1e-38F, 0), 275));  // 1e-313, a denormal double
}

TEST(TransformStructInverse, TestsTheInverseExponential) {
  const TransformStruct exponential = TransformOf(T::TransformExp, 2, 0);
  ExpectFailed(Back(exponential, 0));
  ExpectFailed(Back(exponential, -1));
  ExpectFailed(Back(exponential, kInfinity));
  ExpectFailed(Back(exponential, kNaN));
  ExpectDone(Back(exponential, 1), 0);
  ExpectFailed(Back(TransformOf(T::TransformExp, 1e-38F, 0), 1e5F));  // ln(x) / a beyond the floats
}

TEST(TransformStructInverse, TestsTheRootButNotTheResultOfAnInversePower) {
  ExpectFailed(Back(TransformOf(T::TransformPower, 1, 0, 2), -1));          // no root
  ExpectFailed(Back(TransformOf(T::TransformPower, 1, 0, -1), 0));          // infinite
  ExpectFailed(Back(TransformOf(T::TransformPower, 1, 0, 0), 2));           // 2^(1 / 0)
  ExpectFailed(Back(TransformOf(T::TransformPower, 1, 0, 2), kNaN));
  ExpectFailed(Back(TransformOf(T::TransformPower, 1, 0, 2), kInfinity));
  ExpectDone(Back(TransformOf(T::TransformPower, 1, 0, 0), 0.5F), 0);       // 0.5^(1 / 0)
  ExpectDone(Back(TransformOf(T::TransformPower, 1e-30F, 0, 1), 1e30F), kInfinity);
}

}  // namespace
