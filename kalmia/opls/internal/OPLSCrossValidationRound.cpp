// A round of the cross-validation: the tables divided, and what is kept of the model and its predictions.
#include "kalmia/opls/internal/OPLSCrossValidationRound.h"

#include <algorithm>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/opls/NCOPLSPred.h"
#include "kalmia/pcapls/internal/ComponentRows.h"

namespace {

/// Whether rows a of both point away from each other.
bool AreOpposed(const NCDataMatrix<float>& A, const NCDataMatrix<float>& B, int a) {
  return static_cast<float>(A[a] * B[a]) < 0.0F;
}

}  // namespace

OPLSCrossValidation::Round OPLSCrossValidation::Divide(int group) const {
  const int rows = x_.SizeRows();
  int leftOut = 0;
  for (int i = 1; i <= rows; ++i) leftOut += groups_[i] == group;
  Round round;
  round.group = group;
  round.trainX = kalmia::EmptyMatrix(x_.SizeColumns(), rows - leftOut);
  round.trainY = kalmia::EmptyMatrix(y_.SizeColumns(), rows - leftOut);
  round.testX = kalmia::EmptyMatrix(x_.SizeColumns(), leftOut);
  for (int i = 1; i <= rows; ++i)
    if (groups_[i] == group) {
      round.testX.push_back(x_[i]);
      round.testIndex.push_back(i);
    } else {
      round.trainX.push_back(x_[i]);
      round.trainY.push_back(y_[i]);
      round.trainIndex.push_back(i);
    }
  return round;
}

/// Stores the model, its newest components turned along those of the first round.
void OPLSCrossValidation::SaveModelMatrices(NCOPLS* model, int group) {
  const auto g = static_cast<std::size_t>(group);
  if (group > 0) {
    const NCDataMatrix<float>& first = data_.WMatricesPerRound.front().back();
    const int shared = std::min(first.SizeRows(), model->GetWprim()->SizeRows());
    for (int a = 1; a <= shared; ++a)
      if (AreOpposed(*model->GetWprim(), first, a)) model->NegatePredictiveComp(a);
  }
  data_.WMatricesPerRound[g] = kalmia::DeepCopy(*model->GetWMatrices());
  data_.PMatricesPerRound[g] = kalmia::DeepCopy(*model->GetPMatrices());
  data_.CMatricesPerRound[g] = kalmia::DeepCopy(*model->GetCMatrices());
  if (model->SizeOrthogonalComponents() == 0) return;

  const int newest = data_.WOPerRound.front().SizeRows();
  if (group > 0 && AreOpposed(*model->GetWOprim(), data_.WOPerRound.front(), newest)) model->NegateOComp(newest);
  data_.WOPerRound[g] = kalmia::DeepCopy(*model->GetWOprim());
  data_.POPerRound[g] = kalmia::DeepCopy(*model->GetPOprim());
  data_.COPerRound[g] = kalmia::DeepCopy(*model->GetCOprim());
}

void OPLSCrossValidation::SaveGroupResults(NCOPLS* model, const Round& round) {
  const int row = round.group + 1;
  MakeRoomForScores(model->SizeComponents());
  NCOPLSPred prediction(&round.testX, model);
  ssYcv_(row, static_cast<float>(model->GetYResiduals().GetSS()));
  const int orthogonal = model->SizeOrthogonalComponents();
  for (int o = 1; o <= orthogonal; ++o) prediction.CalcNextComponent();

  int k = 0;
  for (const int i : round.trainIndex) {
    ++k;
    for (int a = 1; a <= model->SizeComponents(); ++a) ScoresOf(a)(row, i, (*model->GetTprim())[a][k]);
    if (orthogonal > 0) toSet_(row, i, (*model->GetTOprim())[orthogonal][k]);
  }
  k = 0;
  for (const int i : round.testIndex) {
    ++k;
    for (int a = 1; a <= model->SizeComponents(); ++a) {
      const float score = (*prediction.GetTPred())[a][k];
      ScoresOf(a)(row, i, score);
      tPred_(a, i, score);
    }
    if (orthogonal > 0) {
      const float score = (*prediction.GetTOPred())[orthogonal][k];
      toSet_(row, i, score);
      toPred_(i, score);
    }
    for (int j = 1; j <= y_.SizeColumns(); ++j) yPred_(i, j, (*prediction.GetYPred())[k][j]);
  }
}

/// Scores of so many predictive components at least; new ones are missing.
void OPLSCrossValidation::MakeRoomForScores(int predictiveComponents) {
  while (static_cast<int>(tSets_.size()) < predictiveComponents) {
    tSets_.emplace_back(rounds_, x_.SizeRows());
    tPred_.InsertRow(tPred_.SizeRows() + 1, NCDataVector<float>(x_.SizeRows()));
  }
}
