#include "kalmia/opls/NCOPLS.h"

#include <algorithm>
#include <cmath>

#include "kalmia/opls/DeepCopy.h"
#include "kalmia/opls/OPLSFilter.h"
#include "kalmia/opls/OPLSProgress.h"
#include "kalmia/pcapls/NCPCA.h"

namespace {

constexpr double kSettled = 0.01;            ///< of the first pass' cross-product: less is not worth another pass
constexpr double kSmallestShare = 0.01;      ///< of the first component's sum of squares: less is not in the block
constexpr double kSmallestRelation = 1e-6;   ///< over sqrt(M), |c| |t| / |Y| of a component that has to do with Y

NCDataMatrix<float> RowsUpTo(const NCDataMatrix<float>& matrix, int last) {
  NCDataMatrix<float> rows;
  for (int a = 1; a <= last; ++a) rows.InsertRow(a, matrix[a]);
  return rows;
}

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
  const int kind = std::fpclassify(relation);
  if (kind == FP_NAN || kind == FP_INFINITE || kind == FP_SUBNORMAL) return true;
  return kSmallestRelation / std::sqrt(static_cast<double>(Y.SizeColumns())) > relation;
}

/// The size of the block that was asked for, as Y allows it; 0 or less stays.
int CutToY(int predictiveComponents, const NCDataMatrix<float>& Y) {
  return predictiveComponents > 0 ? std::min({predictiveComponents, Y.SizeRows(), Y.SizeColumns()})
                                  : predictiveComponents;
}

}  // namespace

NCOPLS::NCOPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, int predictiveComponents, int maxIterations)
    : x_(kalmia::DeepCopy(*X)),
      y_(kalmia::DeepCopy(*Y)),
      missingX_(FindMissingValue(*X)),
      missingY_(FindMissingValue(*Y)),
      maxIterations_(maxIterations),
      predictiveComponents_(CutToY(predictiveComponents, *Y)) {}

NCOPLS::NCOPLS(const NCDataMatrix<float>* X, const NCDataMatrix<float>* Y, const std::vector<NCDataMatrix<float>>* W,
               const std::vector<NCDataMatrix<float>>* P, const std::vector<NCDataMatrix<float>>* C,
               const NCDataMatrix<float>* WO, const NCDataMatrix<float>* PO, const NCDataMatrix<float>* CO,
               int predictiveComponents, int maxIterations)
    : NCOPLS(X, Y, W->empty() ? predictiveComponents : W->front().SizeRows(), maxIterations) {
  wMatrices_ = kalmia::DeepCopy(*W);
  pMatrices_ = kalmia::DeepCopy(*P);
  cMatrices_ = kalmia::DeepCopy(*C);
  woprim_ = kalmia::DeepCopy(*WO);
  poprim_ = kalmia::DeepCopy(*PO);
  coprim_ = kalmia::DeepCopy(*CO);
  CatchUp();
}

NCOPLS::NCOPLS(const NCOPLS& other)
    : x_(kalmia::DeepCopy(other.x_)),
      y_(kalmia::DeepCopy(other.y_)),
      wMatrices_(kalmia::DeepCopy(other.wMatrices_)),
      tprim_(kalmia::DeepCopy(other.tprim_)),
      uprim_(kalmia::DeepCopy(other.uprim_)),
      pMatrices_(kalmia::DeepCopy(other.pMatrices_)),
      cMatrices_(kalmia::DeepCopy(other.cMatrices_)),
      tFilter_(kalmia::DeepCopy(other.tFilter_)),
      toprim_(kalmia::DeepCopy(other.toprim_)),
      poprim_(kalmia::DeepCopy(other.poprim_)),
      coprim_(kalmia::DeepCopy(other.coprim_)),
      woprim_(kalmia::DeepCopy(other.woprim_)),
      uoprim_(kalmia::DeepCopy(other.uoprim_)),
      missingX_(other.missingX_),
      missingY_(other.missingY_),
      maxIterations_(other.maxIterations_),
      passes_(other.passes_),
      predictiveComponents_(other.predictiveComponents_) {}

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

void NCOPLS::NextComponent(NCProgress* progress) {
  if (tprim_.SizeRows() == 0) return CalcOPLS(progress);
  const kalmia::OPLSProgress bar(progress, "OPLS component aborted.");
  bar.SetRange(0.0F, 10.0F);
  bar.ThrowIfBreakPressed();
  AppendOrthogonalComponent();
  bar.PushSubRange(1.0F, 10.0F);
  CalcOPLS(progress);
  bar.PopSubRange();
}

void NCOPLS::AppendOrthogonalComponent() {
  NCDataMatrix<float> filtered = kalmia::Without(x_, tFilter_, wMatrices_.back());
  FillMatrix(&y_, missingY_, 0.0F);
  FillMatrix(&filtered, missingX_, 0.0F);
  const NCDataVector<float> w = OrthogonalWeights(filtered);
  FillMatrix(&filtered, missingX_, kalmia::kMissing);
  FillMatrix(&y_, missingY_, kalmia::kMissing);

  const NCDataVector<float> t = filtered.SpecialNipalsRegressRowsFix(w, nullptr, 0);
  const NCDataVector<float> c = y_.SpecialNipalsRegressColumnsFix(t);
  const NCDataVector<float> p = x_.SpecialNipalsRegressColumnsFix(t);
  NCDataVector<float> u = y_.SpecialNipalsRegressRowsFix(c, nullptr, 0);
  if (IsUnrelated(c, t, y_)) u.SetAllValues(kalmia::kMissing);
  x_.AddVprimV(t, p, -1.0F);
  y_.AddVprimV(t, c, -1.0F);
  const int row = toprim_.SizeRows() + 1;
  toprim_.InsertRow(row, t);
  poprim_.InsertRow(row, p);
  coprim_.InsertRow(row, c);
  woprim_.InsertRow(row, w);
  uoprim_.InsertRow(row, u);
}

/// The direction of what is left of X along the predictive scores, holes being 0.
NCDataVector<float> NCOPLS::OrthogonalWeights(const NCDataMatrix<float>& filtered) const {
  NCDataMatrix<float> along = tFilter_.MatrixMultiply(filtered, false, false);
  if (along.SizeRows() < 2) {
    NCDataVector<float> w = along[1];
    w.Normalise();
    return w;
  }
  NCPCA components(&along, maxIterations_);
  components.NextComponent(nullptr, nullptr, 0, nullptr);
  return (*components.GetPprim())[1];
}

void NCOPLS::CalcOPLS(NCProgress* progress) {
  const kalmia::OPLSProgress bar(progress, "OPLS component aborted.");
  bar.SetRange(0.0F, 10.0F);
  bar.PushSubRange(0.0F, 9.0F);
  bar.SetRange(0.0F, 1.0F);
  FillMatrix(&y_, missingY_, 0.0F);
  const NCDataMatrix<float> W = SettleWeights(progress);
  bar.PopSubRange();
  FillMatrix(&y_, missingY_, kalmia::kMissing);
  AppendBlock(W);
  bar.SetValue(10.0F);
}

/// Pass after pass, the cross-product of what is not explained yet, holes being 0 again, is added to the first one.
NCDataMatrix<float> NCOPLS::SettleWeights(NCProgress* progress) {
  const kalmia::OPLSProgress bar(progress, "OPLS component aborted.");
  passes_ = 0;
  NCDataMatrix<float> unexplained = x_, sum, W;
  double firstNorm = kalmia::kMissing, lastNorm = kalmia::kMissing;
  bool again = false;  // without holes one pass is exact
  do {
    FillMatrix(&unexplained, missingX_, 0.0F);
    const NCDataMatrix<float> crossProduct = y_.MatrixMultiply(unexplained, true, false);
    const double norm = std::sqrt(static_cast<double>(crossProduct.GetSS()));
    if (passes_ == 0) {
      firstNorm = norm;
      sum = crossProduct;
    } else {
      const double togo = lastNorm < norm ? 0.0 : (norm - kSettled * firstNorm) / firstNorm;
      bar.SetValue(std::max(0.0F, static_cast<float>(1.0 - togo)));
      if (kSettled * firstNorm > norm || lastNorm < norm) break;
      sum += crossProduct;
    }
    lastNorm = norm;
    W = WeightsOf(sum, W);
    ++passes_;
    again = (x_.GetNumMisVal() >= 1 || y_.GetNumMisVal() >= 1) && passes_ < maxIterations_;
    tFilter_.Clear();
    unexplained = x_;
    for (int a = 1; a <= W.SizeRows(); ++a) {
      tFilter_.InsertRow(a, unexplained.SpecialNipalsRegressRowsFix(W[a], nullptr, 0));
      if (again || a < W.SizeRows()) unexplained.AddVprimV(tFilter_[a], W[a], -1.0F);
    }
  } while (again);
  return W;
}

NCDataMatrix<float> NCOPLS::WeightsOf(const NCDataMatrix<float>& crossProduct, const NCDataMatrix<float>& former) {
  if (crossProduct.SizeRows() < 2) {
    NCDataMatrix<float> W = kalmia::DeepCopy(crossProduct);
    if (W.SizeRows() == 1) W(1).Normalise();
    return W;
  }
  const int size = SizeOfBlock(former);
  const NCDataMatrix<float> W = ComponentsOf(crossProduct, size);
  if (size <= 0) predictiveComponents_ = W.SizeRows();  // decided once for the model
  return W;
}

/// 0 or less: to be decided.
int NCOPLS::SizeOfBlock(const NCDataMatrix<float>& former) const {
  if (predictiveComponents_ > 0 || (wMatrices_.empty() && passes_ == 0)) return predictiveComponents_;
  if (former.SizeRows() > 0) return former.SizeRows();
  return wMatrices_.empty() ? 0 : wMatrices_.front().SizeRows();
}

/// Loadings of the first `size` principal components of the cross-product; 0 or less: of those that are large enough.
NCDataMatrix<float> NCOPLS::ComponentsOf(const NCDataMatrix<float>& crossProduct, int size) const {
  NCPCA components(&crossProduct, maxIterations_);
  components.NextComponent(nullptr, nullptr, 0, nullptr);
  for (int a = 2; a <= size; ++a) {
    components.CalculateResiduals();
    components.NextComponent(nullptr, nullptr, 0, nullptr);
  }
  if (size > 0) return *components.GetPprim();

  const auto newestSS = [&components] { return static_cast<double>(components.GetTprim()->back().GetSS()); };
  const double threshold = kSmallestShare * newestSS();
  double ss = 0.0;
  do {
    components.CalculateResiduals();
    components.NextComponent(nullptr, nullptr, 0, nullptr);
    ss = newestSS();
  } while (components.GetComponents() < crossProduct.SizeRows() && ss > threshold);
  const NCDataMatrix<float>& P = *components.GetPprim();
  return threshold > ss ? RowsUpTo(P, P.SizeRows() - 1) : P;
}

void NCOPLS::AppendBlock(const NCDataMatrix<float>& W) {
  NCDataMatrix<float> E = x_, F = y_, P, C;
  tprim_.Clear();
  uprim_.Clear();
  for (int a = 1; a <= W.SizeRows(); ++a) {
    tprim_.InsertRow(a, a == 1 ? tFilter_[1] : E.SpecialNipalsRegressRowsFix(W[a], nullptr, 0));
    P.InsertRow(a, E.SpecialNipalsRegressColumnsFix(tprim_[a]));
    C.InsertRow(a, F.SpecialNipalsRegressColumnsFix(tprim_[a]));
    uprim_.InsertRow(a, F.SpecialNipalsRegressRowsFix(C[a], nullptr, 0));
    if (a == W.SizeRows()) break;  // nobody reads what is left behind the last
    E.AddVprimV(tprim_[a], P[a], -1.0F);
    F.AddVprimV(tprim_[a], C[a], -1.0F);
  }
  wMatrices_.push_back(W);
  pMatrices_.push_back(P);
  cMatrices_.push_back(C);
}

void NCOPLS::CatchUp() {
  const int orthogonal = std::min(woprim_.SizeRows(), static_cast<int>(wMatrices_.size()) - 1);
  for (int o = 1; o <= orthogonal; ++o) {
    const auto block = static_cast<std::size_t>(o - 1);
    const NCDataMatrix<float> filtered = kalmia::WithoutScoresAlong(x_, wMatrices_[block]);
    toprim_.InsertRow(o, filtered.SpecialNipalsRegressRowsFix(woprim_[o], nullptr, 0));
    uoprim_.InsertRow(o, y_.SpecialNipalsRegressRowsFix(coprim_[o], nullptr, 0));
    x_.AddVprimV(toprim_[o], poprim_[o], -1.0F);
    y_.AddVprimV(toprim_[o], coprim_[o], -1.0F);
  }
  if (wMatrices_.empty()) return;
  const auto block = static_cast<std::size_t>(orthogonal);
  tFilter_ = kalmia::ScoresAlong(x_, wMatrices_[block], wMatrices_[block]);
  tprim_ = kalmia::ScoresAlong(x_, wMatrices_[block], pMatrices_[block]);
}

void NCOPLS::NegateOComp(int component) {
  for (NCDataMatrix<float>* matrix : {&woprim_, &poprim_, &coprim_, &toprim_}) matrix->MultiplyRow(component, -1.0F);
}

void NCOPLS::NegatePredictiveComp(int component) {
  for (NCDataMatrix<float>* matrix : {&wMatrices_.back(), &pMatrices_.back(), &cMatrices_.back(), &tprim_, &tFilter_})
    matrix->MultiplyRow(component, -1.0F);
}

NCDataMatrix<float> NCOPLS::GetXResiduals() const {
  return tprim_.SizeRows() == 0 ? x_ : kalmia::Without(x_, tprim_, pMatrices_.back());
}

NCDataMatrix<float> NCOPLS::GetYResiduals() const {
  return tprim_.SizeRows() == 0 ? y_ : kalmia::Without(y_, tprim_, cMatrices_.back());
}
