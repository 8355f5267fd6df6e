#include "PlainPLS.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace plain {

namespace {

constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

bool IsPair(double a, double b) { return !std::isnan(a) && !std::isnan(b); }

Vector ColumnOf(const Table& table, std::size_t column) {
  Vector cells;
  for (const Vector& row : table) cells.push_back(row[column]);
  return cells;
}

/// The coefficient of `cells` on v.
double Regress(const Vector& cells, const Vector& v) {
  double products = 0.0;
  double squares = 0.0;
  for (std::size_t i = 0; i < v.size(); ++i)
    if (IsPair(cells[i], v[i])) {
      products += cells[i] * v[i];
      squares += v[i] * v[i];
    }
  const double denominator = std::max(squares, SquaresOf(v) / 3.0);
  return squares > 1e-30 ? products / denominator : kHole;
}

}  // namespace

Vector VectorOf(const NCDataVector<float>& vector) {
  Vector cells(vector.begin(), vector.end());
  std::replace(cells.begin(), cells.end(), -99.0, kHole);
  return cells;
}

Table TableOf(const NCDataMatrix<float>& matrix) {
  Table table;
  for (int r = 1; r <= matrix.SizeRows(); ++r) table.push_back(VectorOf(matrix[r]));
  return table;
}

double Dot(const Vector& a, const Vector& b) {
  double sum = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (IsPair(a[i], b[i])) sum += a[i] * b[i];
  return sum;
}

double SquaresOf(const Vector& v) { return Dot(v, v); }

double SquaresOf(const Table& table) {
  double sum = 0.0;
  for (const Vector& row : table) sum += SquaresOf(row);
  return sum;
}

Table Product(const Table& a, const Table& b) {
  const Table columns = Transposed(b);
  Table product;
  for (const Vector& row : a) {
    product.emplace_back();
    for (const Vector& column : columns) product.back().push_back(Dot(row, column));
  }
  return product;
}

Table Transposed(const Table& table) {
  Table result;
  for (std::size_t j = 0; j < table.front().size(); ++j) result.push_back(ColumnOf(table, j));
  return result;
}

Table Inverse(Table square) {
  const std::size_t n = square.size();
  Table inverse(n, Vector(n, 0.0));
  for (std::size_t i = 0; i < n; ++i) inverse[i][i] = 1.0;
  for (std::size_t i = 0; i < n; ++i) {
    std::size_t pivot = i;
    for (std::size_t r = i; r < n; ++r)
      if (std::abs(square[r][i]) > std::abs(square[pivot][i])) pivot = r;
    std::swap(square[i], square[pivot]);
    std::swap(inverse[i], inverse[pivot]);
    const double d = square[i][i];
    for (std::size_t j = 0; j < n; ++j) {
      square[i][j] /= d;
      inverse[i][j] /= d;
    }
    for (std::size_t r = 0; r < n; ++r) {
      const double f = square[r][i];
      if (r == i) continue;
      for (std::size_t j = 0; j < n; ++j) {
        square[r][j] -= f * square[i][j];
        inverse[r][j] -= f * inverse[i][j];
      }
    }
  }
  return inverse;
}

Vector StartColumn(const Table& Y) {
  if (Y.front().size() == 1) return ColumnOf(Y, 0);
  double best = 0.0;
  std::size_t chosen = 0;
  for (std::size_t j = 0; j < Y.front().size(); ++j)
    if (SquaresOf(ColumnOf(Y, j)) > best * 1.000001) {
      best = SquaresOf(ColumnOf(Y, j));
      chosen = j;
    }
  Vector column = ColumnOf(Y, chosen);
  double largest = 0.0;
  for (const double cell : column)
    if (!std::isnan(cell)) largest = std::max(largest, std::abs(cell));
  double fill = largest / 100.0;
  for (double& cell : column)
    if (std::isnan(cell)) {
      cell = fill;
      fill = -fill;
    }
  return column;
}

Vector RegressColumns(const Table& table, const Vector& v) {
  Vector result;
  for (std::size_t j = 0; j < table.front().size(); ++j) result.push_back(Regress(ColumnOf(table, j), v));
  return result;
}

Vector RegressRows(const Table& table, const Vector& v) {
  Vector result;
  for (const Vector& row : table) result.push_back(Regress(row, v));
  return result;
}

Component Fit(const Table& X, const Table& Y, const Vector* start, int rounds) {
  Component component;
  auto& [w, t, p, c, u] = component;
  const bool fromStart = start && Y.front().size() > 1;
  u = fromStart ? RegressRows(Y, RegressColumns(Y, RegressRows(X, *start))) : StartColumn(Y);
  for (int round = 0; round < rounds; ++round) {
    w = RegressColumns(X, u);
    const double norm = std::sqrt(SquaresOf(w));
    for (double& cell : w) cell /= norm;
    t = RegressRows(X, w);
    c = RegressColumns(Y, t);
    u = RegressRows(Y, c);
  }
  p = RegressColumns(X, t);
  return component;
}

void Deflate(Table* table, const Vector& t, const Vector& v) {
  for (std::size_t i = 0; i < t.size(); ++i)
    for (std::size_t j = 0; j < v.size(); ++j) (*table)[i][j] -= t[i] * v[j];
}

double RelativeGap(const Vector& a, const Vector& b) {
  double gap = 0.0;
  if (a.size() != b.size()) return std::numeric_limits<double>::infinity();
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (std::isnan(a[i]) != std::isnan(b[i])) return std::numeric_limits<double>::infinity();
    if (IsPair(a[i], b[i])) gap += (a[i] - b[i]) * (a[i] - b[i]);
  }
  return std::sqrt(gap / SquaresOf(b));
}

}  // namespace plain
