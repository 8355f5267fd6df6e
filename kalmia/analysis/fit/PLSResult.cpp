#include "kalmia/analysis/fit/PLSResult.h"

#include <utility>

#include "kalmia/analysis/fit/internal/FitQuality.h"
#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/fit/internal/FitSetup.h"
#include "kalmia/analysis/fit/internal/PLSExtraction.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"

namespace kalmia::analysis {

namespace {

PLSResult Compute(const PLSRecipe& recipe, const Table& table, NCProgress* progress) {
  PLSResult result;
  result.data = SelectData(table, recipe, &result.notes, progress);
  PLSTask task;
  task.x = result.data.x;
  task.y = result.data.y;
  task.groups = result.data.groups;
  task.rounds = result.data.rounds;
  static_cast<FitRules&>(task) = RulesOf(recipe, result.data, &result.notes);
  FillInfo(table, recipe, result.data, &result.model);
  result.model.yNames = result.data.yNames;
  result.model.trainingY = result.data.y;
  result.model.xScaling = ScaleColumns(recipe.scaling, result.data.xNames, &task.x, result.data.xShifts);
  result.model.yScaling = ScaleColumns(ScalingOfY(recipe.scaling), result.data.yNames, &task.y, result.data.yShifts);
  PLSComponents fit = FitOrNameLeftOut(result.data, [&] { return ExtractPLS(task, progress); });
  for (std::size_t a = 0; a < fit.components.size(); ++a) {
    const ComponentRecord& record = fit.components[a];
    if (record.kept || record.IsJudged()) NoteIterations(a + 1, record.iterations, &result.notes);
  }
  result.components = fit.components;
  result.endedEarly = fit.endedEarly;
  fit.components.resize(static_cast<std::size_t>(fit.kept));
  result.model.components = std::move(fit.components);
  result.model.pls = std::move(fit.model);
  if (!result.AnyKept() && recipe.components != 0) return result;
  result.fitted = PredictRows(result.model, result.data.x, progress);
  if (result.data.classes) {
    result.classes = FitClasses(*result.data.classes, result.fitted, recipe.priors);
    result.model.classes = StoredClasses{result.data.classColumn, result.classes->rule, {}, {}};
  }
  JudgeModel(result.data, result.fitted, result.model.Components(), fit.crossValidatedResiduals, &result.model);
  if (result.model.Components() > 0) DropRoundings(result.model.components.back().r2xCum, &result.model);
  DescribeRows(result.fitted, result.data.measuredY, /*leftOut=*/{}, &result.model);
  return result;
}

}  // namespace

PLSResult Fit(const PLSRecipe& recipe, const Table& table, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Compute(recipe, table, progress); });
}

}  // namespace kalmia::analysis
