#include "kalmia/statistics/Sta.h"

#include <algorithm>
#include <cmath>

#include "kalmia/containers/Missing.h"
#include "kalmia/statistics/internal/ExactTest.h"
#include "kalmia/statistics/internal/IncompleteBeta.h"

using kalmia::IncompleteBeta;
using kalmia::LogGamma;

namespace {

constexpr double kLargestT = 64;
constexpr double kToleranceOfT = 0.0001;
constexpr double kSmallestF = 1e-6, kLargestF = 99999;
constexpr double kTieTolerance = 1e-7;  ///< of ln p: tables that differ by less are equally probable
constexpr double kRelativeToleranceOfF = 1e-5, kToleranceOfF = 5e-5;

/// ln(n over k). Its log gammas are floats, whose few sums are exact here: tables that mirror each other come out
/// equally probable to the bit.
long double LogBinomial(double n, double k) {
  return static_cast<long double>(LogGamma(n + 1)) - LogGamma(k + 1) - LogGamma(n - k + 1);
}

/// The counts of a 2 x 2 table, whose margins may be beyond int, and the walk through those with the same margins; a
/// step gives ln of the ratio of the new table's probability to the old one's.
struct FourCells {
  double a, b, c, d;

  double ShrinkFirst() {
    const double logRatio = std::log(a * d) - std::log((b + 1) * (c + 1));
    --a, ++b, ++c, --d;
    return logRatio;
  }
  double GrowFirst() {
    const double logRatio = std::log(b * c) - std::log((a + 1) * (d + 1));
    ++a, --b, --c, ++d;
    return logRatio;
  }
  long double Probability() const {
    return std::exp(LogBinomial(a + b, a) + LogBinomial(c + d, c) - LogBinomial(a + b + c + d, a + c));
  }
};

float TwoByTwo(const FourCells& observed, Sta::SidedNess sidedNess) {
  const long double p0 = observed.Probability();
  long double sum = 0;
  const auto walk = [&](double steps, double (FourCells::*step)()) {
    FourCells table = observed;
    double logRatio = 0;  // to the observed table, so exact that what is equal counts as equal
    for (; steps > 0; --steps) {
      logRatio += (table.*step)();
      const long double p = table.Probability();
      if (sidedNess != Sta::TwoSided || p <= p0 || std::fabs(logRatio) < kTieTolerance) sum += p;
    }
  };
  if (sidedNess != Sta::RightSided) walk(std::min(observed.a, observed.d), &FourCells::ShrinkFirst);
  if (sidedNess != Sta::LeftSided) walk(std::min(observed.b, observed.c), &FourCells::GrowFirst);
  return static_cast<float>(p0 + sum);
}

}  // namespace

float Sta::GetStudentsT(float probability, float degreesOfFreedom, bool oneSided) {
  const double p = oneSided ? 2.0 * probability - 1.0 : probability;
  if (!(p >= 0 && p <= 1)) return 0;
  double lower = 0, upper = kLargestT, t = 0;
  do {
    t = (lower + upper) / 2;
    const auto x = static_cast<float>(degreesOfFreedom / (t * t + degreesOfFreedom));
    const auto q = static_cast<float>(1 - IncompleteBeta(degreesOfFreedom / 2.0, 0.5, x));
    (p < q ? upper : lower) = t;
  } while (upper - lower > kToleranceOfT);
  return static_cast<float>(t);
}

float Sta::PFTest(float f1, float df1, float f2, float df2) {
  if (f1 == kalmia::kMissing || f2 == kalmia::kMissing || f1 < 0 || f2 < 0) return kalmia::kMissing;
  const bool firstIsLarger = f2 < f1;
  if (firstIsLarger && f2 == 0) return 0;
  if (!firstIsLarger && f1 == 0) return 1;
  const double ratio = firstIsLarger ? static_cast<double>(f1) / f2 : static_cast<double>(f2) / f1;
  const double a = firstIsLarger ? df1 : df2, b = firstIsLarger ? df2 : df1;
  double r = IncompleteBeta(b / 2, a / 2, b / (ratio * a + b));
  if (r > 1) r = 2 - r;
  return static_cast<float>(firstIsLarger ? r : 1 - r);
}

float Sta::FFTest(float df1, float df2, float probability) {
  if (!(probability > 0 && probability < 1)) return -1;
  double lower = kSmallestF, upper = kLargestF, f = 1.0 / probability;
  while ((upper - lower) / upper > kRelativeToleranceOfF) {
    const float p = PFTest(static_cast<float>(f), df1, 1.0F, df2);
    (probability > p ? upper : lower) = f;
    f = (lower + upper) / 2;
    if (upper - lower <= kToleranceOfF) break;
  }
  return static_cast<float>(f);
}

long double Sta::GetTableProbability(int a, int b, int c, int d) {
  return FourCells{1.0 * a, 1.0 * b, 1.0 * c, 1.0 * d}.Probability();
}

long double Sta::BinomialCoefficient(int n, int k) { return std::exp(LogBinomial(n, k)); }

float Sta::GetFisherExactProbability(const int* table, int rows, int columns, bool hybrid, SidedNess sidedNess,
                                     int workspace) {
  if (rows == 2 && columns == 2)
    return TwoByTwo({1.0 * table[0], 1.0 * table[1], 1.0 * table[2], 1.0 * table[3]}, sidedNess);
  const kalmia::CochranConditions conditions =
      hybrid ? kalmia::CochranConditions{5.0, 80.0, 1.0} : kalmia::CochranConditions{-1.0, 100.0, 0.0};
  return static_cast<float>(kalmia::ExactTestOfIndependence(table, rows, columns, conditions, workspace));
}
