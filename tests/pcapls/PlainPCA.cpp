#include "PlainPCA.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace plain {

namespace {

/// Turns a and b in their plane.
void Rotate(Vector* a, Vector* b, double cosine, double sine) {
  for (std::size_t i = 0; i < a->size(); ++i) {
    const double x = (*a)[i];
    const double y = (*b)[i];
    (*a)[i] = cosine * x - sine * y;
    (*b)[i] = sine * x + cosine * y;
  }
}

/// Turns two vectors until they are orthogonal, and two others with them; whether they were not yet.
bool Orthogonalise(Vector* a, Vector* b, Vector* alongA, Vector* alongB) {
  const double aa = SquaresOf(*a);
  const double bb = SquaresOf(*b);
  const double ab = Dot(*a, *b);
  if (std::abs(ab) <= 1e-15 * std::sqrt(aa * bb)) return false;
  const double cotangentOfTwice = (bb - aa) / (2.0 * ab);
  const double tangent =
      std::copysign(1.0, cotangentOfTwice) / (std::abs(cotangentOfTwice) + std::hypot(1.0, cotangentOfTwice));
  const double cosine = 1.0 / std::hypot(1.0, tangent);
  Rotate(a, b, cosine, cosine * tangent);
  Rotate(alongA, alongB, cosine, cosine * tangent);
  return true;
}

/// |t - before|^2 / |t|^2 over the cells that both have.
double RelativeSquaredChange(const Vector& t, const Vector& before) {
  double change = 0.0;
  double squares = 0.0;
  for (std::size_t i = 0; i < t.size(); ++i)
    if (!std::isnan(t[i]) && !std::isnan(before[i])) {
      change += (t[i] - before[i]) * (t[i] - before[i]);
      squares += t[i] * t[i];
    }
  return change / squares;
}

}  // namespace

PrincipalComponent FitPCA(const Table& X, const Nipals& how) {
  PrincipalComponent component;
  auto& [p, t] = component;
  if (X.size() == 1) {
    p = X[0];
    t = {Normalise(&p)};
    return component;
  }
  t = how.start ? *how.start : StartColumn(X);
  for (int round = 0; round < how.rounds; ++round) {
    p = RegressColumns(X, t);
    for (std::size_t j = 0; j < how.leftOut.size(); ++j)
      if (how.leftOut[j]) p[j] = std::nan("");
    Normalise(&p);
    const Vector before = t;
    t = RegressRows(X, p);
    if (how.endsWhenConverged && RelativeSquaredChange(t, before) <= 1e-10) break;
  }
  return component;
}

SingularVectors Decompose(const Table& X) {
  if (X.size() < X.front().size()) {
    SingularVectors result = Decompose(Transposed(X));
    std::swap(result.left, result.right);
    return result;
  }
  Table columns = Transposed(X);
  const std::size_t n = columns.size();
  Table turns(n, Vector(n, 0.0));
  for (std::size_t i = 0; i < n; ++i) turns[i][i] = 1.0;
  bool turned = true;
  for (int sweep = 0; turned && sweep < 60; ++sweep) {
    turned = false;
    for (std::size_t i = 0; i < n; ++i)
      for (std::size_t j = i + 1; j < n; ++j)
        turned = Orthogonalise(&columns[i], &columns[j], &turns[i], &turns[j]) || turned;
  }
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::sort(order.begin(), order.end(),
            [&](std::size_t i, std::size_t j) { return SquaresOf(columns[i]) > SquaresOf(columns[j]); });
  SingularVectors result;
  for (const std::size_t i : order) {
    result.values.push_back(std::sqrt(SquaresOf(columns[i])));
    if (result.values.back() > 0.0) Scale(&columns[i], 1.0 / result.values.back());
    result.left.push_back(columns[i]);
    result.right.push_back(turns[i]);
  }
  return result;
}

}  // namespace plain
