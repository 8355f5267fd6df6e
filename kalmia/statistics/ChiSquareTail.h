#pragma once

namespace kalmia {

/// The probability that chi-square exceeds a value, at whole degrees of freedom from 1 on; the relative error stays
/// below 1e-12. Source: Abramowitz & Stegun (1964), 26.4.4, 26.4.5 and 6.5.29.
class ChiSquareTail {
 public:
  explicit ChiSquareTail(int degreesOfFreedom);
  double operator()(double chiSquare) const;

 private:
  double half_;      ///< of the degrees of freedom
  double logGamma_;  ///< ln Gamma(half_)
};

}  // namespace kalmia
