#include "kalmia/analysis/fit/O2PLSOutcome.h"

#include <utility>

#include "kalmia/analysis/fit/FitRules.h"
#include "kalmia/analysis/steps/Scaling.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/text/Version.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/o2pls/NCO2PLSPred.h"
#include "kalmia/o2pls/PLSMissingValueEstimator.h"
#include "kalmia/support/NCError.h"

namespace kalmia::analysis {

namespace {

void FillFrame(const O2PLSRecipe& recipe, const BlockPair& data, StoredO2PLS* model) {
  model->writtenBy = kVersion;
  model->table = data.x.table;
  model->yTable = data.y.table;
  model->idColumn = recipe.id;
  model->groups = data.rounds;
  model->scaling = recipe.scaling;
  model->xNames = data.x.names;
  model->yNames = data.y.names;
  model->rowNames = data.rowNames;
}

/// Estimates the missing cells of the scaled blocks, each from the other.
void FillHoles(O2PLSTask* task, O2PLSOutcome* outcome, Notes* notes, NCProgress* progress) {
  outcome->filledX = task->x.GetNumMisVal();
  outcome->filledY = task->y.GetNumMisVal();
  if (outcome->filledX + outcome->filledY == 0) return;
  WorkProgress work(progress);
  work.Begin("estimating missing cells");
  try {
    PLSMissingValueEstimator(task->x, task->y, /*both=*/true, work.SilentBar());
  } catch (const NCError& error) {
    throw BadData("the missing cells cannot be estimated: " + OneLine(static_cast<const char*>(error.GetMessage())));
  }
  for (const auto& [block, cells] : {std::make_pair("X", outcome->filledX), std::make_pair("Y", outcome->filledY)}) {
    if (cells == 0) continue;
    notes->Add("estimated, " + Counted(static_cast<std::size_t>(cells), "missing cell") + " of " + block);
  }
}

/// What the predictions in both directions describe of the scaled blocks.
void JudgePredictions(const O2PLSTask& task, O2PLSOutcome* outcome, NCProgress* progress) {
  StoredO2PLS& model = outcome->model;
  const O2PLSMatrices& o2pls = model.o2pls;
  const NCDataMatrix<float> y = NCO2PLSYPred(task.x, o2pls.p, o2pls.w, o2pls.q, o2pls.wo, o2pls.po, o2pls.s,
                                             o2pls.lambda, task.y.SizeColumns())
                                    .GetYPred();
  const NCDataMatrix<float> x = NCO2PLSXPred(task.y, o2pls.q, o2pls.c, o2pls.p, o2pls.co, o2pls.qo, o2pls.r,
                                             o2pls.xLambda, task.x.SizeColumns())
                                    .GetXPred();
  outcome->r2y = DescribedShare(task.y, task.y - y);
  outcome->r2x = DescribedShare(task.x, task.x - x);
  outcome->fittedY = PredictRows(model, outcome->data.x.cells, progress);
  model.pooledDeviation = PooledDeviationOf(outcome->fittedY, model.Components());
  TurnAround(&model);
  outcome->fittedX = PredictRows(model, outcome->data.y.cells, progress);
  model.pooledDeviation = PooledDeviationOf(outcome->fittedX, model.Components());
  TurnAround(&model);
}

}  // namespace

O2PLSOutcome ComputeO2PLS(const CsvTable& xTable, const CsvTable& yTable, const O2PLSRecipe& recipe, Notes* notes,
                          NCProgress* progress) {
  O2PLSOutcome outcome;
  WorkProgress(progress).Begin("selecting the blocks");
  outcome.data = SelectBlocks(xTable, yTable, recipe, notes);
  O2PLSTask task;
  task.x = outcome.data.x.cells;
  task.y = outcome.data.y.cells;
  task.groups = outcome.data.groups;
  task.rounds = outcome.data.rounds;
  task.numbers = recipe.numbers;
  StoredO2PLS& model = outcome.model;
  FillFrame(recipe, outcome.data, &model);
  model.xScale = ScaleColumns(recipe.scaling, outcome.data.x.names, &task.x);
  model.yScale = ScaleColumns(recipe.scaling, outcome.data.y.names, &task.y);
  FillHoles(&task, &outcome, notes, progress);
  O2PLSFit fit = FitO2PLS(task, notes, progress);
  outcome.components = fit.components;
  for (const O2PLSComponentRecord& record : fit.components)
    if (record.kept) model.components.push_back(record);
  model.o2pls = std::move(fit.model);
  if (outcome.AnyKept()) JudgePredictions(task, &outcome, progress);
  return outcome;
}

}  // namespace kalmia::analysis
