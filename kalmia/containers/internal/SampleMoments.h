#pragma once

#include "kalmia/containers/Missing.h"

// What the statistics of a vector and of a matrix column have in common once the sums are taken: n counts the present
// cells, z is (x - mean) / sd with the sample standard deviation. The divisions are done in floating point, so that too
// few cells give what the formula gives (infinity or NaN) and no trap.

namespace kalmia {

/// sum / n; -99 where the sum is -99, which is what a sum of no cell is.
inline double MeanFromSum(double sum, int n) { return sum == kMissing ? sum : sum / n; }

/// z^3 or z^4.
template <int power>
double PowerOf(double z) {
  static_assert(power == 3 || power == 4);
  return power == 3 ? z * z * z : (z * z) * (z * z);
}

/// Sample skewness  sum(z^3) n / ((n-1)(n-2)).
double SkewnessFromCubes(double sumOfCubes, int n);

/// Skewness over its standard error under normality:  skewness / sqrt(6 n (n-1) / ((n+3)(n+1)(n-2))).
/// With n below 3, or a skewness of -99, the skewness as it is.
double SkewnessOverStandardError(double skewness, int n);

/// Excess kurtosis without bias under normality:
/// sum(z^4) n (n+1) / ((n-1)(n-2)(n-3)) - 3 (n-1)^2 / ((n-2)(n-3)).
double KurtosisFromFourthPowers(double sumOfFourthPowers, int n);

/// sum(a b) / sqrt(sum(a^2) sum(b^2)); where the product under the root is at or below 1e-30, the numerator.
long double CorrelationFromSums(long double sumAB, long double sumAA, long double sumBB);

}  // namespace kalmia
