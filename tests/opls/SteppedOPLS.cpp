#include "SteppedOPLS.h"

#include <algorithm>
#include <cmath>

#include "kalmia/containers/DeepCopied.h"
#include "kalmia/pcapls/NCPCA.h"
#include "testing/RandomTables.h"

namespace {

using Matrix = NCDataMatrix<float>;
using Vector = NCDataVector<float>;
using kalmia::DeepCopy;

std::set<std::pair<int, int>> HolesOf(const Matrix& matrix) {
  std::set<std::pair<int, int>> holes;
  if (matrix.GetNumMisVal() > 0)
    for (int i = 1; i <= matrix.SizeRows(); ++i)
      for (int j = 1; j <= matrix.SizeColumns(); ++j)
        if (matrix[i][j] == kHole<float>) holes.insert({i, j});
  return holes;
}

void Fill(Matrix* matrix, const std::set<std::pair<int, int>>& cells, float value) {
  for (const auto& cell : cells) (*matrix)(cell.first, cell.second, value);
}

/// The scores of X along each row of `along`, each times a row of `away` being taken out of X before the next.
Matrix ScoresOf(Matrix* X, const Matrix& along, const Matrix& away) {
  Matrix scores;
  for (int a = 1; a <= along.SizeRows(); ++a) {
    const Vector t = X->SpecialNipalsRegressRowsFix(along[a], nullptr, 0);
    X->AddVprimV(t, away[a], -1.0F);
    scores.InsertRow(a, t);
  }
  return scores;
}

bool IsNothing(double g) {
  return std::isnan(g) || std::isinf(g) || (g != 0.0 && std::fabs(g) < 2.2250738585072014e-308);
}

double RootOfSS(long double ss) { return std::sqrt(static_cast<double>(ss)); }

}  // namespace

SteppedOPLS::SteppedOPLS(const Matrix& X, const Matrix& Y, int predictive, int maxIterations)
    : x_(DeepCopy(X)),
      y_(DeepCopy(Y)),
      missingX_(HolesOf(X)),
      missingY_(HolesOf(Y)),
      maxIterations_(maxIterations),
      predictive_(predictive > 0 ? std::min({predictive, Y.SizeRows(), Y.SizeColumns()}) : predictive) {}

void SteppedOPLS::NextComponent() {
  if (T.SizeRows() > 0) AddOrthogonal();
  AddBlock();
}

void SteppedOPLS::AddOrthogonal() {
  Matrix E = DeepCopy(x_);
  Fill(&y_, missingY_, 0.0F);
  for (int a = 1; a <= W.back().SizeRows(); ++a) E.AddVprimV(tFilter_[a], W.back()[a], -1.0F);
  Fill(&E, missingX_, 0.0F);
  const Matrix R = tFilter_.MatrixMultiply(E, false, false);
  Vector w;
  if (R.SizeRows() < 2) {
    w = R[1];
    w.Normalise();
  } else {
    NCPCA components(&R, maxIterations_);
    components.NextComponent(nullptr, nullptr, 0, nullptr);
    w = (*components.GetPprim())[1];
  }
  Fill(&E, missingX_, kHole<float>);
  Fill(&y_, missingY_, kHole<float>);
  const Vector t = E.SpecialNipalsRegressRowsFix(w, nullptr, 0);
  const Vector c = y_.SpecialNipalsRegressColumnsFix(t);
  const Vector p = x_.SpecialNipalsRegressColumnsFix(t);
  Vector u = y_.SpecialNipalsRegressRowsFix(c, nullptr, 0);
  const double g = RootOfSS(c.GetSS()) * RootOfSS(t.GetSS()) / RootOfSS(y_.GetSS());
  if (IsNothing(g) || 1e-6 / std::sqrt(static_cast<double>(y_.SizeColumns())) > g) u.SetAllValues(kHole<float>);
  x_.AddVprimV(t, p, -1.0F);
  y_.AddVprimV(t, c, -1.0F);
  const int row = TO.SizeRows() + 1;
  TO.InsertRow(row, t);
  PO.InsertRow(row, p);
  CO.InsertRow(row, c);
  WO.InsertRow(row, w);
  UO.InsertRow(row, u);
}

void SteppedOPLS::AddBlock() {
  passes_ = 0;
  Fill(&y_, missingY_, 0.0F);
  Matrix E = DeepCopy(x_), S, newW;
  double first = kHole<double>, last = kHole<double>;
  while (true) {
    Fill(&E, missingX_, 0.0F);
    const Matrix G = y_.MatrixMultiply(E, true, false);
    const double n = RootOfSS(G.GetSS());
    if (passes_ == 0) {
      first = last = n;
      S = DeepCopy(G);
    } else {
      if (0.01 * first > n || last < n) break;
      last = n;
      S += G;
    }
    newW = WeightsOf(S, newW);
    E = DeepCopy(x_);
    tFilter_ = ScoresOf(&E, newW, newW);
    ++passes_;
    if ((x_.GetNumMisVal() < 1 && y_.GetNumMisVal() < 1) || passes_ >= maxIterations_) break;
  }
  Fill(&y_, missingY_, kHole<float>);
  E = DeepCopy(x_);
  Matrix F = DeepCopy(y_), newP, newC;
  T.Clear();
  U.Clear();
  for (int a = 1; a <= newW.SizeRows(); ++a) {
    const Vector t = E.SpecialNipalsRegressRowsFix(newW[a], nullptr, 0), p = E.SpecialNipalsRegressColumnsFix(t);
    const Vector c = F.SpecialNipalsRegressColumnsFix(t), u = F.SpecialNipalsRegressRowsFix(c, nullptr, 0);
    E.AddVprimV(t, p, -1.0F);
    F.AddVprimV(t, c, -1.0F);
    T.InsertRow(a, t);
    newC.InsertRow(a, c);
    newP.InsertRow(a, p);
    U.InsertRow(a, u);
  }
  W.push_back(newW);
  P.push_back(newP);
  C.push_back(newC);
}

NCDataMatrix<float> SteppedOPLS::WeightsOf(const Matrix& sum, const Matrix& former) {
  if (sum.SizeRows() <= 1) {
    Matrix w = DeepCopy(sum);
    if (w.SizeRows() == 1) w(1).Normalise();
    return w;
  }
  int a = predictive_;
  if (a <= 0 && (!W.empty() || passes_ > 0)) {
    a = former.SizeRows();
    if (a == 0 && !W.empty()) a = W.front().SizeRows();
  }
  if (a > 0) {
    NCPCA components(&sum, maxIterations_);
    for (int i = 1; i < a; ++i) {
      components.NextComponent(nullptr, nullptr, 0, nullptr);
      components.CalculateResiduals();
    }
    components.NextComponent(nullptr, nullptr, 0, nullptr);
    return *components.GetPprim();
  }
  const Matrix w = AutomaticWeightsOf(sum);
  predictive_ = w.SizeRows();
  return w;
}

NCDataMatrix<float> SteppedOPLS::AutomaticWeightsOf(const Matrix& sum) const {
  NCPCA components(&sum, maxIterations_);
  components.NextComponent(nullptr, nullptr, 0, nullptr);
  const double limit = 0.01 * static_cast<double>((*components.GetTprim())[1].GetSS());
  double s = 0.0;
  do {
    components.CalculateResiduals();
    components.NextComponent(nullptr, nullptr, 0, nullptr);
    s = static_cast<double>((*components.GetTprim())[components.GetTprim()->SizeRows()].GetSS());
  } while (components.GetTprim()->SizeRows() != sum.SizeRows() && s > limit);
  const Matrix& all = *components.GetPprim();
  if (limit <= s) return all;
  Matrix large;
  for (int a = 1; a < all.SizeRows(); ++a) large.InsertRow(a, all[a]);
  return large;
}

void SteppedOPLS::CatchUp(const SteppedOPLS& stored) {
  W = stored.W;
  P = stored.P;
  C = stored.C;
  WO = stored.WO;
  PO = stored.PO;
  CO = stored.CO;
  predictive_ = W.front().SizeRows();
  for (int o = 1; o <= WO.SizeRows(); ++o) {
    Matrix E = DeepCopy(x_);
    const Matrix& along = W[static_cast<std::size_t>(o - 1)];
    ScoresOf(&E, along, along);
    const Vector t = E.SpecialNipalsRegressRowsFix(WO[o], nullptr, 0);
    const Vector u = y_.SpecialNipalsRegressRowsFix(CO[o], nullptr, 0);
    x_.AddVprimV(t, PO[o], -1.0F);
    y_.AddVprimV(t, CO[o], -1.0F);
    TO.InsertRow(o, t);
    UO.InsertRow(o, u);
  }
  Matrix E = DeepCopy(x_);
  tFilter_ = ScoresOf(&E, W.back(), W.back());
  E = DeepCopy(x_);
  T = ScoresOf(&E, W.back(), P.back());
}

NCDataMatrix<float> SteppedOPLS::XResiduals() const {
  Matrix E = DeepCopy(x_);
  for (int a = 1; a <= T.SizeRows(); ++a) E.AddVprimV(T[a], P.back()[a], -1.0F);
  return E;
}

NCDataMatrix<float> SteppedOPLS::YResiduals() const {
  Matrix F = DeepCopy(y_);
  for (int a = 1; a <= T.SizeRows(); ++a) F.AddVprimV(T[a], C.back()[a], -1.0F);
  return F;
}
