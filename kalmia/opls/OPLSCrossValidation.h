#pragma once

#include <vector>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/opls/OPLSCrossvalidationData.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

class NCOPLS;

namespace kalmia {
struct OPLSRound;
}

/// Cross-validation of an OPLS model over groups of observations: one model per group, made without it, predicts it.
/// Construction does so without orthogonal components, each NextComponent with one more, so that Q2 comes out step by
/// step; the caller decides where to stop. Unlike the other validations it needs no finished model; it keeps its own X
/// and Y, so that validations of one table may run on several threads, and the matrices of each round's model, which
/// can be stored (GetData) and gone on from.
///
/// Symbols as in NCOPLS; R rounds, group g being left out in round g + 1. An observation of a group outside 0 to R - 1
/// is in every round's model and is never predicted. Values that were not computed are missing.
/// Copies are deep.
class KALMIA_EXPORT OPLSCrossValidation {
 public:
  /// Runs all rounds without orthogonal components. `rounds` is cut to the observations. Without groups, which have a
  /// cell per observation, cell i is in group i mod rounds. `progress` may be null. `ofModels` is the bar of the
  /// principal components inside; where it is null, each opens its own.
  /// Throws: NCError of level 2 where the bar says stop, "OPLS cross validation aborted.", or, inside a round, "OPLS
  /// component aborted."; what NCPCA::NextComponent throws; NCError for groups of another length and for tables of
  /// different lengths.
  OPLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int predictiveComponents, int rounds,
                      NCProgress* progress, NCIntegralVector<int, -99>* groups, NCProgress* ofModels = nullptr);
  /// Goes on from stored data of the same X, Y and groups; the results mean something after the next NextComponent.
  /// Throws NCError where the data do not belong to tables of these shapes.
  OPLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const OPLSCrossvalidationData* data,
                      NCIntegralVector<int, -99>* groups);
  OPLSCrossValidation(const OPLSCrossValidation& other);
  OPLSCrossValidation& operator=(const OPLSCrossValidation& other);
  ~OPLSCrossValidation();

  /// One orthogonal component more in every round. Throws as the first constructor; the object is then to be discarded,
  /// as some rounds have the component and others not.
  void NextComponent(NCProgress* progress, NCProgress* ofModels = nullptr);

  /// What Q2TotCum should gain by a component: 0.05 up to 100 observations, 0 beyond.
  float GetQ2Lim() const;
  const OPLSCrossvalidationData* GetData() { return &data_; }
  int SizeCVRounds() { return rounds_; }
  int SizeOComponents();  ///< -1 for data without any model

  /// (SS - PRESS) / SS over all of Y, of the whole model rather than the newest component; 1 where Y has no variance.
  float GetQ2TotCum() const { return q2TotCum_; }
  /// The same of each Y variable; 1 as long as PRESS, summed from the first variable on, is 0.
  const NCDataVector<float>* GetQ2YVarCum() const { return &q2YVarCum_; }
  const NCDataVector<float>* GetSSYcv() const { return &ssYcv_; }                  ///< per round: SS of the Y residuals
  const NCDataVector<float>* GetSSYcvOriginal() const { return &ssYcvOriginal_; }  ///< SS of its Y; in new runs
  /// Per predictive component R x N: each observation's score in each round, its own or, where it was left out, the
  /// predicted one. Rounds that decide on the size of their block (predictiveComponents 0) may decide differently; the
  /// sets, and the rows of GetTPred, then grow to the largest block, never shrink with a smaller one after it, and are
  /// missing in the rounds that have no such component.
  const std::vector<NCDataMatrix<float>>* GetTSets() const { return &tSets_; }
  const NCDataMatrix<float>* GetToSet() const { return &toSet_; }                  ///< the newest orthogonal one, R x N
  const NCDataMatrix<float>* GetYPred() const { return &yPred_; }                  ///< N x M
  NCDataMatrix<float> GetYPredResiduals();                                         ///< Y - GetYPred()
  const NCDataMatrix<float>* GetTPred() const { return &tPred_; }                  ///< predicted scores, A x N
  const NCDataVector<float>* GetToPred() const { return &toPred_; }                ///< the newest orthogonal one, N

 private:
  void TakeTables(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, const NCIntegralVector<int, -99>* groups);
  static void RequireMatchingData(const OPLSCrossvalidationData& data, const NCDataMatrix<float>& X,
                                  const NCDataMatrix<float>& Y);
  void SaveGroupResults(NCOPLS* model, const kalmia::OPLSRound& round);
  void CalculateQ2();
  void MakeRoomForScores(int predictiveComponents);
  NCDataMatrix<float>& ScoresOf(int component) { return tSets_[static_cast<std::size_t>(component - 1)]; }

  kalmia::DeepCopied<NCDataMatrix<float>> x_;
  kalmia::DeepCopied<NCDataMatrix<float>> y_;
  OPLSCrossvalidationData data_;
  int rounds_;
  kalmia::DeepCopied<NCDataMatrix<float>> yPred_;
  int predictiveComponents_;
  kalmia::DeepCopied<NCDataVector<float>> ssYcv_;
  kalmia::DeepCopied<NCDataMatrix<float>> tPred_;
  kalmia::DeepCopied<NCDataVector<float>> toPred_;
  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> tSets_;
  kalmia::DeepCopied<NCDataMatrix<float>> toSet_;
  kalmia::DeepCopied<NCDataVector<float>> ssYcvOriginal_;
  float q2TotCum_ = kalmia::kMissing;
  kalmia::DeepCopied<NCDataVector<float>> q2YVarCum_;
  kalmia::DeepCopied<NCIntegralVector<int, -99>> groups_;
};
