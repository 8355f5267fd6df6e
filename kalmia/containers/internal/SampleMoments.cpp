#include "kalmia/containers/internal/SampleMoments.h"

#include <cmath>

#include "kalmia/containers/Missing.h"

namespace kalmia {

double SkewnessFromCubes(double sumOfCubes, int n) {
  const double count = n;
  return sumOfCubes * count / ((count - 1) * (count - 2));
}

double SkewnessOverStandardError(double skewness, int n) {
  if (n < 3 || skewness == kMissing) return skewness;
  const double count = n;
  return skewness / std::sqrt(6 * count * (count - 1) / ((count + 3) * (count + 1) * (count - 2)));
}

double KurtosisFromFourthPowers(double sumOfFourthPowers, int n) {
  const double count = n;
  return sumOfFourthPowers * count * (count + 1) / ((count - 1) * (count - 2) * (count - 3)) -
         3 * (count - 1) * (count - 1) / ((count - 2) * (count - 3));
}

long double CorrelationFromSums(long double sumAB, long double sumAA, long double sumBB) {
  const long double product = sumAA * sumBB;
  return product <= kSmallestDenominator ? sumAB : sumAB / std::sqrt(product);
}

}  // namespace kalmia
