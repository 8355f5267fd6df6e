#pragma once

#include <memory>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"
#include "kalmia/support/VexStream.h"

/// A filter that takes variation unrelated to Y out of X, one component at a time. The tables may have holes and must
/// be scaled. CalculateResiduals filters new data of the same variables.
///
/// Each component is found by a fixed-point search. It starts from the first principal direction w of the filtered X. A
/// round takes the scores t = Xw, projects them away from the principal scores of Y, and fits a small PLS model of X to
/// the rest of t; its coefficients, at unit length, are the next w. Rounds end when w moves little (relative squared
/// change d <= 1e-7) or at the limit, which is no failure. Then t = Xw, p = X't / t't, and X -= t p'.
/// Symbols: N observations, K variables; names that end in `prim` hold one component per row.
/// Source: orthogonal signal correction, Wold, Antti, Lindgren & Oehman (1998), Chemom. Intell. Lab. Syst. 44, 175-185.
///
/// Y is needed once: the first NextComponent or GetYAngle replaces it by its principal scores. If these fail or are
/// stopped, Y is gone, and the model can have no more components. A model belongs to one thread at a time, also for
/// GetYAngle; copies share nothing.
class KALMIA_EXPORT NCYOrthogonalPLS : public kalmia::Persistent<NCYOrthogonalPLS> {
 public:
  NCYOrthogonalPLS();  ///< empty, to be read from a stream
  /// X N x K, Y N x M, shared until they are written. `maxIterations` limits the rounds of the search, and those of
  /// every model inside. `maxPLSComponents` above 0 limits the components of the PLS model (OSCPLSComponentValidator).
  /// Throws NCError if the numbers of rows differ, or if a row of X or of Y has no present cell.
  NCYOrthogonalPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int maxIterations,
                   int maxPLSComponents);
  NCYOrthogonalPLS(const NCYOrthogonalPLS& other);
  NCYOrthogonalPLS& operator=(const NCYOrthogonalPLS& other);
  ~NCYOrthogonalPLS() override;

  /// Computes one component and takes it out of X.
  /// Progress: opens a spinner with `showProgress` as its second flag; its value rises to 0 as (log10 d + 7) * 10
  /// falls. The models inside open their own bars.
  /// Throws: NCError if Y is gone, if its variance is 0 or not finite, if a PLS model has no first component (level 1),
  /// and on a stop request. No component is appended then. Y is gone if its scores failed or were stopped; otherwise,
  /// and after std::bad_alloc, the call can be repeated.
  void NextComponent(bool showProgress);
  /// The same with the caller's bar for the search and for the models inside, each of which sets its range. Null means
  /// NextComponent(false).
  void NextComponent(NCProgress* progress);

  /// Takes the newest component back: X += t p'. Does nothing without one.
  void RemoveComponent();

  /// Filters another table of K columns, in place: t = Xw and X -= t p' for each component in turn. NCError for rows of
  /// another number of columns, once the filter has a component.
  void CalculateResiduals(NCDataMatrix<float>* matrix) const;

  /// 90 - 90 acos(c) / pi, with c the cosine between the vector (N) and its part outside of the principal scores of Y:
  /// 90 for a vector unrelated to them, towards 45 for one that lies in them. For a vector that lies in them exactly, c
  /// is rounding error, or no number. Throws as NextComponent if Y is needed and gone, and NCError for a vector of
  /// another size.
  double GetYAngle(const NCDataVector<float>* vector) const;

  NCDataMatrix<float> GetWStarPrim() const;  ///< NCPLS::GetWStarPrim of W and P
  int GetComponents() const { return components_; }
  const NCDataMatrix<float>* GetPprim() const { return &pprim_; }            ///< A x K
  const NCDataMatrix<float>* GetWprim() const { return &wprim_; }            ///< A x K
  const NCDataMatrix<float>* GetTprim() const { return &tprim_; }            ///< A x N
  const NCDataMatrix<float>* GetXResiduals() const { return &xResiduals_; }  ///< N x K
  const NCDataMatrix<float>* GetY() const { return y_.get(); }               ///< null once its scores were begun

  // Persistence: magic "YOPLS", version 2; version 1 is read. Neither Y nor the limit of PLS components is stored, so a
  // model written before its first component cannot continue after a read. The read returns false (version 1 may throw
  // VexStreamError) and leaves an empty model if the stream is cut or its parts do not match.
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
