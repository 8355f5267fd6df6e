#include "kalmia/analysis/validation/Analysis.h"

#include <utility>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/validation/StoredJudgement.h"
#include "kalmia/analysis/validation/YPermutations.h"
#include "kalmia/analysis/validation/internal/AnalysisSteps.h"

namespace kalmia::analysis {

namespace {

void AnalyseByRefit(PLSRecipe recipe, const Table& table, PLSAnalysis* analysis, NCProgress* progress) {
  analysis->validation = Validate(recipe, table, analysis->recipe, progress);
  const PLSValidation& validation = *analysis->validation;
  if (!recipe.components) recipe.components = validation.components;
  recipe.judgeComponents = false;
  recipe.describedComponents = static_cast<int>(validation.errors.MostComponents());
  analysis->fit = Fit(recipe, table, progress);
  analysis->fit.notes.Add(validation.notes);
  TakeErrors(validation, &analysis->fit.model);
  DescribeRows(analysis->fit.fitted, analysis->fit.data.measuredY, LeftOutFiguresOf(validation), &analysis->fit.model);
  analysis->fit.model.validation = JudgementOf(validation, analysis->recipe);
  if (!validation.importances.empty()) {
    analysis->fit.model.validation->jackKnife->vip = VariableImportance(*analysis->fit.model.pls);
  }
  Permute(recipe, table, analysis, progress);
}

}  // namespace

PLSAnalysis Analyse(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                    NCProgress* progress) {
  CheckMethod(validation, recipe.components.has_value());
  PLSAnalysis analysis;
  analysis.recipe = validation;
  PLSRecipe judged = recipe;
  judged.judgeComponents = validation.method != ValidationMethod::None;
  RequireRowsToNest(judged, table, validation);
  if (validation.method == ValidationMethod::Refit) {
    AnalyseByRefit(std::move(judged), table, &analysis, progress);
  } else {
    analysis.fit = Fit(judged, table, progress);
  }
  if (validation.method == ValidationMethod::None) analysis.fit.model.groups = 0;
  JudgeClassesOf(&analysis);
  NoteNoCvAnova(&analysis);
  NoteLimits(analysis.fit.model, analysis.fit.model.Components(), &analysis.fit.notes);
  return analysis;
}

}  // namespace kalmia::analysis
