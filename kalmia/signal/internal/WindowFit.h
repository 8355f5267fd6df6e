#pragma once

#include <vector>

#include "kalmia/containers/Missing.h"

namespace kalmia {

constexpr int kMostCoefficients = 3;

/// The polynomial yMean + c0 d + c1 (d^2 - x2Mean) + c2 (d^3 - x3Mean) with d = x - xMean. c2 of a quadratic is 0.
struct WindowFit {
  bool HasFailed() const { return coefficients[0] == kMissingCell<float>; }
  float GetYHat(float x) const;
  /// Its derivative of order 1, 2 or 3 at x; Exception "Illegal derivate order" for another.
  float GetDerivate(float x, int order) const;

  float coefficients[kMostCoefficients] = {};
  float yMean = 0;
  float xMean = 0;
  float x2Mean = 0;
  float x3Mean = 0;
};

[[noreturn]] void ThrowIllegalOrder();

/// The powers 1 to `order` of some positions, centred, and the filters that turn values there into coefficients.
class PositionPowers {
 public:
  explicit PositionPowers(int order) : order_(order) {}  ///< order: 2 or 3

  /// d, d^2 and d^3 of each position, each rounded to float.
  void Set(const std::vector<float>& positions);

  /// Subtracts the mean of a power (rounded to float) from it, and returns the mean.
  float Centre(int power);

  /// The rows of (A' A)^-1 A', A having a row for each position and a column for each power; every cell of both factors
  /// and of the result is rounded to float. False if A' A has a row of zeros.
  bool GetFilters(std::vector<double>& filters) const;

 private:
  const float* Power(int power) const { return cells_.data() + static_cast<std::size_t>(power - 1) * count_; }
  double Product(int power, int otherPower) const;

  int order_;
  std::size_t count_ = 0;
  std::vector<float> cells_;  ///< power by power
};

/// Fits to the present cells of windows; keeps its memory from one to the next.
class FitterWithHoles {
 public:
  FitterWithHoles(int window, int order) : window_(window), order_(order), powers_(order) {}

  /// The fit to the window that begins at y; HasFailed() where there is none.
  WindowFit Fit(const float* y);

 private:
  int window_, order_;
  PositionPowers powers_;
  std::vector<float> positions_, values_;
  std::vector<double> filters_;
};

}  // namespace kalmia
