#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// The default cross-validation groups of all model families: `count` cells, cell i (from 1) being i mod `groups`.
/// Group values start at 0: with 7 groups the cells run 1, 2, 3, 4, 5, 6, 0, 1 and so on. `groups` is at least 1;
/// throws NCError otherwise.
KALMIA_EXPORT NCIntegralVector<int, -99> GetDeafultCVGroupsVector(int count, int groups);

/// Judges one component of a PCA model by cross-validation over groups of observations and groups of variables. In
/// round g a loading is learnt without the observations of group g and a score without the variables of group g, each
/// by an NCPCA that starts from the model's own component and runs few rounds. Cell (i, j) is then predicted as t_i p_j
/// with the t that did not see the group of variable j and the p that did not see the group of observation i, so the
/// cell itself took no part in either. With PRESS the sum of squared prediction errors and SS that of the predicted
/// cells, Q2 = 1 - PRESS / SS, for each variable and in total; over components the unexplained parts multiply, none by
/// more than 1.1: Q2cum = 1 - product of min(PRESS / SS, 1.1).
/// Source: Eastment & Krzanowski (1982), Technometrics 24, 73-77; Wold (1978), Technometrics 20, 397-405.
///
/// For each component the caller calls NCPCA::NextComponent, then NextComponent of this object, reads Q2, and calls
/// NCPCA::CalculateResiduals if the component stays. It is significant if GetQ2Tot() is greater than GetQ2Lim(): this
/// class decides nothing.
///
/// Copies have all members of their own but the model, which is the caller's and has to outlive them. N observations,
/// K variables.
class KALMIA_EXPORT PCACrossValidation {
 public:
  /// For the first component. `rounds` above the smaller of N and K is cut to it; with 1 round there is nothing to
  /// learn from, and NextComponent may fail. The groups have one number from 0 to (cut) rounds - 1 for each observation
  /// and each variable, and are copied; null stands for GetDeafultCVGroupsVector of the cut rounds. Cells of any other
  /// group are not predicted; without a round none are. Throws NCError where there is not one group for each.
  PCACrossValidation(NCPCA* model, int rounds, const NCIntegralVector<int, -99>* observationGroups,
                     const NCIntegralVector<int, -99>* variableGroups);
  /// For a later component, with the cumulated values up to then; `q2XVarCum` has K cells, which NextComponent checks.
  PCACrossValidation(NCPCA* model, float q2TotCum, const NCDataVector<float>& q2XVarCum, int rounds,
                     const NCIntegralVector<int, -99>* observationGroups,
                     const NCIntegralVector<int, -99>* variableGroups);

  /// One cross-validation of the component that NCPCA::NextComponent has just appended; the model is not changed.
  /// Shape: `ss` (K cells) holds the sums of squares of the variables before the first component: a variable without
  /// variance left gets Q2 0, and cumulated 1 if it had variance then, else 0. A table without variance left gets 0,
  /// and cumulated 1.
  /// Missing: a cell whose t or p is missing is not predicted and counts nowhere; x itself is its residual. A missing
  /// cell has a missing residual.
  /// Progress: `progress` may be null; a bar is then opened. Its range is 0 to rounds, and each half of a round is a
  /// range within it. What opening and closing these say of a stop is passed over: a stop comes in between the
  /// iterations of a half.
  /// Throws: NCError where the model has no component or lacks its matrix P or T, or has other numbers of observations
  /// or variables than when this object was made, where a vector has another number of cells, a round has no component,
  /// or the user stops; std::bad_alloc. GetPSet() and GetTSet() then hold the rounds that were done, everything else is
  /// as it was.
  /// Cost: twice `rounds` components of at most 5 + sqrt(a - 1) rounds for component a.
  void NextComponent(const NCDataVector<float>& ss, NCProgress* progress);

  /// What Q2 of component a (from 1) has to exceed, which is what a component of noise would reach: for N observations,
  /// one less if `reduceObservations` (centred data),
  ///   1 - (N - b - a + 1)(K - a + 1) / ((N - a + 1)(K - a + 2)),  b = 1 if reduced, else 0.
  /// Where the product above the line is not above 0 the limit is 1; -99 for a component below 1.
  float GetQ2Lim(int component, bool reduceObservations) const;

  float GetQ2Tot() const { return q2Tot_; }        ///< of the last call, all cells together
  float GetQ2TotCum() const { return q2TotCum_; }  ///< over all calls
  const NCDataVector<float>* GetQ2XVar() const { return &q2XVar_; }        ///< K
  const NCDataVector<float>* GetQ2XVarCum() const { return &q2XVarCum_; }  ///< K

  // Of the last call. Both sets are turned along the model's own component.
  const NCDataMatrix<float>* GetPSet() const { return &pSet_; }  ///< a round's p in each row, rounds x K
  /// A round's t in each row, times sqrt(K / (K - n)) for the n variables that it did not see, rounds x N.
  const NCDataMatrix<float>* GetTSet() const { return &tSet_; }
  const NCDataMatrix<float>* GetXPredResiduals() const { return &xPredResiduals_; }  ///< x - t p, N x K

 private:
  struct HalfRound;
  struct Squares;

  int RoundsOfIteration() const;
  void AddLoadingWithoutObservations(const HalfRound& half);
  void AddScoreWithoutVariables(const HalfRound& half);
  NCDataMatrix<float> RowsOutsideGroup(int group) const;
  float ScaleWithoutGroup(int group) const;
  NCDataMatrix<float> PredictionErrors(std::vector<Squares>* squares) const;
  void Judge(const NCDataVector<float>& ss);

  NCDataMatrix<float> pSet_;
  NCDataMatrix<float> tSet_;
  NCDataVector<float> q2XVar_;
  NCDataVector<float> q2XVarCum_;
  NCDataMatrix<float> xPredResiduals_;
  NCPCA* model_;  ///< not owned
  int rounds_;
  float q2Tot_ = 0.0F;
  float q2TotCum_;
  NCIntegralVector<int, -99> observationGroups_;
  NCIntegralVector<int, -99> variableGroups_;
};
