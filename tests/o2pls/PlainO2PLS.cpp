#include "PlainO2PLS.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "testing/RandomTables.h"

namespace plain {

Vector FirstLoading(const Table& a) {
  // The smaller of A'A and AA', squared twelve times, is its 4096th power.
  const bool wide = a[0].size() > a.size();
  Table power = wide ? Product(a, Transposed(a)) : Product(Transposed(a), a);
  for (int i = 0; i < 12; ++i) {
    const double scale = 1.0 / std::sqrt(SquaresOf(power));
    for (Vector& row : power)
      for (double& cell : row) cell *= scale;
    power = Product(power, power);
  }
  std::size_t longest = 0;
  for (std::size_t i = 0; i < power.size(); ++i)
    if (power[i][i] > power[longest][longest]) longest = i;
  Vector v = wide ? TransposedProduct(a, power[longest]) : power[longest];
  Normalise(&v);
  return v;
}

namespace {

Table Without(Table block, const Table& scores, const Table& loadings) {
  for (std::size_t i = 0; i < scores.size(); ++i) AddOuter(&block, scores[i], loadings[i], -1.0);
  return block;
}

Vector Over(Vector v, double divisor) {
  for (double& cell : v) cell /= divisor;
  return v;
}

void AddOrthogonal(const Table& own, const Table& other, int predictive, Table* scores, Table* weights,
                   Table* loadings) {
  const Table before = Without(own, *scores, *loadings);
  Table rest = before;
  Table predictiveScores;
  for (int a = 0; a < predictive; ++a) {
    const Vector w = FirstLoading(Product(Transposed(other), rest));
    const Vector t = Product(rest, w);
    AddOuter(&rest, t, w, -1.0);
    predictiveScores.push_back(t);
  }
  const Vector wo = FirstLoading(Product(predictiveScores, rest));
  const Vector to = Product(rest, wo);
  scores->push_back(to);
  weights->push_back(wo);
  loadings->push_back(Over(TransposedProduct(before, to), Dot(to, to)));
}

Table Relation(const Table& from, const Table& to) {
  return Product(Inverse(Product(from, Transposed(from))), Product(from, Transposed(to)));
}

}  // namespace

O2PLS FitO2PLS(const Table& X, const Table& Y, int predictive, int xOrthogonal, int yOrthogonal) {
  O2PLS m;
  for (int i = 0; i < xOrthogonal; ++i) AddOrthogonal(X, Y, predictive, &m.To, &m.Wo, &m.Po);
  for (int i = 0; i < yOrthogonal; ++i) AddOrthogonal(Y, X, predictive, &m.Uo, &m.Co, &m.Qo);
  Table E = Without(X, m.To, m.Po), F = Without(Y, m.Uo, m.Qo);
  for (int a = 0; a < predictive; ++a) {
    const Vector w = FirstLoading(Product(Transposed(F), E));
    const Vector t = Product(E, w);
    const Vector p = Over(TransposedProduct(E, t), Dot(t, t));
    Vector c = TransposedProduct(F, t);
    Normalise(&c);
    const Vector u = Product(F, c);
    const Vector q = Over(TransposedProduct(F, u), Dot(u, u));
    AddOuter(&E, t, p, -1.0);
    AddOuter(&F, u, q, -1.0);
    m.W.push_back(w);
    m.T.push_back(t);
    m.P.push_back(p);
    m.C.push_back(c);
    m.U.push_back(u);
    m.Q.push_back(q);
  }
  m.Lambda = Relation(m.T, m.U);
  m.XLambda = Relation(m.U, m.T);
  for (const Vector& uo : m.Uo) m.R.push_back(Over(TransposedProduct(X, uo), Dot(uo, uo)));
  for (const Vector& to : m.To) m.S.push_back(Over(TransposedProduct(Y, to), Dot(to, to)));
  return m;
}

Prediction PredictY(const Table& X, const O2PLS& model, int yColumns) {
  Prediction result;
  result.predicted.assign(X.size(), Vector(static_cast<std::size_t>(yColumns), 0.0));
  Table rest = X;
  for (std::size_t o = 0; o < model.Po.size(); ++o) {
    Table stripped = rest;
    for (const Vector& w : model.W) AddOuter(&stripped, Product(stripped, w), w, -1.0);
    const Vector to = Product(stripped, model.Wo[o]);
    result.orthogonalScores.push_back(to);
    AddOuter(&rest, to, model.Po[o], -1.0);
    AddOuter(&result.predicted, to, model.S[o], 1.0);
  }
  for (std::size_t a = 0; a < model.P.size(); ++a) {
    const Vector t = Product(rest, model.W[a]);
    result.scores.push_back(t);
    AddOuter(&rest, t, model.P[a], -1.0);
  }
  for (std::size_t a = 0; a < model.P.size(); ++a)
    for (std::size_t b = 0; b < model.Q.size(); ++b)
      AddOuter(&result.predicted, result.scores[a], model.Q[b], model.Lambda[a][b]);
  return result;
}

O2PLS Swapped(const O2PLS& m) {
  return {m.U, m.T, m.Q, m.C, m.W, m.P, m.Uo, m.Co, m.Qo, m.To, m.Wo, m.Po, m.S, m.R, m.XLambda, m.Lambda};
}

Blocks MakeBlocks(const BlocksShape& shape, double noise, unsigned seed) {
  const auto directions = [&](int count, int cells, unsigned offset) {  // at right angles, of unit length
    Table rows = TableOf(RandomMatrix<float>(count, cells, 0, seed + offset));
    for (std::size_t i = 0; i < rows.size(); ++i) {
      for (int pass = 0; pass < 2; ++pass)
        for (std::size_t j = 0; j < i; ++j) {
          const double share = Dot(rows[i], rows[j]);
          for (std::size_t k = 0; k < rows[i].size(); ++k) rows[i][k] -= share * rows[j][k];
        }
      Normalise(&rows[i]);
    }
    return rows;
  };
  const Table scores = directions(shape.common + shape.xUnique + shape.yUnique, shape.rows, 1);
  const auto block = [&](int columns, int firstOwn, int own, unsigned offset) {
    Table table = TableOf(RandomMatrix<float>(shape.rows, columns, 0, seed + offset));
    for (Vector& row : table)
      for (double& cell : row) cell *= noise;
    const Table loadings = directions(shape.common, columns, offset + 1);
    for (int a = 0; a < shape.common; ++a)
      AddOuter(&table, scores[static_cast<std::size_t>(a)], loadings[static_cast<std::size_t>(a)],
               std::ldexp(10.0, -a));
    // Not at right angles to the common loadings: what is unique lies over what is common.
    Table ownLoadings = TableOf(RandomMatrix<float>(own, columns, 0, seed + offset + 2));
    for (int a = 0; a < own; ++a) {
      Vector& loading = ownLoadings[static_cast<std::size_t>(a)];
      Normalise(&loading);
      AddOuter(&table, scores[static_cast<std::size_t>(firstOwn + a)], loading, std::ldexp(8.0, -a));
    }
    return table;
  };
  return {block(shape.xVariables, shape.common, shape.xUnique, 10),
          block(shape.yVariables, shape.common + shape.xUnique, shape.yUnique, 20)};
}

}  // namespace plain
