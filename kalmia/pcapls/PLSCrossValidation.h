#pragma once

#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/NCPLSPred.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// Judges one component of a PLS model by cross-validation over groups of observations. Each round leaves out one
/// group, fits a model of one component to the rest of the working X and Y, and predicts the group. With PRESS the sum
/// of squared prediction errors and SS that of Y before the component, Q2 = 1 - PRESS / SS, for each Y variable and in
/// total. Over components Q2cum = 1 - product of min(PRESS / SS, 1.1).
/// Source: Wold (1978), Technometrics 20, 397-405.
///
/// For each component the caller calls NCPLS::NextComponent, then NextComponent of this object, reads Q2, and calls
/// NCPLS::CalculateResiduals if the component stays. The component passes if GetQ2Tot() exceeds GetQ2Lim(); the caller
/// decides. Each round starts from the deflated tables, so Q2 differs from that of programs that refit all components
/// in every round.
///
/// Copies share only the model, which the caller owns and keeps alive. N observations, K variables in X, M in Y.
class KALMIA_EXPORT PLSCrossValidation : public VexStreamBase {
 public:
  /// For the first component. `rounds` is cut to N. A single round that leaves all out has nothing to fit and predicts
  /// nothing; with fewer than 1, nothing is left out, and every Q2 is 0. `observationGroups` has one number from 0 to
  /// rounds - 1 for each observation and is copied; null means GetDeafultCVGroupsVector of N and the cut rounds.
  /// Observations of other groups are never left out. Throws NCError for another number of groups.
  PLSCrossValidation(NCPLS* model, int rounds, const NCIntegralVector<int, -99>* observationGroups);
  /// For a later component, with the cumulated values so far; `q2YVarCum` has M cells, which NextComponent checks.
  PLSCrossValidation(NCPLS* model, float q2TotCum, const NCDataVector<float>& q2YVarCum, int rounds,
                     const NCIntegralVector<int, -99>* observationGroups);

  /// One cross-validation of the component that NCPLS::NextComponent has just appended.
  /// Shape: `w` (K cells, not null) is the model's weight vector of that component, from which each round starts and
  /// takes its sign. `ssY` (M cells) holds the sums of squares of Y before the first component. A Y variable without
  /// variance left, and every one without a round, gets Q2 0, and cumulated 1 if it had variance then, otherwise 0.
  /// Missing: the residual is y if the prediction is missing, and missing if y is. Rows with more holes than variables
  /// - 1 (or 0.9999 of them) are predicted 0, the mean.
  /// Progress: if `progress` is null, a bar is opened unless `quiet`. A stop request has no effect.
  /// Throws: NCError if X and Y of the model differ in their numbers of rows, if the model has other numbers of
  /// observations or variables than at construction, or if a vector has another number of cells; std::bad_alloc. This
  /// object is then unchanged.
  /// Cost: a fit of one component to (rounds - 1) / rounds of the table, `rounds` times, without copies of X.
  void NextComponent(const NCDataVector<float>* w, int maxIterations, const NCDataVector<float>& ssY,
                     NCProgress* progress, bool quiet);

  /// The limit for Q2: 0.05 up to 100 observations, 0 above.
  float GetQ2Lim() const;

  float GetQ2Tot() const { return results_.q2Tot; }        ///< of the last call, all cells of Y together
  float GetQ2TotCum() const { return results_.q2TotCum; }  ///< over all calls
  const NCDataVector<float>* GetQ2YVar() const { return &results_.q2YVar; }        ///< M
  const NCDataVector<float>* GetQ2YVarCum() const { return &results_.q2YVarCum; }  ///< M

  // Of the last call. Each round's w, c, p and row of TSet are turned so that w points along the model's.
  const NCDataMatrix<float>* GetWSet() const { return &results_.wSet; }  ///< a round's w in each row, rounds x K
  const NCDataMatrix<float>* GetCSet() const { return &results_.cSet; }  ///< rounds x M
  const NCDataMatrix<float>* GetPSet() const { return &results_.pSet; }  ///< rounds x K
  /// Scores of all observations, predicted ones for those left out, rounds x N.
  const NCDataMatrix<float>* GetTSet() const { return &results_.tSet; }
  /// Predicted scores, N: each from the round that left the observation out, with that round's own sign.
  const NCDataVector<float>* GetTPred() const { return &results_.tPred; }
  const NCDataMatrix<float>* GetYPredResiduals() const { return &results_.yPredResiduals; }  ///< y - prediction, N x M
  /// SS of a round's Y after its component: one cell for each requested round. Those after the cut rounds, at most
  /// 9999, are missing.
  const NCDataVector<float>* GetSSY() const { return &results_.ssY; }
  /// SS of a round's Y before its component if the model has one component; otherwise the SSY of the last call.
  const NCDataVector<float>* GetSSYOriginal() const { return &results_.ssYOriginal; }

 private:
  /// All that a call computes, so that it can be put in place as a whole.
  struct Results {
    NCDataMatrix<float> yPredResiduals;
    NCDataMatrix<float> wSet;
    NCDataMatrix<float> cSet;
    NCDataMatrix<float> pSet;
    NCDataVector<float> tPred;
    NCDataMatrix<float> tSet;
    NCDataVector<float> q2YVar;
    NCDataVector<float> q2YVarCum;
    NCDataVector<float> ssY;
    NCDataVector<float> ssYOriginal;
    float q2Tot = 0.0F;
    float q2TotCum = 0.0F;
  };
  struct Division;

  void RequireShapes(int cellsOfW, int cellsOfSSY) const;
  Division Divide(int group) const;
  void CalcRound(int group, const NCDataVector<float>& w, int maxIterations, NCProgress* progress, bool quiet,
                 Results* results) const;
  void TakePrediction(const NCPLSPred& prediction, const std::vector<int>& leftOut, NCDataVector<float>* t,
                      Results* results) const;
  static void AppendRound(const NCPLS& round, const NCDataVector<float>& t, const NCDataVector<float>& w,
                          Results* results);
  void Judge(const NCDataVector<float>& ssY, Results* results) const;

  NCPLS* model_;  ///< not owned
  int rounds_;
  NCIntegralVector<int, -99> observationGroups_;
  Results results_;
};
