#include <cstddef>
#include <utility>

#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/internal/FlipRows.h"
#include "kalmia/o2pls/internal/O2PLSSides.h"
#include "kalmia/pcapls/NCPLS.h"

// What the components of the two blocks have to do with each other: the inner relations, how much orthogonal components
// explain of the other block, the coefficients, and signs, which change the inner relations.

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

/// A component of one block that explains more than this share of the other one is related to it.
constexpr double kRelatedShare = 0.05;

/// The regressions between the scores of the two blocks, of one component at least.
struct InnerRelations {
  InnerRelations(const Matrix& t, const Matrix& u)
      : lambda(t.GetRegressionCoefficients(u)), xLambda(u.GetRegressionCoefficients(t)) {}

  Matrix lambda;
  Matrix xLambda;
};

/// Regresses a block on orthogonal scores of the other one, row by row, and adds up what they explain of it.
class Relatedness {
 public:
  Relatedness(const Matrix& block, float ss) : block_(block), ss_(ss) {}

  /// Appends the loadings of `scores` to `loadings`.
  void Append(const Vector& scores, Matrix* loadings) {
    loadings->push_back(block_.SpecialNipalsRegressColumnsFix(scores));
  }
  /// Adds what the newest of the loadings and the first `observations` of the scores explain, all of it in float;
  /// whether that makes too much.
  bool AddIsTooMuch(const Vector& loading, const Vector& scores, int observations) {
    for (const float variable : loading)
      for (int n = 1; n <= observations; ++n) {
        const float cell = variable * scores[n];
        const float square = cell * cell;
        sum_ += square;
      }
    const float share = sum_ / ss_;
    return static_cast<double>(share) > kRelatedShare;
  }

 private:
  const Matrix& block_;
  float ss_;
  float sum_ = 0.0F;  ///< of all components so far
};

}  // namespace

void NCO2PLS::CalculateInnerRelations() {
  if (t_.SizeRows() == 0) return;
  InnerRelations relations(t_, u_);
  lambda_.swap(relations.lambda);
  xLambda_.swap(relations.xLambda);
}

void NCO2PLS::Finalise() {
  CalculateInnerRelations();
  const int observations = x_.SizeRows();
  int type = 0, xLimit = to_.SizeRows(), yLimit = uo_.SizeRows();
  if (uo_.SizeRows() > 0) r_.Clear();
  Relatedness toX(x_, ssX_);
  for (int i = 1; i <= uo_.SizeRows(); ++i) {
    toX.Append(uo_[i], &r_);
    // The last observation does not count here; of the X side's scores below it does.
    if (!checkDimensions_ || !toX.AddIsTooMuch(r_[i], uo_[i], observations - 1)) continue;
    type = kalmia::kYSide;
    yLimit = i - 1;
    break;
  }
  if (to_.SizeRows() > 0) s_.Clear();
  Relatedness toY(y_, ssY_);
  for (int i = 1; i <= to_.SizeRows(); ++i) {
    toY.Append(to_[i], &s_);
    if (!checkDimensions_ || !toY.AddIsTooMuch(s_[i], to_[i], observations)) continue;
    type |= kalmia::kXSide;
    xLimit = i - 1;
    break;
  }
  if (type != 0) throw NCO2PLSDimensionalityException(type, t_.SizeRows(), xLimit, yLimit);
}

void NCO2PLS::FlipPredictiveModel(const std::vector<bool>& xFlips, const std::vector<bool>& yFlips) {
  Matrix t = t_, p = p_, w = w_, u = u_, c = c_, q = q_;
  const bool anyX = kalmia::FlipRows(xFlips, {&t, &p, &w});
  const bool anyY = kalmia::FlipRows(yFlips, {&u, &c, &q});
  if (!anyX && !anyY) return;
  InnerRelations relations(t, u);
  lambda_.swap(relations.lambda);
  xLambda_.swap(relations.xLambda);
  const std::pair<Matrix*, Matrix*> turned[] = {{&t_, &t}, {&p_, &p}, {&w_, &w}, {&u_, &u}, {&c_, &c}, {&q_, &q}};
  for (const auto& [rows, withSigns] : turned) rows->swap(*withSigns);
}

void NCO2PLS::FlipXSideModel(const std::vector<bool>& flips) { kalmia::FlipRows(flips, {&to_, &wo_, &po_, &s_}); }

void NCO2PLS::FlipYSideModel(const std::vector<bool>& flips) { kalmia::FlipRows(flips, {&uo_, &co_, &qo_, &r_}); }

NCDataMatrix<float> NCO2PLS::GetCoefficients(const NCDataMatrix<float>& W, const NCDataMatrix<float>& P,
                                             const NCDataMatrix<float>& Wo, const NCDataMatrix<float>& Po,
                                             const NCDataMatrix<float>& Lambda, const NCDataMatrix<float>& S,
                                             const NCDataMatrix<float>& Q) {
  const Matrix wStar = NCPLS::GetWStarPrim(W, P);
  Matrix coefficients = wStar.MatrixMultiply(Lambda, /*transposeThis=*/true, /*transposeOther=*/false) * Q;
  if (Wo.SizeRows() == 0) return coefficients;
  const Matrix orthogonalWStar = NCPLS::GetWStarPrim(Wo, Po);
  coefficients += orthogonalWStar.MatrixMultiply(S, /*transposeThis=*/true, /*transposeOther=*/false);
  const Matrix shared = Po.MatrixMultiply(wStar, /*transposeThis=*/false, /*transposeOther=*/true) * Lambda * Q;
  coefficients -= orthogonalWStar.MatrixMultiply(shared, /*transposeThis=*/true, /*transposeOther=*/false);
  return coefficients;
}
