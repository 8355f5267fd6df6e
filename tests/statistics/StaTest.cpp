#include "kalmia/statistics/Sta.h"

#include <gtest/gtest.h>

#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>
#include <limits>

#include "kalmia/statistics/internal/IncompleteBeta.h"

namespace {

namespace math = boost::math;

/// What rounding of the log gammas to float does to the front factor of I(a, b, x), and so to I or 1 - I, relatively;
/// with the end of the continued fraction (3e-7), the series of log gamma itself (2e-10 in theory, a few 1e-9 from its
/// printed digits), and the rounding of a result to float.
double RelativeError(double a, double b) {
  const double logGammas = std::fabs(std::lgamma(a + b)) + std::fabs(std::lgamma(a)) + std::fabs(std::lgamma(b));
  return 0x1p-24 * logGammas + 2 * 3e-7 + 0x1p-23;
}

// ---- Student's t

/// The bisection ends 6.1e-5 from the crossing at most; q is rounded to float, and it or 1 - q wrong by that relative
/// error; and x = df / (t^2 + df) is rounded to float, which hides differences of t^2 of (t^2 + df)^2 / df * 2^-24.
double ErrorOfT(double p, double df, double t) {
  const double density = 2 * math::pdf(math::students_t(df), t);
  const double hidden = (t * t + df) * (t * t + df) / df * 0x1p-24;
  const double ofQ = std::fmax(p, 1 - p) * RelativeError(df / 2, 0.5) + 0x1p-24 * 4;
  return 6.2e-5 + ofQ / density + std::sqrt(t * t + hidden) - t;
}

TEST(Sta, QuantilesOfTAreThoseOfTheDistributionUpToTheirArithmetic) {
  for (const double df : {1.0, 2.0, 3.0, 5.0, 10.0, 30.0, 100.0, 300.0, 1000.0}) {
    for (const float p : {1e-6F, 1e-3F, 0.1F, 0.5F, 0.9F, 0.95F, 0.99F, 0.999F, 1 - 0x1p-20F}) {
      const double exact = math::quantile(math::students_t(df), (1 + static_cast<double>(p)) / 2);
      if (exact > 64) {
        EXPECT_GT(Sta::GetStudentsT(p, static_cast<float>(df), false), 63.99F);
        continue;
      }
      const float t = Sta::GetStudentsT(p, static_cast<float>(df), false);
      EXPECT_NEAR(t, exact, ErrorOfT(p, df, exact)) << p << ' ' << df;
    }
  }
}

TEST(Sta, QuantilesOfTAreThoseOfSciPy) {
  struct { float p, df; double t; } const scipy[] = {  // scipy.stats.t.ppf((1 + p) / 2, df), SciPy 1.10.1
      {0.5F, 1, 1.0000000000133888}, {0.9F, 2, 2.919985580355516}, {0.95F, 5, 2.5705818366147395},
      {0.99F, 10, 3.169272667175838}, {0.999F, 30, 3.6459586349971502}, {0.95F, 1000, 1.9623390808264074},
      {1 - 0x1p-20F, 1000, 4.931786783169842}, {1e-6F, 3, 1.3603495230813762e-06}};
  for (const auto& known : scipy)
    EXPECT_NEAR(Sta::GetStudentsT(known.p, known.df, false), known.t, ErrorOfT(known.p, known.df, known.t));
}

TEST(Sta, WithTenThousandDegreesOfFreedomTIsNearlyNormalButForTheRoundingOfLogGamma) {
  // Exactly 1.9602; log gamma of 5000 is a float with steps of 0.002, which moves t by 1.3e-3.
  EXPECT_NEAR(Sta::GetStudentsT(0.95F, 10000, false), 1.9615F, 2e-4F);
  EXPECT_EQ(Sta::GetStudentsT(0.975F, 10000, true), Sta::GetStudentsT(0.95F, 10000, false));
  EXPECT_NEAR(Sta::GetStudentsT(0.9F, 10000, false), 1.6315F, 2e-4F);  // exactly 1.6450
  // Up to 0.01726 = sqrt(10000 * 2^-25) x = df / (t^2 + df) rounds to 1; the bisection comes as near as 1e-4.
  EXPECT_NEAR(Sta::GetStudentsT(0.0F, 10000, false), std::sqrt(10000 * 0x1p-25F), 1e-4F);
}

TEST(Sta, ExtremeProbabilitiesOfTGiveTheEndsOfTheBisection) {
  EXPECT_EQ(Sta::GetStudentsT(1.0F, 5, false), 64 - 0x1p-14F) << "the last middle";
  EXPECT_GT(Sta::GetStudentsT(0.0F, 5, false), 0.0F);
  EXPECT_LT(Sta::GetStudentsT(0.0F, 5, false), std::sqrt(5 * 0x1p-23F)) << "closer to 0, df / (t^2 + df) rounds to 1";
  EXPECT_EQ(Sta::GetStudentsT(0.5F, 5, true), Sta::GetStudentsT(0.0F, 5, false));
}

TEST(Sta, ProbabilitiesOfTOutsideTheirRangeGiveZero) {
  EXPECT_EQ(Sta::GetStudentsT(-0.01F, 5, false), 0.0F);
  EXPECT_EQ(Sta::GetStudentsT(1.01F, 5, false), 0.0F);
  EXPECT_EQ(Sta::GetStudentsT(0.4F, 5, true), 0.0F) << "two-sided: -0.2";
  EXPECT_EQ(Sta::GetStudentsT(std::numeric_limits<float>::quiet_NaN(), 5, false), 0.0F);
}

// ---- F

TEST(Sta, TailProbabilitiesOfFAreThoseOfTheDistributionUpToTheirArithmetic) {
  for (const double df1 : {1.0, 2.0, 5.0, 20.0, 100.0, 1000.0}) {
    for (const double df2 : {1.0, 3.0, 10.0, 50.0, 1000.0}) {
      for (const float f : {0.01F, 0.3F, 0.9F, 1.0F, 1.1F, 2.0F, 5.0F, 40.0F}) {
        const double exact = math::cdf(math::complement(math::fisher_f(df1, df2), static_cast<double>(f)));
        const double tail = std::fmin(exact, 1 - exact), relative = RelativeError(df1 / 2, df2 / 2);
        // The smaller side is computed from the front factor, or as 1 minus the other one, which then is large.
        EXPECT_NEAR(Sta::PFTest(f, static_cast<float>(df1), 1.0F, static_cast<float>(df2)), exact,
                    std::fmax(tail, 0.5) * relative + 0x1p-23)
            << df1 << ' ' << df2 << ' ' << f;
      }
    }
  }
}

TEST(Sta, TailProbabilitiesOfFAreThoseOfSciPy) {
  struct { float f1, df1, f2, df2; double p; } const scipy[] = {  // scipy.stats.f.sf(f1 / f2, df1, df2), SciPy 1.10.1
      {3, 2, 1, 10, 0.095367431640625}, {1, 5, 1, 5, 0.5}, {1, 1, 4, 7, 0.6324071356892844},
      {2.5F, 10, 1, 100, 0.01009520838004781}, {10, 3, 2, 4, 0.07701871540307632},
      {0.5F, 20, 1, 3, 0.8535611969133786}};
  for (const auto& known : scipy)
    EXPECT_NEAR(Sta::PFTest(known.f1, known.df1, known.f2, known.df2), known.p,
                RelativeError(known.df1 / 2, known.df2 / 2));
}

TEST(Sta, ProbabilitiesOfBothSidesOfFAddUpToOne) {
  for (const float f : {0.2F, 0.7F, 1.5F, 6.0F})
    EXPECT_NEAR(Sta::PFTest(f, 4, 1, 9) + Sta::PFTest(1, 9, f, 4), 1.0F, 2 * RelativeError(2, 4.5));
}

TEST(Sta, VariancesThatAreMissingNegativeOrZeroHaveFixedProbabilities) {
  EXPECT_EQ(Sta::PFTest(-99, 3, 1, 3), -99.0F);
  EXPECT_EQ(Sta::PFTest(1, 3, -99, 3), -99.0F);
  EXPECT_EQ(Sta::PFTest(-1e-9F, 3, 1, 3), -99.0F);
  EXPECT_EQ(Sta::PFTest(1, 3, -5, 3), -99.0F);
  EXPECT_EQ(Sta::PFTest(1, 3, 0, 3), 0.0F);
  EXPECT_EQ(Sta::PFTest(0, 3, 1, 3), 1.0F);
  EXPECT_EQ(Sta::PFTest(0, 3, 0, 3), 1.0F) << "not larger: the second branch";
}

TEST(Sta, CriticalValuesOfFAreThoseOfSciPy) {
  struct { float df1, df2, p; double f; } const scipy[] = {  // scipy.stats.f.isf(p, df1, df2), SciPy 1.10.1
      {1, 10, 0.05F, 4.9646027437307145}, {5, 2, 0.01F, 99.29929647786403}, {10, 100, 0.5F, 0.9404771569769149},
      {3, 30, 0.001F, 7.054457146591116}, {100, 1000, 0.95F, 0.7717185388513124}, {2, 5, 1e-4F, 97.0267926383787}};
  for (const auto& known : scipy) {
    const math::fisher_f distribution(known.df1, known.df2);
    const double slope = math::pdf(distribution, known.f);
    const double p = known.p, tail = std::fmax(p, 0.5);
    const double error = (tail * RelativeError(known.df1 / 2, known.df2 / 2) + 0x1p-23) / slope;
    EXPECT_NEAR(Sta::FFTest(known.df1, known.df2, known.p), known.f, 5e-5 + 1e-5 * known.f + error) << p;
  }
}

TEST(Sta, CriticalValuesOfFOutsideTheirRangeAreMinusOne) {
  for (const float p : {0.0F, 1.0F, -0.1F, 1.1F}) EXPECT_EQ(Sta::FFTest(3, 5, p), -1.0F);
  EXPECT_EQ(Sta::FFTest(3, 5, std::numeric_limits<float>::quiet_NaN()), -1.0F);
}

TEST(Sta, CriticalValuesOfFStayBetweenTheEndsOfTheBisection) {
  EXPECT_NEAR(Sta::FFTest(1, 1, 1e-3F), 99999.0F, 1.0F) << "exactly 405284, beyond the upper end";
  EXPECT_LT(Sta::FFTest(1, 1, 0.9999F), 6e-5F);
}

TEST(Sta, FirstGuessBeyondTheUpperEndEndsAtOnceBetweenTheTwo) {
  // The guess 1 / p = 1e6 is too small a value still, becomes the lower end above the upper one: their middle.
  EXPECT_NEAR(Sta::FFTest(1, 1, 1e-6F), (1e6F + 99999.0F) / 2, 1.0F);
}

// ---- The functions underneath

TEST(IncompleteBeta, IsThatOfTheDefinitionUpToItsArithmetic) {
  for (const double a : {0.5, 1.0, 2.5, 20.0}) {
    for (const double b : {0.5, 3.0, 40.0}) {
      EXPECT_EQ(kalmia::IncompleteBeta(a, b, -1), 0.0);
      EXPECT_EQ(kalmia::IncompleteBeta(a, b, 0), 0.0);
      EXPECT_EQ(kalmia::IncompleteBeta(a, b, 1), 1.0);
      EXPECT_EQ(kalmia::IncompleteBeta(a, b, 2), 1.0);
      for (const double x : {0.01, 0.3, 0.5, 0.9})
        EXPECT_NEAR(kalmia::IncompleteBeta(a, b, x), math::ibeta(a, b, x), RelativeError(a, b));
    }
  }
}

TEST(LogGamma, IsTheLogarithmRoundedToFloat) {
  for (const double x : {0.5, 1.0, 1.5, 2.0, 7.0, 100.0, 5000.0}) {
    // The series is good to 2e-10, its printed coefficients to 1e-8; then half a step of float.
    EXPECT_NEAR(kalmia::LogGamma(x), std::lgamma(x), 2e-8 + 0x1p-24 * std::fabs(std::lgamma(x))) << x;
  }
}

TEST(Sta, BinomialCoefficientsAreTheCountsUpToLogGamma) {
  // exp of three rounded log gammas, of at most 15.1 each.
  EXPECT_NEAR(static_cast<double>(Sta::BinomialCoefficient(10, 3)), 120.0, 120 * 4e-6);
  EXPECT_NEAR(static_cast<double>(Sta::BinomialCoefficient(10, 0)), 1.0, 4e-6);
  EXPECT_NEAR(static_cast<double>(Sta::BinomialCoefficient(6, 6)), 1.0, 4e-6);
}

}  // namespace
