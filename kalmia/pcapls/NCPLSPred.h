#pragma once

#include <memory>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"

/// Takes new observations through the components of a PLS model, one at a time: computes their scores and takes the
/// component out of X. The object is the score vector t of the newest component, one cell per observation, missing
/// before the first step. X must be scaled as the model's X was. Cannot be copied.
class KALMIA_EXPORT NCPLSResiduals : public NCDataVector<float> {
 public:
  /// X (N x K) is kept as a pointer and changed in place; W and P (A x K) are the model's, one component per row.
  /// `tolerance` is the share of the variables that may be missing in an observation. Throws NCError where W has fewer
  /// components than P, or X has rows that are not as wide as W and P.
  NCPLSResiduals(NCDataMatrix<float>* X, const NCDataMatrix<float>& W, const NCDataMatrix<float>& P, float tolerance);
  NCPLSResiduals(const NCPLSResiduals&) = delete;
  NCPLSResiduals& operator=(const NCPLSResiduals&) = delete;

  /// One component further: t_i = x_i w / w'w over the present cells, then X -= t p'. A denominator never falls below
  /// a third of w'w.
  /// Missing: before step c + 1 an observation may have min(K - c - 1, K * tolerance, cut to a whole number) holes
  /// (K * tolerance formed in float). With more of them, or if nothing can be estimated, its score is missing and its
  /// row of X stays as it is.
  /// Not beyond GetMaxComp(), which is not checked.
  void CalcNextComponent();

  int GetCompComputed() const { return compComputed_; }
  int GetMaxComp() const { return p_.SizeRows(); }

 protected:
  void CalcScores();  ///< the step without the change of X
  NCDataMatrix<float>* xResiduals_;  ///< not owned

 private:
  int MissingLimit() const;          ///< holes that an observation may have in the coming step

  NCDataMatrix<float> w_;
  NCDataMatrix<float> p_;
  int compComputed_ = 0;
  float missingTolerance_;
};

/// The same with the prediction of Y: after each step YPred is the sum of t c' over the components so far, in the
/// scaled units of Y. A missing score adds nothing, so an observation without any score is predicted 0, the mean.
class KALMIA_EXPORT NCPLSPred : public NCPLSResiduals {
 public:
  /// Works on a copy of X (N x K; shared until the first step). W and P are A x K, C is A x M. See NCPLSResiduals.
  /// Throws NCError if W or C has fewer components than P.
  NCPLSPred(const NCDataMatrix<float>* X, const NCDataMatrix<float>* W, const NCDataMatrix<float>* P,
            const NCDataMatrix<float>* C, float tolerance);
  NCPLSPred(const NCDataMatrix<float>& X, const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
            const NCDataMatrix<float>& C, float tolerance);
  /// Works on the caller's X and yPred (N x M), which must outlive this object; sets yPred to 0. The bool only selects
  /// this form.
  NCPLSPred(bool inPlace, NCDataMatrix<float>* X, NCDataMatrix<float>* yPred, const NCDataMatrix<float>& W,
            const NCDataMatrix<float>& P, const NCDataMatrix<float>& C, float tolerance);
  NCPLSPred(const NCPLSPred&) = delete;
  NCPLSPred& operator=(const NCPLSPred&) = delete;

  void CalcNextComponent();  ///< one component further in scores, X and prediction

  const NCDataVector<float>* GetTPred() const { return this; }                  ///< scores of the newest component, N
  const NCDataMatrix<float>* GetXResiduals() const { return xResiduals_; }      ///< N x K
  const NCDataMatrix<float>* GetYPred() const { return yPred_; }                ///< N x M
  int SizeObservations() const { return Size(); }

 private:
  friend class PLSCrossValidation;  // its rounds need no X residuals
  using OwnedMatrix = std::unique_ptr<NCDataMatrix<float>>;

  NCPLSPred(OwnedMatrix X, OwnedMatrix yPred, const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
            const NCDataMatrix<float>& C, float tolerance);
  void CalcLastComponent();  ///< the step without the change of X
  void AddToPrediction();

  OwnedMatrix ownedX_;       ///< null where the caller's matrices are worked in, as the next one
  OwnedMatrix ownedYPred_;
  NCDataMatrix<float> c_;
  NCDataMatrix<float>* yPred_;
};
