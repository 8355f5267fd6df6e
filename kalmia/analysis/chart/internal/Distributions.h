#pragma once

#include "kalmia/analysis/chart/DistributionTail.h"

namespace kalmia::analysis {

// Quantiles x > 0 of distributions on the positive numbers: P(X < x) = share, or P(X > x) = share. Each is found by
// bisection of Boost.Math's distribution function, on the smaller of the two tails: 1 - share is taken only where it is
// exact, from 0.5 on. Good to 1e-11 of x for degrees of freedom from kLeastDf to kMostDf and any share of double
// precision above 0 and below 1; outside the result is not checked.
// Throws BadRequest where x is too large or too small for double precision.

double QuantileOfAbsoluteNormal(double share, Tail tail);  ///< of |Z|, Z standard normal
double QuantileOfAbsoluteT(double share, Tail tail, double df);  ///< of |T|, T with Student's distribution
double QuantileOfChiSquared(double share, Tail tail, double df);
/// Of the ratio of two variances.
double QuantileOfF(double share, Tail tail, double df1, double df2);

}  // namespace kalmia::analysis
