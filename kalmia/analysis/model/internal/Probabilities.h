#pragma once

namespace kalmia::analysis {

// Quantiles and tail probabilities for limits and tests, by Boost.Math; degrees of freedom above 0. Quantiles x have
// P(X <= x) = share and are good to 1e-10 of x for shares from 0.5 to 0.9999. They are computed in long double, since
// Boost 1.74 is off by up to 3 % in tails of F in double. Shares are good to 1e-12 of their size down to 1e-300.
// chart/internal/Distributions.h has quantiles of shares further out, by bisection.

double QuantileOfAbsoluteStudent(double share, double df);  ///< of |T|: both tails beyond it have 1 - share
double FisherQuantile(double share, double df1, double df2);
double BetaQuantile(double share, double a, double b);
double ChiSquareQuantile(double share, double df);

/// P(|T| > |t|); 0 for an infinite t.
double ShareBeyondStudent(double t, double df);

/// ShareBeyondStudent for many t of the same degrees of freedom, mostly in a tenth of the time.
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
