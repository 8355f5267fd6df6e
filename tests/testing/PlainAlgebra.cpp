#include "testing/PlainAlgebra.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>

namespace plain {

namespace {

constexpr double kHole = std::numeric_limits<double>::quiet_NaN();

bool IsPair(double a, double b) { return !std::isnan(a) && !std::isnan(b); }

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

NCDataMatrix<float> ToFloat(const Table& table) {
  NCDataMatrix<float> copy(static_cast<int>(table.size()), table.empty() ? 0 : static_cast<int>(table[0].size()));
  for (std::size_t i = 0; i < table.size(); ++i)
    for (std::size_t j = 0; j < table[i].size(); ++j)
      copy(static_cast<int>(i) + 1, static_cast<int>(j) + 1, static_cast<float>(table[i][j]));
  return copy;
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

Table Transposed(const Table& table) {
  Table result(table.empty() ? 0 : table[0].size(), Vector(table.size()));
  for (std::size_t i = 0; i < table.size(); ++i)
    for (std::size_t j = 0; j < table[i].size(); ++j) result[j][i] = table[i][j];
  return result;
}

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

Vector TransposedProduct(const Table& a, const Vector& v) { return Product(Transposed(a), v); }

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
    const double divisor = square[i][i];
    for (std::size_t j = 0; j < n; ++j) {
      square[i][j] /= divisor;
      inverse[i][j] /= divisor;
    }
    for (std::size_t r = 0; r < n; ++r) {
      if (r == i) continue;
      const double factor = square[r][i];
      for (std::size_t j = 0; j < n; ++j) {
        square[r][j] -= factor * square[i][j];
        inverse[r][j] -= factor * inverse[i][j];
      }
    }
  }
  return inverse;
}

void Scale(Vector* v, double factor) {
  for (double& cell : *v) cell *= factor;
}

double Normalise(Vector* v) {
  const double length = std::sqrt(SquaresOf(*v));
  for (double& cell : *v) cell /= length;
  return length;
}

void AddOuter(Table* table, const Vector& rows, const Vector& columns, double factor) {
  for (std::size_t i = 0; i < table->size(); ++i)
    for (std::size_t j = 0; j < columns.size(); ++j) (*table)[i][j] += factor * rows[i] * columns[j];
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

double SineOfAngle(const Vector& a, const Vector& b) {
  // What is left of a beside b, which unlike sqrt(1 - cos^2) is exact for small angles.
  const double along = Dot(a, b) / SquaresOf(b);
  double beside = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) beside += (a[i] - along * b[i]) * (a[i] - along * b[i]);
  return std::sqrt(beside / SquaresOf(a));
}

}  // namespace plain
