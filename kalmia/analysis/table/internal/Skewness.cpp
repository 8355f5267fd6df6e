#include "kalmia/analysis/table/internal/Skewness.h"

#include <cmath>

namespace kalmia::analysis {

namespace {

constexpr double kRoundingOfCells = 0x1p-50;  ///< eight times that of a number stored in double
constexpr double kStandardDeviations = 3.0;

}  // namespace

double TellableSkewness(const double* cells, std::size_t count, const ColumnMoments& moments) {
  const double n = moments.n, g = moments.skewness, standardDeviation = moments.standardDeviation;
  double squares = 0.0;
  for (const double* at = cells; at != cells + count; ++at) {
    const double cell = *at;
    if (std::isnan(cell)) continue;
    const double z = (cell - moments.mean) / standardDeviation;
    const double change = (z * z - (n - 1.0) / n - z * (n - 2.0) * g / n) * cell;
    squares += change * change;
  }
  const double perUnit = 3.0 * n / ((n - 1.0) * (n - 2.0) * standardDeviation);
  const double deviation = perUnit * kRoundingOfCells * std::sqrt(squares / 3.0);  // a uniform error: width^2 / 3
  return std::fabs(g) <= kStandardDeviations * deviation ? 0.0 : g;
}

}  // namespace kalmia::analysis
