#pragma once

#include "kalmia/containers/Missing.h"

namespace kalmia {

/// The sums behind a regression of x on v: what a coefficient is made of.
struct RegressionSums {
  long double v1tv2;     ///< sum v x over pairs
  long double v1tv1;     ///< sum v^2 over pairs
  long double v1tv1All;  ///< sum v^2 over all cells of v that are present and not left out
};

/// Where the pairs give no estimate both their sums become -99. A sum of squares without any pair is 0, so that the one
/// limit covers that case too. The limit itself still gives an estimate, as does a NaN.
inline void DropWithoutEstimate(RegressionSums& sums) {
  if (kSmallestDenominator > sums.v1tv1) sums.v1tv2 = sums.v1tv1 = kMissing;
}

/// sum v x / sum v^2, or -99 where one of them is -99.
inline long double Coefficient(const RegressionSums& sums) {
  if (sums.v1tv2 == kMissing || sums.v1tv1 == kMissing) return kMissing;
  return sums.v1tv2 / sums.v1tv1;
}

/// The same with the denominator held up at a third of the full sum of squares, multiplied rather than divided.
inline long double CoefficientWithFix(const RegressionSums& sums) {
  constexpr double kThird = 0x1.5555555555555p-2;
  if (sums.v1tv2 == kMissing || sums.v1tv1 == kMissing) return kMissing;
  const long double third = sums.v1tv1All * kThird;
  return sums.v1tv2 / (third > sums.v1tv1 ? third : sums.v1tv1);
}

/// The least denominator of the fix on columns: the full sum of squares divided by 3, rather than times a third.
inline long double ThirdOf(long double fullSumOfSquares) { return fullSumOfSquares / 3.0; }

inline long double ClampDenominator(long double third, long double denominator) {
  return third > denominator ? third : denominator;
}

/// Which vectors have holes: bit 0 the table (or first vector), bit 1 the projecting (or second) vector.
inline int MisValMode(int numMisVal1, int numMisVal2) { return (numMisVal1 > 0 ? 1 : 0) | (numMisVal2 > 0 ? 2 : 0); }

}  // namespace kalmia
