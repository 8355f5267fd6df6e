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

/// Judges one component of a PCA model by cross-validation over groups of observations and groups of variables. Round g
/// computes a loading without the observations of group g and a score without the variables of group g, each by an
/// NCPCA that starts from the model's component and runs few rounds. The prediction of cell (i, j) is t_i p_j, with the
/// t computed without the group of variable j and the p without the group of observation i: neither uses the cell. With
/// PRESS the sum of squared prediction errors and SS that of the predicted cells, Q2 = 1 - PRESS / SS, for each
/// variable and in total. Over components Q2cum = 1 - product of min(PRESS / SS, 1.1).
/// Source: Eastment & Krzanowski (1982), Technometrics 24, 73-77; Wold (1978), Technometrics 20, 397-405.
///
/// For each component the caller calls NCPCA::NextComponent, then NextComponent of this object, reads Q2, and calls
/// NCPCA::CalculateResiduals if the component stays. The component is significant if GetQ2Tot() exceeds GetQ2Lim(); the
/// caller decides.
///
/// Copies share only the model, which the caller owns and keeps alive. N observations, K variables.
class KALMIA_EXPORT PCACrossValidation {
 public:
  /// For the first component. `rounds` is cut to the smaller of N and K; with 1 round there is nothing to fit, and
  /// NextComponent may fail. The groups have one number from 0 to (cut) rounds - 1 for each observation and each
  /// variable, and are copied; null means GetDeafultCVGroupsVector of the cut rounds. Cells of other groups are not
  /// predicted. Throws NCError for another number of groups.
  PCACrossValidation(NCPCA* model, int rounds, const NCIntegralVector<int, -99>* observationGroups,
                     const NCIntegralVector<int, -99>* variableGroups);
  /// For a later component, with the cumulated values so far; `q2XVarCum` has K cells, which NextComponent checks.
  PCACrossValidation(NCPCA* model, float q2TotCum, const NCDataVector<float>& q2XVarCum, int rounds,
                     const NCIntegralVector<int, -99>* observationGroups,
                     const NCIntegralVector<int, -99>* variableGroups);

  /// One cross-validation of the component that NCPCA::NextComponent has just appended; the model is not changed.
  /// Shape: `ss` (K cells) holds the sums of squares of the variables before the first component. A variable without
  /// variance left gets Q2 0, and cumulated 1 if it had variance then, otherwise 0. A table without variance left gets
  /// 0, and cumulated 1.
  /// Missing: a cell whose t or p is missing is not predicted and does not count; its residual is x. A missing cell has
  /// a missing residual.
  /// Progress: if `progress` is null, a bar is opened. Its range is 0 to rounds, with a range inside for each half of a
  /// round. The bar is asked about a stop only between the iterations of a half.
  /// Throws: NCError if the model has no component, lacks its matrix P or T, or has other numbers of observations or
  /// variables than at construction; if a vector has another number of cells; if a round has no component; if the user
  /// stops; std::bad_alloc. GetPSet() and GetTSet() then hold the rounds done; everything else is unchanged.
  /// Cost: twice `rounds` components of at most 5 + sqrt(a - 1) rounds for component a.
  void NextComponent(const NCDataVector<float>& ss, NCProgress* progress);

  /// The limit for Q2 of component a (from 1), which a component of noise would reach:
  ///   1 - (N - b - a + 1)(K - a + 1) / ((N - a + 1)(K - a + 2)),
  /// with b = 1 for `reduceObservations` (centred data), otherwise 0. 1 if the numerator is not above 0; -99 for a component below 1.
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
