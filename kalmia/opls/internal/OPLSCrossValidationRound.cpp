#include "kalmia/opls/internal/OPLSCrossValidationRound.h"

#include <algorithm>
#include <cstddef>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/pcapls/internal/ComponentRows.h"

namespace kalmia {

namespace {

/// Whether rows a of both point away from each other.
bool AreOpposed(const NCDataMatrix<float>& A, const NCDataMatrix<float>& B, int a) {
  return static_cast<float>(A[a] * B[a]) < 0.0F;
}

}  // namespace

OPLSRound DivideByGroup(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y,
                        const NCIntegralVector<int, -99>& groups, int group) {
  const int rows = X.SizeRows();
  int leftOut = 0;
  for (int i = 1; i <= rows; ++i) leftOut += groups[i] == group;
  OPLSRound round;
  round.group = group;
  round.trainX = EmptyMatrix(X.SizeColumns(), rows - leftOut);
  round.trainY = EmptyMatrix(Y.SizeColumns(), rows - leftOut);
  round.testX = EmptyMatrix(X.SizeColumns(), leftOut);
  for (int i = 1; i <= rows; ++i)
    if (groups[i] == group) {
      round.testX.push_back(X[i]);
      round.testIndex.push_back(i);
    } else {
      round.trainX.push_back(X[i]);
      round.trainY.push_back(Y[i]);
      round.trainIndex.push_back(i);
    }
  return round;
}

void StoreModel(NCOPLS* model, int group, OPLSCrossvalidationData* data) {
  const auto g = static_cast<std::size_t>(group);
  if (group > 0) {
    const NCDataMatrix<float>& first = data->WMatricesPerRound.front().back();
    const int shared = std::min(first.SizeRows(), model->GetWprim()->SizeRows());
    for (int a = 1; a <= shared; ++a)
      if (AreOpposed(*model->GetWprim(), first, a)) model->NegatePredictiveComp(a);
  }
  data->WMatricesPerRound[g] = DeepCopy(*model->GetWMatrices());
  data->PMatricesPerRound[g] = DeepCopy(*model->GetPMatrices());
  data->CMatricesPerRound[g] = DeepCopy(*model->GetCMatrices());
  if (model->SizeOrthogonalComponents() == 0) return;

  const int newest = data->WOPerRound.front().SizeRows();
  if (group > 0 && AreOpposed(*model->GetWOprim(), data->WOPerRound.front(), newest)) model->NegateOComp(newest);
  data->WOPerRound[g] = DeepCopy(*model->GetWOprim());
  data->POPerRound[g] = DeepCopy(*model->GetPOprim());
  data->COPerRound[g] = DeepCopy(*model->GetCOprim());
}

}  // namespace kalmia
