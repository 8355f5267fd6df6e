#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/internal/LaneSum.h"
#include "testing/RandomTables.h"

// Sums, extremes and comparison.

namespace {

/// Sum of the terms in sixteen accumulators, term i in number i mod 16, folded in halves.
double LanesOneByOne(const std::vector<double>& terms) {
  double lane[16] = {};
  for (std::size_t i = 0; i < terms.size(); ++i) lane[i % 16] += terms[i];
  for (int half : {8, 4, 2, 1})
    for (int k = 0; k < half; ++k) lane[k] = lane[k] + lane[k + half];
  return lane[0];
}

TEST(LaneSum, GivesTheBitsOfItsDefinitionAtEveryLength) {
  for (int n = 0; n <= 67; ++n) {
    const NCDataVector<double> v = RandomVector<double>(n, 0.0, static_cast<unsigned>(n));
    const std::vector<double> terms = CellsOf(v);
    EXPECT_EQ(kalmia::LaneSum(n, [&](int i) { return terms[static_cast<std::size_t>(i)]; }), LanesOneByOne(terms)) << n;
  }
}

template <class T>
class NCDataVectorSums : public ::testing::Test {
 protected:
  static constexpr T kInfinity = std::numeric_limits<T>::infinity();
  static constexpr T kNaN = std::numeric_limits<T>::quiet_NaN();

  static long double Difference(std::initializer_list<T> a, std::initializer_list<T> b) {
    return VectorOf<T>(a).Difference(VectorOf<T>(b));
  }
};
TYPED_TEST_SUITE(NCDataVectorSums, CellTypes, CellTypeNames);

TYPED_TEST(NCDataVectorSums, OfNothing) {
  const NCDataVector<TypeParam> none;
  EXPECT_EQ(none.GetSS(), 0);
  EXPECT_EQ(none.GetSS(1.0L), 0);
  EXPECT_EQ(none.GetSum(), -99);
}

TYPED_TEST(NCDataVectorSums, OfHolesAlone) {
  const NCDataVector<TypeParam> holes(3);
  EXPECT_EQ(holes.GetSS(), -99);
  EXPECT_EQ(holes.GetSS(1.0L), -99);
  EXPECT_EQ(holes.GetSum(), -99);
}

TYPED_TEST(NCDataVectorSums, LeaveHolesOut) {
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, 3, -99, -5});
  EXPECT_EQ(v.GetSum(), -1);
  EXPECT_EQ(v.GetSS(), 35);
  EXPECT_EQ(v.GetSS(2.0L), 1 + 1 + 49);
}

TYPED_TEST(NCDataVectorSums, AgreeWithSumsInLongDoubleAtEveryLength) {
  for (double holes : {0.0, 0.3})
    for (int n = 1; n <= 67; ++n) {
      NCDataVector<TypeParam> v = RandomVector<TypeParam>(n, holes, static_cast<unsigned>(n));
      v(n, TypeParam(1));  // one cell at least is present
      long double sum = 0, absolute = 0, ss = 0, around = 0;
      for (TypeParam x : v)
        if (x != kHole<TypeParam>) {
          sum += x;
          absolute += std::fabs(x);
          ss += static_cast<long double>(x) * x;
          around += (x - 0.25L) * (x - 0.25L);
        }
      // Each term is rounded at most twice, each partial sum once: (n + 2) u of the sum of the absolute terms.
      const long double bound = (n + 2) * 0x1p-53L;
      EXPECT_LE(std::fabs(v.GetSum() - sum), bound * absolute);
      EXPECT_LE(std::fabs(v.GetSS() - ss), bound * ss);
      EXPECT_LE(std::fabs(v.GetSS(0.25L) - around), bound * around);
    }
}

TYPED_TEST(NCDataVectorSums, RunInDouble) {
  // In float 2^24 + 1 is 2^24.
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({16777216, 1});
  EXPECT_EQ(v.GetSum(), 16777217);
  EXPECT_EQ(VectorOf<TypeParam>({4097}).GetSS(), 4097.0L * 4097);
  EXPECT_EQ(VectorOf<TypeParam>({16777216}).GetSS(16777217.0L), 1);
}

TYPED_TEST(NCDataVectorSums, AreSpoiledByANaN) {
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, this->kNaN, -99});
  EXPECT_TRUE(std::isnan(v.GetSum()));
  EXPECT_TRUE(std::isnan(v.GetSS()));
  EXPECT_TRUE(std::isnan(v.GetSS(1.0L)));
}

TYPED_TEST(NCDataVectorSums, MinMaxOfThePresentCells) {
  TypeParam min = 1, max = 1;
  VectorOf<TypeParam>({-99, 3, -2000, -99, 7, 0}).GetMinMax(min, max);
  EXPECT_EQ(min, -2000);
  EXPECT_EQ(max, 7);
  VectorOf<TypeParam>({-99, 5}).GetMinMax(min, max);
  EXPECT_EQ(min, 5);
  EXPECT_EQ(max, 5);
}

TYPED_TEST(NCDataVectorSums, MinMaxPassesOverANaNUnlessItComesFirst) {
  TypeParam min = 1, max = 1;
  VectorOf<TypeParam>({-99, 3, this->kNaN, 7, this->kNaN, -5}).GetMinMax(min, max);
  EXPECT_EQ(min, -5);
  EXPECT_EQ(max, 7);
  VectorOf<TypeParam>({-99, this->kNaN, 3}).GetMinMax(min, max);  // the first present cell sets both; nothing is below
  EXPECT_TRUE(std::isnan(min));
  EXPECT_TRUE(std::isnan(max));
}

TYPED_TEST(NCDataVectorSums, MinMaxIsMissingWithoutAPresentCell) {
  TypeParam min = 1, max = 1;
  NCDataVector<TypeParam>(3).GetMinMax(min, max);
  EXPECT_EQ(min, -99);
  EXPECT_EQ(max, -99);
  min = max = 1;
  NCDataVector<TypeParam>().GetMinMax(min, max);
  EXPECT_EQ(min, -99);
  EXPECT_EQ(max, -99);
}

// ---- Normalise

TYPED_TEST(NCDataVectorSums, NormaliseDividesByTheNormAndReturnsIt) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({3, -99, -4}), twin(v);
  EXPECT_EQ(v.Normalise(), 5);
  EXPECT_EQ(v[1], static_cast<TypeParam>(3.0 / 5));
  EXPECT_EQ(v[2], -99);
  EXPECT_EQ(v[3], static_cast<TypeParam>(-4.0 / 5));
  EXPECT_EQ(v.GetNumMisVal(), 1);
  EXPECT_EQ(twin[1], 3);
}

TYPED_TEST(NCDataVectorSums, NormaliseChangesNothingWhereTheNormIsZero) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({0, -99, 0}), twin(v);
  EXPECT_EQ(v.Normalise(), 0);
  EXPECT_TRUE(v == twin);
  EXPECT_EQ(v.GetVector(), twin.GetVector());
  EXPECT_EQ(NCDataVector<TypeParam>().Normalise(), 0);
}

TYPED_TEST(NCDataVectorSums, NormaliseOfHolesAloneIsMissing) {
  NCDataVector<TypeParam> v(3), twin(v);
  EXPECT_EQ(v.Normalise(), -99);
  EXPECT_EQ(v.GetVector(), twin.GetVector());
}

TYPED_TEST(NCDataVectorSums, NormaliseByANormThatIsNoNumberSpoilsEveryPresentCell) {
  NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, -99, this->kNaN});
  EXPECT_TRUE(std::isnan(v.Normalise()));
  EXPECT_TRUE(std::isnan(v[1]));
  EXPECT_EQ(v[2], -99);
  EXPECT_TRUE(std::isnan(v[3]));
  EXPECT_EQ(v.GetNumMisVal(), 1);
}

TYPED_TEST(NCDataVectorSums, NormaliseGivesUnitLength) {
  for (int n = 1; n <= 40; ++n) {
    NCDataVector<TypeParam> v = RandomVector<TypeParam>(n, 0.0, static_cast<unsigned>(n));
    v.Normalise();
    // Every cell is rounded to T once more after a relative error of at most (n + 3) u in double.
    const double u = std::numeric_limits<TypeParam>::epsilon() / 2;
    EXPECT_NEAR(static_cast<double>(v.GetSS()), 1.0, 2 * u + 2 * (n + 4) * 0x1p-53);
  }
}

// ---- Difference

TYPED_TEST(NCDataVectorSums, DifferenceIsTheRelativeSquaredChange) {
  EXPECT_EQ(this->Difference({1, 2, 2}, {1, 1, 0}), (1.0 + 4.0) / 9.0);
  EXPECT_EQ(this->Difference({1, 2}, {1, 2}), 0);  // a numerator of exactly 0 is no denormal
}

TYPED_TEST(NCDataVectorSums, DifferenceRunsOverPairsOnly) {
  EXPECT_EQ(this->Difference({1, -99, 2, 5}, {2, 7, 0, -99}), (1.0 + 4.0) / 5.0);
  EXPECT_EQ(this->Difference({1, 2, 5}, {2, 0, -99}), (1.0 + 4.0) / 5.0);
}

TYPED_TEST(NCDataVectorSums, DifferenceWithoutAPairIsMissing) {
  EXPECT_EQ(this->Difference({1, -99}, {-99, 1}), -99);
  EXPECT_EQ(this->Difference({-99}, {1}), -99);
  EXPECT_EQ(this->Difference({0}, {-99}), -99);  // not 1e30: the pairs are asked first
}

TYPED_TEST(NCDataVectorSums, DifferenceFromNearlyNothingIs1e30) {
  EXPECT_EQ(this->Difference({0, 0}, {1, 1}), 1e30);
  EXPECT_EQ(this->Difference({}, {}), 1e30);
  EXPECT_EQ(this->Difference({0}, {this->kNaN}), 1e30);  // this comes before the look at the numerator
  EXPECT_EQ(this->Difference({TypeParam(9e-16)}, {1}), 1e30);  // (9e-16)^2 is below 1e-30
  EXPECT_NE(this->Difference({TypeParam(1.1e-15)}, {1}), 1e30);
}

TYPED_TEST(NCDataVectorSums, DifferenceIsMissingWhereASumIsNoNumber) {
  EXPECT_EQ(this->Difference({1}, {this->kNaN}), -99);
  EXPECT_EQ(this->Difference({1}, {this->kInfinity}), -99);
  EXPECT_EQ(this->Difference({1}, {-this->kInfinity}), -99);
  EXPECT_EQ(this->Difference({this->kNaN}, {1}), -99);
  EXPECT_EQ(this->Difference({this->kInfinity}, {1}), -99);
}

TYPED_TEST(NCDataVectorSums, DifferenceWithHolesIsSpoiledByANaNInAPairOnly) {
  EXPECT_EQ(this->Difference({1, -99, this->kNaN}, {1, 1, 1}), -99);
  EXPECT_EQ(this->Difference({1, 1, 1}, {-99, 2, this->kNaN}), -99);
  EXPECT_EQ(this->Difference({this->kNaN, -99}, {1, 1}), -99);
  EXPECT_EQ(this->Difference({2, this->kNaN}, {1, -99}), 0.25);
  EXPECT_EQ(this->Difference({2, -99}, {1, this->kNaN}), 0.25);
}

TEST(NCDataVectorDifference, FromADenominatorOfExactly1em30IsTheQuotient) {
  ASSERT_EQ(1e-15 * 1e-15, 1e-30);
  EXPECT_EQ(VectorOf<double>({1e-15}).Difference(VectorOf<double>({0})), 1);
  EXPECT_EQ(VectorOf<double>({std::nextafter(1e-15, 0.0)}).Difference(VectorOf<double>({0})), 1e30);
}

TEST(NCDataVectorDifference, OfDoublesIsMissingWhereTheNumeratorIsDenormal) {
  const NCDataVector<double> a = VectorOf<double>({1, 1e-160}), b = VectorOf<double>({1, 0});
  ASSERT_EQ(std::fpclassify(1e-160 * 1e-160), FP_SUBNORMAL);
  EXPECT_EQ(a.Difference(b), -99);
}

TEST(NCDataVectorDifference, OfFloatsIsJudgedByTheDoubleSums) {
  // The smallest float there is: its square is no float, but a normal double.
  const float tiny = std::numeric_limits<float>::denorm_min();
  const NCDataVector<float> a = VectorOf<float>({1, tiny}), b = VectorOf<float>({1, 0});
  EXPECT_EQ(a.Difference(b), static_cast<double>(tiny) * tiny);
}

// ---- Equality

TYPED_TEST(NCDataVectorSums, EqualityIsOfBytes) {
  EXPECT_TRUE(VectorOf<TypeParam>({1, -99}) == VectorOf<TypeParam>({1, -99}));
  EXPECT_FALSE(VectorOf<TypeParam>({1, -99}) != VectorOf<TypeParam>({1, -99}));
  EXPECT_TRUE(VectorOf<TypeParam>({1, 2}) != VectorOf<TypeParam>({1, 3}));
  EXPECT_FALSE(VectorOf<TypeParam>({0.0}) == VectorOf<TypeParam>({-0.0}));
  EXPECT_TRUE(VectorOf<TypeParam>({this->kNaN}) == VectorOf<TypeParam>({this->kNaN}));
}

TYPED_TEST(NCDataVectorSums, EqualityAsksForTheSizeFirst) {
  EXPECT_FALSE(VectorOf<TypeParam>({1, 2}) == VectorOf<TypeParam>({1}));
  EXPECT_FALSE(VectorOf<TypeParam>({1}) == VectorOf<TypeParam>({1, 2}));
  EXPECT_TRUE(NCDataVector<TypeParam>() == NCDataVector<TypeParam>());
  EXPECT_FALSE(NCDataVector<TypeParam>() == NCDataVector<TypeParam>(1));
}

TYPED_TEST(NCDataVectorSums, TwinsAreEqualWithoutALook) {
  const NCDataVector<TypeParam> v = VectorOf<TypeParam>({1, 2});
  NCDataVector<TypeParam> twin(v);
  EXPECT_TRUE(v == twin);
  twin.Remove(NCIntegralVector<int, -99>(1, 2));  // shrinks its own size only, sharing goes on
  EXPECT_TRUE(v == twin);
}

}  // namespace
