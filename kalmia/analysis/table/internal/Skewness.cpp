#include "kalmia/analysis/table/internal/Skewness.h"

#include <cmath>

#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr double kRoundingOfCells = 0x1p-24;  ///< largest relative error of a number stored in single precision
constexpr double kStandardDeviations = 3.0;

}  // namespace

double TellableSkewness(const std::vector<float>& cells, double mean, double standardDeviation, double g) {
  double n = 0.0;
  for (const float cell : cells) n += cell == kMissingCell<float> ? 0.0 : 1.0;
  double squares = 0.0;
  for (const float cell : cells) {
    if (cell == kMissingCell<float>) continue;
    const double z = (cell - mean) / standardDeviation;
    const double change = (z * z - (n - 1.0) / n - z * (n - 2.0) * g / n) * cell;
    squares += change * change;
  }
  const double perUnit = 3.0 * n / ((n - 1.0) * (n - 2.0) * standardDeviation);
  const double deviation = perUnit * kRoundingOfCells * std::sqrt(squares / 3.0);  // a uniform error: width^2 / 3
  return std::fabs(g) <= kStandardDeviations * deviation ? 0.0 : g;
}

}  // namespace kalmia::analysis
