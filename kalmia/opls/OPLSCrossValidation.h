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

/// Cross-validation of an OPLS model over groups of observations: a model of the other observations predicts each
/// group. The constructor does so without orthogonal components, each NextComponent with one more, and Q2 follows step
/// by step; the caller decides when to stop. Unlike the other validations it needs no finished model. It keeps its own
/// X and Y, so validations of one table may run on several threads, and the matrices of each round's model, which can
/// be stored (GetData) and resumed.
///
/// Symbols as in NCOPLS; R rounds; round g + 1 leaves out group g. Observations of a group outside 0 to R - 1 are in
/// every round's model and are never predicted. Values not computed are missing.
/// Copies are deep.
class KALMIA_EXPORT OPLSCrossValidation {
 public:
  /// Runs all rounds without orthogonal components. `rounds` is cut to the observations. `groups` has a cell per
  /// observation; if null, observation i is in group i mod rounds. `progress` may be null. `ofModels` is the bar of the
  /// principal components inside; if null, each opens its own.
  /// Throws: NCError of level 2 if the bar says stop: "OPLS cross validation aborted.", or inside a round "OPLS
  /// component aborted."; what NCPCA::NextComponent throws; NCError for groups of another length and for tables of
  /// different lengths.
  OPLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int predictiveComponents, int rounds,
                      NCProgress* progress, NCIntegralVector<int, -99>* groups, NCProgress* ofModels = nullptr);
  /// Resumes from stored data of the same X, Y and groups; results are valid after the next NextComponent. Throws
  /// NCError if the data do not match the shapes of the tables.
  OPLSCrossValidation(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const OPLSCrossvalidationData* data,
                      NCIntegralVector<int, -99>* groups);
  OPLSCrossValidation(const OPLSCrossValidation& other);
  OPLSCrossValidation& operator=(const OPLSCrossValidation& other);
  ~OPLSCrossValidation();

  /// One more orthogonal component in every round. Throws as the first constructor; discard the object then, because
  /// only some rounds have the component.
  void NextComponent(NCProgress* progress, NCProgress* ofModels = nullptr);

  /// The gain in Q2TotCum that a component should bring: 0.05 up to 100 observations, 0 beyond.
  float GetQ2Lim() const;
  const OPLSCrossvalidationData* GetData() { return &data_; }
  int SizeCVRounds() { return rounds_; }
  int SizeOComponents();  ///< -1 for data without any model

  /// (SS - PRESS) / SS over all of Y, of the whole model, not of the newest component; 1 if Y has no variance.
  float GetQ2TotCum() const { return q2TotCum_; }
  /// The same of each Y variable; 1 while PRESS, summed from the first variable on, is 0.
  const NCDataVector<float>* GetQ2YVarCum() const { return &q2YVarCum_; }
  const NCDataVector<float>* GetSSYcv() const { return &ssYcv_; }                  ///< per round: SS of the Y residuals
  const NCDataVector<float>* GetSSYcvOriginal() const { return &ssYcvOriginal_; }  ///< SS of its Y; in new runs
  /// Per predictive component R x N: each observation's score in each round, predicted if the round left it out. With
  /// predictiveComponents 0, rounds may differ in the size of their block: the sets, and the rows of GetTPred, have the
  /// size of the largest block so far, with missing scores in rounds without the component.
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
