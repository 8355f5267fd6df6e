#include "PlainOPLS.h"

#include <cmath>

#include "pcapls/PlainPCA.h"

namespace plain {

namespace {

/// 0 in the cells that are holes of `original`.
Table WithZeros(Table table, const Table& original) {
  for (std::size_t i = 0; i < table.size(); ++i)
    for (std::size_t j = 0; j < table[i].size(); ++j)
      if (std::isnan(original[i][j])) table[i][j] = 0.0;
  return table;
}

bool HasHoles(const Table& table) {
  for (const Vector& row : table)
    for (const double cell : row)
      if (std::isnan(cell)) return true;
  return false;
}

/// The holes of `original` back in their places.
Table WithHoles(Table table, const Table& original) {
  for (std::size_t i = 0; i < table.size(); ++i)
    for (std::size_t j = 0; j < table[i].size(); ++j)
      if (std::isnan(original[i][j])) table[i][j] = original[i][j];
  return table;
}

/// The scores on the rows of `along`, the table being deflated by the rows of `away` in between and at the end.
Table Scores(Table* table, const Table& along, const Table& away) {
  Table scores;
  for (std::size_t a = 0; a < along.size(); ++a) {
    scores.push_back(RegressRows(*table, along[a]));
    Deflate(table, scores.back(), away[a]);
  }
  return scores;
}

Vector Normalised(Vector v) {
  Normalise(&v);
  return v;
}

void AddTo(Table* table, const Vector& t, const Vector& v) { AddOuter(table, t, v, 1.0); }

}  // namespace

OPLS::OPLS(const Table& X, const Table& Y, int predictive, int orthogonal, int rounds, int passes)
    : xLeft(X), yLeft(Y), x_(X), y_(Y), predictive_(predictive), rounds_(rounds), passes_(passes) {
  AddBlock();
  for (int o = 0; o < orthogonal; ++o) {
    AddOrthogonalComponent();
    AddBlock();
  }
}

Table OPLS::Principal(Table crossProduct, int components) const {
  if (crossProduct.size() == 1) return {Normalised(crossProduct[0])};
  Table loadings;
  for (int a = 0; a < components; ++a) {
    const PrincipalComponent component = FitPCA(crossProduct, Nipals{rounds_});
    loadings.push_back(component.p);
    Deflate(&crossProduct, component.t, component.p);
  }
  return loadings;
}

void OPLS::AddBlock() {
  const bool hasHoles = HasHoles(xLeft);
  const Table y = WithZeros(yLeft, y_);
  Table left = xLeft, sum, weights;
  double first = 0.0, last = 0.0;
  for (int pass = 0; pass == 0 || (hasHoles && pass < passes_); ++pass) {
    const Table crossProduct = Product(Transposed(y), WithZeros(left, x_));
    const double norm = std::sqrt(SquaresOf(crossProduct));
    if (pass == 0) {
      first = last = norm;
      sum = crossProduct;
    } else {
      if (norm < 0.01 * first || norm > last) break;
      last = norm;
      for (std::size_t j = 0; j < sum.size(); ++j)
        for (std::size_t k = 0; k < sum[j].size(); ++k) sum[j][k] += crossProduct[j][k];
    }
    weights = Principal(sum, predictive_);
    left = xLeft;
    tFilter_ = Scores(&left, weights, weights);
  }
  Table E = xLeft, F = yLeft;
  T.clear();
  Table loadings, yWeights;
  for (const Vector& w : weights) {
    T.push_back(RegressRows(E, w));
    loadings.push_back(RegressColumns(E, T.back()));
    yWeights.push_back(RegressColumns(F, T.back()));
    Deflate(&E, T.back(), loadings.back());
    Deflate(&F, T.back(), yWeights.back());
  }
  W.push_back(weights);
  P.push_back(loadings);
  C.push_back(yWeights);
}

void OPLS::AddOrthogonalComponent() {
  Table E = xLeft;
  for (std::size_t a = 0; a < tFilter_.size(); ++a) Deflate(&E, tFilter_[a], W.back()[a]);
  E = WithZeros(E, x_);
  WO.push_back(Principal(Product(tFilter_, E), 1)[0]);
  TO.push_back(RegressRows(WithHoles(E, x_), WO.back()));
  CO.push_back(RegressColumns(yLeft, TO.back()));
  PO.push_back(RegressColumns(xLeft, TO.back()));
  Deflate(&xLeft, TO.back(), PO.back());
  Deflate(&yLeft, TO.back(), CO.back());
}

Table OPLS::Predict(Table X) const {
  Table Y(X.size(), Vector(y_[0].size(), 0.0));
  for (std::size_t o = 0; o < WO.size(); ++o) {
    Table E = X;
    Scores(&E, W[o], W[o]);
    const Vector t = RegressRows(E, WO[o]);
    Deflate(&X, t, PO[o]);
    AddTo(&Y, t, CO[o]);
  }
  const Table scores = Scores(&X, W.back(), P.back());
  for (std::size_t a = 0; a < scores.size(); ++a) AddTo(&Y, scores[a], C.back()[a]);
  return Y;
}

}  // namespace plain
