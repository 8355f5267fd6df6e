#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Moments and correlation of a vector.

namespace {

constexpr double kNoEstimate = kalmia::kMissing;

template <class T>
class NCDataVectorStatistics : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorStatistics, CellTypes, CellTypeNames);

template <class T>
std::vector<T> PresentCells(const NCDataVector<T>& v) {
  std::vector<T> present;
  for (const T x : v)
    if (x != kHole<T>) present.push_back(x);
  return present;
}

/// The definitions, straight from the textbook, of cells without holes.
template <class T>
struct Moments {
  explicit Moments(const std::vector<T>& cells) : n(static_cast<long double>(cells.size())) {
    for (const T x : cells) mean += x / n;
    for (const T x : cells) variance += (x - mean) * (x - mean) / (n - 1);
    const long double sd = std::sqrt(variance);
    for (const T x : cells) {
      const long double z = (x - mean) / sd;
      cubes += z * z * z;
      fourthPowers += z * z * z * z;
    }
  }
  long double n, mean = 0, variance = 0, cubes = 0, fourthPowers = 0;
};

TYPED_TEST(NCDataVectorStatistics, MeanIsTheSumOverThePresentCells) {
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, 6}).GetMean(), 3);
  EXPECT_EQ(VectorOf<TypeParam>({1, kHole<TypeParam>, 2}).GetMean(), 1.5);
}

TYPED_TEST(NCDataVectorStatistics, MeanIsNoEstimateWithoutACell) {
  EXPECT_EQ(NCDataVector<TypeParam>().GetMean(), kNoEstimate);
  EXPECT_EQ(NCDataVector<TypeParam>(3).GetMean(), kNoEstimate);
}

TYPED_TEST(NCDataVectorStatistics, MeanTakesASumOfMinus99ForNoEstimate) {
  EXPECT_EQ(VectorOf<TypeParam>({-100, 1}).GetMean(), kNoEstimate);
}

TYPED_TEST(NCDataVectorStatistics, VarianceLeavesHolesOut) {
  EXPECT_EQ(VectorOf<TypeParam>({1, kHole<TypeParam>, 3}).GetVariance(), 2);
}

TYPED_TEST(NCDataVectorStatistics, VarianceOfOneCellIs0AndItsStandardDeviationNoEstimate) {
  const auto v = VectorOf<TypeParam>({kHole<TypeParam>, 5});
  EXPECT_EQ(v.GetVariance(), 0);
  EXPECT_EQ(v.GetStdDev(), kNoEstimate);
}

TYPED_TEST(NCDataVectorStatistics, VarianceAndStandardDeviationAreNoEstimateWithoutACell) {
  for (const auto& v : {NCDataVector<TypeParam>(), NCDataVector<TypeParam>(2)}) {
    EXPECT_EQ(v.GetVariance(), kNoEstimate);
    EXPECT_EQ(v.GetStdDev(), kNoEstimate);
  }
}

TYPED_TEST(NCDataVectorStatistics, VarianceAndStandardDeviationAreNoEstimateWhereTheMeanIsMinus99) {
  const auto v = VectorOf<TypeParam>({-100, -98});
  EXPECT_EQ(v.GetVariance(), kNoEstimate);
  EXPECT_EQ(v.GetStdDev(), kNoEstimate);
  EXPECT_EQ(v.GetSkewness(), kNoEstimate);
  EXPECT_EQ(v.GetKurtosis(), kNoEstimate);
}

TYPED_TEST(NCDataVectorStatistics, StandardDeviationIsTheRootOfTheVariance) {
  EXPECT_EQ(VectorOf<TypeParam>({1, 5, kHole<TypeParam>, 3, 3}).GetStdDev(), std::sqrt(8.0L / 3));
}

TYPED_TEST(NCDataVectorStatistics, MomentsAreThoseOfTheDefinitionsWithAndWithoutHoles) {
  for (const double holes : {0.0, 0.3}) {
    for (const int n : {4, 5, 16, 37, 200}) {
      const auto v = RandomVector<TypeParam>(n, holes, static_cast<unsigned>(n));
      const Moments<TypeParam> m(PresentCells(v));
      if (m.n < 4) continue;
      SCOPED_TRACE(testing::Message() << n << " cells, holes " << holes);
      // Cells are exact; sums of at most 200 terms below 3^4 in double err by less than 200 * 2^-53 of their absolute
      // terms, which for the mean and for the cubes may cancel: hence a bound on the terms' size, not on the sum's.
      const long double u = 200 * 0x1p-53L;
      EXPECT_NEAR(v.GetMean(), m.mean, 3 * u);
      EXPECT_NEAR(v.GetVariance(), m.variance, 9 * u);
      const long double scale = m.n / ((m.n - 1) * (m.n - 2));
      EXPECT_NEAR(v.GetSkewness(), m.cubes * scale, 10 * u * m.n * scale * 30);
      const long double kurtosis =
          m.fourthPowers * m.n * (m.n + 1) / ((m.n - 1) * (m.n - 2) * (m.n - 3)) -
          3 * (m.n - 1) * (m.n - 1) / ((m.n - 2) * (m.n - 3));
      EXPECT_NEAR(v.GetKurtosis(), kurtosis, 10 * u * (std::abs(kurtosis) + 100));
      EXPECT_NEAR(v.GetSkewnessTest(),
                  v.GetSkewness() / std::sqrt(6 * m.n * (m.n - 1) / ((m.n + 3) * (m.n + 1) * (m.n - 2))), 1e-15);
    }
  }
}

// SciPy 1.10.1 (Debian python3-scipy 1.10.1-2), scipy.stats.skew and kurtosis with bias=False: the adjusted
// Fisher-Pearson coefficient G1 and the excess G2. With z from the sample standard deviation, G1 is
// n sum(z^3) / ((n-1)(n-2)) and G2 the kurtosis here, so that both agree without a factor. The peer divides the biased
// moments first, so the last few of 53 bits differ: 1e-14 of numbers below 6.
TYPED_TEST(NCDataVectorStatistics, SkewnessAndKurtosisAreSciPysUnbiasedOnes) {
  const auto flat = VectorOf<TypeParam>({2, 8, 0, 4, 1, 9, 9, 0});
  EXPECT_NEAR(flat.GetSkewness(), 0.3305821804079746, 1e-14);
  EXPECT_NEAR(flat.GetKurtosis(), -2.098602258096087, 1e-14);
  const auto peaked = VectorOf<TypeParam>({1, 2, 2, 3, 3, 3, 4, 10});
  EXPECT_NEAR(peaked.GetSkewness(), 2.240256043894075, 1e-14);
  EXPECT_NEAR(peaked.GetKurtosis(), 5.669135802469135, 1e-14);
}

TYPED_TEST(NCDataVectorStatistics, SkewnessAndKurtosisAreNoEstimateBelowTwoCellsOrWithoutSpread) {
  const TypeParam hole = kHole<TypeParam>;
  for (const auto& v : {NCDataVector<TypeParam>(), NCDataVector<TypeParam>(3), VectorOf<TypeParam>({4, hole}),
                        VectorOf<TypeParam>({7, 7, 7, 7, 7})}) {
    EXPECT_EQ(v.GetSkewness(), kNoEstimate);
    EXPECT_EQ(v.GetSkewnessTest(), kNoEstimate);
    EXPECT_EQ(v.GetKurtosis(), kNoEstimate);
  }
}

TYPED_TEST(NCDataVectorStatistics, SkewnessOfTwoCellsIsTheFormulasZeroOverZero) {
  // z is +-1/sqrt(2), the cubes cancel to exactly 0, and n - 2 is 0.
  const auto v = VectorOf<TypeParam>({1, kHole<TypeParam>, 3});
  EXPECT_TRUE(std::isnan(v.GetSkewness()));
  EXPECT_TRUE(std::isnan(v.GetSkewnessTest()));
}

TYPED_TEST(NCDataVectorStatistics, KurtosisOfTwoOrThreeCellsIsNotFinite) {
  EXPECT_FALSE(std::isfinite(VectorOf<TypeParam>({1, 3}).GetKurtosis()));
  EXPECT_FALSE(std::isfinite(VectorOf<TypeParam>({1, 2, 4}).GetKurtosis()));
}

TYPED_TEST(NCDataVectorStatistics, SkewnessOfThreeCellsIsTheFormula) {
  // mean 2, sd sqrt(3), z = (-1, -1, 2) / sqrt(3): sum of cubes 6 / 3^1.5, times 3 / 2. A few roundings to double here
  // and to long double there.
  const auto v = VectorOf<TypeParam>({1, 1, 4});
  EXPECT_NEAR(v.GetSkewness(), std::sqrt(3.0), 1e-15);
  EXPECT_NEAR(v.GetSkewnessTest(), std::sqrt(3.0) / std::sqrt(36.0 / 24), 1e-15);
}

TYPED_TEST(NCDataVectorStatistics, CorrelationOfProportionalVectorsIs1) {
  const auto v = VectorOf<TypeParam>({1, 2});
  EXPECT_EQ(v.Correlation(VectorOf<TypeParam>({2, 4})), 1);
  EXPECT_EQ(v.Correlation(VectorOf<TypeParam>({-2, -4})), -1);
}

TYPED_TEST(NCDataVectorStatistics, CorrelationIsNotCentred) {
  // Around the means these two are exactly opposed; around 0 they are not.
  EXPECT_EQ(VectorOf<TypeParam>({1, 2}).Correlation(VectorOf<TypeParam>({2, 1})), 4.0L / 5);
}

TYPED_TEST(NCDataVectorStatistics, CorrelationAtTheLimitItselfIsTheNumerator) {
  // The product of the sums of squares is 1e-30 rounded, exactly the limit, only where cells are doubles.
  const auto tiny = VectorOf<double>({1e-15});
  EXPECT_EQ(tiny.Correlation(VectorOf<double>({1})), static_cast<long double>(1e-15));
}

TYPED_TEST(NCDataVectorStatistics, CorrelationTakesPairsOnly) {
  const TypeParam hole = kHole<TypeParam>;
  const auto a = VectorOf<TypeParam>({1, 2, 1000, hole});
  EXPECT_EQ(a.Correlation(VectorOf<TypeParam>({2, 4, hole, 1000})), 1);
}

TYPED_TEST(NCDataVectorStatistics, CorrelationIsNoEstimateWithoutAPair) {
  const TypeParam hole = kHole<TypeParam>;
  EXPECT_EQ(VectorOf<TypeParam>({1, hole}).Correlation(VectorOf<TypeParam>({hole, 1})), kNoEstimate);
  EXPECT_EQ(NCDataVector<TypeParam>().Correlation(NCDataVector<TypeParam>()), kNoEstimate);
}

TYPED_TEST(NCDataVectorStatistics, CorrelationIsTheNumeratorWhereTheSquaresVanish) {
  const TypeParam zero = 0, tiny = static_cast<TypeParam>(0x1p-50), larger = static_cast<TypeParam>(0x1p-49);
  EXPECT_EQ(VectorOf<TypeParam>({zero, zero}).Correlation(VectorOf<TypeParam>({1, 2})), 0);
  // 2^-50 squared is 2^-100 = 7.9e-31, not above 1e-30; 2^-49 against 2^-50 gives 2^-99 = 1.6e-30 for the root.
  EXPECT_EQ(VectorOf<TypeParam>({tiny}).Correlation(VectorOf<TypeParam>({1})), tiny);
  const TypeParam half = static_cast<TypeParam>(0x1p-25);
  EXPECT_EQ(VectorOf<TypeParam>({half}).Correlation(VectorOf<TypeParam>({half})), 0x1p-50L);
  EXPECT_EQ(VectorOf<TypeParam>({larger}).Correlation(VectorOf<TypeParam>({2})), 1);
}

TYPED_TEST(NCDataVectorStatistics, StatisticsOfANaNAreNaNAndNoHole) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const auto v = VectorOf<TypeParam>({1, nan, 3});
  EXPECT_EQ(v.GetNumMisVal(), 0);
  EXPECT_TRUE(std::isnan(v.GetMean()));
  EXPECT_TRUE(std::isnan(v.GetVariance()));
  EXPECT_TRUE(std::isnan(v.GetSkewness()));
}

}  // namespace
