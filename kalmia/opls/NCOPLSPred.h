#pragma once

#include <vector>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/opls/NCOPLS.h"
#include "kalmia/support/Export.h"

/// Applies an OPLS model to new observations: filters their X by one orthogonal component after the other, and gives
/// predictive scores and predicted Y after each. It starts without orthogonal components.
///
/// Symbols as in NCOPLS, for n new observations. Any number of holes is allowed; they leave every sum. An observation
/// without any value has no scores and no prediction. Throws std::bad_alloc, and NCError for a model without
/// components. Copies are deep.
class KALMIA_EXPORT NCOPLSPred {
 public:
  /// X (n x K), scaled as the model's. NCError for another width, and for a stopped model without its last block.
  NCOPLSPred(const NCDataMatrix<float>* X, NCOPLS* model);
  /// The same from a model's matrices. Throws NCError if they do not match X and each other, as the constructor of
  /// NCOPLS that rebuilds a model does; an X without rows may have any width.
  NCOPLSPred(const NCDataMatrix<float>* X, const std::vector<NCDataMatrix<float>>* W,
             const std::vector<NCDataMatrix<float>>* P, const std::vector<NCDataMatrix<float>>* C,
             const NCDataMatrix<float>* WO, const NCDataMatrix<float>* PO, const NCDataMatrix<float>* CO);
  NCOPLSPred(const NCOPLSPred& other);
  NCOPLSPred& operator=(const NCOPLSPred& other);
  ~NCOPLSPred();

  /// One more orthogonal component. Not beyond GetMaxComp(), which is not checked.
  void CalcNextComponent();

  const NCDataMatrix<float>& GetXOrthoResiduals() { return xOrthoResiduals_; }  ///< X filtered so far, n x K
  /// n x M, in the units of the scaled Y: the predictive part plus the part that orthogonal components took out of Y.
  const NCDataMatrix<float>* GetYPred() { return &yPred_; }
  const NCDataMatrix<float>* GetTPred() const { return &tPred_; }    ///< predictive scores, A x n
  const NCDataMatrix<float>* GetTOPred() const { return &toPred_; }  ///< orthogonal scores so far

  int GetMaxComp() { return woprim_.SizeRows(); }  ///< orthogonal components of the model
  int SizePComps() { return tPred_.SizeRows(); }
  int SizeOComps() { return toPred_.SizeRows(); }  ///< orthogonal components done

 private:
  void Finalise();
  std::size_t Block() const { return static_cast<std::size_t>(toPred_.SizeRows()); }

  kalmia::DeepCopied<NCDataMatrix<float>> xOrthoResiduals_;
  kalmia::DeepCopied<NCDataMatrix<float>> yPred_;
  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> wMatrices_;
  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> pMatrices_;
  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> cMatrices_;
  kalmia::DeepCopied<NCDataMatrix<float>> woprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> poprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> coprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> tPred_;
  kalmia::DeepCopied<NCDataMatrix<float>> toPred_;
};
