#include "kalmia/statistics/internal/IncompleteBeta.h"

#include <algorithm>
#include <cmath>

namespace kalmia {
namespace {

constexpr double kLanczos[] = {76.18009173, -86.50532033, 24.01409822, -1.231739516, 0.00120858003, -5.36382e-06};
constexpr double kRootOfTwoPi = 2.50662827465;
constexpr double kLargestChange = 3e-7;  ///< of the fraction in its last round, relatively
constexpr int kMostRounds = 1000;
constexpr double kSmallestFactor = 1e-36;  ///< a smaller one counts as 0

/// The continued fraction by its even and odd parts, each round scaled to a last denominator of 1.
double Fraction(double a, double b, double x) {
  double evenNumerator = 1, oddNumerator = 1, evenDenominator = 1, oddDenominator = 1 - (a + b) * x / (a + 1);
  double before = 0;
  for (int m = 1; m <= kMostRounds; ++m) {
    const double evenTerm = m * (b - m) * x / ((a - 1 + 2 * m) * (a + 2 * m));
    const double numerator = oddNumerator + evenTerm * evenNumerator;
    const double denominator = oddDenominator + evenTerm * evenDenominator;
    const double oddTerm = -(a + m) * (a + b + m) * x / ((a + 2 * m) * (a + 1 + 2 * m));
    const double lastDenominator = denominator + oddTerm * oddDenominator;
    before = oddNumerator;
    evenNumerator = numerator / lastDenominator;
    evenDenominator = denominator / lastDenominator;
    oddNumerator = (numerator + oddTerm * oddNumerator) / lastDenominator;
    oddDenominator = 1;
    if (std::fabs(oddNumerator - before) < kLargestChange * std::fabs(oddNumerator)) return oddNumerator;
  }
  return (oddNumerator + before) / 2;
}

double FrontFactor(double a, double b, double x) {
  if (x <= 0 || x >= 1) return 0;
  const double factor = std::exp(static_cast<double>(LogGamma(a + b)) - LogGamma(a) - LogGamma(b) + a * std::log(x) +
                                 b * std::log(1 - x));
  return factor < kSmallestFactor ? 0 : factor;
}

}  // namespace

float LogGamma(double x) {
  double series = 1, denominator = x;
  for (const double coefficient : kLanczos) series += coefficient / denominator++;
  const double shifted = x + 4.5;
  return static_cast<float>(std::log(series * kRootOfTwoPi) - (shifted - std::log(shifted) * (x - 0.5)));
}

double IncompleteBeta(double a, double b, double x) {
  x = std::clamp(x, 0.0, 1.0);
  const double factor = FrontFactor(a, b, x);
  if (x < (a + 1) / (a + b + 2)) return factor * Fraction(a, b, x) / a;
  return 1 - factor * Fraction(b, a, 1 - x) / b;
}

}  // namespace kalmia
