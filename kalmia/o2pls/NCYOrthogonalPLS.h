#pragma once

#include <memory>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"
#include "kalmia/support/VexStream.h"

/// A filter that takes out of X, one component at a time, variation that has nothing to do with Y. The tables may have
/// holes; they arrive scaled. New data of the same variables are filtered by CalculateResiduals.
///
/// Each component is found by a fixed-point search. From the first principal direction w of what is left of X, a round
/// takes the scores t = Xw, projects them away from the principal scores of Y, fits a small PLS model of X to what is
/// left of t, and its coefficients, at unit length, are the next w. Rounds go on until w moves by little (relative
/// squared change d <= 1e-7) or the limit is reached, which is no failure. Then t = Xw, p = X't / t't, and X -= t p'.
/// Symbols: N observations, K variables; names that end in `prim` hold one component per row.
/// Source: orthogonal signal correction, Wold, Antti, Lindgren & Oehman (1998), Chemom. Intell. Lab. Syst. 44, 175-185.
///
/// Y is needed once: its principal scores take its place with the first NextComponent or GetYAngle. Where they fail or
/// are stopped, Y is gone too, and the model cannot have components any more. A model belongs to one thread at a time,
/// GetYAngle included; copies share nothing.
class KALMIA_EXPORT NCYOrthogonalPLS : public kalmia::Persistent<NCYOrthogonalPLS> {
 public:
  NCYOrthogonalPLS();  ///< empty, to be read from a stream
  /// X N x K, Y N x M, shared until they are written. `maxIterations` limits the rounds of the search, and those of
  /// every model inside. `maxPLSComponents` above 0 limits the components of the PLS model (OSCPLSComponentValidator).
  /// Throws NCError where the numbers of rows differ, or a row of X or of Y has no present cell.
  NCYOrthogonalPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int maxIterations,
                   int maxPLSComponents);
  NCYOrthogonalPLS(const NCYOrthogonalPLS& other);
  NCYOrthogonalPLS& operator=(const NCYOrthogonalPLS& other);
  ~NCYOrthogonalPLS() override;

  /// Computes one component and takes it out of X.
  /// Progress: opens a spinner, `showProgress` being its second flag, whose value rises to 0 as (log10 d + 7) * 10
  /// falls; the models inside open bars of their own.
  /// Throws: NCError where Y is gone, has no variance or one that is not finite, where a PLS model has no first
  /// component (level 1), and on a user's stop. No component is appended then. Y is as it was if its scores were not
  /// begun yet, and gone if they failed or were stopped; if they are there, and after std::bad_alloc, the call can be
  /// repeated.
  void NextComponent(bool showProgress);
  /// The same with the caller's bar, for the search and the models inside alike, each of which sets its range; null is
  /// NextComponent(false).
  void NextComponent(NCProgress* progress);

  /// Takes the newest component back: X += t p'. Does nothing without one.
  void RemoveComponent();

  /// Filters another table of K columns, in place: t = Xw and X -= t p' for each component in turn. NCError for rows of
  /// another number of columns, once the filter has a component.
  void CalculateResiduals(NCDataMatrix<float>* matrix) const;

  /// 90 - 90 acos(c) / pi, with c the cosine between the vector (N) and its part outside of the principal scores of Y:
  /// 90 for a vector that has no share in them, towards 45 as it comes to lie in them. Of one that lies in them
  /// exactly, c is what rounding makes of it, or no number. Throws as NextComponent does where Y is needed and gone,
  /// and NCError for a vector of another size.
  double GetYAngle(const NCDataVector<float>* vector) const;

  NCDataMatrix<float> GetWStarPrim() const;  ///< NCPLS::GetWStarPrim of W and P
  int GetComponents() const { return components_; }
  const NCDataMatrix<float>* GetPprim() const { return &pprim_; }            ///< A x K
  const NCDataMatrix<float>* GetWprim() const { return &wprim_; }            ///< A x K
  const NCDataMatrix<float>* GetTprim() const { return &tprim_; }            ///< A x N
  const NCDataMatrix<float>* GetXResiduals() const { return &xResiduals_; }  ///< N x K
  const NCDataMatrix<float>* GetY() const { return y_.get(); }               ///< null once its scores were begun

  // Persistence: magic "YOPLS", version 2; version 1 is read. Y is not stored: a model that was written before its
  // first component cannot go on when it is read; nor is the limit of PLS components. A stream that is cut, or whose
  // parts disagree, is refused by a false read (version 1 may throw VexStreamError), and the model is then empty.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  void SetupYPCA(NCProgress* progress) const;
  void TakeScoresOf(const NCDataMatrix<float>& Y, NCProgress* progress) const;
  NCDataVector<float> OutsideOfY(const NCDataVector<float>& scores) const;
  NCDataVector<float> NextWeights(const NCDataVector<float>& w, NCProgress* bar, NCProgress* ofModels) const;
  NCDataVector<float> FindWeights(bool showProgress, NCProgress* progress) const;
  void AppendComponent(bool showProgress, NCProgress* progress);
  bool ReadStreamDirectory(std::istream& stream);
  bool ReadOldLayout(std::istream& stream);
  bool PartsAgree() const;
  void Swap(NCYOrthogonalPLS* other);

  kalmia::DeepCopied<NCDataMatrix<float>> pprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> wprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> tprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> xResiduals_;
  // Y, or its principal scores (N x B) with the inverse of their products (B x B). A model that was read has the latter
  // or nothing.
  mutable kalmia::DeepCopied<std::unique_ptr<NCDataMatrix<float>>> y_;
  mutable kalmia::DeepCopied<std::unique_ptr<NCDataMatrix<float>>> yScores_;
  mutable kalmia::DeepCopied<std::unique_ptr<NCDataMatrix<float>>> yScoresInverse_;
  int components_ = 0;
  int maxIterations_ = 0;
  int maxPLSComponents_ = 0;
};
