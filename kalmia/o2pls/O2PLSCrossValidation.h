#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/o2pls/O2PLSCVResults.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// Finds by cross-validation how many predictive and orthogonal components an O2PLS model of two blocks should have,
/// and keeps the models of all rounds. The constructor does all the work. Round g holds out the rows of group g and
/// fits a model without limits of dimension to the others; Q2 = 1 - PRESS / SS over the held-out rows of all rounds.
///
/// O2PLSPredictiveComponentEstimator gives the predictive components. Then X-side components are added to all rounds,
/// one at a time, while each raises Q2 of Y by at least the limit (GetQ2Lim); then Y-side components by Q2 of X. If
/// there are Y-side components, the X side starts anew with them in the models. The predictive components up to the
/// largest Q2 of Y stay. A significant one after them stays (code R2) if enough single variables gain more than the
/// limit: about sqrt(M) of up to 24 variables, a fifth of more; the first that does not, and all later ones, become NS.
/// Finally the rounds' models are turned so that their loadings point as those of round 0, and saved.
class KALMIA_EXPORT O2PLSCrossValidation {
 public:
  /// X N x K, Y N x M, scaled and without holes. `groups` has one number per observation, from 0 up to N + 9999; an
  /// observation with a negative number is never held out. Null means GetDeafultCVGroupsVector(N, cvGroups); only then
  /// is cvGroups read, at least 1. A group without observations predicts nothing, but its round is fitted and kept.
  /// `maxIterations` is for the models. The three numbers of components are either all negative (search) or all given.
  /// With one Y variable, a round may have exactly nothing left for an X-side component beside one predictive one: its
  /// scores in ToSet and its errors are then missing, and Q2Cum may exceed 1.
  /// Without a predictive component the results hold only PredictiveComponents 0 and PredictiveSignificance. A search
  /// finds none if no observation is ever held out.
  /// Progress: `progress` may be null; the bar runs from 0 to 7. Only IsBreakPressed stops. `ofModels` is the bar of
  /// the principal components inside; if null, each opens its own.
  /// Throws NCError if only some numbers of components are given; if a cell is missing; if `groups` has not N cells,
  /// has a number above N + 9999 or, with given predictive components, no number from 0 on; if cvGroups is read and
  /// below 1; if the blocks differ in their numbers of rows or one has no columns; if Q2 without orthogonal components
  /// is no number; if the user stops; if a round cannot be computed.
  /// Cost: every trial of an orthogonal component fits all rounds and keeps a copy of their models meanwhile.
  O2PLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int cvGroups, NCProgress* progress,
                       NCIntegralVector<int, -99>* groups, int maxIterations, int predictive, int xOrthogonal,
                       int yOrthogonal, NCProgress* ofModels = nullptr);

  const O2PLSCVResults& GetResults() const { return results_; }

  /// The least gain in Q2 of a component: 0.01, or the value of SetO2PLSQ2Limit. The arguments do not matter.
  static float GetQ2Lim(int observations, int components);

 private:
  class Calculation;

  O2PLSCVResults results_;
};

/// Sets the result of GetQ2Lim for the whole process. Ignores values below 0, from 1 on, and NaN.
KALMIA_EXPORT void SetO2PLSQ2Limit(float limit);
