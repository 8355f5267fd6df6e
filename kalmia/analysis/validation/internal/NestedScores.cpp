#include "kalmia/analysis/validation/internal/NestedScores.h"

#include <cmath>
#include <utility>

namespace kalmia::analysis {

namespace {

constexpr double kSmallestSquare = 1e-12;  ///< of the length of a component beside those before it

}  // namespace

NestedScores::NestedScores(std::vector<double> gram, std::size_t components)
    : components_(components), factor_(std::move(gram)) {
  const auto row = [this](std::size_t i) { return &factor_[i * components_]; };
  for (std::size_t b = 0; b < components_; ++b) {
    double square = row(b)[b];
    for (std::size_t c = 0; c < b; ++c) square -= row(b)[c] * row(b)[c];
    const double length = square > kSmallestSquare ? std::sqrt(square) : 0.0;
    row(b)[b] = length;
    for (std::size_t i = b + 1; i < components_; ++i) {
      double product = row(i)[b];
      for (std::size_t c = 0; c < b; ++c) product -= row(i)[c] * row(b)[c];
      row(i)[b] = length > 0.0 ? product / length : 0.0;
    }
  }
}

void NestedScores::Solve(double* vector) const {
  for (std::size_t b = 0; b < components_; ++b) {
    const double* row = &factor_[b * components_];
    double rest = vector[b];
    for (std::size_t c = 0; c < b; ++c) rest -= row[c] * vector[c];
    vector[b] = row[b] > 0.0 ? rest / row[b] : 0.0;
  }
}

}  // namespace kalmia::analysis
