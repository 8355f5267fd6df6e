#include "kalmia/statistics/internal/ChiSquareTail.h"

#include <cmath>

namespace kalmia {
namespace {

constexpr double kHalfLogOfPi = 0.57236494292470008707;  ///< ln Gamma(1/2)

/// What is below this share of a sum no longer changes it.
constexpr double kNegligible = 0x1p-54;

}  // namespace

ChiSquareTail::ChiSquareTail(int degreesOfFreedom)
    : half_(degreesOfFreedom / 2.0), logGamma_(degreesOfFreedom % 2 == 0 ? 0 : kHalfLogOfPi) {
  for (double x = half_ - 1; x > 0; --x) logGamma_ += std::log(x);
}

double ChiSquareTail::operator()(double chiSquare) const {
  const double x = chiSquare / 2;
  if (!(x > 0)) return 1;
  double term = std::exp((half_ - 1) * std::log(x) - x - logGamma_);  // of the sum to the right, its first and largest
  double sum = 0;
  if (x < half_) {  // the series of the other side, so that its terms fall off as well
    double a = half_;
    for (term *= x / a; term > kNegligible * sum; term *= x / ++a) sum += term;
    return 1 - sum;
  }
  double a = half_ - 1;
  for (; a >= 0; --a) {
    sum += term;
    term *= a / x;
  }
  return a == -0.5 ? sum + std::erfc(std::sqrt(x)) : sum;
}

}  // namespace kalmia
