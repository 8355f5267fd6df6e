#include "kalmia/analysis/fit/OPLSOutcome.h"

#include <algorithm>
#include <utility>

#include "kalmia/analysis/fit/internal/FitFrame.h"
#include "kalmia/analysis/fit/internal/FitQuality.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

/// Throws where a column has no value, or with `variance` no two different ones, in the rows outside of one group.
void RequireInEachRound(const ModelData& data, const NCDataMatrix<float>& table, const std::vector<std::string>& names,
                        const char* kind, bool variance) {
  for (int group = 0; group < data.rounds; ++group)
    for (int c = 1; c <= table.SizeColumns(); ++c) {
      bool any = false;
      bool varies = false;
      float first = 0.0F;
      for (int r = 1; r <= table.SizeRows(); ++r) {
        const float cell = table[r][c];
        if (data.groups[r] == group || cell == static_cast<float>(kMissing)) continue;
        varies = varies || (any && cell != first);
        if (!any) first = cell;
        any = true;
      }
      if (any && (varies || !variance)) continue;
      throw BadData("cross-validation round " + std::to_string(group + 1) + ": without the rows of its group the " +
                    kind + " column " + Quoted(names[static_cast<std::size_t>(c - 1)]) + " has no " +
                    (any ? "variance" : "value"));
    }
}

/// As many predictive components as Y has columns, at most, and both kinds together as the table carries.
void CutComponents(const OPLSRecipe& recipe, const ModelData& data, OPLSTask* task, Notes* notes) {
  const int yColumns = data.y.SizeColumns();
  task->predictive = recipe.predictive;
  if (recipe.predictive && *recipe.predictive > yColumns) {
    notes->Add(std::to_string(*recipe.predictive) + " predictive components are cut to " + std::to_string(yColumns) +
               ", the number of Y columns");
    task->predictive = yColumns;
  }
  if (recipe.components && *recipe.components == 0) {
    task->mostComponents = 0;
    return;
  }
  task->mostComponents = MostComponents(data, recipe.components, notes);
}

}  // namespace

OPLSOutcome ComputeOPLS(const CsvTable& table, const OPLSRecipe& recipe, const StoredOPLSCv* resumed, Notes* notes,
                        NCProgress* progress) {
  OPLSOutcome outcome;
  outcome.data = SelectData(table, recipe, recipe.y, notes, progress);
  if (resumed != nullptr) RequireSameTable(*resumed, outcome.data, recipe.scaling);
  RequireInEachRound(outcome.data, outcome.data.y, outcome.data.yNames, "Y", /*variance=*/true);
  RequireInEachRound(outcome.data, outcome.data.x, outcome.data.xNames, "X", /*variance=*/false);
  OPLSTask task;
  task.x = outcome.data.x;
  task.y = outcome.data.y;
  task.groups = outcome.data.groups;
  task.rounds = outcome.data.rounds;
  task.resumed = resumed;
  CutComponents(recipe, outcome.data, &task, notes);
  task.stopAtFirstFailure = !recipe.components;
  StoredOPLS& model = outcome.model;
  FillFrame(table, recipe, outcome.data, &model);
  model.yNames = outcome.data.yNames;
  model.xScale = ScaleColumns(recipe.scaling, outcome.data.xNames, &task.x);
  model.yScale = ScaleColumns(ScalingOfY(recipe.scaling), outcome.data.yNames, &task.y);
  OPLSFit fit = FitOrNameLeftOut(outcome.data, [&] { return FitOPLS(task, progress); });
  DescribeTable(outcome.data, recipe.scaling, &outcome.validation);
  outcome.validation.state = std::move(fit.validation);
  outcome.scaledX = task.x;
  outcome.components = fit.components;
  outcome.endedEarly = fit.endedEarly;
  outcome.u = fit.u;
  outcome.crossValidated = std::move(fit.crossValidated);
  if (!fit.components.back().kept) fit.components.pop_back();
  model.components = std::move(fit.components);
  model.opls = std::move(fit.model);
  outcome.fitted = PredictRows(model, outcome.data.x, progress);
  JudgeModel(outcome.data, outcome.fitted, model.Components(), fit.crossValidatedResiduals, &model);
  return outcome;
}

}  // namespace kalmia::analysis
