#include "kalmia/analysis/validation/internal/ComponentSeries.h"

#include <algorithm>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/table/internal/SingleCells.h"

namespace kalmia::analysis {

namespace {

/// What is described of a table, over the rows that the model describes.
double Share(const std::vector<RowResidual>& whole, const std::vector<RowResidual>& left) {
  double ofWhole = 0.0, ofLeft = 0.0;
  for (std::size_t i = 0; i < left.size(); ++i) {
    if (left[i].present == 0) continue;
    ofWhole += whole[i].sumOfSquares;
    ofLeft += left[i].sumOfSquares;
  }
  return 1.0 - ofLeft / ofWhole;
}

}  // namespace

int SeriesLimits::LastModel(int block) const { return std::max(0, std::min(models, components - block + 1)); }

ComponentSeries::ComponentSeries(const NCDataMatrix<float>& x, const NCDataMatrix<float>& y)
    : wholeX_(RowResiduals(x)), wholeY_(RowResiduals(y)) {
  pooledDeviations_.push_back(PooledDeviation(wholeX_, 0));
}

bool ComponentSeries::Append(const NCDataMatrix<float>& xResiduals, const NCDataMatrix<float>& yResiduals) {
  const std::vector<RowResidual> left = RowResiduals(xResiduals);
  const int components = ComponentsOfModel(LastModel() + 1, block_);
  r2x_.push_back(Share(wholeX_, left));
  r2y_.push_back(Share(wholeY_, RowResiduals(yResiduals)));
  const bool isExhausted = r2x_.back() >= 1.0 - kExhausted;
  const bool isNothingLeft = r2x_.back() >= 1.0 - kRoundings;
  pooledDeviations_.push_back(isNothingLeft ? kNotANumber : PooledDeviation(left, components));
  return !isExhausted;
}

double PresentOrZero(float number) { return IsMissing(number) ? 0.0 : number; }

}  // namespace kalmia::analysis
