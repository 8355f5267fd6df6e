#include "kalmia/analysis/validation/OPLSAnalysis.h"

#include <utility>

#include "kalmia/analysis/model/internal/OPLSDiagnostics.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/internal/AnalysisSteps.h"

namespace kalmia::analysis {

namespace {

/// The numbers that were judged.
OPLSRecipe NumbersOf(OPLSRecipe recipe, const OPLSValidation& validation) {
  if (validation.model == 0) recipe.predictive = 0;
  if (!recipe.predictive) recipe.predictive = validation.Predictive();
  if (!recipe.components) recipe.components = OPLSValidation::OrthogonalOf(validation.model);
  return recipe;
}

void AnalyseByRefit(OPLSRecipe recipe, const Table& table, OPLSAnalysis* analysis, NCProgress* progress) {
  analysis->validation = Validate(recipe, table, analysis->recipe, progress);
  const OPLSValidation& validation = *analysis->validation;
  const bool isGiven = recipe.components.has_value();
  // Where not even the predictive components of a given model can be computed, Fit says why.
  if (!isGiven || validation.model > 0) recipe = NumbersOf(std::move(recipe), validation);
  recipe.judgeComponents = false;
  analysis->fit = Fit(recipe, table, progress);
  TakeJudgement(analysis);
  StoreImportances(&analysis->fit.model, [](const StoredOPLS& model) {
    return std::vector<std::vector<double>>{PredictiveImportance(model), OrthogonalImportance(model)};
  });
  Permute(recipe, table, analysis, progress);
}

}  // namespace

OPLSAnalysis Analyse(const OPLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                     NCProgress* progress, const StoredOPLSCv* resumed) {
  CheckMethod(validation, recipe.components || recipe.predictive == 0);
  if (resumed != nullptr && validation.method != ValidationMethod::Component) {
    throw BadRequest("only a validation by component goes on from one that was stored");
  }
  OPLSAnalysis analysis;
  analysis.recipe = validation;
  OPLSRecipe judged = recipe;
  if (recipe.predictive == 0) judged.components = 0;
  judged.judgeComponents = validation.method != ValidationMethod::None;
  if (validation.method == ValidationMethod::Refit) {
    AnalyseByRefit(std::move(judged), table, &analysis, progress);
  } else {
    analysis.fit = Fit(judged, table, progress, resumed);
  }
  Conclude(&analysis);
  return analysis;
}

}  // namespace kalmia::analysis
