#pragma once

namespace kalmia::analysis {

// What limits and tests take from distributions, by Boost.Math, degrees of freedom above 0. Quantiles x have
// P(X <= x) = share and are good to 1e-10 of x for shares from 0.5 to 0.9999, computed in long double: in double Boost
// 1.74 is off by up to 3 % in tails of F. Shares are good to 1e-12 of their size down to 1e-300.

double QuantileOfAbsoluteStudent(double share, double df);  ///< of |T|: both tails beyond it have 1 - share
double FisherQuantile(double share, double df1, double df2);
double BetaQuantile(double share, double a, double b);
double ChiSquareQuantile(double share, double df);

/// P(|T| > |t|); 0 for an infinite t.
double ShareBeyondStudent(double t, double df);

/// The same, many times of the same degrees: mostly in a tenth of the time.
class StudentShares {
 public:
  explicit StudentShares(double df);

  double Beyond(double t) const;

 private:
  double df_;
  double beta_;  ///< B(df / 2, 1 / 2)
};

/// P(F > f); 1 for f of 0 and below, 0 for an infinite f.
double ShareAboveFisher(double f, double df1, double df2);

}  // namespace kalmia::analysis
