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
    Normalise(&w);
    t = RegressRows(X, w);
    c = RegressColumns(Y, t);
    u = RegressRows(Y, c);
  }
  p = RegressColumns(X, t);
  return component;
}

void Deflate(Table* table, const Vector& t, const Vector& v) { AddOuter(table, t, v, -1.0); }

}  // namespace plain
