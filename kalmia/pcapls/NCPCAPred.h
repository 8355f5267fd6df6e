#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"

/// Projects new observations on the loadings of a PCA model: all scores at construction, then what is left of X, one
/// component at a time. X arrives scaled as the model's X was: NCError where it has rows of another width.
class KALMIA_EXPORT NCPCAPred {
 public:
  /// Works in a copy of X (N x K; shared until the first step). P (A x K) is the model's, one component per row.
  /// `maxIterations` is for the observations with holes, see ScoreEstimator, which tells how scores are estimated.
  /// Missing: an observation whose share of missing variables (formed in double) is above `tolerance` has no scores.
  NCPCAPred(const NCDataMatrix<float>* X, const NCDataMatrix<float>* P, int maxIterations, float tolerance);

  /// Takes one component more out of X: X -= t p'. The row of an observation without a score stays as it is; the column
  /// of a variable without a loading becomes missing in the other rows. Scores do not change.
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
