#include "kalmia/kernels/simd/Quotients.h"

#include <gtest/gtest.h>

#include "kalmia/kernels/regression/ColumnRegression.h"
#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

/// What every quotient has to be: divided as long doubles, then rounded to float.
std::vector<float> LongQuotients(const std::vector<double>& numerators, long double divisor) {
  std::vector<float> quotients;
  for (const double numerator : numerators) quotients.push_back(static_cast<float>(numerator / divisor));
  return quotients;
}

std::vector<double> Numbers(int n, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  std::vector<double> numbers(n);
  for (double& number : numbers) number = normal(random);
  return numbers;
}

TEST(SimdQuotients, AreThoseOfLongDoublesUnlessInDoubt) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths()) {
      const std::vector<double> numerators = Numbers(n, n);
      std::vector<float> lanes(n), twins(n);
      const bool sure = simd::DivideToFloat(numerators.data(), 0.7, n, lanes.data());
      EXPECT_EQ(sure, simd::scalar::DivideToFloat(numerators.data(), 0.7, n, twins.data()));
      EXPECT_TRUE(SameBits(lanes, twins)) << n;
      EXPECT_TRUE(SameBits(lanes, LongQuotients(numerators, 0.7L))) << n;
    }
  }
}

TEST(SimdQuotients, AreInDoubtOnTheBorderOfTwoFloatsAndBelowTheNormalOnes) {
  struct Case {
    double numerator;
    bool sure;
  };
  const Case cases[] = {{1.0, true},
                        {0.0, true},
                        {-0.0, true},
                        {0x1.000001p0, false},  // half-way between 1 and the next float
                        {0x1.0000010000001p0, true},
                        {0x1.0000000ffffffp0, true},
                        {-0x1.fffffep127, true},
                        {0x1.ffffffp127, false},  // half-way between the largest float and what rounds to infinity
                        {1e300, true},
                        {0x1p-126, true},
                        {0x1p-127, false},
                        {1e-300, false},
                        {std::numeric_limits<double>::infinity(), true},
                        {std::numeric_limits<double>::quiet_NaN(), true}};
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (const Case& c : cases)
      for (int at = 0; at < 19; ++at) {  // in every lane, and behind them
        std::vector<double> numerators(19, 1.0);
        numerators[at] = c.numerator;
        std::vector<float> lanes(19), twins(19);
        EXPECT_EQ(simd::DivideToFloat(numerators.data(), 1.0, 19, lanes.data()), c.sure) << c.numerator;
        EXPECT_EQ(simd::scalar::DivideToFloat(numerators.data(), 1.0, 19, twins.data()), c.sure) << c.numerator;
        EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << c.numerator;
      }
  }
}

TEST(WriteQuotients, GivesTheLongQuotientWhereTheOneInDoubleFallsOnTheBorder) {
  // 1 + 2^-24 is half-way between two floats, and even rounding takes it to 1. Each numerator over 3 lies off that
  // point by less than a double shows: one below it, one above, which the next float up is for.
  const double below = 0x1.800001p1, above = std::nextafter(below, 4.0);
  std::vector<double> numerators(40, 6.0);
  for (int j = 0; j < 40; j += 2) numerators[j] = j % 4 ? below : above;
  std::vector<float> cells(40, kHole<float>);
  int missing = 40;
  kalmia::WriteQuotients(cells.data(), numerators.data(), 40, 3.0L, missing);
  EXPECT_EQ(missing, 0);
  EXPECT_TRUE(SameBits(cells, LongQuotients(numerators, 3.0L)));
}

TEST(WriteQuotients, TakesALongDivisorAsItIs) {
  const long double third = 1.0L / 3.0L;
  const std::vector<double> numerators = Numbers(100, 5);
  std::vector<float> cells(100, kHole<float>);
  int missing = 100;
  kalmia::WriteQuotients(cells.data(), numerators.data(), 100, third, missing);
  EXPECT_TRUE(SameBits(cells, LongQuotients(numerators, third)));
}

TEST(WriteQuotients, LeavesTheCellsMissingWithoutAnEstimate) {
  for (const long double divisor : {0.0L, 1e-30L, -1e-31L}) {
    std::vector<float> cells(20, kHole<float>);
    int missing = 20;
    kalmia::WriteQuotients(cells.data(), std::vector<double>(20, 1.0).data(), 20, divisor, missing);
    EXPECT_EQ(missing, 20);
    EXPECT_EQ(cells, std::vector<float>(20, kHole<float>));
  }
}

}  // namespace
