#include "kalmia/analysis/validation/internal/ComponentSeries.h"

#include <algorithm>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/table/SingleCells.h"

namespace kalmia::analysis {

namespace {

/// Whether there is nothing left of X but roundings, over the rows that the model describes.
bool IsExhausted(const std::vector<RowResidual>& whole, const std::vector<RowResidual>& left) {
  double ofWhole = 0.0, ofLeft = 0.0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (left[i].present == 0) continue;
    ofWhole += whole[i].sumOfSquares;
    ofLeft += left[i].sumOfSquares;
  }
  return 1.0 - ofLeft / ofWhole >= 1.0 - kExhausted;
}

}  // namespace

int SeriesLimits::LastModel(int block) const { return std::max(0, std::min(models, components - block + 1)); }

ComponentSeries::ComponentSeries(const NCDataMatrix<float>& x) : whole_(RowResiduals(x)) {
  pooledDeviations_.push_back(PooledDeviation(whole_, 0));
}

bool ComponentSeries::Append(const NCDataMatrix<float>& xResiduals) {
  const std::vector<RowResidual> left = RowResiduals(xResiduals);
  pooledDeviations_.push_back(PooledDeviation(left, ComponentsOfModel(LastModel() + 1, block_)));
  return !IsExhausted(whole_, left);
}

double PresentOrZero(float number) { return IsMissing(number) ? 0.0 : number; }

}  // namespace kalmia::analysis
