#include "kalmia/analysis/table/ColumnMoments.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/table/internal/KeptIf.h"

namespace kalmia::analysis {

ColumnMoments MomentsOf(const double* cells, std::size_t count) {
  const double* const end = cells + count;
  ColumnMoments moments;
  double min = std::numeric_limits<double>::infinity();
  double max = -min;
  double sum = 0.0;
  for (const double* at = cells; at != end; ++at) {
    const double cell = *at;
    const bool isPresent = !std::isnan(cell);
    moments.n += isPresent ? 1 : 0;
    sum += KeptIf(isPresent, cell);
    min = std::min(min, cell);  // not a cell that is missing: it compares with nothing
    max = std::max(max, cell);
  }
  if (moments.n == 0) return moments;
  const double n = moments.n;
  const double mean = sum / n;
  moments.min = min;
  moments.max = max;
  moments.mean = mean;
  if (moments.n < 2) return moments;
  double squares = 0.0;
  double cubes = 0.0;
  for (const double* at = cells; at != end; ++at) {
    const double difference = KeptIf(!std::isnan(*at), *at - mean);
    squares += difference * difference;
    cubes += difference * difference * difference;
  }
  const double s = std::sqrt(squares / (n - 1.0));
  moments.standardDeviation = s;
  if (moments.n > 2 && min != max) moments.skewness = n / ((n - 1.0) * (n - 2.0)) * (cubes / (s * s * s));
  return moments;
}

}  // namespace kalmia::analysis
