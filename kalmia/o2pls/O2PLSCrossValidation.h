#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/o2pls/O2PLSCVResults.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// How many predictive and orthogonal components an O2PLS model of two blocks should have, by cross-validation, with
/// the models of all rounds. The constructor does all the work. In round g the rows of group g are held out, and a
/// model without limits of dimension is fitted to the others; Q2 = 1 - PRESS / SS over the held-out rows of all rounds.
///
/// The predictive components come from O2PLSPredictiveComponentEstimator. Then X-side components are added to all
/// rounds, one at a time, as long as each raises Q2 of Y by the limit (GetQ2Lim) at least; then Y-side components by Q2
/// of X; if there are any, the X side starts anew with them in the models. Of the predictive components those up to the
/// largest Q2 of Y stay, and of the significant ones that follow each as long as enough single variables gain more than
/// the limit: about sqrt(M) of up to 24 variables, a fifth of more (code R2; the others become NS). The rounds' models
/// are then turned so that their loadings point the way of round 0's, and saved.
class KALMIA_EXPORT O2PLSCrossValidation {
 public:
  /// X N x K, Y N x M, scaled and without holes. `groups` has one number per observation, from 0 up to N + 9999 (an
  /// observation with a negative one is never held out); null stands for GetDeafultCVGroupsVector(N, cvGroups), and
  /// only then is cvGroups read, which is at least 1. A group without observations predicts nothing, but its round is
  /// fitted and kept like any other. `maxIterations` is for the models. The three numbers of components are all
  /// negative, for a search, or all given: then these are used.
  /// A round that has exactly nothing left for an X-side component beside one predictive one, with one Y variable, has
  /// missing scores in ToSet, and its errors are missing too: Q2Cum may then exceed 1.
  /// Without a predictive component the results hold nothing but PredictiveComponents 0 and PredictiveSignificance: a
  /// search has none where no observation is ever held out.
  /// Progress: `progress` may be null; the bar runs from 0 to 7. Only IsBreakPressed stops. `ofModels` is the bar of
  /// the principal components inside; where it is null, each opens its own. Throws: NCError where the numbers are
  /// neither all given nor all searched for, a cell is missing, `groups` has not N cells, a number above N + 9999 or,
  /// where predictive components are given, none from 0 on, cvGroups is read and below 1, the blocks differ in their
  /// numbers of rows or one has no columns, Q2 without orthogonal components is no number, the user stops, or a round
  /// cannot be computed. Cost: every trial of an orthogonal component fits all rounds, and keeps a copy of their models
  /// meanwhile.
  O2PLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int cvGroups, NCProgress* progress,
                       NCIntegralVector<int, -99>* groups, int maxIterations, int predictive, int xOrthogonal,
                       int yOrthogonal, NCProgress* ofModels = nullptr);

  const O2PLSCVResults& GetResults() const { return results_; }

  /// What a component has to gain in Q2: 0.01, or what SetO2PLSQ2Limit says, whatever the arguments.
  static float GetQ2Lim(int observations, int components);

 private:
  class Calculation;

  O2PLSCVResults results_;
};

/// What GetQ2Lim gives from now on, for the whole process. A value below 0, from 1 on, or not a number is ignored.
KALMIA_EXPORT void SetO2PLSQ2Limit(float limit);
