#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"

/// Projects new observations on the loadings of a PCA model. The constructor computes all scores; each step then takes
/// one component out of X. X must be scaled as the model's X was. NCError for rows of another width.
class KALMIA_EXPORT NCPCAPred {
 public:
  /// Works on a copy of X (N x K; shared until the first step). P (A x K) is the model's, one component per row.
  /// ScoreEstimator tells how scores are estimated; `maxIterations` is for observations with holes.
  /// Missing: an observation whose share of missing variables (formed in double) is above `tolerance` has no scores.
  NCPCAPred(const NCDataMatrix<float>* X, const NCDataMatrix<float>* P, int maxIterations, float tolerance);

  /// Takes one more component out of X: X -= t p'. Rows of observations without a score stay; in the other rows,
  /// columns of variables without a loading become missing. Scores do not change.
  /// Not beyond GetMaxComp(), which is not checked.
  void CalcNextResidual();

  const NCDataMatrix<float>* GetTPredPrim() const { return &tPredPrim_; }    ///< A x N, missing where not scored
  const NCDataMatrix<float>* GetXResiduals() const { return &xResiduals_; }  ///< N x K
  int GetResidualsCompComputed() const { return residualsCompComputed_; }    ///< components taken out of X
  int GetMaxComp() const { return pprim_.SizeRows(); }
  int SizeObservations() const { return xResiduals_.SizeRows(); }

 private:
  void CalculateScores(int maxIterations);

  NCDataMatrix<float> xResiduals_;
  NCDataMatrix<float> tPredPrim_;
  NCDataMatrix<float> pprim_;
  int residualsCompComputed_ = 0;
  float missingTolerance_;
};
