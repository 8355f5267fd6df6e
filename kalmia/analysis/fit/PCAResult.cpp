#include "kalmia/analysis/fit/PCAResult.h"

#include <utility>

#include "kalmia/analysis/fit/internal/FitQuality.h"
#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/fit/internal/FitSetup.h"
#include "kalmia/analysis/fit/internal/PCAExtraction.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/pcapls/PCACrossValidation.h"

namespace kalmia::analysis {

namespace {

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

void NoteComponents(const PCAComponents& fit, Notes* notes) {
  for (std::size_t a = 0; a < fit.components.size(); ++a) {
    const PCAComponentRecord& record = fit.components[a];
    if (record.kept || record.IsJudged()) NoteIterations(a + 1, record.iterations, notes);
  }
  if (!fit.notJudged.empty()) notes->Add("cross-validation is not possible: " + fit.notJudged);
}

PCAResult Compute(const PCARecipe& recipe, const Table& table, NCProgress* progress) {
  PCAResult result;
  result.data = SelectData(table, recipe, /*y=*/{}, &result.notes, progress);
  RequireTwoColumns(table, result.data);
  if (recipe.judgeComponents) CutGroupsToColumns(recipe, &result.data, &result.notes);
  PCATask task;
  task.x = result.data.x;
  task.groups = result.data.groups;
  task.rounds = result.data.rounds;
  static_cast<FitRules&>(task) = RulesOf(recipe, result.data, &result.notes);
  task.centred = recipe.scaling != NCScale::ScalingNone;
  FillInfo(table, recipe, result.data, &result.model);
  result.model.xScaling = ScaleColumns(recipe.scaling, result.data.xNames, &task.x, result.data.xShifts);
  PCAComponents fit = FitOrNameLeftOut(result.data, [&] { return ExtractPCA(task, progress); });
  NoteComponents(fit, &result.notes);
  result.components = fit.components;
  result.endedEarly = fit.endedEarly;
  result.columnR2 = std::move(fit.columnR2);
  result.columnQ2 = std::move(fit.columnQ2);
  fit.components.resize(static_cast<std::size_t>(fit.kept));
  result.model.components = std::move(fit.components);
  result.model.pca = std::move(fit.model);
  if (!result.AnyKept() && recipe.components != 0) return result;
  result.rows = ScoreRows(result.model, result.data.x, progress);
  result.model.pooledDeviation = PooledDeviationOf(result.rows, result.model.Components());
  if (result.model.Components() > 0) DropRoundings(result.model.components.back().r2xCum, &result.model);
  DescribeRows(result.rows, /*leftOut=*/{}, &result.model);
  return result;
}

}  // namespace

PCAResult Fit(const PCARecipe& recipe, const Table& table, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Compute(recipe, table, progress); });
}

}  // namespace kalmia::analysis
