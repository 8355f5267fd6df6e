#include "kalmia/analysis/model/internal/Probabilities.h"

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <cmath>

namespace kalmia::analysis {

namespace {

using Real = long double;

constexpr double kManyDegrees = 1e9;  ///< beyond some 1e11 Boost 1.74 finds no quantile of chi-square

/// By E. B. Wilson, M. M. Hilferty, Proc. Natl. Acad. Sci. 17 (1931) 684-688; good to 1e-12 of it from 1e9 degrees on.
double ChiSquareQuantileOfManyDegrees(double share, double df) {
  const Real variance = 2.0L / (9.0L * df);
  const Real root = 1.0L - variance + quantile(boost::math::normal_distribution<Real>(), share) * std::sqrt(variance);
  return static_cast<double>(df * root * root * root);
}

constexpr double kDegreesOfPowers = 1000;  ///< powers of so many degrees, and fewer, lose no digits that were promised
constexpr double kNearMiddle = 1.5;        ///< of |t|: 1 less the share within loses no digit
constexpr double kQuickSeries = 0.8;       ///< ratio of terms

/// B_x(a, b), the incomplete beta function, of x = 1 - y. M. Abramowitz, I. A. Stegun, Handbook of Mathematical
/// Functions (1964), 26.5.4: x^a y^b / a times the sum of 1 and terms, each of them x (a + b + j) / (a + 1 + j) times
/// the one before.
double BetaSeries(double x, double y, double a, double b) {
  double term = 1.0, sum = 1.0;
  for (int j = 0; term > 1e-17 * sum; ++j) {
    term *= x * (a + b + j) / (a + 1.0 + j);
    sum += term;
  }
  return std::pow(x, a) * std::pow(y, b) / a * sum;
}

}  // namespace

double QuantileOfAbsoluteStudent(double share, double df) {
  const boost::math::students_t_distribution<Real> t(df);
  return static_cast<double>(quantile(complement(t, (1.0L - share) / 2)));
}

double FisherQuantile(double share, double df1, double df2) {
  return static_cast<double>(quantile(boost::math::fisher_f_distribution<Real>(df1, df2), share));
}

double BetaQuantile(double share, double a, double b) {
  return static_cast<double>(quantile(boost::math::beta_distribution<Real>(a, b), share));
}

double ChiSquareQuantile(double share, double df) {
  if (df > kManyDegrees) return ChiSquareQuantileOfManyDegrees(share, df);
  return static_cast<double>(quantile(boost::math::chi_squared_distribution<Real>(df), share));
}

double ShareBeyondStudent(double t, double df) {
  if (std::isinf(t)) return 0.0;
  return 2.0 * cdf(complement(boost::math::students_t_distribution<double>(df), std::fabs(t)));
}

StudentShares::StudentShares(double df) : df_(df), beta_(boost::math::beta(df / 2.0, 0.5)) {}

double StudentShares::Beyond(double t) const {
  const double square = t * t;
  const double within = square / (df_ + square), beyond = df_ / (df_ + square);
  if (!(df_ < kDegreesOfPowers) || !std::isfinite(square)) return ShareBeyondStudent(t, df_);
  if (std::fabs(t) <= kNearMiddle) return 1.0 - BetaSeries(within, beyond, 0.5, df_ / 2.0) / beta_;
  if (beyond <= kQuickSeries) return BetaSeries(beyond, within, df_ / 2.0, 0.5) / beta_;
  return ShareBeyondStudent(t, df_);
}

double ShareAboveFisher(double f, double df1, double df2) {
  if (f <= 0.0) return 1.0;
  if (std::isinf(f)) return 0.0;
  return cdf(complement(boost::math::fisher_f_distribution<double>(df1, df2), f));
}

}  // namespace kalmia::analysis
