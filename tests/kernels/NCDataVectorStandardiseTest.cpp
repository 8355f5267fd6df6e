#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/kernels/simd/Lanes.h"
#include "testing/RandomTables.h"

// Standard normal variates, detrending and moments: how near they come to the definitions, and that every machine gives
// the same bits. What they do with holes and degenerate vectors is in containers/.

namespace {

template <class T>
class NCDataVectorStandardise : public ::testing::Test {
 protected:
  ~NCDataVectorStandardise() override { kalmia::simd::UseScalarTwins(false); }
};
TYPED_TEST_SUITE(NCDataVectorStandardise, CellTypes, CellTypeNames);

/// What all of them give.
template <class T>
struct Results {
  explicit Results(const NCDataVector<T>& v) : z(v.SNV()), withoutMean(v), withoutLine(v) {
    withoutMean.DetrendMean(mean);
    withoutLine.DetrendLinear(intercept, slope);
    skewness = v.GetSkewness();
    kurtosis = v.GetKurtosis();
    skewnessTest = v.GetSkewnessTest();
  }
  NCDataVector<T> z, withoutMean, withoutLine;
  long double mean = 0, intercept = 0, slope = 0, skewness = 0, kurtosis = 0, skewnessTest = 0;
};

TYPED_TEST(NCDataVectorStandardise, AnyMachineGivesTheSameBits) {
  for (const double holes : {0.0, 0.2}) {
    const auto v = RandomVector<TypeParam>(1003, holes, 8);
    const Results<TypeParam> lanes(v);
    kalmia::simd::UseScalarTwins(true);
    const Results<TypeParam> twins(v);
    kalmia::simd::UseScalarTwins(false);
    EXPECT_EQ(CellsOf(lanes.z), CellsOf(twins.z));
    EXPECT_EQ(CellsOf(lanes.withoutMean), CellsOf(twins.withoutMean));
    EXPECT_EQ(CellsOf(lanes.withoutLine), CellsOf(twins.withoutLine));
    EXPECT_EQ(lanes.mean, twins.mean);
    EXPECT_EQ(lanes.intercept, twins.intercept);
    EXPECT_EQ(lanes.slope, twins.slope);
    EXPECT_EQ(lanes.skewness, twins.skewness);
    EXPECT_EQ(lanes.kurtosis, twins.kurtosis);
  }
}

// What is wider than a double on one machine is not on another.
TYPED_TEST(NCDataVectorStandardise, EveryNumberReturnedIsADouble) {
  const Results<TypeParam> results(RandomVector<TypeParam>(1003, 0.2, 8));
  for (const long double number : {results.mean, results.intercept, results.slope, results.skewness, results.kurtosis,
                                   results.skewnessTest})
    EXPECT_EQ(number, static_cast<double>(number));
}

TYPED_TEST(NCDataVectorStandardise, SNVIsTheDefinitionRoundedToTheCells) {
  const auto v = RandomVector<TypeParam>(500, 0.2, 9);
  const NCDataVector<TypeParam> z = v.SNV();
  const long double mean = v.GetMean(), sd = v.GetStdDev();
  for (int i = 1; i <= 500; ++i) {
    if (v[i] == kHole<TypeParam>) continue;
    const long double expected = (v[i] - mean) / sd;
    // Once rounded to the cell. Before that mean and factor err by some units 2^-53 of numbers up to 3: at most 2^-50.
    const long double rounding = std::abs(expected) * std::numeric_limits<TypeParam>::epsilon() / 2;
    EXPECT_NEAR(z[i], expected, rounding + 0x1p-50L);
  }
}

TYPED_TEST(NCDataVectorStandardise, ALineIsFoundFarFromTheStartOfTheVector) {
  constexpr int n = 1 << 20;
  NCDataVector<TypeParam> v(n);
  for (const int i : {n - 40, n - 17, n - 3, n}) v(i, static_cast<TypeParam>(i - n));  // exact in a float
  long double intercept = 0, slope = 0;
  ASSERT_TRUE(v.LeastSquare(nullptr, intercept, slope));
  // From the origin among the four cells all sums are small whole numbers. Only the means, the slope and the way back
  // to position 0 are rounded: a few units 2^-53 of n.
  EXPECT_NEAR(slope, 1, 4 * 0x1p-53);
  EXPECT_NEAR(intercept, -n, 8 * n * 0x1p-53);
}

TYPED_TEST(NCDataVectorStandardise, ALineIsFoundUnderALargeOffset) {
  constexpr int n = 1000;
  constexpr double kOffset = 1 << 20;
  NCDataVector<TypeParam> v(n, TypeParam(0));
  for (int i = 1; i <= n; ++i) v(i, static_cast<TypeParam>(kOffset + i / 8));  // steps of 8, exact in a float
  NCDataVector<double> steps(n, 0.0);
  for (int i = 1; i <= n; ++i) steps(i, i / 8);
  long double intercept = 0, slope = 0, interceptOfSteps = 0, slopeOfSteps = 0;
  ASSERT_TRUE(v.LeastSquare(nullptr, intercept, slope));
  ASSERT_TRUE(steps.LeastSquare(nullptr, interceptOfSteps, slopeOfSteps));
  EXPECT_EQ(slope, slopeOfSteps);  // taken from the first cell the cells are the same
  EXPECT_NEAR(intercept, kOffset + interceptOfSteps, kOffset * 0x1p-52);  // rounded twice
}

TYPED_TEST(NCDataVectorStandardise, ALineOverCompleteCellsIsThatOverTheSameCellsBesideAHole) {
  const auto complete = RandomVector<TypeParam>(200, 0, 5);
  auto holed = complete;
  holed.push_back(kHole<TypeParam>);
  long double intercept = 0, slope = 0, interceptOfHoled = 0, slopeOfHoled = 0;
  complete.LeastSquare(nullptr, intercept, slope);
  holed.LeastSquare(nullptr, interceptOfHoled, slopeOfHoled);
  EXPECT_EQ(intercept, interceptOfHoled);  // sums over positions are whole numbers, here as there
  EXPECT_EQ(slope, slopeOfHoled);
}

}  // namespace
