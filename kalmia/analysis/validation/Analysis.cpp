#include "kalmia/analysis/validation/Analysis.h"

#include <utility>

#include "kalmia/analysis/model/ModelDiagnostics.h"
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
  TakeJudgement(analysis);
  StoreImportances(&analysis->fit.model, [](const StoredPLS& model) {
    return std::vector<std::vector<double>>{VariableImportance(*model.pls)};
  });
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
  if (validation.method == ValidationMethod::Refit) {
    AnalyseByRefit(std::move(judged), table, &analysis, progress);
  } else {
    analysis.fit = Fit(judged, table, progress);
  }
  Conclude(&analysis);
  return analysis;
}

}  // namespace kalmia::analysis
