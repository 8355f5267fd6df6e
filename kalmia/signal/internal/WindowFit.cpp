#include "kalmia/signal/internal/WindowFit.h"

#include "kalmia/kernels/decomposition/LUDecomposition.h"
#include "kalmia/support/Exception.h"

namespace kalmia {

namespace {

float Square(float x) { return x * x; }

float Cube(float x) { return static_cast<float>(double{x} * x * x); }

WindowFit FailedFit() {
  WindowFit fit;
  for (float& coefficient : fit.coefficients) coefficient = kMissingCell<float>;
  return fit;
}

}  // namespace

void ThrowIllegalOrder() { throw Exception("Illegal derivate order"); }

float WindowFit::GetYHat(float x) const {
  const double c0 = coefficients[0], c1 = coefficients[1], c2 = coefficients[2];
  if (x == 0 && xMean == 0 && x3Mean == 0) return static_cast<float>(yMean - c1 * x2Mean);
  const float d = x - xMean;
  const double cubic = c2 == 0 ? 0 : c2 * (double{Cube(d)} - x3Mean);  // far away d^3 is infinite as a float
  return static_cast<float>(yMean + c0 * d + c1 * (double{Square(d)} - x2Mean) + cubic);
}

float WindowFit::GetDerivate(float x, int order) const {
  const double c0 = coefficients[0], c1 = coefficients[1], c2 = coefficients[2];
  const double d = x - xMean;
  const bool middle = x == 0 && xMean == 0;  // there nothing but its own coefficient takes part, were others infinite
  switch (order) {
    case 1: return middle ? coefficients[0] : static_cast<float>(2 * c1 * d + c0 + 3 * c2 * d * d);
    case 2: return static_cast<float>(middle ? 2 * c1 : 2 * c1 + 6 * c2 * d);
    case 3: return static_cast<float>(6 * c2);
    default: ThrowIllegalOrder();
  }
}

void PositionPowers::Set(const std::vector<float>& positions) {
  count_ = positions.size();
  cells_.resize(count_ * static_cast<std::size_t>(order_));
  for (std::size_t i = 0; i < count_; ++i) {
    cells_[i] = positions[i];
    cells_[count_ + i] = Square(positions[i]);
    if (order_ == kMostCoefficients) cells_[2 * count_ + i] = Cube(positions[i]);
  }
}

float PositionPowers::Centre(int power) {
  float* cells = cells_.data() + static_cast<std::size_t>(power - 1) * count_;
  double sum = 0;
  for (std::size_t i = 0; i < count_; ++i) sum += cells[i];
  const float mean = static_cast<float>(sum / static_cast<double>(count_));
  for (std::size_t i = 0; i < count_; ++i) cells[i] -= mean;
  return mean;
}

double PositionPowers::Product(int power, int otherPower) const {
  const float* a = Power(power);
  const float* b = Power(otherPower);
  double sum = 0;
  for (std::size_t i = 0; i < count_; ++i) sum += double{a[i]} * b[i];
  return sum;
}

bool PositionPowers::GetFilters(std::vector<double>& filters) const {
  float normal[kMostCoefficients][kMostCoefficients + 1], inverse[kMostCoefficients][kMostCoefficients + 1];
  float* normalRows[kMostCoefficients + 1] = {};
  float* inverseRows[kMostCoefficients + 1] = {};
  for (int k = 1; k <= order_; ++k) {
    normalRows[k] = normal[k - 1];
    inverseRows[k] = inverse[k - 1];
    for (int l = 1; l <= order_; ++l) normalRows[k][l] = static_cast<float>(Product(k, l));
  }
  std::vector<int> order;
  if (!DecomposeLU(normalRows, order_, order)) return false;
  InvertLU<float>(normalRows, order_, order, inverseRows);

  filters.assign(cells_.size(), 0.0);
  for (int k = 1; k <= order_; ++k) {
    double* filter = filters.data() + static_cast<std::size_t>(k - 1) * count_;
    for (int l = 1; l <= order_; ++l)
      for (std::size_t i = 0; i < count_; ++i) filter[i] += double{inverseRows[k][l]} * Power(l)[i];
    for (std::size_t i = 0; i < count_; ++i) filter[i] = static_cast<float>(filter[i]);
  }
  return true;
}

WindowFit FitterWithHoles::Fit(const float* y) {
  positions_.clear();
  values_.clear();
  double ySum = 0, xSum = 0;
  for (int i = 0; i < window_; ++i) {
    if (y[i] == kMissingCell<float>) continue;
    values_.push_back(y[i]);
    positions_.push_back(static_cast<float>(i - window_ / 2));
    ySum += values_.back();
    xSum += positions_.back();
  }
  const std::size_t count = values_.size();
  if (static_cast<int>(count) <= order_) return FailedFit();

  WindowFit fit;
  fit.yMean = static_cast<float>(ySum / static_cast<double>(count));
  fit.xMean = static_cast<float>(xSum / static_cast<double>(count));
  for (float& position : positions_) position -= fit.xMean;
  powers_.Set(positions_);
  fit.x2Mean = powers_.Centre(2);
  if (order_ == kMostCoefficients) fit.x3Mean = powers_.Centre(3);
  if (!powers_.GetFilters(filters_)) return FailedFit();
  const double* filter = filters_.data();
  for (int k = 0; k < order_; ++k, filter += count) {
    double sum = 0;
    for (std::size_t r = 0; r < count; ++r) sum += (double{values_[r]} - fit.yMean) * filter[r];
    fit.coefficients[k] = static_cast<float>(sum);
  }
  return fit;
}

}  // namespace kalmia
