#include "kalmia/analysis/chart/internal/Distributions.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

/// Boost.Math 1.74's own quantiles give up in some far tails of t and F, and are good to 4e-11 only near the median of
/// t; in double precision those of F are off by up to 3 %. Its distribution functions are good to all digits of a
/// double where they are computed in more.
using Real = long double;

[[noreturn]] void Refuse(const char* why) { throw BadRequest(std::string("the quantile ") + why); }

// Positive doubles have the order of their bits.
std::uint64_t BitsOf(double number) {
  std::uint64_t bits = 0;
  std::memcpy(&bits, &number, sizeof bits);
  return bits;
}
double NumberOf(std::uint64_t bits) {
  double number = 0.0;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

/// The smallest double at which `isReached`; it stays so from there on. At most 64 questions, none of them at the ends,
/// where Boost.Math gives up.
template <class Question>
double FirstWhere(const Question& isReached) {
  std::uint64_t low = BitsOf(std::numeric_limits<double>::min()), high = BitsOf(std::numeric_limits<double>::max());
  const std::uint64_t smallest = low + 1, largest = high;
  while (high - low > 1) {
    const std::uint64_t middle = low + (high - low) / 2;
    (isReached(NumberOf(middle)) ? high : low) = middle;
  }
  if (high == smallest) Refuse("is nearer to 0 than 2.2e-308");
  if (high == largest) Refuse("is beyond 1.79e308");
  return NumberOf(high);
}

/// `below` and `above` give the two tails of a number; they add up to 1, each good to its own size.
template <class Below, class Above>
double Solve(double share, Tail tail, const Below& below, const Above& above) {
  const bool takesOther = share > 0.5;
  const Real wanted = takesOther ? 1.0L - share : static_cast<Real>(share);
  const bool isUpper = (tail == Tail::Upper) != takesOther;
  try {
    if (isUpper) return FirstWhere([&](double x) { return above(x) < wanted; });
    return FirstWhere([&](double x) { return below(x) > wanted; });
  } catch (const Failure&) {
    throw;
  } catch (const std::exception&) {  // Boost.Math gives up on a series
    Refuse("cannot be computed with so many degrees of freedom");
  }
}

template <class Distribution>
double Solve(double share, Tail tail, const Distribution& distribution) {
  return Solve(
      share, tail, [&](Real x) { return cdf(distribution, x); },
      [&](Real x) { return cdf(complement(distribution, x)); });
}

}  // namespace

double QuantileOfAbsoluteNormal(double share, Tail tail) {
  const Real rootOfTwo = std::sqrt(2.0L);
  return Solve(
      share, tail, [&](Real x) { return boost::math::erf(x / rootOfTwo); },
      [&](Real x) { return boost::math::erfc(x / rootOfTwo); });
}

double QuantileOfAbsoluteT(double share, Tail tail, double df) {
  const boost::math::students_t_distribution<Real> t(df);
  const boost::math::fisher_f_distribution<Real> square(1.0L, df);  // near 0, where 1/2 would drown the share
  return Solve(
      share, tail, [&](Real x) { return cdf(square, x * x); }, [&](Real x) { return 2 * cdf(complement(t, x)); });
}

double QuantileOfChiSquared(double share, Tail tail, double df) {
  return Solve(share, tail, boost::math::chi_squared_distribution<Real>(df));
}

double QuantileOfF(double share, Tail tail, double df1, double df2) {
  return Solve(share, tail, boost::math::fisher_f_distribution<Real>(df1, df2));
}

}  // namespace kalmia::analysis
