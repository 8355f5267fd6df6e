#include "PlainO2PLS.h"

#include <cmath>
#include <cstddef>
#include <utility>

#include "testing/RandomTables.h"

namespace plain {

Table Of(const NCDataMatrix<float>& table) {
  Table copy;
  for (const auto& row : CellsOf(table)) copy.emplace_back(row.begin(), row.end());
  return copy;
}

NCDataMatrix<float> ToFloat(const Table& table) {
  NCDataMatrix<float> copy(static_cast<int>(table.size()), table.empty() ? 0 : static_cast<int>(table[0].size()));
  for (std::size_t i = 0; i < table.size(); ++i)
    for (std::size_t j = 0; j < table[i].size(); ++j)
      copy(static_cast<int>(i) + 1, static_cast<int>(j) + 1, static_cast<float>(table[i][j]));
  return copy;
}

Table Transposed(const Table& a) {
  Table result(a.empty() ? 0 : a[0].size(), Vector(a.size()));
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < a[i].size(); ++j) result[j][i] = a[i][j];
  return result;
}

double Dot(const Vector& a, const Vector& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) sum += a[i] * b[i];
  return sum;
}

Vector TransposedProduct(const Table& a, const Vector& v) { return Product(Transposed(a), v); }

Vector Product(const Table& a, const Vector& v) {
  Vector result;
  for (const Vector& row : a) result.push_back(Dot(row, v));
  return result;
}

Table Product(const Table& a, const Table& b) {
  const Table columns = Transposed(b);
  Table result;
  for (const Vector& row : a) result.push_back(Product(columns, row));
  return result;
}

void Normalise(Vector* v) {
  const double length = std::sqrt(Dot(*v, *v));
  for (double& cell : *v) cell /= length;
}

void AddOuter(Table* a, const Vector& rows, const Vector& columns, double factor) {
  for (std::size_t i = 0; i < a->size(); ++i)
    for (std::size_t j = 0; j < columns.size(); ++j) (*a)[i][j] += factor * rows[i] * columns[j];
}

Table Inverse(Table a) {
  const std::size_t n = a.size();
  Table inverse(n, Vector(n, 0.0));
  for (std::size_t i = 0; i < n; ++i) inverse[i][i] = 1.0;
  for (std::size_t c = 0; c < n; ++c) {
    std::size_t pivot = c;
    for (std::size_t r = c; r < n; ++r)
      if (std::abs(a[r][c]) > std::abs(a[pivot][c])) pivot = r;
    std::swap(a[c], a[pivot]);
    std::swap(inverse[c], inverse[pivot]);
    const double divisor = a[c][c];
    for (std::size_t j = 0; j < n; ++j) {
      a[c][j] /= divisor;
      inverse[c][j] /= divisor;
    }
    for (std::size_t r = 0; r < n; ++r) {
      if (r == c) continue;
      const double factor = a[r][c];
      for (std::size_t j = 0; j < n; ++j) {
        a[r][j] -= factor * a[c][j];
        inverse[r][j] -= factor * inverse[c][j];
      }
    }
  }
  return inverse;
}

double Squares(const Table& a) {
  double sum = 0.0;
  for (const Vector& row : a) sum += Dot(row, row);
  return sum;
}

Vector FirstLoading(const Table& a) {
  // The smaller of A'A and AA', squared twelve times, is its 4096th power.
  const bool wide = a[0].size() > a.size();
  Table power = wide ? Product(a, Transposed(a)) : Product(Transposed(a), a);
  for (int i = 0; i < 12; ++i) {
    const double scale = 1.0 / std::sqrt(Squares(power));
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
    Table rows = Of(RandomMatrix<float>(count, cells, 0, seed + offset));
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
    Table table = Of(RandomMatrix<float>(shape.rows, columns, 0, seed + offset));
    for (Vector& row : table)
      for (double& cell : row) cell *= noise;
    const Table loadings = directions(shape.common, columns, offset + 1);
    for (int a = 0; a < shape.common; ++a)
      AddOuter(&table, scores[static_cast<std::size_t>(a)], loadings[static_cast<std::size_t>(a)],
               std::ldexp(10.0, -a));
    // Not at right angles to the common loadings: what is unique lies over what is common.
    Table ownLoadings = Of(RandomMatrix<float>(own, columns, 0, seed + offset + 2));
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

double SineOfAngle(const Vector& a, const Vector& b) {
  const double share = Dot(a, b) / Dot(b, b);
  Vector rest = a;
  for (std::size_t i = 0; i < rest.size(); ++i) rest[i] -= share * b[i];
  return std::sqrt(Dot(rest, rest) / Dot(a, a));
}

}  // namespace plain
