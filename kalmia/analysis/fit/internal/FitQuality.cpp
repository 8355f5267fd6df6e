#include "kalmia/analysis/fit/internal/FitQuality.h"

#include <cmath>
#include <limits>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

/// sqrt(SSE / (n - 1 - A)) of Y column j (from 1) with the count n of its rows, from measured and fitted values.
void JudgeFit(const ModelData& data, const std::vector<RowPrediction>& predictions, int j, int components,
              YQuality* quality) {
  double sse = 0.0;
  const double shift = data.yShifts.empty() ? 0.0 : data.yShifts[static_cast<std::size_t>(j - 1)];
  for (int r = 1; r <= data.y.SizeRows(); ++r) {
    const RowPrediction& fitted = predictions[static_cast<std::size_t>(r - 1)];
    const float measured = data.y[r][j];
    if (measured == static_cast<float>(kMissing) || fitted.y.empty()) continue;
    const double error = measured + shift - fitted.y[static_cast<std::size_t>(j - 1)];
    sse += error * error;
    ++quality->rows;
  }
  const int freedom = quality->rows - 1 - components;
  quality->rmsee = freedom > 0 ? std::sqrt(sse / freedom) : std::numeric_limits<double>::quiet_NaN();
}

/// Root mean square of column j (from 1) of the cross-validated residuals, in the units of Y.
double CrossValidatedError(const NCDataMatrix<float>& residuals, int j, double factor) {
  double sum = 0.0;
  int count = 0;
  for (int r = 1; r <= residuals.SizeRows(); ++r) {
    if (residuals[r][j] == static_cast<float>(kMissing)) continue;
    const double error = residuals[r][j] / factor;
    sum += error * error;
    ++count;
  }
  return std::sqrt(sum / count);
}

}  // namespace

void DropRoundings(double r2x, ModelInfo* model) {
  if (r2x >= 1.0 - kRoundings) model->pooledDeviation = std::numeric_limits<double>::quiet_NaN();
}

void JudgeModel(const ModelData& data, const std::vector<RowPrediction>& fitted, int components,
                const NCDataMatrix<float>& crossValidatedResiduals, YModelInfo* model) {
  model->pooledDeviation = PooledDeviationOf(fitted, components);
  for (int j = 1; j <= data.y.SizeColumns(); ++j) {
    YQuality quality;
    JudgeFit(data, fitted, j, components, &quality);
    quality.rmsecv = CrossValidatedError(crossValidatedResiduals, j, FactorOf(model->yScaling, j));
    model->quality.push_back(quality);
  }
}

}  // namespace kalmia::analysis
