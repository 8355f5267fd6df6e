#include "kalmia/analysis/fit/PLSOutcome.h"

#include <utility>

#include "kalmia/analysis/fit/FitRules.h"
#include "kalmia/analysis/fit/internal/FitFrame.h"
#include "kalmia/analysis/fit/internal/FitQuality.h"
#include "kalmia/analysis/fit/internal/PLSFit.h"
#include "kalmia/analysis/steps/Scaling.h"

namespace kalmia::analysis {

PLSOutcome ComputePLS(const CsvTable& table, const PLSRecipe& recipe, Notes* notes, NCProgress* progress) {
  PLSOutcome outcome;
  outcome.data = SelectData(table, recipe, recipe.y, notes, progress);
  FitTask task;
  task.x = outcome.data.x;
  task.y = outcome.data.y;
  task.groups = outcome.data.groups;
  task.rounds = outcome.data.rounds;
  static_cast<FitRules&>(task) = RulesOf(recipe, outcome.data, notes);
  FillFrame(table, recipe, outcome.data, &outcome.model);
  outcome.model.yNames = outcome.data.yNames;
  outcome.model.xScale = ScaleColumns(recipe.scaling, outcome.data.xNames, &task.x);
  outcome.model.yScale = ScaleColumns(ScalingOfY(recipe.scaling), outcome.data.yNames, &task.y);
  PLSFit fit = FitOrNameLeftOut(outcome.data, [&] { return FitPLS(task, progress); });
  for (std::size_t a = 0; a < fit.components.size(); ++a) {
    NoteIterations(a + 1, fit.components[a].iterations, notes);
  }
  outcome.components = fit.components;
  outcome.endedEarly = fit.endedEarly;
  fit.components.resize(static_cast<std::size_t>(fit.kept));
  outcome.model.components = std::move(fit.components);
  outcome.model.pls = std::move(fit.model);
  if (!outcome.AnyKept()) return outcome;
  outcome.fitted = PredictRows(outcome.model, outcome.data.x, progress);
  JudgeModel(outcome.data, outcome.fitted, outcome.model.Components(), fit.crossValidatedResiduals, &outcome.model);
  return outcome;
}

}  // namespace kalmia::analysis
