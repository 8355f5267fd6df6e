#include "kalmia/analysis/steps/internal/WindowStep.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

/// Windows between two looks whether to stop. The widest one, with holes, takes a few milliseconds.
constexpr int kWindowsAtOnce = 256;
constexpr int kMostDegree = 3;

using Coefficients = std::array<double, kMostDegree + 1>;

double SumOfProducts(const std::vector<double>& a, const std::vector<double>& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

/// Polynomials that are orthogonal over some places u, more of them than the degree:
///   q_0 = 1,  q_(k+1)(u) = (u - a_k) q_k(u) - b_k q_(k-1)(u),
///   a_k = sum u q_k^2 / sum q_k^2,  b_k = sum q_k^2 / sum q_(k-1)^2.
/// Source: Forsythe (1957), J. Soc. Ind. Appl. Math. 5, 74-88.
class OrthogonalPolynomials {
 public:
  OrthogonalPolynomials(const std::vector<double>& places, int degree) : degree_(degree) {
    values_[0].assign(places.size(), 1.0);
    for (int d = 0;; ++d) {
      const auto k = static_cast<std::size_t>(d);
      squares_[k] = SumOfProducts(values_[k], values_[k]);
      if (d == degree) return;
      for (std::size_t i = 0; i < places.size(); ++i) a_[k] += places[i] * values_[k][i] * values_[k][i];
      a_[k] /= squares_[k];
      b_[k] = d == 0 ? 0.0 : squares_[k] / squares_[k - 1];
      values_[k + 1].resize(places.size());
      for (std::size_t i = 0; i < places.size(); ++i) {
        const double before = d == 0 ? 0.0 : values_[k - 1][i];
        values_[k + 1][i] = (places[i] - a_[k]) * values_[k][i] - b_[k] * before;
      }
    }
  }

  /// sum q_k y / sum q_k^2 for each k: the polynomial of least squares through y is the sum of these times q_k.
  Coefficients Fit(const std::vector<double>& y) const {
    Coefficients fit{};
    for (std::size_t k = 0; k <= Degree(); ++k) fit[k] = SumOfProducts(values_[k], y) / squares_[k];
    return fit;
  }

  /// The derivative of that order, 0 to 3, of each q_k at u.
  Coefficients At(double u, int order) const {
    std::array<Coefficients, kMostDegree + 1> q{};  // by orders
    q[0][0] = 1.0;
    for (std::size_t k = 0; k < Degree(); ++k) {
      for (std::size_t d = 0; d <= static_cast<std::size_t>(order); ++d) {
        q[d][k + 1] = (u - a_[k]) * q[d][k];
        if (d > 0) q[d][k + 1] += static_cast<double>(d) * q[d - 1][k];
        if (k > 0) q[d][k + 1] -= b_[k] * q[d][k - 1];
      }
    }
    return q[static_cast<std::size_t>(order)];
  }

  /// For each place the weight that its y has in the derivative of that order at u.
  std::vector<double> WeightsAt(double u, int order) const {
    const Coefficients q = At(u, order);
    std::vector<double> weights(values_[0].size(), 0.0);
    for (std::size_t k = 0; k <= Degree(); ++k) {
      for (std::size_t i = 0; i < weights.size(); ++i) weights[i] += q[k] * values_[k][i] / squares_[k];
    }
    return weights;
  }

 private:
  std::size_t Degree() const { return static_cast<std::size_t>(degree_); }

  int degree_;
  std::array<std::vector<double>, kMostDegree + 1> values_;  ///< of each q_k at the places
  Coefficients squares_{};
  Coefficients a_{};
  Coefficients b_{};
};

}  // namespace

WindowStep::WindowStep(const LearntStep& learnt)
    : degree_(learnt.step.Polynomial()),
      order_(learnt.step.kind == StepKind::Derivative ? learnt.step.Whole(0) : 0),
      width_(learnt.step.Window()),
      half_(width_ / 2),
      unit_(std::pow(half_ * ShortestDouble(learnt.spacing), order_)) {
  std::vector<double> places;
  for (int i = 0; i < width_; ++i) places.push_back(Place(i));
  weights_ = OrthogonalPolynomials(places, degree_).WeightsAt(0.0, order_);
  for (double& weight : weights_) weight /= unit_;
}

void WindowStep::Evaluate(const double* window, int from, int to, double* cells) const {
  std::vector<double> places;
  std::vector<double> present;
  for (int i = 0; i < width_; ++i) {
    if (std::isnan(window[i])) continue;
    places.push_back(Place(i));
    present.push_back(window[i]);
  }
  std::fill(cells, cells + (to - from), std::numeric_limits<double>::quiet_NaN());
  if (static_cast<int>(present.size()) <= degree_) return;
  const OrthogonalPolynomials polynomials(places, degree_);
  const Coefficients fit = polynomials.Fit(present);
  for (int i = from; i < to; ++i) {
    const Coefficients q = polynomials.At(Place(i), order_);
    cells[i - from] = std::inner_product(fit.begin(), fit.end(), q.begin(), 0.0) / unit_;
  }
}

void WindowStep::EvaluateMiddles(const double* cells, int count, double* middles) const {
  std::fill(middles, middles + count, 0.0);
  for (int k = 0; k < width_; ++k) {
    const double weight = weights_[static_cast<std::size_t>(k)];
    for (int i = 0; i < count; ++i) middles[i] += weight * cells[k + i];
  }
}

std::vector<double> WindowStep::Slid(const std::vector<double>& row, WorkProgress* progress) const {
  const auto n = static_cast<int>(row.size());
  const int windows = n - width_ + 1;
  std::vector<double> cells(row.size());
  int lastHole = -1;
  int looked = 0;  // cells before this one were searched for holes
  for (int begin = 0; begin < windows; begin += kWindowsAtOnce) {
    progress->Ask();
    const int count = std::min(kWindowsAtOnce, windows - begin);
    // A hole makes the sums of its windows missing; these are fitted to the cells that are there.
    EvaluateMiddles(row.data() + begin, count, cells.data() + begin + half_);
    for (int window = begin; window < begin + count; ++window) {
      for (; looked < window + width_; ++looked) {
        if (std::isnan(row[static_cast<std::size_t>(looked)])) lastHole = looked;
      }
      if (lastHole < window) continue;
      Evaluate(row.data() + window, half_, half_ + 1, cells.data() + window + half_);
    }
  }
  Evaluate(row.data(), 0, half_, cells.data());
  Evaluate(row.data() + windows - 1, half_ + 1, width_, cells.data() + n - half_);
  return cells;
}

}  // namespace kalmia::analysis
