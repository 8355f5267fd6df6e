#include "app/PlsOutcome.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "app/DisplayText.h"
#include "app/PlsFit.h"
#include "app/Scaling.h"
#include "app/Version.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

constexpr int kMostAutomaticComponents = 15;

/// Components to extract at most.
int MostComponents(const PlsData& data, const PlsOptions& options, Notes* notes) {
  const int most = std::min(data.x.SizeRows() - 1, data.x.SizeColumns());
  if (!options.components) return std::min(most, kMostAutomaticComponents);
  if (*options.components > most) {
    notes->Add(std::to_string(*options.components) + " components are cut to " + std::to_string(most) + ": there are " +
               Counted(static_cast<std::size_t>(data.x.SizeRows()), "row") + " and " +
               Counted(static_cast<std::size_t>(data.x.SizeColumns()), "X column"));
  }
  return std::min(*options.components, most);
}

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

void DescribeModel(const CsvTable& table, const PlsOptions& options, PlsOutcome* outcome) {
  StoredModel& model = outcome->model;
  model.writtenBy = kVersion;
  model.table = table.Name();
  model.idColumn = options.id;
  model.groupColumn = options.groupColumn;
  model.groups = outcome->data.rounds;
  model.scaling = options.scaling;
  model.xNames = outcome->data.xNames;
  model.yNames = outcome->data.yNames;
  model.rowNames = outcome->data.rowNames;
}

void JudgeModel(const NCDataMatrix<float>& crossValidatedResiduals, PlsOutcome* outcome) {
  StoredModel& model = outcome->model;
  const int components = model.Components();
  outcome->fitted = PredictRows(model, outcome->data.x);
  std::vector<RowResidual> residuals;
  for (const RowPrediction& row : outcome->fitted) {
    if (row.reason.empty()) residuals.push_back(row.residual);
  }
  model.pooledDeviation = PooledDeviation(residuals, components);
  for (int j = 1; j <= outcome->data.y.SizeColumns(); ++j) {
    YQuality quality;
    JudgeFit(*outcome, j, components, &quality);
    quality.rmsecv = CrossValidatedError(crossValidatedResiduals, j, FactorOf(*model.yScale, j));
    model.quality.push_back(quality);
  }
}

void NoteIterations(const std::vector<ComponentRecord>& components, Notes* notes) {
  for (std::size_t a = 0; a < components.size(); ++a) {
    if (components[a].iterations < kMaxIterations) continue;
    notes->Add("component " + std::to_string(a + 1) + " was still moving after " + std::to_string(kMaxIterations) +
               " iterations and is taken as it then was");
  }
}

}  // namespace

PlsOutcome ComputePls(const CsvTable& table, const PlsOptions& options, Notes* notes) {
  PlsOutcome outcome;
  outcome.data = SelectPlsData(table, options, notes);
  FitTask task;
  task.x = outcome.data.x;
  task.y = outcome.data.y;
  task.groups = outcome.data.groups;
  task.rounds = outcome.data.rounds;
  task.mostComponents = MostComponents(outcome.data, options, notes);
  task.stopAtFirstFailure = !options.components;
  task.unitVariance = options.scaling == NCScale::ScalingUnitVariance;
  DescribeModel(table, options, &outcome);
  outcome.model.xScale = ScaleColumns(options.scaling, outcome.data.xNames, &task.x);
  outcome.model.yScale = ScaleColumns(ScalingOfY(options.scaling), outcome.data.yNames, &task.y);
  PlsFit fit = FitPls(task);
  NoteIterations(fit.components, notes);
  outcome.components = fit.components;
  outcome.endedEarly = fit.endedEarly;
  fit.components.resize(static_cast<std::size_t>(fit.kept));
  outcome.model.components = std::move(fit.components);
  outcome.model.pls = std::move(fit.model);
  if (outcome.AnyKept()) JudgeModel(fit.crossValidatedResiduals, &outcome);
  return outcome;
}

}  // namespace kalmia::app
