#include "kalmia/analysis/model/internal/Probabilities.h"

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/students_t.hpp>
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

double ShareAboveFisher(double f, double df1, double df2) {
  if (f <= 0.0) return 1.0;
  if (std::isinf(f)) return 0.0;
  return cdf(complement(boost::math::fisher_f_distribution<double>(df1, df2), f));
}

}  // namespace kalmia::analysis
