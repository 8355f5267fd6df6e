#include "kalmia/analysis/fit/PCAOutcome.h"

#include <utility>

#include "kalmia/analysis/fit/FitRules.h"
#include "kalmia/analysis/fit/internal/FitFrame.h"
#include "kalmia/analysis/fit/internal/PCAFit.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace kalmia::analysis {

namespace {

void RequireTwoColumns(const CsvTable& table, const ModelData& data) {
  if (data.xNames.size() > 1) return;
  const std::string leftOut = LeftOutText(data);
  throw BadData(table.Name() + ": there is only one column for X, " + Quoted(data.xNames.front()) +
                ": principal components take two or more" + (leftOut.empty() ? "" : "; left out of X: " + leftOut));
}

/// Cross-validation leaves groups of columns out too, as many as there are groups of rows.
void CutGroupsToColumns(const PCARecipe& recipe, ModelData* data, Notes* notes) {
  const int columns = data->x.SizeColumns();
  if (data->rounds <= columns) return;
  notes->Add(std::to_string(data->rounds) + " groups are " + (recipe.groupColumn.empty() ? "cut" : "merged") + " to " +
             std::to_string(columns) + ", the number of X columns");
  data->rounds = columns;
  if (recipe.groupColumn.empty()) {
    data->groups = GetDeafultCVGroupsVector(data->x.SizeRows(), columns);
    return;
  }
  for (int i = 1; i <= data->groups.Size(); ++i) data->groups(i) %= columns;
}

void NoteComponents(const PCAFit& fit, Notes* notes) {
  for (std::size_t a = 0; a < fit.components.size(); ++a) {
    NoteIterations(a + 1, fit.components[a].iterations, notes);
  }
  if (!fit.notJudged.empty()) notes->Add("cross-validation is not possible: " + fit.notJudged);
}

}  // namespace

PCAOutcome ComputePCA(const CsvTable& table, const PCARecipe& recipe, Notes* notes, NCProgress* progress) {
  PCAOutcome outcome;
  outcome.data = SelectData(table, recipe, /*y=*/{}, notes, progress);
  RequireTwoColumns(table, outcome.data);
  CutGroupsToColumns(recipe, &outcome.data, notes);
  PCATask task;
  task.x = outcome.data.x;
  task.groups = outcome.data.groups;
  task.rounds = outcome.data.rounds;
  static_cast<FitRules&>(task) = RulesOf(recipe, outcome.data, notes);
  task.centred = recipe.scaling != NCScale::ScalingNone;
  FillFrame(table, recipe, outcome.data, &outcome.model);
  outcome.model.xScale = ScaleColumns(recipe.scaling, outcome.data.xNames, &task.x);
  PCAFit fit = FitOrNameLeftOut(outcome.data, [&] { return FitPCA(task, progress); });
  NoteComponents(fit, notes);
  outcome.components = fit.components;
  outcome.endedEarly = fit.endedEarly;
  outcome.columnR2 = std::move(fit.columnR2);
  outcome.columnQ2 = std::move(fit.columnQ2);
  fit.components.resize(static_cast<std::size_t>(fit.kept));
  outcome.model.components = std::move(fit.components);
  outcome.model.pca = std::move(fit.model);
  if (!outcome.AnyKept()) return outcome;
  outcome.rows = ScoreRows(outcome.model, outcome.data.x, progress);
  outcome.model.pooledDeviation = PooledDeviationOf(outcome.rows, outcome.model.Components());
  return outcome;
}

}  // namespace kalmia::analysis
