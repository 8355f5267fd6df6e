#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// What O2PLSCrossValidation finds. N observations, K variables in X, M in Y, G rounds: round g (from 0) is row g + 1
/// of a matrix of rounds. "X side" components lie in X and are orthogonal to Y; those of the "Y side" lie in Y.
struct O2PLSCVResults {
  NCDataVector<float> Q2Cum;    ///< Q2 of all Y after 1, 2, ... predictive components
  NCDataMatrix<float> Q2Var;    ///< the same of each variable of Y: one row per number of components, M columns
  NCDataVector<float> Q2XSide;  ///< Q2 of Y after each X-side component that was tried
  NCDataVector<float> Q2YSide;  ///< Q2 of X after each Y-side component that was tried
  int PredictiveComponents = -1;  ///< chosen numbers; -1 until they are known
  int XSideComponents = -1;
  int YSideComponents = -1;

  // One entry per predictive component, G rows: scores (N columns; those of held-out observations predicted), loadings
  // and weights of the rounds' models.
  std::vector<NCDataMatrix<float>> TSet;
  std::vector<NCDataMatrix<float>> USet;
  std::vector<NCDataMatrix<float>> PSet;
  std::vector<NCDataMatrix<float>> WSet;
  std::vector<NCDataMatrix<float>> CSet;
  std::vector<NCDataMatrix<float>> QSet;
  // The same of X-side components (S, To, Po, Wo) and of Y-side components (R, Uo, Co, Qo).
  std::vector<NCDataMatrix<float>> SSet;
  std::vector<NCDataMatrix<float>> RSet;
  std::vector<NCDataMatrix<float>> ToSet;
  std::vector<NCDataMatrix<float>> PoSet;
  std::vector<NCDataMatrix<float>> WoSet;
  std::vector<NCDataMatrix<float>> UoSet;
  std::vector<NCDataMatrix<float>> CoSet;
  std::vector<NCDataMatrix<float>> QoSet;
  // One entry per round: the inner relations of its model.
  std::vector<NCDataMatrix<float>> LambdaSet;
  std::vector<NCDataMatrix<float>> XLambdaSet;

  // SignificanceE::Significance of each component that was tried.
  NCIntegralVector<int, -99> PredictiveSignificance;
  NCIntegralVector<int, -99> XSideSignificance;
  NCIntegralVector<int, -99> YSideSignificance;
  /// Row 1: the sum of squares of Y in each round's held-out rows; row a + 1: that of its prediction errors after a
  /// predictive components.
  NCDataMatrix<float> SSTable;

  /// Turns, in every predictive component, the signs of the rounds that are flagged (flag f, element f - 1, is for row
  /// f): T, P, W by xFlips, U, C, Q by yFlips. Where entry i was turned, entry i of LambdaSet and XLambdaSet becomes
  /// the regression between the rounds of TSet[i] and USet[i], G x G. There have to be as many of them as components,
  /// which is not checked.
  void FlipPredictiveModel(const std::vector<bool>& xFlips, const std::vector<bool>& yFlips);
};

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
