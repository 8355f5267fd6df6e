#include "kalmia/analysis/table/internal/Skewness.h"

#include <cmath>

namespace kalmia::analysis {

namespace {

constexpr double kRoundingOfCells = 0x1p-50;  ///< eight times that of a number stored in double
constexpr double kStandardDeviations = 3.0;

}  // namespace

double TellableSkewness(const std::vector<double>& cells, double mean, double standardDeviation, double g) {
  double n = 0.0;
  for (const double cell : cells) n += std::isnan(cell) ? 0.0 : 1.0;
  double squares = 0.0;
  for (const double cell : cells) {
    if (std::isnan(cell)) continue;
    const double z = (cell - mean) / standardDeviation;
    const double change = (z * z - (n - 1.0) / n - z * (n - 2.0) * g / n) * cell;
    squares += change * change;
  }
  const double perUnit = 3.0 * n / ((n - 1.0) * (n - 2.0) * standardDeviation);
  const double deviation = perUnit * kRoundingOfCells * std::sqrt(squares / 3.0);  // a uniform error: width^2 / 3
  return std::fabs(g) <= kStandardDeviations * deviation ? 0.0 : g;
}

}  // namespace kalmia::analysis
