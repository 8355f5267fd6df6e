#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "kalmia/o2pls/NCO2PLS.h"
#include "kalmia/o2pls/internal/ClearAll.h"
#include "kalmia/o2pls/internal/FirstLoading.h"
#include "kalmia/o2pls/internal/O2PLSSides.h"
#include "kalmia/pcapls/internal/ComponentRows.h"

// The components: orthogonal ones of each side, then the predictive ones.

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;

Matrix WithRowBehind(const Matrix& rows, const Vector& row) { return kalmia::WithRow(rows, rows.SizeRows() + 1, row); }

/// The block without the components whose scores and loadings these are.
Matrix Without(const Matrix& block, const Matrix& scores, const Matrix& loadings) {
  Matrix rest = block;
  for (int i = 1; i <= scores.SizeRows(); ++i) rest.AddVprimV(scores[i], loadings[i], -1.0F);
  return rest;
}

}  // namespace

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
    throw NCO2PLSDimensionalityException(xSide ? kalmia::kXSide : kalmia::kYSide, predictive, to_.SizeRows(), uo_.SizeRows());
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
  kalmia::ClearAll(std::array<Matrix*, 8>{&w_, &t_, &u_, &c_, &p_, &q_, &lambda_, &xLambda_});
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
