#include "kalmia/analysis/model/internal/Probabilities.h"

#include <boost/math/distributions/beta.hpp>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>

namespace kalmia::analysis {

namespace {

using Real = long double;

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
