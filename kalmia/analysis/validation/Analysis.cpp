#include "kalmia/analysis/validation/Analysis.h"

#include <cstddef>
#include <utility>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

void CheckMethod(const FitRecipe& recipe, const ValidationRecipe& validation) {
  if (validation.method == ValidationMethod::None && !recipe.components) {
    throw BadRequest("without a validation nothing can choose the number of components: it has to be given");
  }
  const FoldDealing& folds = validation.folds;
  if (validation.method == ValidationMethod::Component &&
      (folds.scheme != FoldScheme::Interleaved || folds.repeats != 1)) {
    throw BadRequest("validation by component takes interleaved groups, or those of a column");
  }
}

/// The errors of left-out rows are those of the model's number of components.
void TakeErrors(const RefitValidation& validation, YModelInfo* model) {
  model->groups = validation.folds.groups;
  for (std::size_t j = 0; j < model->quality.size(); ++j) {
    model->quality[j].rmsecv =
        validation.IsJudged() ? validation.errors.rmsecv(validation.model, j) : kNotANumber;
  }
}

void AnalyseByRefit(PLSRecipe recipe, const Table& table, PLSAnalysis* analysis, NCProgress* progress) {
  analysis->validation = Validate(recipe, table, analysis->recipe, progress);
  const PLSValidation& validation = *analysis->validation;
  if (!recipe.components) recipe.components = validation.components;
  recipe.judgeComponents = false;
  recipe.describedComponents = static_cast<int>(validation.errors.MostComponents());
  analysis->fit = Fit(recipe, table, progress);
  analysis->fit.notes.Add(validation.notes);
  TakeErrors(validation, &analysis->fit.model);
}

}  // namespace

PLSAnalysis Analyse(const PLSRecipe& recipe, const Table& table, const ValidationRecipe& validation,
                    NCProgress* progress) {
  CheckMethod(recipe, validation);
  PLSAnalysis analysis;
  analysis.recipe = validation;
  PLSRecipe judged = recipe;
  judged.judgeComponents = validation.method != ValidationMethod::None;
  if (validation.method == ValidationMethod::Refit) {
    AnalyseByRefit(std::move(judged), table, &analysis, progress);
  } else {
    analysis.fit = Fit(judged, table, progress);
  }
  if (validation.method == ValidationMethod::None) analysis.fit.model.groups = 0;
  return analysis;
}

}  // namespace kalmia::analysis
