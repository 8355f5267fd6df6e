#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/o2pls/SignificanceE.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// How many components two blocks share, before there is a model of them: cross-validation of the cross product Y'X.
/// In each round, for one component after the other, w is the first loading of the training rows' Y'X, t = Xw, c is
/// along Y't, u = Yc; X loses t w' and Y loses u c', each part of the rows with its own scores. The scores of the rows
/// that were held out then predict Y'X as the sum over the rounds of C' (U T') W, in which no observation predicted
/// itself. With D the sum of the absolute values of all cells, Q2 = 1 - D(Y'X - prediction) / D(Y'X).
///
/// A component is significant (R1) if it raises Q2 by more than a limit, 0.01 or what SetO2PLSPredictiveQ2Limit says;
/// if not it is NS, and from component N - 3 on N3, whatever it gains. A search tries components until one is not R1,
/// until min(M, K) are tried, or until as good as nothing (1e-6) is left of the held-out rows of a block. One that is
/// not R1 does not count.
///
/// Without components, where the calculation fails in the search: blocks that differ in their numbers of observations,
/// a block without columns, groups that cannot be used, and an NCError of a principal component, a user's stop of its
/// bar included, do not leave the constructor. Where it fails later, those components count whose results are complete.
class KALMIA_EXPORT O2PLSPredictiveComponentEstimator {
 public:
  /// Does all the work, on copies. X N x K, Y N x M, scaled and without holes, which is not checked. `groups` has one
  /// number per observation, from 0 on (an observation with a negative one is never held out); null stands for
  /// GetDeafultCVGroupsVector(N, cvGroups), and only then is cvGroups read. A group without observations predicts
  /// nothing, but its round is computed like any other. `groups` of fewer than N cells or with a number above their
  /// own + 9999, and a cvGroups below 1 that is read, cannot be used. `fixedComponents`: 0 nothing is computed;
  /// negative: search; else exactly so many are tried and counted. `progress` is the bar of the principal components;
  /// where it is null each opens its own.
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

/// What a component has to gain, for the whole process, from now on. A value below 0, from 1 on, or not a number is
/// ignored.
KALMIA_EXPORT void SetO2PLSPredictiveQ2Limit(float limit);
