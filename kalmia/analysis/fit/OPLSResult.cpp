#include "kalmia/analysis/fit/OPLSResult.h"

#include <algorithm>
#include <utility>

#include "kalmia/analysis/fit/internal/FitQuality.h"
#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/fit/internal/FitSetup.h"
#include "kalmia/analysis/fit/internal/OPLSExtraction.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
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
      const std::string& name = names[static_cast<std::size_t>(c - 1)];
      throw BadData("cross-validation round " + std::to_string(group + 1) + ": without the rows of its group the " +
                        kind + " column " + Quoted(name) + " has no " + (any ? "variance" : "value"),
                    InColumn(name));
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

OPLSResult Compute(const OPLSRecipe& recipe, const Table& table, NCProgress* progress, const StoredOPLSCv* resumed) {
  OPLSResult result;
  result.data = SelectData(table, recipe, &result.notes, progress);
  if (resumed != nullptr) RequireSameTable(*resumed, result.data, recipe.scaling);
  if (recipe.judgeComponents) {
    RequireInEachRound(result.data, result.data.y, result.data.yNames, "Y", /*variance=*/true);
    RequireInEachRound(result.data, result.data.x, result.data.xNames, "X", /*variance=*/false);
  }
  OPLSTask task;
  task.x = result.data.x;
  task.y = result.data.y;
  task.groups = result.data.groups;
  task.rounds = result.data.rounds;
  task.resumed = resumed;
  CutComponents(recipe, result.data, &task, &result.notes);
  task.stopAtFirstFailure = !recipe.components;
  task.judgeComponents = recipe.judgeComponents;
  StoredOPLS& model = result.model;
  FillInfo(table, recipe, result.data, &model);
  model.yNames = result.data.yNames;
  model.trainingY = result.data.y;
  model.xScaling = ScaleColumns(recipe.scaling, result.data.xNames, &task.x, result.data.xShifts);
  model.yScaling = ScaleColumns(ScalingOfY(recipe.scaling), result.data.yNames, &task.y, result.data.yShifts);
  const bool isMean = recipe.predictive == 0;
  OPLSComponents fit;
  if (!isMean) fit = FitOrNameLeftOut(result.data, [&] { return ExtractOPLS(task, progress); });
  DescribeTable(result.data, recipe.scaling, &result.validation);
  result.validation.state = std::move(fit.validation);
  result.scaledX = task.x;
  result.components = fit.components;
  result.endedEarly = fit.endedEarly;
  result.u = fit.u;
  result.crossValidated = std::move(fit.crossValidated);
  if (!isMean && !fit.components.back().kept) fit.components.pop_back();
  model.components = std::move(fit.components);
  model.opls = std::move(fit.model);
  result.fitted = PredictRows(model, result.data.x, progress);
  if (result.data.classes) {
    result.classes = FitClasses(*result.data.classes, result.fitted, recipe.priors);
    model.classes = StoredClasses{result.data.classColumn, result.classes->rule, {}, {}};
  }
  JudgeModel(result.data, result.fitted, model.Components(), fit.crossValidatedResiduals, &model);
  double r2x = 0.0;
  for (const OPLSComponentRecord& component : model.components) r2x += component.r2x;
  DropRoundings(r2x, &model);
  DescribeRows(result.fitted, result.data.measuredY, /*leftOut=*/{}, &model);
  return result;
}

}  // namespace

OPLSResult Fit(const OPLSRecipe& recipe, const Table& table, NCProgress* progress, const StoredOPLSCv* resumed) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Compute(recipe, table, progress, resumed); });
}

}  // namespace kalmia::analysis
