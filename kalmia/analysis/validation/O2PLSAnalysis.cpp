#include "kalmia/analysis/validation/O2PLSAnalysis.h"

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

}  // namespace

O2PLSAnalysis Analyse(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable,
                      const ValidationRecipe& validation, NCProgress* progress) {
  CheckMethod(validation, recipe.numbers.has_value());
  O2PLSAnalysis analysis;
  analysis.recipe = validation;
  O2PLSRecipe judged = recipe;
  judged.judgeComponents = validation.method == ValidationMethod::Component;
  analysis.fit = Fit(judged, xTable, yTable, progress);
  StoredO2PLS& model = analysis.fit.model;
  if (validation.method == ValidationMethod::None) model.groups = 0;
  if (validation.method != ValidationMethod::Refit) return analysis;
  const O2PLSNumbers numbers = {model.Joint(), model.XUnique(), model.YUnique()};
  analysis.validation = RefitO2PLS(judged, numbers, xTable, yTable, validation, progress);
  analysis.fit.notes.Add(analysis.validation->notes);
  model.groups = analysis.validation->folds.groups;
  model.validation = JudgementOf(*analysis.validation, validation, analysis.fit.components);
  if (analysis.fit.AnyKept()) DescribeBlocks(*analysis.validation, &analysis.fit);
  return analysis;
}

}  // namespace kalmia::analysis
