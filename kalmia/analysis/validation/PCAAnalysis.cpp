#include "kalmia/analysis/validation/PCAAnalysis.h"

#include <utility>

#include "kalmia/analysis/validation/StoredJudgement.h"
#include "kalmia/analysis/validation/internal/AnalysisSteps.h"

namespace kalmia::analysis {

namespace {

void AnalyseByRefit(PCARecipe recipe, const Table& table, PCAAnalysis* analysis, NCProgress* progress) {
  analysis->validation = Validate(recipe, table, analysis->recipe, progress);
  const PCAValidation& validation = *analysis->validation;
  if (!recipe.components) recipe.components = validation.components;
  recipe.judgeComponents = false;
  recipe.describedComponents = static_cast<int>(validation.errors.MostComponents());
  analysis->fit = Fit(recipe, table, progress);
  analysis->fit.notes.Add(validation.notes);
  analysis->fit.model.groups = validation.folds.groups;
  DescribeRows(analysis->fit.rows, LeftOutFiguresOf(validation), &analysis->fit.model);
  analysis->fit.model.validation = JudgementOf(validation, analysis->recipe, analysis->fit.components);
  if (validation.IsJudged()) analysis->fit.columnQ2 = validation.columnQ2;
}

}  // namespace

PCAAnalysis Analyse(const PCARecipe& recipe, const Table& table, const ValidationRecipe& validation,
                    NCProgress* progress) {
  CheckMethod(validation, recipe.components.has_value());
  PCAAnalysis analysis;
  analysis.recipe = validation;
  PCARecipe judged = recipe;
  judged.judgeComponents = validation.method != ValidationMethod::None;
  if (validation.method == ValidationMethod::Refit) {
    AnalyseByRefit(std::move(judged), table, &analysis, progress);
  } else {
    analysis.fit = Fit(judged, table, progress);
  }
  if (validation.method == ValidationMethod::None) analysis.fit.model.groups = 0;
  NoteLimits(analysis.fit.model, analysis.fit.model.Components(), &analysis.fit.notes);
  NoteDependentRows(analysis.fit.model, &analysis.fit.notes);
  return analysis;
}

}  // namespace kalmia::analysis
