#include "kalmia/analysis/fit/O2PLSResult.h"

#include <utility>

#include "kalmia/analysis/fit/internal/FitRules.h"
#include "kalmia/analysis/fit/internal/O2PLSExtraction.h"
#include "kalmia/analysis/fit/internal/RecipeChecks.h"
#include "kalmia/analysis/fit/internal/SelectBlocks.h"
#include "kalmia/analysis/model/TrainingRows.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Version.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/text/internal/LibraryErrors.h"
#include "kalmia/o2pls/NCO2PLSPred.h"

namespace kalmia::analysis {

namespace {

void FillInfo(const O2PLSRecipe& recipe, const BlockPair& data, StoredO2PLS* model) {
  model->writtenBy = kVersion;
  model->table = data.x.table;
  model->yTable = data.y.table;
  model->idColumn = recipe.id;
  model->groupColumn = recipe.groupColumn;
  model->groups = data.rounds;
  model->scaling = recipe.scaling;
  model->xNames = data.x.names;
  model->yNames = data.y.names;
  model->rows = data.rowNames.size();
  model->rowNames = data.rowNames;
  model->trainingX = data.x.cells;
  model->trainingY = data.y.cells;
}

/// Estimates the missing cells of the scaled blocks, each from the other.
void FillHoles(O2PLSTask* task, O2PLSResult* result, Notes* notes, NCProgress* progress) {
  result->filledX = task->x.GetNumMisVal();
  result->filledY = task->y.GetNumMisVal();
  if (result->filledX + result->filledY == 0) return;
  WorkProgress work(progress);
  work.Begin("estimating missing cells");
  EstimateHoles(&task->x, &task->y, &work);
  for (const auto& [block, cells] : {std::make_pair("X", result->filledX), std::make_pair("Y", result->filledY)}) {
    if (cells == 0) continue;
    notes->Add("estimated, " + Counted(static_cast<std::size_t>(cells), "missing cell") + " of " + block);
  }
}

/// What the predictions in both directions describe of the scaled blocks.
void JudgePredictions(const O2PLSTask& task, O2PLSResult* result, NCProgress* progress) {
  StoredO2PLS& model = result->model;
  const O2PLSMatrices& o2pls = model.o2pls;
  const NCDataMatrix<float> y = NCO2PLSYPred(task.x, o2pls.p, o2pls.w, o2pls.q, o2pls.wo, o2pls.po, o2pls.s,
                                             o2pls.lambda, task.y.SizeColumns())
                                    .GetYPred();
  const NCDataMatrix<float> x = NCO2PLSXPred(task.y, o2pls.q, o2pls.c, o2pls.p, o2pls.co, o2pls.qo, o2pls.r,
                                             o2pls.xLambda, task.x.SizeColumns())
                                    .GetXPred();
  result->r2y = DescribedShare(task.y, task.y - y);
  result->r2x = DescribedShare(task.x, task.x - x);
  result->fittedY = PredictRows(model, result->data.x.cells, progress);
  model.pooledDeviation = PooledDeviationOf(result->fittedY, model.Components());
  DescribeRows(result->fittedY, result->data.y.measured, /*leftOut=*/{}, &model);
  TurnAround(&model);
  result->fittedX = PredictRows(model, result->data.y.cells, progress);
  model.pooledDeviation = PooledDeviationOf(result->fittedX, model.Components());
  DescribeRows(result->fittedX, result->data.x.measured, /*leftOut=*/{}, &model);
  TurnAround(&model);
}

O2PLSResult Compute(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable, NCProgress* progress) {
  O2PLSResult result;
  WorkProgress(progress).Begin("selecting the blocks");
  result.data = SelectBlocks(xTable, yTable, recipe, &result.notes);
  O2PLSTask task;
  task.x = result.data.x.cells;
  task.y = result.data.y.cells;
  task.groups = result.data.groups;
  task.rounds = result.data.rounds;
  task.numbers = recipe.numbers;
  task.judgeComponents = recipe.judgeComponents;
  StoredO2PLS& model = result.model;
  FillInfo(recipe, result.data, &model);
  model.xScaling = ScaleColumns(recipe.scaling, result.data.x.names, &task.x, result.data.x.shifts);
  model.yScaling = ScaleColumns(recipe.scaling, result.data.y.names, &task.y, result.data.y.shifts);
  FillHoles(&task, &result, &result.notes, progress);
  O2PLSComponents fit = ExtractO2PLS(task, &result.notes, progress);
  result.components = fit.components;
  for (const O2PLSComponentRecord& record : fit.components)
    if (record.kept) model.components.push_back(record);
  model.o2pls = std::move(fit.model);
  if (result.AnyKept()) JudgePredictions(task, &result, progress);
  return result;
}

}  // namespace

O2PLSResult Fit(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable, NCProgress* progress) {
  CheckRecipe(recipe);
  return WithoutLibraryErrors([&] { return Compute(recipe, xTable, yTable, progress); });
}

}  // namespace kalmia::analysis
