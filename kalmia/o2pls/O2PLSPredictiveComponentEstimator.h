#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/o2pls/SignificanceE.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// How many components two blocks share, estimated without a model by cross-validation of the cross product Y'X.
/// In each round, for one component after the other: w is the first loading of the training rows' Y'X, t = Xw, c is
/// along Y't, u = Yc; X loses t w' and Y loses u c', training and held-out rows each with their own scores. The scores
/// of the held-out rows predict Y'X as the sum over the rounds of C' (U T') W; no observation predicts itself. With D
/// the sum of the absolute values of all cells, Q2 = 1 - D(Y'X - prediction) / D(Y'X).
///
/// A component is significant (R1) if it raises Q2 by more than a limit, 0.01 or the value of
/// SetO2PLSPredictiveQ2Limit; otherwise it is NS. From component N - 3 on it is N3, whatever it gains. A search ends at
/// the first component that is not R1, which does not count, after min(M, K) components, or when practically nothing
/// (1e-6) is left of the held-out rows of a block.
///
/// Failures do not leave the constructor: blocks of different numbers of observations, a block without columns,
/// unusable groups, and an NCError of a principal component, also by a stop request. If the search fails there are no
/// components; after a later failure, the components with complete results count.
class KALMIA_EXPORT O2PLSPredictiveComponentEstimator {
 public:
  /// Does all the work, on copies. X N x K, Y N x M, scaled and without holes (not checked). `groups` has one number
  /// per observation, from 0 on; an observation with a negative number is never held out. Null means
  /// GetDeafultCVGroupsVector(N, cvGroups); only then is cvGroups read. A group without observations predicts nothing,
  /// but its round is computed. Unusable: `groups` of fewer than N cells or with a number above its size + 9999, and a
  /// cvGroups below 1 that is read. `fixedComponents`: 0 computes nothing; negative searches; otherwise exactly so many
  /// are tried and counted. `progress` is the bar of the principal components; if null, each opens its own.
  O2PLSPredictiveComponentEstimator(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int cvGroups,
                                    const NCIntegralVector<int, -99>* groups, int fixedComponents,
                                    NCProgress* progress = nullptr);

  int GetNumberOfPredictiveComponents() const { return numberOfPredictiveComponents_; }
  // One value per component that was tried. The getters give shares: for one thread at a time.
  NCDataVector<float> GetQ2() const { return q2_; }
  NCDataVector<float> GetQ2X() const { return q2X_; }  ///< 1 - what is left of the held-out rows of X / SS of X
  NCDataVector<float> GetQ2Y() const { return q2Y_; }
  NCIntegralVector<int, -99> GetSignificance() const { return significance_; }  ///< SignificanceE::Significance
  // One value per component that counts, cumulated, of the fit to all observations.
  NCDataVector<float> GetR2() const { return r2_; }    ///< share of D(Y'X)
  NCDataVector<float> GetR2X() const { return r2X_; }  ///< share of the sum of squares of X
  NCDataVector<float> GetR2Y() const { return r2Y_; }

 private:
  class Rounds;
  struct Blocks;

  void DoCalulations(NCDataMatrix<float> X, NCDataMatrix<float> Y, const NCIntegralVector<int, -99>& groups,
                     int fixedComponents, NCProgress* progress);
  void TryComponents(const Blocks& blocks, const NCIntegralVector<int, -99>& groups, int fixedComponents,
                     NCProgress* progress);
  void Judge(const Blocks& blocks, const Rounds& rounds);
  int SizeTried() const { return q2_.Size(); }
  bool LastIsSignificant() const;
  void FitToAll(Blocks* blocks, NCProgress* progress);
  void CutToCompleteComponents();

  NCDataVector<float> q2_;
  NCDataVector<float> q2X_;
  NCDataVector<float> q2Y_;
  NCDataVector<float> r2_;
  NCDataVector<float> r2X_;
  NCDataVector<float> r2Y_;
  int numberOfPredictiveComponents_ = 0;
  NCIntegralVector<int, -99> significance_;
};

/// Sets the gain that a component needs, for the whole process. Ignores values below 0, from 1 on, and NaN.
KALMIA_EXPORT void SetO2PLSPredictiveQ2Limit(float limit);
