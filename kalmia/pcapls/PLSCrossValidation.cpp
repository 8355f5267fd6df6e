#include "kalmia/pcapls/PLSCrossValidation.h"

#include <algorithm>
#include <memory>

#include "kalmia/kernels/passes/ComponentPasses.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/pcapls/internal/CrossValidationGroups.h"
#include "kalmia/pcapls/internal/Q2.h"
#include "kalmia/support/LanguageString.h"
#include "kalmia/support/NCError.h"

namespace {

constexpr float kMissing = kalmia::kMissingCell<float>;

/// The share of its variables that a left-out observation may lack.
constexpr float kMissingTolerance = 0.9999F;

/// Up to so many observations Q2 has to exceed kQ2LimitOfFew, beyond them 0.
constexpr int kFewObservations = 100;
constexpr float kQ2LimitOfFew = 0.05F;

/// Rounds that were asked for beyond the observations have sums of squares too, all missing, but no more than so many.
constexpr int kMostRoundsWithoutRows = 9999;

/// y - yPred where both are there; y without a prediction, missing without y.
float PredictionError(float y, float yPred) {
  if (yPred == kMissing) return y;
  return y == kMissing ? kMissing : y - yPred;
}

}  // namespace

/// The model's tables without a group of observations, and the X of that group.
struct PLSCrossValidation::Division {
  NCDataMatrix<float> X;
  NCDataMatrix<float> Y;
  NCDataMatrix<float> leftOutX;
  std::vector<int> leftOut;  ///< the observations of the group, in their order
};

PLSCrossValidation::PLSCrossValidation(NCPLS* model, int rounds, const NCIntegralVector<int, -99>* observationGroups)
    : PLSCrossValidation(model, 0.0F, NCDataVector<float>(model->GetYResiduals()->SizeColumns(), 0.0F), rounds,
                         observationGroups) {}

PLSCrossValidation::PLSCrossValidation(NCPLS* model, float q2TotCum, const NCDataVector<float>& q2YVarCum, int rounds,
                                       const NCIntegralVector<int, -99>* observationGroups)
    : model_(model), rounds_(std::min(rounds, model->GetYResiduals()->SizeRows())) {
  const NCDataMatrix<float>& Y = *model->GetYResiduals();
  const int variables = model->GetXResiduals()->SizeColumns();
  observationGroups_ = kalmia::GroupsOrDefault(observationGroups, Y.SizeRows(), rounds_);
  kalmia::RequireGroupForEach(observationGroups_, Y.SizeRows(), "observations");
  results_.yPredResiduals = NCDataMatrix<float>(Y.SizeRows(), Y.SizeColumns());
  results_.wSet = kalmia::EmptyMatrix(variables, rounds_);
  results_.cSet = kalmia::EmptyMatrix(Y.SizeColumns(), rounds_);
  results_.pSet = kalmia::EmptyMatrix(variables, rounds_);
  results_.tSet = kalmia::EmptyMatrix(Y.SizeRows(), rounds_);
  results_.tPred = NCDataVector<float>(Y.SizeRows());
  results_.q2YVar = NCDataVector<float>(Y.SizeColumns());
  results_.q2YVarCum = q2YVarCum;
  results_.ssY = NCDataVector<float>(std::max(rounds_, 0) + std::clamp(rounds - rounds_, 0, kMostRoundsWithoutRows));
  results_.ssYOriginal = results_.ssY;
  results_.q2TotCum = q2TotCum;
}

void PLSCrossValidation::NextComponent(const NCDataVector<float>* w, int maxIterations, const NCDataVector<float>& ssY,
                                       NCProgress* progress, bool quiet) {
  RequireShapes(w->Size(), ssY.Size());
  std::unique_ptr<NCProgress> own;
  if (!progress && !quiet) own = std::make_unique<NCProgress>("", 0.0F, 1.0F, false, false, true, nullptr);
  NCProgress* bar = own ? own.get() : progress;
  Results results = results_;
  for (NCDataMatrix<float>* set : {&results.wSet, &results.cSet, &results.pSet, &results.tSet})
    *set = kalmia::EmptyMatrix(set->SizeColumns(), rounds_);
  results.ssYOriginal = results.ssY;
  for (int group = 0; group < rounds_; ++group) CalcRound(group, *w, maxIterations, bar, quiet, &results);
  Judge(ssY, &results);
  results_ = results;
}

void PLSCrossValidation::RequireShapes(int cellsOfW, int cellsOfSSY) const {
  const NCDataMatrix<float>& X = *model_->GetXResiduals();
  const NCDataMatrix<float>& Y = *model_->GetYResiduals();
  if (X.SizeRows() != Y.SizeRows())
    throw NCError("PLS cross validation: X and Y have not the same observations.");
  kalmia::RequireSizeOfModel(observationGroups_.Size(), Y.SizeRows(), "observations");
  kalmia::RequireSizeOfModel(results_.wSet.SizeColumns(), X.SizeColumns(), "X variables");
  kalmia::RequireSizeOfModel(results_.q2YVar.Size(), Y.SizeColumns(), "Y variables");
  kalmia::RequireCellPerVariable(results_.q2YVarCum.Size(), Y.SizeColumns(), "q2YVarCum");
  kalmia::RequireCellPerVariable(cellsOfSSY, Y.SizeColumns(), "ssY");
  if (rounds_ > 0) kalmia::RequireCellPerVariable(cellsOfW, X.SizeColumns(), "w");
}

PLSCrossValidation::Division PLSCrossValidation::Divide(int group) const {
  const NCDataMatrix<float>& X = *model_->GetXResiduals();
  const NCDataMatrix<float>& Y = *model_->GetYResiduals();
  Division division;
  const int rows = X.SizeRows();
  const auto leftOut = static_cast<int>(std::count(observationGroups_.begin(), observationGroups_.end(), group));
  division.X = kalmia::EmptyMatrix(X.SizeColumns(), rows - leftOut);
  division.Y = kalmia::EmptyMatrix(Y.SizeColumns(), rows - leftOut);
  division.leftOutX = kalmia::EmptyMatrix(X.SizeColumns(), leftOut);
  for (int i = 1; i <= X.SizeRows(); ++i)
    if (observationGroups_[i] == group) {
      division.leftOutX.push_back(X[i]);
      division.leftOut.push_back(i);
    } else {
      division.X.push_back(X[i]);
      division.Y.push_back(Y[i]);
    }
  return division;
}

void PLSCrossValidation::CalcRound(int group, const NCDataVector<float>& w, int maxIterations, NCProgress* progress,
                                   bool quiet, Results* results) const {
  if (progress) {
    CString text;
    text.Format(LanguageString::Get(10163), group + 1, rounds_);
    progress->SetText(text);
  }
  const Division division = Divide(group);
  if (model_->GetComponents() == 1) results->ssYOriginal(group + 1, static_cast<float>(division.Y.GetSS()));
  NCPLS round(&division.X, &division.Y, maxIterations);
  round.NextComponent(progress, &w, quiet, /*strict=*/false);
  const auto& t1 = (*round.GetTprim())[1];
  results->ssY(group + 1, static_cast<float>(kalmia::SumSquaresWithout(division.Y, t1, (*round.GetCprim())[1])));

  NCPLSPred prediction(division.leftOutX, *round.GetWprim(), *round.GetPprim(), *round.GetCprim(), kMissingTolerance);
  prediction.CalcLastComponent();
  NCDataVector<float> t(model_->GetXResiduals()->SizeRows());
  for (int i = 1, kept = 1; i <= t.Size(); ++i)
    if (observationGroups_[i] != group) t(i, t1[kept++]);
  TakePrediction(prediction, division.leftOut, &t, results);
  AppendRound(round, t, w, results);
}

void PLSCrossValidation::TakePrediction(const NCPLSPred& prediction, const std::vector<int>& leftOut,
                                        NCDataVector<float>* t, Results* results) const {
  const NCDataMatrix<float>& Y = *model_->GetYResiduals();
  int k = 0;
  for (const int i : leftOut) {
    ++k;
    const float score = (*prediction.GetTPred())[k];
    (*t)(i, score);
    results->tPred(i, score);
    for (int j = 1; j <= Y.SizeColumns(); ++j)
      results->yPredResiduals(i, j, PredictionError(Y[i][j], (*prediction.GetYPred())[k][j]));
  }
}

void PLSCrossValidation::AppendRound(const NCPLS& round, const NCDataVector<float>& t, const NCDataVector<float>& w,
                                     Results* results) {
  results->wSet.push_back((*round.GetWprim())[1]);
  results->cSet.push_back((*round.GetCprim())[1]);
  results->pSet.push_back((*round.GetPprim())[1]);
  results->tSet.push_back(t);
  const int row = results->wSet.SizeRows();
  if (!(results->wSet[row] * w < 0.0L)) return;
  for (NCDataMatrix<float>* set : {&results->wSet, &results->pSet, &results->tSet, &results->cSet})
    set->MultiplyRow(row, -1.0F);
}

void PLSCrossValidation::Judge(const NCDataVector<float>& ssY, Results* results) const {
  const NCDataMatrix<float>& Y = *model_->GetYResiduals();
  const bool isPredicted = rounds_ > 0;  // else there is nothing to judge, as in a Y without variance
  double press = 0.0;
  for (int j = 1; j <= Y.SizeColumns(); ++j) {
    const double pressOfColumn = static_cast<double>(results->yPredResiduals.GetColumnSS(j, 0.0L));
    if (pressOfColumn != kMissing) press += pressOfColumn;
    const double ss = isPredicted ? static_cast<double>(Y.GetColumnSS(j, 0.0L)) : 0.0;
    const kalmia::Q2 q2 = kalmia::JudgeVariable(ss, pressOfColumn, results->q2YVarCum[j], ssY[j]);
    results->q2YVar(j, q2.value);
    results->q2YVarCum(j, q2.cumulated);
  }
  const double ssOfAll = isPredicted ? static_cast<double>(Y.GetSS()) : 0.0;
  const kalmia::Q2 total = kalmia::Q2OfAllVariables(ssOfAll, press, results->q2TotCum);
  results->q2Tot = total.value;
  results->q2TotCum = total.cumulated;
}

float PLSCrossValidation::GetQ2Lim() const {
  return model_->GetXResiduals()->SizeRows() <= kFewObservations ? kQ2LimitOfFew : 0.0F;
}
