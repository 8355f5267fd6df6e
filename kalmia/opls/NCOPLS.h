#pragma once

#include <set>
#include <utility>
#include <vector>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

/// Orthogonal PLS of tables with holes. A small predictive block of components holds the variation of X related to Y;
/// orthogonal components take unrelated variation out of X, one at a time. After each orthogonal component the
/// predictive block is computed anew from the filtered X. Every block is kept, so prediction and cross-validation can
/// replay the filter.
///
/// Symbols, for N observations, K variables of X and M of Y, A predictive components and O orthogonal ones: predictive
/// weights W (A x K), scores T (A x N), loadings P (A x K), Y weights C (A x M), Y scores U (A x N); the same with an
/// index o for the orthogonal components. Names that end in `prim` hold one component per row. Block o is the one after
/// o orthogonal components, so there is one block more than orthogonal components.
/// Source: Trygg & Wold (2002), J. Chemometrics 16, 119-128; several Y: Trygg (2002), J. Chemometrics 16, 283-293.
///
/// Holes count as 0 in the cross-products X'Y, which repeated passes over X refine. Elsewhere holes leave every sum
/// (SpecialNipalsRegress...Fix). A row of X without any value has no scores; the first orthogonal component empties it
/// in the working X and Y.
///
/// A model belongs to one thread at a time. Copies are deep.
class KALMIA_EXPORT NCOPLS {
 public:
  /// A model of X (N x K) and Y (N x M), both scaled, without components yet. `predictiveComponents` is the size of the
  /// predictive block, at most the smaller side of Y; 0 or less means the components of Y'X whose sum of squares is at
  /// least 1 % of that of the first, decided for the first block. (With one Y it is always 1.) `maxIterations` limits
  /// the passes for holes and the rounds of the principal components of Y'X. The tables' cells are shared until the
  /// model filters them; until then models of the same tables belong to the same thread. Throws NCError if X and Y
  /// differ in their numbers of rows.
  NCOPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int predictiveComponents, int maxIterations);
  /// Rebuilds a model from its blocks W, P and C (one per number of orthogonal components, from 0) and its orthogonal
  /// WO, PO and CO (O x ...) on X and Y, by replaying the filter. The size of the block is that of the first W. U is
  /// not rebuilt; NextComponent continues with orthogonal component O + 1. Throws NCError as above, and if there are
  /// fewer than O + 1 blocks, if P or C of a block has fewer rows than its W, or PO or CO than WO, or if a matrix with
  /// rows is not as wide as X or Y. If W, P, C, WO, PO and CO are all empty, the model is a new one.
  NCOPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const std::vector<NCDataMatrix<float>>* W,
         const std::vector<NCDataMatrix<float>>* P, const std::vector<NCDataMatrix<float>>* C,
         const NCDataMatrix<float>* WO, const NCDataMatrix<float>* PO, const NCDataMatrix<float>* CO,
         int predictiveComponents, int maxIterations);
  NCOPLS(const NCOPLS& other);
  NCOPLS& operator=(const NCOPLS& other);
  ~NCOPLS();

  /// The first call computes the predictive block, each later one an orthogonal component and the block after it. The Y
  /// scores of an orthogonal component are missing if it is practically unrelated to Y, which is the rule.
  /// Throws: NCError "OPLS component aborted." of level 2 if `progress` (which may be null) says stop, and what
  /// NCPCA::NextComponent throws. Discard the model then: an orthogonal component may have no block.
  /// `ofModels` is the bar of the principal components inside; if null, each opens its own.
  void NextComponent(NCProgress* progress, NCProgress* ofModels = nullptr);

  /// Turns the sign of an orthogonal component, from 1, but not of its Y scores. NCError without such a component.
  void NegateOComp(int component);
  /// Turns the sign of a component of the last predictive block, from 1, but not of its Y scores. NCError without such
  /// a component, so always before the first NextComponent.
  void NegatePredictiveComp(int component);

  // The last block; not before the first NextComponent.
  const NCDataMatrix<float>* GetPprim() const { return &pMatrices_.back(); }
  const NCDataMatrix<float>* GetCprim() const { return &cMatrices_.back(); }
  const NCDataMatrix<float>* GetWprim() const { return &wMatrices_.back(); }
  const NCDataMatrix<float>* GetTprim() const { return &tprim_; }
  const NCDataMatrix<float>* GetUprim() const { return &uprim_; }
  int SizeComponents() const { return tprim_.SizeRows(); }

  // All blocks; element o is the one after o orthogonal components.
  const std::vector<NCDataMatrix<float>>* GetWMatrices() const { return &wMatrices_; }
  const std::vector<NCDataMatrix<float>>* GetPMatrices() const { return &pMatrices_; }
  const std::vector<NCDataMatrix<float>>* GetCMatrices() const { return &cMatrices_; }

  // The orthogonal components.
  const NCDataMatrix<float>* GetTOprim() const { return &toprim_; }
  const NCDataMatrix<float>* GetPOprim() const { return &poprim_; }
  const NCDataMatrix<float>* GetCOprim() const { return &coprim_; }
  const NCDataMatrix<float>* GetWOprim() const { return &woprim_; }  ///< of unit length
  const NCDataMatrix<float>* GetUOprim() const { return &uoprim_; }
  int SizeOrthogonalComponents() const { return toprim_.SizeRows(); }

  NCDataMatrix<float> GetXResiduals() const;  ///< X less its orthogonal and predictive part
  NCDataMatrix<float> GetYResiduals() const;  ///< the same of Y

 private:
  using Cells = std::set<std::pair<int, int>>;  ///< (row, column)

  struct Block {
    NCDataMatrix<float> W;
    NCDataVector<float> firstP;  ///< loadings of the first component, if they came along with its scores
  };

  void CatchUp();
  void CalcOPLS(NCProgress* progress, NCProgress* ofModels, const NCDataMatrix<float>& crossProduct);
  NCDataMatrix<float> CrossProduct(NCDataMatrix<float> X) const;
  NCDataMatrix<float> FilledYprim() const;
  NCDataMatrix<float> AppendOrthogonalComponent(NCProgress* ofModels);
  void CalcOrthogonal(NCProgress* ofModels, NCDataVector<float>* w, NCDataVector<float>* t,
                      NCDataVector<float>* p) const;
  NCDataVector<float> DirectionOf(const NCDataMatrix<float>& rows, NCProgress* ofModels) const;
  Block SettleWeights(NCProgress* progress, NCProgress* ofModels, NCDataMatrix<float> crossProduct);
  NCDataMatrix<float> FilterAlong(const NCDataMatrix<float>& W);
  void TakeScoresAlong(Block* block);
  NCDataMatrix<float> WeightsOf(const NCDataMatrix<float>& crossProduct, const NCDataMatrix<float>& former,
                                NCProgress* ofModels);
  NCDataMatrix<float> ComponentsOf(const NCDataMatrix<float>& crossProduct, int size, NCProgress* ofModels) const;
  int SizeOfBlock(const NCDataMatrix<float>& former) const;
  void AppendBlock(const Block& block);

  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> wMatrices_;
  kalmia::DeepCopied<NCDataMatrix<float>> tprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> uprim_;
  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> pMatrices_;
  kalmia::DeepCopied<std::vector<NCDataMatrix<float>>> cMatrices_;
  kalmia::DeepCopied<NCDataMatrix<float>> tFilter_;  ///< scores of X on the last W, each W taken out before the next
  kalmia::DeepCopied<NCDataMatrix<float>> toprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> poprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> coprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> woprim_;
  kalmia::DeepCopied<NCDataMatrix<float>> uoprim_;
  Cells missingX_;
  Cells missingY_;
  int maxIterations_;
  int passes_ = 0;
  int predictiveComponents_;

  // Last, so that the tables are the first to be destroyed. While results lie behind a table on the heap, its rows join
  // to one free block; as the last ones to go they would be given back to the system few by few, which took longer than
  // a component.
  kalmia::DeepCopied<NCDataMatrix<float>> x_;  ///< without the orthogonal components
  kalmia::DeepCopied<NCDataMatrix<float>> y_;  ///< likewise
};
