#pragma once

#include <array>
#include <vector>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia {
class OrthogonalSearch;
}

/// A block has no more dimensions that are unrelated to the other block.
class KALMIA_EXPORT NCO2PLSDimensionalityException : public NCError {
 public:
  /// `type` is a set of bits: 1 for the X side, 2 for the Y side. The limits are the largest numbers of orthogonal
  /// components of each side; the text names those of the sides in `type`.
  NCO2PLSDimensionalityException(int type, int predictiveComponents, int xLimit, int yLimit);
  NCO2PLSDimensionalityException(const NCO2PLSDimensionalityException&) = default;
  NCO2PLSDimensionalityException& operator=(const NCO2PLSDimensionalityException&) = default;
  ~NCO2PLSDimensionalityException() override;

  NCError* Clone() const override;

  int Type;
  int PredictiveComponents;
  int XLimit;
  int YLimit;
};

/// O2PLS: splits each of two blocks of the same observations into variation shared with the other block (predictive
/// components), variation of its own (orthogonal components) and a residual:
///   X = T'P + To'Po + E,  Y = U'Q + Uo'Qo + F,  with the inner relations U' ~ T' Lambda and T' ~ U' XLambda.
/// "X side" orthogonal components lie in X and are unrelated to Y; those of the "Y side" lie in Y.
///
/// Symbols, for N observations, K variables in X and M in Y. Every model matrix holds one component per row: scores T,
/// U, To, Uo (N), weights W, Wo (K) and C, Co (M) of unit length, loadings P, Po (K) and Q, Qo (M). R (K) is the
/// regression of X on the rows of Uo, S (M) that of Y on the rows of To.
/// Source: Trygg & Wold (2003), J. Chemom. 17, 53-64; Trygg (2002), J. Chemom. 16, 283-293.
///
/// `Fit` does everything. To do it in steps, call in this order: NextOrthogonalComponent for each orthogonal component
/// (the order of the sides does not matter); InitPredCompCalculation; NextPredictiveComp for each predictive component,
/// with SubtractLastPredictiveComp between two of them; Finalise; EndFit. Finalise may also be called between
/// predictive components. NextOrthogonalComponent may be called on a finished model; CalculatePredictiveComps and
/// Finalise must follow.
///
/// The blocks must be scaled and without holes. The bar `progress` shows the principal component of each cross product;
/// if it is null, each opens its own bar (NCProgress::SetSinkFactory). A stop request throws NCError.
/// A model belongs to one thread at a time; copies share nothing.
class KALMIA_EXPORT NCO2PLS {
 public:
  NCO2PLS();  ///< empty blocks
  /// X N x K, Y N x M, shared until they are written elsewhere. `checkDimensions` turns on the limits of
  /// NextOrthogonalComponent and Finalise. `maxIterations` limits the rounds of each principal component.
  /// Throws NCError if the numbers of rows differ or a cell is missing.
  NCO2PLS(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, bool checkDimensions, int maxIterations);
  NCO2PLS(const NCO2PLS& other);
  NCO2PLS(NCO2PLS&& other);  ///< leaves an empty model
  NCO2PLS& operator=(const NCO2PLS& other);
  void swap(NCO2PLS& other);

  /// Computes the whole model, replacing an earlier one. A number below 0 counts as 0. A block without columns can have
  /// no component: NCError names it.
  /// Throws what the steps throw. The partial model may then only be dropped (UnFit) or fitted again. If Finalise
  /// threw, the working blocks stay too.
  void Fit(int predictive, int xOrthogonal, int yOrthogonal, NCProgress* progress = nullptr);

  /// One more orthogonal component of a side, for a model of `predictive` predictive components. Takes these directions
  /// out of the side's block (which is already without its orthogonal components) by their weights; the new weight is
  /// the direction of the rest that covaries most with their scores. Clears the working blocks, even if it fails; a
  /// failure changes nothing else. If exactly nothing is left beside one predictive component, the weight is zero and
  /// the scores are missing.
  /// Throws: NCO2PLSDimensionalityException, if dimensions are checked and a + predictive >= min(K + 1, N) (Y side:
  /// M + 1), for a components of the side so far; NCError if a block has no columns, if predictive < 1, and as NCPCA
  /// does.
  void NextOrthogonalComponent(bool xSide, int predictive, NCProgress* progress = nullptr);

  /// Starts the predictive components anew: the working blocks are X and Y without their orthogonal components.
  void InitPredCompCalculation();

  /// Appends one predictive component of the working blocks, which it does not change: w, the first loading of Y'X;
  /// t = Xw; p = X't / t't; c, along Y't, of unit length; u = Yc; q = Y'u / u'u.
  /// Throws: NCError without working blocks or columns, and as NCPCA does. The model is then unchanged.
  void NextPredictiveComp(NCProgress* progress = nullptr);

  /// Takes the newest component out of the working blocks: X -= t p', Y -= u q'. Throws NCError
  /// without one.
  void SubtractLastPredictiveComp();

  /// InitPredCompCalculation, then all of them.
  void CalculatePredictiveComps(int predictive, NCProgress* progress = nullptr);

  /// Computes the inner relations Lambda and XLambda, R and S.
  /// If dimensions are checked, throws NCO2PLSDimensionalityException if orthogonal components are related to the other
  /// block: if the first i rows of Uo explain more than 5 % of X (not counting the last observation), or the first i of
  /// To more than 5 % of Y. It checks both sides first. Results stay; R or S then ends with row i.
  void Finalise();

  void UnFit();   ///< drops all components; the blocks stay
  void EndFit();  ///< frees the working blocks

  // Signs. Flag i (from 1; element i - 1) turns row i of these matrices. Surplus flags and rows are ignored.
  /// T, P, W by xFlips, U, C, Q by yFlips. If anything was turned, Lambda and XLambda are computed again.
  void FlipPredictiveModel(const std::vector<bool>& xFlips, const std::vector<bool>& yFlips);
  void FlipXSideModel(const std::vector<bool>& flips);  ///< To, Wo, Po, S
  void FlipYSideModel(const std::vector<bool>& flips);  ///< Uo, Co, Qo, R

  // Copies that share nothing with the model.
  NCDataMatrix<float> GetT() const;
  NCDataMatrix<float> GetU() const;
  NCDataMatrix<float> GetP() const;
  NCDataMatrix<float> GetW() const;
  NCDataMatrix<float> GetC() const;
  NCDataMatrix<float> GetQ() const;
  NCDataMatrix<float> GetTo() const;
  NCDataMatrix<float> GetUo() const;
  NCDataMatrix<float> GetPo() const;
  NCDataMatrix<float> GetWo() const;
  NCDataMatrix<float> GetCo() const;
  NCDataMatrix<float> GetQo() const;
  NCDataMatrix<float> GetLambda() const;   ///< A x A; row a belongs to t_a
  NCDataMatrix<float> GetXLambda() const;  ///< A x A; row a belongs to u_a
  NCDataMatrix<float> GetR() const;
  NCDataMatrix<float> GetS() const;
  const NCDataMatrix<float>& GetX() const { return x_; }
  const NCDataMatrix<float>& GetY() const { return y_; }
  int SizePredComps() const { return t_.SizeRows(); }
  int SizeXSideOrthoComps() const { return to_.SizeRows(); }
  int SizeYSideOrthoComps() const { return uo_.SizeRows(); }
  int SizeXColumns() const { return x_.SizeColumns(); }
  int SizeYColumns() const { return y_.SizeColumns(); }

  /// B, K x M, so that a row of X times B predicts the row of Y:
  ///   B = Ws' Lambda Q + Wos' S - Wos' Po Ws' Lambda Q,  with W* of the predictive and the orthogonal weights.
  /// Without orthogonal components the first term alone. Of C, Q, Co, Qo, XLambda, R and P it gives the coefficients
  /// that predict X from Y. Shape: A predictive components at least 1, not checked.
  static NCDataMatrix<float> GetCoefficients(const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
                                             const NCDataMatrix<float>& Wo, const NCDataMatrix<float>& Po,
                                             const NCDataMatrix<float>& Lambda, const NCDataMatrix<float>& S,
                                             const NCDataMatrix<float>& Q);

 private:
  friend class O2PLSCrossValidation;      // for RequireColumns
  friend class kalmia::OrthogonalSearch;  // for SharingBlocks

  using Result = kalmia::DeepCopied<NCDataMatrix<float>>;
  static const std::array<Result NCO2PLS::*, 18> kResults;  ///< all matrices but X and Y

  /// A copy that shares the two blocks, which never change, with this model: for use in one thread.
  NCO2PLS SharingBlocks() const;
  /// Throws the NCError of a block without columns: its directions would have no cells.
  static void RequireColumns(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y);
  static void CalculateOrthogonalComp(const NCDataMatrix<float>& own, const NCDataMatrix<float>& other,
                                      NCDataMatrix<float>& scores, NCDataMatrix<float>& weights,
                                      NCDataMatrix<float>& loadings, int predictive, int maxIterations,
                                      NCProgress* progress);
  void ThrowIfNoDimensionIsLeft(bool xSide, int predictive) const;
  void CalculateInnerRelations();

  Result x_;
  Result y_;
  int maxIterations_ = 0;
  Result t_;
  Result u_;
  Result p_;
  Result w_;
  Result c_;
  Result q_;
  Result to_;
  Result wo_;
  Result po_;
  Result uo_;
  Result co_;
  Result qo_;
  Result r_;
  Result s_;
  Result lambda_;
  Result xLambda_;
  Result xResiduals_;
  Result yResiduals_;
  float ssX_ = 0.0F;
  float ssY_ = 0.0F;
  bool checkDimensions_ = false;
};
