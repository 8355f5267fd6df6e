#include "kalmia/o2pls/NCO2PLS.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "kalmia/o2pls/internal/FirstLoading.h"
#include "kalmia/o2pls/internal/FlipRows.h"
#include "kalmia/opls/internal/DeepCopy.h"
#include "kalmia/pcapls/NCPLS.h"
#include "kalmia/pcapls/internal/ComponentRows.h"

namespace {

using kalmia::DeepCopy;

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

/// A component of one block that explains more than this share of the other one is related to it.
constexpr double kRelatedShare = 0.05;

constexpr int kXSide = 1;
constexpr int kYSide = 2;

Matrix WithRowBehind(const Matrix& rows, const Vector& row) { return kalmia::WithRow(rows, rows.SizeRows() + 1, row); }

/// All or, where memory lacks for the empty ones, none of them.
template <std::size_t count>
void ClearAll(const std::array<Matrix*, count>& matrices) {
  std::array<Matrix, count> empty;
  for (std::size_t i = 0; i < count; ++i) matrices[i]->swap(empty[i]);
}

/// The block without the components whose scores and loadings these are.
Matrix Without(const Matrix& block, const Matrix& scores, const Matrix& loadings) {
  Matrix rest = block;
  for (int i = 1; i <= scores.SizeRows(); ++i) rest.AddVprimV(scores[i], loadings[i], -1.0F);
  return rest;
}

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

NCO2PLS::NCO2PLS() = default;

NCO2PLS::NCO2PLS(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, bool checkDimensions, int maxIterations)
    : x_(X),
      y_(Y),
      maxIterations_(maxIterations),
      ssX_(static_cast<float>(X.GetSS())),
      ssY_(static_cast<float>(Y.GetSS())),
      checkDimensions_(checkDimensions) {
  if (X.SizeRows() != Y.SizeRows())
    throw NCError("Internal error in NCO2PLS\nX and Y matrices have different number of rows.");
  if (X.GetNumMisVal() > 0 || Y.GetNumMisVal() > 0)
    throw NCError("Internal error in NCO2PLS\nThe X and Y matrices can not contain missing values.");
}

NCO2PLS::NCO2PLS(const NCO2PLS& other) : NCO2PLS(DeepCopy(other.x_), DeepCopy(other.y_), other) {}

NCO2PLS::NCO2PLS(NCO2PLS&& other) : NCO2PLS() { swap(other); }

NCO2PLS::NCO2PLS(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y, const NCO2PLS& components)
    : x_(X),
      y_(Y),
      maxIterations_(components.maxIterations_),
      t_(DeepCopy(components.t_)),
      u_(DeepCopy(components.u_)),
      p_(DeepCopy(components.p_)),
      w_(DeepCopy(components.w_)),
      c_(DeepCopy(components.c_)),
      q_(DeepCopy(components.q_)),
      to_(DeepCopy(components.to_)),
      wo_(DeepCopy(components.wo_)),
      po_(DeepCopy(components.po_)),
      uo_(DeepCopy(components.uo_)),
      co_(DeepCopy(components.co_)),
      qo_(DeepCopy(components.qo_)),
      r_(DeepCopy(components.r_)),
      s_(DeepCopy(components.s_)),
      lambda_(DeepCopy(components.lambda_)),
      xLambda_(DeepCopy(components.xLambda_)),
      xResiduals_(DeepCopy(components.xResiduals_)),
      yResiduals_(DeepCopy(components.yResiduals_)),
      ssX_(components.ssX_),
      ssY_(components.ssY_),
      checkDimensions_(components.checkDimensions_) {}

NCO2PLS& NCO2PLS::operator=(const NCO2PLS& other) {
  NCO2PLS(other).swap(*this);
  return *this;
}

void NCO2PLS::swap(NCO2PLS& other) {
  x_.swap(other.x_);
  y_.swap(other.y_);
  std::swap(maxIterations_, other.maxIterations_);
  const auto mine = Results();
  const auto others = other.Results();
  for (std::size_t i = 0; i < mine.size(); ++i) mine[i]->swap(*others[i]);
  std::swap(ssX_, other.ssX_);
  std::swap(ssY_, other.ssY_);
  std::swap(checkDimensions_, other.checkDimensions_);
}

std::array<NCDataMatrix<float>*, 18> NCO2PLS::Results() {
  return {&t_,  &u_,  &p_,  &w_, &c_, &q_,      &to_,      &wo_,         &po_,
          &uo_, &co_, &qo_, &r_, &s_, &lambda_, &xLambda_, &xResiduals_, &yResiduals_};
}

void NCO2PLS::Fit(int predictive, int xOrthogonal, int yOrthogonal, NCProgress* progress) {
  if (t_.SizeRows() > 0 || to_.SizeRows() > 0 || uo_.SizeRows() > 0) UnFit();
  for (int i = 0; i < xOrthogonal; ++i) NextOrthogonalComponent(/*xSide=*/true, predictive, progress);
  for (int i = 0; i < yOrthogonal; ++i) NextOrthogonalComponent(/*xSide=*/false, predictive, progress);
  CalculatePredictiveComps(predictive, progress);
  Finalise();
  EndFit();
}

void NCO2PLS::ThrowIfNoDimensionIsLeft(bool xSide, int predictive) const {
  const int made = xSide ? to_.SizeRows() : uo_.SizeRows();
  const int columns = xSide ? x_.SizeColumns() : y_.SizeColumns();
  const int limit = std::min(columns + 1, x_.SizeRows());
  if (std::int64_t{made} + predictive >= limit)
    throw NCO2PLSDimensionalityException(xSide ? kXSide : kYSide, predictive, to_.SizeRows(), uo_.SizeRows());
}

void NCO2PLS::RequireColumns(const NCDataMatrix<float>& X, const NCDataMatrix<float>& Y) {
  if (X.SizeColumns() == 0) throw NCError("The X block has no columns.");
  if (Y.SizeColumns() == 0) throw NCError("The Y block has no columns.");
}

void NCO2PLS::NextOrthogonalComponent(bool xSide, int predictive, NCProgress* progress) {
  EndFit();
  RequireColumns(x_, y_);
  if (checkDimensions_) ThrowIfNoDimensionIsLeft(xSide, predictive);
  if (predictive < 1)
    throw NCError("Internal error in NCO2PLS\nAn orthogonal component needs a predictive component.");
  if (xSide) {
    CalculateOrthogonalComp(x_, y_, to_, wo_, po_, predictive, maxIterations_, progress);
  } else {
    CalculateOrthogonalComp(y_, x_, uo_, co_, qo_, predictive, maxIterations_, progress);
  }
}

void NCO2PLS::CalculateOrthogonalComp(const NCDataMatrix<float>& own, const NCDataMatrix<float>& other,
                                      NCDataMatrix<float>& scores, NCDataMatrix<float>& weights,
                                      NCDataMatrix<float>& loadings, int predictive, int maxIterations,
                                      NCProgress* progress) {
  const Matrix ownWithoutOrthogonal = Without(own, scores, loadings);
  Matrix rest = ownWithoutOrthogonal;
  Matrix predictiveScores = kalmia::EmptyMatrix(own.SizeRows(), predictive);
  for (int i = 0; i < predictive; ++i) {
    const Matrix product = other.MatrixMultiply(rest, /*transposeThis=*/true, /*transposeOther=*/false);
    const Vector w = kalmia::FirstLoading(product, maxIterations, progress);
    const Vector t = rest.SpecialNipalsRegressRowsFix(w, nullptr, 0);
    rest.AddVprimV(t, w, -1.0F);
    predictiveScores.push_back(t);
  }
  const Vector wo = kalmia::FirstLoading(predictiveScores * rest, maxIterations, progress);
  const Vector to = rest.SpecialNipalsRegressRowsFix(wo, nullptr, 0);
  const Vector po = ownWithoutOrthogonal.SpecialNipalsRegressColumnsFix(to);

  Matrix newScores = WithRowBehind(scores, to);
  Matrix newLoadings = WithRowBehind(loadings, po);
  Matrix newWeights = WithRowBehind(weights, wo);
  scores.swap(newScores);
  loadings.swap(newLoadings);
  weights.swap(newWeights);
}

void NCO2PLS::InitPredCompCalculation() {
  Matrix x = Without(x_, to_, po_);
  Matrix y = Without(y_, uo_, qo_);
  ClearAll(std::array<Matrix*, 8>{&w_, &t_, &u_, &c_, &p_, &q_, &lambda_, &xLambda_});
  xResiduals_.swap(x);
  yResiduals_.swap(y);
}

void NCO2PLS::NextPredictiveComp(NCProgress* progress) {
  if (xResiduals_.SizeRows() == 0)
    throw NCError("Internal error in NCO2PLS::NextPredictiveComp.\nFunction call out of sequence.");
  RequireColumns(xResiduals_, yResiduals_);
  const Matrix product = yResiduals_.MatrixMultiply(xResiduals_, /*transposeThis=*/true, /*transposeOther=*/false);
  const Vector w = kalmia::FirstLoading(product, maxIterations_, progress);
  const Vector t = xResiduals_.SpecialNipalsRegressRowsFix(w, nullptr, 0);
  const Vector p = xResiduals_.SpecialNipalsRegressColumnsFix(t);
  Vector c = yResiduals_.SpecialNipalsRegressColumnsFix(t);
  c.Normalise();
  const Vector u = yResiduals_.SpecialNipalsRegressRowsFix(c, nullptr, 0);
  const Vector q = yResiduals_.SpecialNipalsRegressColumnsFix(u);

  std::array<std::pair<Matrix*, Matrix>, 6> longer = {{{&w_, WithRowBehind(w_, w)},
                                                       {&t_, WithRowBehind(t_, t)},
                                                       {&p_, WithRowBehind(p_, p)},
                                                       {&c_, WithRowBehind(c_, c)},
                                                       {&u_, WithRowBehind(u_, u)},
                                                       {&q_, WithRowBehind(q_, q)}}};
  for (auto& [rows, withNewest] : longer) rows->swap(withNewest);
}

void NCO2PLS::SubtractLastPredictiveComp() {
  if (t_.SizeRows() == 0) throw NCError("NCO2PLS::SubtractLastPredictiveComp: there is no component.");
  Matrix y = yResiduals_;
  y.AddVprimV(u_.back(), q_.back(), -1.0F);
  xResiduals_.AddVprimV(t_.back(), p_.back(), -1.0F);
  yResiduals_.swap(y);
}

void NCO2PLS::CalculatePredictiveComps(int predictive, NCProgress* progress) {
  InitPredCompCalculation();
  for (int i = 1; i <= predictive; ++i) {
    NextPredictiveComp(progress);
    if (i < predictive) SubtractLastPredictiveComp();
  }
}

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
    type = kYSide;
    yLimit = i - 1;
    break;
  }
  if (to_.SizeRows() > 0) s_.Clear();
  Relatedness toY(y_, ssY_);
  for (int i = 1; i <= to_.SizeRows(); ++i) {
    toY.Append(to_[i], &s_);
    if (!checkDimensions_ || !toY.AddIsTooMuch(s_[i], to_[i], observations)) continue;
    type |= kXSide;
    xLimit = i - 1;
    break;
  }
  if (type != 0) throw NCO2PLSDimensionalityException(type, t_.SizeRows(), xLimit, yLimit);
}

void NCO2PLS::UnFit() { ClearAll(Results()); }

void NCO2PLS::EndFit() { ClearAll(std::array<Matrix*, 2>{&xResiduals_, &yResiduals_}); }

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

NCDataMatrix<float> NCO2PLS::GetT() const { return DeepCopy(t_); }
NCDataMatrix<float> NCO2PLS::GetU() const { return DeepCopy(u_); }
NCDataMatrix<float> NCO2PLS::GetP() const { return DeepCopy(p_); }
NCDataMatrix<float> NCO2PLS::GetW() const { return DeepCopy(w_); }
NCDataMatrix<float> NCO2PLS::GetC() const { return DeepCopy(c_); }
NCDataMatrix<float> NCO2PLS::GetQ() const { return DeepCopy(q_); }
NCDataMatrix<float> NCO2PLS::GetTo() const { return DeepCopy(to_); }
NCDataMatrix<float> NCO2PLS::GetUo() const { return DeepCopy(uo_); }
NCDataMatrix<float> NCO2PLS::GetPo() const { return DeepCopy(po_); }
NCDataMatrix<float> NCO2PLS::GetWo() const { return DeepCopy(wo_); }
NCDataMatrix<float> NCO2PLS::GetCo() const { return DeepCopy(co_); }
NCDataMatrix<float> NCO2PLS::GetQo() const { return DeepCopy(qo_); }
NCDataMatrix<float> NCO2PLS::GetLambda() const { return DeepCopy(lambda_); }
NCDataMatrix<float> NCO2PLS::GetXLambda() const { return DeepCopy(xLambda_); }
NCDataMatrix<float> NCO2PLS::GetR() const { return DeepCopy(r_); }
NCDataMatrix<float> NCO2PLS::GetS() const { return DeepCopy(s_); }

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
