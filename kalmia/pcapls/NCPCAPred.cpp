#include "kalmia/pcapls/NCPCAPred.h"

#include "kalmia/pcapls/ScoreEstimator.h"
#include "kalmia/pcapls/internal/ModelParts.h"
#include "kalmia/pcapls/internal/ScoredRows.h"
#include "kalmia/support/NCError.h"

NCPCAPred::NCPCAPred(const NCDataMatrix<float>* X, const NCDataMatrix<float>* P, int maxIterations, float tolerance)
    : xResiduals_(*X), tPredPrim_(P->SizeRows(), X->SizeRows()), pprim_(*P), missingTolerance_(tolerance) {
  CalculateScores(maxIterations);
}

void NCPCAPred::CalculateScores(int maxIterations) {
  if (xResiduals_.SizeRows() > 0 && !kalmia::HasRowsOf(pprim_, xResiduals_.SizeColumns()))
    throw NCError("PCA prediction: the table has not the variables of the model.");
  const ScoreEstimator estimator(pprim_, maxIterations);
  for (int i = 1; i <= xResiduals_.SizeRows(); ++i) {
    const NCDataVector<float>& x = xResiduals_[i];
    const double missing = static_cast<double>(x.GetNumMisVal()) / x.Size();
    if (missingTolerance_ < missing) continue;  // its scores are missing already
    estimator.GetT(tPredPrim_, i, x);
  }
}

void NCPCAPred::CalcNextResidual() {
  ++residualsCompComputed_;
  kalmia::AddOuterProductWhereScored(&xResiduals_, tPredPrim_[residualsCompComputed_], pprim_[residualsCompComputed_],
                                     -1.0F);
}
