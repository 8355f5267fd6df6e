#include "kalmia/support/CompareWithTolerance.h"

#include <cmath>

int CompareWithTolerance(double a, double b, double tolerance) {
  int exponent = 0;
  std::frexp(std::fabs(a) > std::fabs(b) ? a : b, &exponent);
  const double delta = std::ldexp(tolerance, exponent);
  const double difference = a - b;
  if (difference > delta) return 1;
  return difference < -delta ? -1 : 0;
}
