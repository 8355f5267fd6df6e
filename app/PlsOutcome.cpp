#include "app/PlsOutcome.h"

#include <cmath>
#include <limits>
#include <utility>

#include "app/FitFrame.h"
#include "app/FitReport.h"
#include "app/PlsFit.h"
#include "app/Scaling.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

/// sqrt(SSE / (n - 1 - A)) of Y column j (from 1) with the count n of its rows, from measured and fitted values.
void JudgeFit(const PlsOutcome& outcome, int j, int components, YQuality* quality) {
  double sse = 0.0;
  for (int r = 1; r <= outcome.data.y.SizeRows(); ++r) {
    const RowPrediction& fitted = outcome.fitted[static_cast<std::size_t>(r - 1)];
    const float measured = outcome.data.y[r][j];
    if (measured == static_cast<float>(kMissing) || fitted.y.empty()) continue;
    const double error = measured - fitted.y[static_cast<std::size_t>(j - 1)];
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

void JudgeModel(const NCDataMatrix<float>& crossValidatedResiduals, PlsOutcome* outcome) {
  StoredPls& model = outcome->model;
  const int components = model.Components();
  outcome->fitted = PredictRows(model, outcome->data.x);
  model.pooledDeviation = PooledDeviationOf(outcome->fitted, components);
  for (int j = 1; j <= outcome->data.y.SizeColumns(); ++j) {
    YQuality quality;
    JudgeFit(*outcome, j, components, &quality);
    quality.rmsecv = CrossValidatedError(crossValidatedResiduals, j, FactorOf(*model.yScale, j));
    model.quality.push_back(quality);
  }
}

}  // namespace

PlsOutcome ComputePls(const CsvTable& table, const PlsOptions& options, Notes* notes) {
  PlsOutcome outcome;
  outcome.data = SelectData(table, options, options.y, notes);
  FitTask task;
  task.x = outcome.data.x;
  task.y = outcome.data.y;
  task.groups = outcome.data.groups;
  task.rounds = outcome.data.rounds;
  static_cast<FitRules&>(task) = RulesOf(options, outcome.data, notes);
  FillFrame(table, options, outcome.data, &outcome.model);
  outcome.model.yNames = outcome.data.yNames;
  outcome.model.xScale = ScaleColumns(options.scaling, outcome.data.xNames, &task.x);
  outcome.model.yScale = ScaleColumns(ScalingOfY(options.scaling), outcome.data.yNames, &task.y);
  PlsFit fit = FitOrNameLeftOut(outcome.data, [&task] { return FitPls(task); });
  for (std::size_t a = 0; a < fit.components.size(); ++a) {
    NoteIterations(a + 1, fit.components[a].iterations, kMaxIterations, notes);
  }
  outcome.components = fit.components;
  outcome.endedEarly = fit.endedEarly;
  fit.components.resize(static_cast<std::size_t>(fit.kept));
  outcome.model.components = std::move(fit.components);
  outcome.model.pls = std::move(fit.model);
  if (outcome.AnyKept()) JudgeModel(fit.crossValidatedResiduals, &outcome);
  return outcome;
}

}  // namespace kalmia::app
