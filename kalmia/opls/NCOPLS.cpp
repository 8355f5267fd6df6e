#include "kalmia/opls/NCOPLS.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

#include "kalmia/kernels/passes/FilteredProducts.h"
#include "kalmia/kernels/passes/SequentialScores.h"
#include "kalmia/opls/internal/OPLSBlocks.h"
#include "kalmia/pcapls/NCPCA.h"
#include "kalmia/pcapls/internal/ComponentRows.h"
#include "kalmia/support/NCError.h"
#include "kalmia/support/internal/OptionalProgress.h"

namespace {

constexpr double kSmallestRelation = 1e-6;  ///< over sqrt(M), |c| |t| / |Y| of a component that has to do with Y

std::set<std::pair<int, int>> FindMissingValue(const NCDataMatrix<float>& matrix) {
  std::set<std::pair<int, int>> cells;
  if (matrix.GetNumMisVal() == 0) return cells;
  for (int i = 1; i <= matrix.SizeRows(); ++i)
    for (int j = 1; j <= matrix.SizeColumns(); ++j)
      if (matrix[i][j] == kalmia::kMissing) cells.emplace_hint(cells.end(), i, j);
  return cells;
}

void FillMatrix(NCDataMatrix<float>* matrix, const std::set<std::pair<int, int>>& cells, float value) {
  for (const auto& [row, column] : cells) (*matrix)(row, column, value);
}

/// Whether a component with the Y weights c and the scores t has next to nothing to do with Y.
bool IsUnrelated(const NCDataVector<float>& c, const NCDataVector<float>& t, const NCDataMatrix<float>& Y) {
  const double relation = std::sqrt(static_cast<double>(c.GetSS())) * std::sqrt(static_cast<double>(t.GetSS())) /
                          std::sqrt(static_cast<double>(Y.GetSS()));
  if (std::isnan(relation) || std::isinf(relation)) return true;  // sums of squares that are missing or too large
  return kSmallestRelation / std::sqrt(static_cast<double>(Y.SizeColumns())) > relation;
}

/// `scores` has a row for each component.
void RequireComponent(int component, const NCDataMatrix<float>& scores) {
  if (component < 1 || component > scores.SizeRows()) throw NCError("OPLS: the model has no such component.");
}

void FlipRow(int row, std::initializer_list<NCDataMatrix<float>*> matrices) {
  for (NCDataMatrix<float>* matrix : matrices) matrix->MultiplyRow(row, -1.0F);
}

/// The size of the block that was asked for, as Y allows it; 0 or less stays.
int CutToY(int predictiveComponents, const NCDataMatrix<float>& Y) {
  return predictiveComponents > 0 ? std::min({predictiveComponents, Y.SizeRows(), Y.SizeColumns()})
                                  : predictiveComponents;
}

}  // namespace

NCOPLS::NCOPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int predictiveComponents, int maxIterations)
    : missingX_(FindMissingValue(*X)),
      missingY_(FindMissingValue(*Y)),
      maxIterations_(maxIterations),
      predictiveComponents_(CutToY(predictiveComponents, *Y)),
      x_(*X),
      y_(*Y) {
  if (X->SizeRows() != Y->SizeRows()) throw NCError("OPLS: X and Y have not the same observations.");
}

NCOPLS::NCOPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const std::vector<NCDataMatrix<float>>* W,
               const std::vector<NCDataMatrix<float>>* P, const std::vector<NCDataMatrix<float>>* C,
               const NCDataMatrix<float>* WO, const NCDataMatrix<float>* PO, const NCDataMatrix<float>* CO,
               int predictiveComponents, int maxIterations)
    : NCOPLS(X, Y, W->empty() ? predictiveComponents : W->front().SizeRows(), maxIterations) {
  kalmia::RequireWholeBlocks({W, P, C, WO, PO, CO}, X->SizeColumns(), Y->SizeColumns());
  wMatrices_ = kalmia::DeepCopy(*W);
  pMatrices_ = kalmia::DeepCopy(*P);
  cMatrices_ = kalmia::DeepCopy(*C);
  woprim_ = kalmia::DeepCopy(*WO);
  poprim_ = kalmia::DeepCopy(*PO);
  coprim_ = kalmia::DeepCopy(*CO);
  CatchUp();
}

NCOPLS::NCOPLS(const NCOPLS& other) = default;

NCOPLS& NCOPLS::operator=(const NCOPLS& other) {
  if (this == &other) return *this;
  NCOPLS copy(other);
  for (const auto member : {&NCOPLS::x_, &NCOPLS::y_, &NCOPLS::tprim_, &NCOPLS::uprim_, &NCOPLS::tFilter_,
                            &NCOPLS::toprim_, &NCOPLS::poprim_, &NCOPLS::coprim_, &NCOPLS::woprim_, &NCOPLS::uoprim_})
    (this->*member).swap(copy.*member);
  wMatrices_.swap(copy.wMatrices_);
  pMatrices_.swap(copy.pMatrices_);
  cMatrices_.swap(copy.cMatrices_);
  missingX_.swap(copy.missingX_);
  missingY_.swap(copy.missingY_);
  maxIterations_ = copy.maxIterations_;
  passes_ = copy.passes_;
  predictiveComponents_ = copy.predictiveComponents_;
  return *this;
}

NCOPLS::~NCOPLS() = default;

void NCOPLS::NextComponent(NCProgress* progress, NCProgress* ofModels) {
  if (tprim_.SizeRows() == 0) return CalcOPLS(progress, ofModels, CrossProduct(x_));
  const kalmia::StoppableProgress bar(progress, "OPLS component aborted.", NCError::Level2);
  bar.SetRange(0.0F, 10.0F);
  bar.ThrowIfStopped();
  const NCDataMatrix<float> crossProduct = AppendOrthogonalComponent(ofModels);
  bar.PushSubRange(1.0F, 10.0F);
  CalcOPLS(progress, ofModels, crossProduct);
  bar.PopSubRange();
}

/// Y'X of Y as it is and of an X like x_, holes being 0.
NCDataMatrix<float> NCOPLS::CrossProduct(NCDataMatrix<float> X) const {
  FillMatrix(&X, missingX_, 0.0F);
  return kalmia::MultiplyByFewRows(FilledYprim(), X);
}

/// Y as it is, its columns as rows, holes being 0.
NCDataMatrix<float> NCOPLS::FilledYprim() const {
  NCDataMatrix<float> filled = y_;
  FillMatrix(&filled, missingY_, 0.0F);
  filled.Transpose();
  return filled;
}

/// Returns the cross-product Y'X of what the component leaves.
NCDataMatrix<float> NCOPLS::AppendOrthogonalComponent(NCProgress* ofModels) {
  NCDataVector<float> w, t, p;
  CalcOrthogonal(ofModels, &w, &t, &p);
  const NCDataVector<float> c = y_.SpecialNipalsRegressColumnsFix(t);
  NCDataVector<float> u = y_.SpecialNipalsRegressRowsFix(c, nullptr, 0);
  if (IsUnrelated(c, t, y_)) u.SetAllValues(kalmia::kMissing);
  y_.AddVprimV(t, c, -1.0F);
  const int row = toprim_.SizeRows() + 1;
  toprim_.InsertRow(row, t);
  poprim_.InsertRow(row, p);
  coprim_.InsertRow(row, c);
  woprim_.InsertRow(row, w);
  uoprim_.InsertRow(row, u);
  if (missingX_.empty()) return kalmia::DeflateAndMultiplyByFewRows(FilledYprim(), &x_, t, p);
  x_.AddVprimV(t, p, -1.0F);
  return CrossProduct(x_);
}

/// Weights, scores and loadings of the next orthogonal component. The weights are the direction of what is left of X
/// along the predictive scores, holes being 0.
void NCOPLS::CalcOrthogonal(NCProgress* ofModels, NCDataVector<float>* w, NCDataVector<float>* t,
                            NCDataVector<float>* p) const {
  const NCDataMatrix<float>& W = wMatrices_.back();
  if (missingX_.empty()) {
    *w = DirectionOf(kalmia::MultiplyFilteredByFew(tFilter_, x_, tFilter_, W), ofModels);
    kalmia::CalcFilteredScoresAndLoadings(x_, tFilter_, W, *w, t, p);
    return;
  }
  NCDataMatrix<float> filtered = kalmia::Filtered(x_, tFilter_, W);
  FillMatrix(&filtered, missingX_, 0.0F);
  *w = DirectionOf(kalmia::MultiplyByFewRows(tFilter_, filtered), ofModels);
  FillMatrix(&filtered, missingX_, kalmia::kMissing);
  *t = filtered.SpecialNipalsRegressRowsFix(*w, nullptr, 0);
  *p = x_.SpecialNipalsRegressColumnsFix(*t);
}

/// The one row, or the first principal component of several, of unit length.
NCDataVector<float> NCOPLS::DirectionOf(const NCDataMatrix<float>& rows, NCProgress* ofModels) const {
  if (rows.SizeRows() < 2) {
    NCDataVector<float> w = rows[1];
    w.Normalise();
    return w;
  }
  NCPCA components(&rows, maxIterations_);
  components.NextComponent(ofModels, nullptr, 0, nullptr);
  return (*components.GetPprim())[1];
}

void NCOPLS::CatchUp() {
  const int orthogonal = woprim_.SizeRows();
  for (int o = 1; o <= orthogonal; ++o) {
    const auto block = static_cast<std::size_t>(o - 1);
    const NCDataMatrix<float>& W = wMatrices_[block];
    toprim_.InsertRow(o, kalmia::SequentialScores(x_, kalmia::WithRow(W, W.SizeRows() + 1, woprim_[o]), W).back());
    uoprim_.InsertRow(o, y_.SpecialNipalsRegressRowsFix(coprim_[o], nullptr, 0));
    x_.AddVprimV(toprim_[o], poprim_[o], -1.0F);
    y_.AddVprimV(toprim_[o], coprim_[o], -1.0F);
  }
  if (wMatrices_.empty()) return;
  const auto block = static_cast<std::size_t>(orthogonal);
  const NCDataMatrix<float>& W = wMatrices_[block];
  tFilter_ = kalmia::SequentialScores(x_, W, W);
  tprim_ = W.SizeRows() == 1 ? tFilter_ : kalmia::SequentialScores(x_, W, pMatrices_[block]);
}

void NCOPLS::NegateOComp(int component) {
  RequireComponent(component, toprim_);
  FlipRow(component, {&woprim_, &poprim_, &coprim_, &toprim_});
}

void NCOPLS::NegatePredictiveComp(int component) {
  RequireComponent(component, tprim_);
  FlipRow(component, {&wMatrices_.back(), &pMatrices_.back(), &cMatrices_.back(), &tprim_, &tFilter_});
}

NCDataMatrix<float> NCOPLS::GetXResiduals() const {
  return tprim_.SizeRows() == 0 ? x_.AsValue() : kalmia::Filtered(x_, tprim_, pMatrices_.back());
}

NCDataMatrix<float> NCOPLS::GetYResiduals() const {
  return tprim_.SizeRows() == 0 ? y_.AsValue() : kalmia::Filtered(y_, tprim_, cMatrices_.back());
}
