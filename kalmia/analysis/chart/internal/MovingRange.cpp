#include "kalmia/analysis/chart/internal/MovingRange.h"

#include <cmath>

#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/statistics/ControlChartFactors.h"

namespace kalmia::analysis {

double SpreadOfMovingRanges(const NCDataVector<float>& values) {
  double sum = 0.0;
  int pairs = 0;
  for (int i = 2; i <= values.Size(); ++i) {
    if (values[i] == kMissingCell<float> || values[i - 1] == kMissingCell<float>) continue;
    sum += std::fabs(static_cast<double>(values[i]) - values[i - 1]);
    ++pairs;
  }
  return pairs == 0 ? kMissing : sum / pairs / ShortestDouble(FindControlChartFactors(2)->d2);
}

}  // namespace kalmia::analysis
