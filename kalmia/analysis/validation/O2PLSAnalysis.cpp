#include "kalmia/analysis/validation/O2PLSAnalysis.h"

#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/validation/StoredJudgement.h"
#include "kalmia/analysis/validation/internal/AnalysisSteps.h"
#include "kalmia/analysis/validation/internal/O2PLSRefits.h"

namespace kalmia::analysis {

namespace {

/// Limits of the distance to each block by its rows while they were left out.
void DescribeBlocks(const O2PLSValidation& validation, O2PLSResult* fit) {
  StoredO2PLS& model = fit->model;
  DescribeRows(fit->fittedY, fit->data.y.measured, LeftOutFiguresOfX(validation), &model);
  TurnAround(&model);
  DescribeRows(fit->fittedX, fit->data.x.measured, LeftOutFiguresOfY(validation), &model);
  TurnAround(&model);
}

/// Of both blocks; what is true of both is said once.
void NoteLimitsOfBlocks(O2PLSResult* fit) {
  StoredO2PLS& model = fit->model;
  Notes ofX, ofY;
  NoteLimits(model, model.Components(), &ofX);
  TurnAround(&model);
  NoteLimits(model, model.Components(), &ofY);
  TurnAround(&model);
  fit->notes.Add(ofX);
  if (ofY.Lines() != ofX.Lines()) fit->notes.Add(ofY);
}

void JudgeByRefit(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable, O2PLSAnalysis* analysis,
                  NCProgress* progress) {
  StoredO2PLS& model = analysis->fit.model;
  const O2PLSNumbers numbers = {model.Joint(), model.XUnique(), model.YUnique()};
  analysis->validation = RefitO2PLS(recipe, numbers, xTable, yTable, analysis->recipe, progress);
  analysis->fit.notes.Add(analysis->validation->notes);
  model.groups = analysis->validation->folds.groups;
  model.validation = JudgementOf(*analysis->validation, analysis->recipe, analysis->fit.components);
  if (analysis->fit.AnyKept()) DescribeBlocks(*analysis->validation, &analysis->fit);
}

}  // namespace

O2PLSAnalysis Analyse(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable,
                      const ValidationRecipe& validation, NCProgress* progress) {
  CheckMethod(validation, recipe.numbers.has_value());
  O2PLSAnalysis analysis;
  analysis.recipe = validation;
  O2PLSRecipe judged = recipe;
  judged.judgeComponents = validation.method == ValidationMethod::Component;
  analysis.fit = Fit(judged, xTable, yTable, progress);
  if (validation.method == ValidationMethod::None) analysis.fit.model.groups = 0;
  if (validation.method == ValidationMethod::Refit) JudgeByRefit(judged, xTable, yTable, &analysis, progress);
  if (analysis.fit.AnyKept()) {
    NoteLimitsOfBlocks(&analysis.fit);
    NoteDependentRows(analysis.fit.model, &analysis.fit.notes);
  }
  return analysis;
}

}  // namespace kalmia::analysis
