#pragma once

namespace kalmia {

/// ln Gamma(x) for x > 0, rounded to float: what rests on it compares equal numbers as equal.
/// Source: Lanczos (1964), J. SIAM Numer. Anal. B 1, 86-96, with five terms.
float LogGamma(double x);

/// The regularised incomplete beta function I_x(a, b), a and b > 0; x is taken into 0 to 1. The continued fraction ends
/// at a relative change of 3e-7.
double IncompleteBeta(double a, double b, double x);

}  // namespace kalmia
