#include "kalmia/analysis/validation/internal/O2PLSRound.h"

#include <algorithm>
#include <utility>

#include "kalmia/analysis/fit/internal/O2PLSExtraction.h"

namespace kalmia::analysis {

namespace {

LeftOutBlock MeansOf(const RoundBlock& block, const RoundX& scaled) {
  LeftOutBlock result;
  for (const std::vector<double>& column : block.fitted) result.means.push_back(MeanOf(column));
  result.withoutSpread = scaled.ColumnsWithoutSpread();
  return result;
}

/// Whether the rows can have so many components at all.
bool AreEnough(const O2PLSNumbers& numbers, int rows, const RoundX& x, const RoundX& y) {
  const int ofX = std::min(rows - 1, x.Columns()), ofY = std::min(rows - 1, y.Columns());
  return numbers.joint > 0 && numbers.joint + numbers.xUnique <= ofX && numbers.joint + numbers.yUnique <= ofY;
}

/// What the model says of its output block, from rows of its input block.
void Predict(StoredO2PLS* model, const RoundX& input, const RoundBlock& from, const RoundX& output,
             WorkProgress* progress, LeftOutBlock* result) {
  NCProgress* bar = progress->SilentBar();
  model->pooledDeviation = PooledDeviationOf(PredictRows(*model, input.Shifted(from.fitted), bar), model->Components());
  const std::vector<RowPrediction> rows = PredictRows(*model, input.Shifted(from.leftOut), bar);
  result->distances = DistancesToModel(*model, model->Components(), rows);
  for (const RowPrediction& row : rows) {
    result->predicted.emplace_back();
    if (!row.reason.empty()) continue;
    result->predicted.back() = result->means;
    for (std::size_t k = 0; k < row.y.size(); ++k) result->predicted.back()[output.Places()[k]] = row.y[k];
  }
}

std::vector<std::string> NamesOf(const RoundX& scaled, const std::vector<std::string>& names) {
  std::vector<std::string> taken;
  for (const std::size_t place : scaled.Places()) taken.push_back(names[place]);
  return taken;
}

}  // namespace

LeftOutBlocks JudgeO2PLSRound(const O2PLSRecipe& recipe, const O2PLSNumbers& numbers, const RoundBlock& x,
                              const RoundBlock& y, WorkProgress* progress) {
  RoundX scaledX(x.names, x.fitted, recipe.scaling, progress), scaledY(y.names, y.fitted, recipe.scaling, progress);
  LeftOutBlocks result{false, MeansOf(x, scaledX), MeansOf(y, scaledY)};
  progress->Ask();
  if (!AreEnough(numbers, RowCount(x.fitted), scaledX, scaledY)) return result;
  NCDataMatrix<float> filledX = scaledX.TakeFitted(), filledY = scaledY.TakeFitted();
  if (recipe.fill) EstimateHoles(&filledX, &filledY, progress);
  std::optional<O2PLSMatrices> matrices = TryO2PLS(filledX, filledY, numbers, progress);
  if (!matrices) return result;
  StoredO2PLS model;
  model.o2pls = std::move(*matrices);
  model.xNames = NamesOf(scaledX, x.names);
  model.yNames = NamesOf(scaledY, y.names);
  model.xScaling = scaledX.TakeScaling();
  model.yScaling = scaledY.TakeScaling();
  result.hasModel = true;
  Predict(&model, scaledX, x, scaledY, progress, &result.y);
  TurnAround(&model);
  Predict(&model, scaledY, y, scaledX, progress, &result.x);
  return result;
}

}  // namespace kalmia::analysis
