#pragma once

// What the statistics of a vector and of a matrix column have in common once the sums are taken: n counts the present
// cells, z is (x - mean) / sd with the sample standard deviation. The divisions are done in floating point, so that too
// few cells give what the formula gives (infinity or NaN) and no trap.

namespace kalmia {

/// z^3 or, for any other power, z^4.
inline long double PowerOf(long double z, int power) { return power == 3 ? z * z * z : z * z * z * z; }

/// Sample skewness  sum(z^3) n / ((n-1)(n-2)).
long double SkewnessFromCubes(long double sumOfCubes, int n);

/// Skewness over its standard error under normality:  skewness / sqrt(6 n (n-1) / ((n+3)(n+1)(n-2))).
/// With n below 3, or a skewness of -99, the skewness as it is.
long double SkewnessOverStandardError(long double skewness, int n);

/// Excess kurtosis without bias under normality:
/// sum(z^4) n (n+1) / ((n-1)(n-2)(n-3)) - 3 (n-1)^2 / ((n-2)(n-3)).
long double KurtosisFromFourthPowers(long double sumOfFourthPowers, int n);

/// sum(a b) / sqrt(sum(a^2) sum(b^2)); where the product under the root is at or below 1e-30, the numerator.
long double CorrelationFromSums(long double sumAB, long double sumAA, long double sumBB);

}  // namespace kalmia
