#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/kernels/simd/Lanes.h"
#include "kernels/SameBits.h"
#include "testing/RandomTables.h"

namespace {

using Groups = NCIntegralVector<int, -99>;

/// The three sums, reached through the class.
template <class T>
struct Sums : NCDataVector<T> {
  Sums(const NCDataVector<T>& v1, const NCDataVector<T>& v2, int start, int stride) : NCDataVector<T>(v1) {
    this->Calculate_V1txV2_and_V1txV1(v1tv2, v1tv1, v1tv1All, v2, start, stride);
  }
  Sums(const NCDataVector<T>& v1, const NCDataVector<T>& v2, const Groups& groups, int group) : NCDataVector<T>(v1) {
    this->Calculate_V1txV2_and_V1txV1(v1tv2, v1tv1, v1tv1All, v2, groups, group);
  }
  long double v1tv2 = 1, v1tv1 = 1, v1tv1All = 1;
};

/// The same by the definition, in long double, one cell after the other.
struct Expected {
  long double v1tv2 = 0, v1tv1 = 0, v1tv1All = 0, magnitude = 0;

  template <class T, class Excluded>
  Expected(const NCDataVector<T>& v1, const NCDataVector<T>& v2, const Excluded& excluded) {
    for (int i = 1; i <= v1.Size(); ++i) {
      if (excluded(i) || v1[i] == kHole<T>) continue;
      v1tv1All += static_cast<long double>(v1[i]) * v1[i];
      if (v2[i] == kHole<T>) continue;
      v1tv1 += static_cast<long double>(v1[i]) * v1[i];
      v1tv2 += static_cast<long double>(v1[i]) * v2[i];
      magnitude += std::fabs(static_cast<long double>(v1[i]) * v2[i]);
    }
    if (v1tv1 < 1e-30) v1tv2 = v1tv1 = -99;
  }
};

/// The three and the dot product, to be compared by their bits; all are sums in double.
template <class T>
std::vector<double> NumbersOf(const NCDataVector<T>& v1, const NCDataVector<T>& v2, int start, int stride) {
  const Sums<T> sums(v1, v2, start, stride);
  return {static_cast<double>(sums.v1tv2), static_cast<double>(sums.v1tv1), static_cast<double>(sums.v1tv1All),
          static_cast<double>(v1 * v2)};
}

/// Rounding of up to n + 2 operations in double, relative to the sum of absolute products.
template <class T>
void ExpectSums(const Sums<T>& sums, const Expected& expected, int n) {
  const long double u = (n + 2) * 0x1p-53L;
  EXPECT_NEAR(sums.v1tv2, expected.v1tv2, u * expected.magnitude);
  EXPECT_NEAR(sums.v1tv1, expected.v1tv1, u * std::fabs(expected.v1tv1));
  EXPECT_NEAR(sums.v1tv1All, expected.v1tv1All, u * expected.v1tv1All);
}

/// Shares of holes in the two vectors: each mode, below and above the shares at which the vector path gives way.
struct Shares {
  double first, second;
};
constexpr Shares kShares[] = {{0, 0},     {0.1, 0},   {0.4, 0}, {0, 0.1}, {0, 0.4},
                              {0.1, 0.1}, {0.3, 0.3}, {0, 1},   {1, 0},   {1, 1}};
constexpr int kSizes[] = {0, 1, 2, 7, 16, 33, 100, 1100};

template <class T>
class NCDataVectorRegress : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorRegress, CellTypes, CellTypeNames);

template <class T, class Check>
void ForAllPairs(const Check& check) {
  for (int n : kSizes)
    for (const Shares& shares : kShares) {
      SCOPED_TRACE(::testing::Message() << n << " cells, holes " << shares.first << " and " << shares.second);
      check(RandomVector<T>(n, shares.first, 1 + n), RandomVector<T>(n, shares.second, 2 + n));
    }
}

TYPED_TEST(NCDataVectorRegress, FormsTheThreeSumsOfThePairsWithEveryStride) {
  ForAllPairs<TypeParam>([](const NCDataVector<TypeParam>& v1, const NCDataVector<TypeParam>& v2) {
    for (int stride : {0, 1, 2, 3, 4, 5, 7, 16})
      for (int start = 0; start < std::max(stride, 1); ++start) {
        const auto excluded = [=](int i) { return stride >= 2 && i % stride == start; };
        SCOPED_TRACE(::testing::Message() << "start " << start << ", stride " << stride);
        ExpectSums(Sums<TypeParam>(v1, v2, start, stride), Expected(v1, v2, excluded), v1.Size());
      }
  });
}

TYPED_TEST(NCDataVectorRegress, FormsTheThreeSumsOfThePairsOutsideAGroup) {
  ForAllPairs<TypeParam>([](const NCDataVector<TypeParam>& v1, const NCDataVector<TypeParam>& v2) {
    Groups groups(v1.Size());
    for (int i = 1; i <= v1.Size(); ++i) groups(i) = (i * i) % 5;
    for (int group : {0, 1, 4, 17}) {
      const auto excluded = [&](int i) { return groups[i] == group; };
      ExpectSums(Sums<TypeParam>(v1, v2, groups, group), Expected(v1, v2, excluded), v1.Size());
    }
  });
}

TYPED_TEST(NCDataVectorRegress, GivesTheSameBitsByLanesAndByTheScalarTwin) {
  const bool before = kalmia::simd::UsesScalarTwins();
  ForAllPairs<TypeParam>([](const NCDataVector<TypeParam>& v1, const NCDataVector<TypeParam>& v2) {
    for (int stride : {1, 3, 6}) {
      kalmia::simd::UseScalarTwins(false);
      const std::vector<double> lanes = NumbersOf(v1, v2, 2, stride);
      kalmia::simd::UseScalarTwins(true);
      EXPECT_TRUE(SameBits(lanes, NumbersOf(v1, v2, 2, stride)));
    }
  });
  kalmia::simd::UseScalarTwins(before);
}

/// The positions that a rule leaves out: those without which a vector of ones has a smaller sum.
template <class T>
std::vector<int> LeftOut(int n, int start, int stride) {
  std::vector<int> positions;
  for (int i = 1; i <= n; ++i) {
    NCDataVector<T> unit(n, 0);
    unit(i, 1);
    if (Sums<T>(unit, unit, start, stride).v1tv1All == 0) positions.push_back(i);
  }
  return positions;
}

TYPED_TEST(NCDataVectorRegress, AStrideOfSevenLeavesOutEverySeventhPositionFromItsStart) {
  EXPECT_EQ(LeftOut<TypeParam>(22, 0, 7), (std::vector<int>{7, 14, 21}));
  EXPECT_EQ(LeftOut<TypeParam>(22, 3, 7), (std::vector<int>{3, 10, 17}));
  EXPECT_EQ(LeftOut<TypeParam>(6, 1, 2), (std::vector<int>{1, 3, 5}));
  EXPECT_EQ(LeftOut<TypeParam>(6, 0, 2), (std::vector<int>{2, 4, 6}));
}

TYPED_TEST(NCDataVectorRegress, AStrideBelowTwoLeavesOutNothingWhateverTheStart) {
  for (int stride : {-3, 0, 1})
    for (int start : {-1, 0, 1, 5})
      EXPECT_TRUE(LeftOut<TypeParam>(9, start, stride).empty()) << start << ", " << stride;
}

TYPED_TEST(NCDataVectorRegress, AStartEqualToTheStrideLeavesOutNothing) {
  for (int stride = 2; stride < 9; ++stride) EXPECT_TRUE(LeftOut<TypeParam>(30, stride, stride).empty()) << stride;
}

TYPED_TEST(NCDataVectorRegress, ExcludedCellsAreSkippedAndNotSubtractedAgain) {
  // Added and subtracted again, 1e30 would have swallowed the ones, and an infinity would leave a NaN behind.
  for (TypeParam large : {TypeParam(1e30), std::numeric_limits<TypeParam>::infinity()}) {
    NCDataVector<TypeParam> v(12, 1);
    v(5, large);
    const NCDataVector<TypeParam> ones(12, 1);
    const Sums<TypeParam> sums(v, ones, 5, 6);  // 5 and 11
    EXPECT_EQ(sums.v1tv2, 10);
    EXPECT_EQ(sums.v1tv1, 10);
    EXPECT_EQ(sums.v1tv1All, 10);
  }
}

TYPED_TEST(NCDataVectorRegress, WithoutHolesInTheSecondVectorBothSumsOfSquaresAreEqual) {
  for (int stride : {1, 3, 5}) {
    const Sums<TypeParam> sums(RandomVector<TypeParam>(50, 0.2, 1), RandomVector<TypeParam>(50, 0, 2), 1, stride);
    EXPECT_EQ(sums.v1tv1, sums.v1tv1All);
  }
}

TYPED_TEST(NCDataVectorRegress, ASecondVectorOfHolesLeavesOnlyTheFullSumOfSquares) {
  const Sums<TypeParam> sums(VectorOf<TypeParam>({1, 2, -99, 3}), NCDataVector<TypeParam>(4), 1, 1);
  EXPECT_EQ(sums.v1tv2, -99);
  EXPECT_EQ(sums.v1tv1, -99);
  EXPECT_EQ(sums.v1tv1All, 14);
}

TYPED_TEST(NCDataVectorRegress, HolesTakeNoPartWhateverStandsOpposite) {
  const TypeParam inf = std::numeric_limits<TypeParam>::infinity(), nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const auto v = VectorOf<TypeParam>({1, -99, -99, 2, 3}), w = VectorOf<TypeParam>({4, inf, nan, -99, 5});
  EXPECT_EQ(v.Regress(w), 19.0L / 10);
  EXPECT_EQ(v * w, 19);
}

TYPED_TEST(NCDataVectorRegress, RegressIsTheSumOfProductsOverTheSumOfSquaresOfThePairs) {
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, 3}).Regress(VectorOf<TypeParam>({2, -99, 5})), 17.0L / 10);
}

TYPED_TEST(NCDataVectorRegress, GivesNoEstimateForAVectorOfZerosOrOfHolesOrWithoutCells) {
  const NCDataVector<TypeParam> ones(4, 1);
  EXPECT_EQ(NCDataVector<TypeParam>(4, 0).Regress(ones), -99);
  EXPECT_EQ(NCDataVector<TypeParam>(4, 0).SpecialNipalsRegressFix(ones), -99);
  EXPECT_EQ(NCDataVector<TypeParam>(4).Regress(ones), -99);
  EXPECT_EQ(ones.Regress(NCDataVector<TypeParam>(4)), -99);
  EXPECT_EQ(NCDataVector<TypeParam>().Regress(NCDataVector<TypeParam>()), -99);
  EXPECT_EQ(NCDataVector<TypeParam>().SpecialNipalsRegressFixWithExclude(NCDataVector<TypeParam>(), 1, 7), -99);
}

TYPED_TEST(NCDataVectorRegress, GivesNoEstimateWhereEveryPositionIsLeftOut) {
  const NCDataVector<TypeParam> ones(4, 1);
  EXPECT_EQ(ones.SpecialNipalsRegressFixWithExclude(ones, Groups(4, 2), 2), -99);
  EXPECT_EQ(Sums<TypeParam>(ones, ones, Groups(4, 2), 2).v1tv1All, 0);
}

TEST(NCDataVectorRegressLimit, ASumOfSquaresOfExactlyTheLimitGivesAnEstimateAndOneBelowNone) {
  const double a = 0.9e-15;
  const double b = std::sqrt(1e-30 - a * a);
  ASSERT_EQ(a * a + b * b, 1e-30);
  EXPECT_NE(VectorOf<double>({a, b}).Regress(VectorOf<double>({1, 1})), -99);
  EXPECT_NE(VectorOf<double>({a, b}).SpecialNipalsRegressFix(VectorOf<double>({1, 1})), -99);
  const double c = b * (1 - 1e-10);
  ASSERT_LT(a * a + c * c, 1e-30);
  EXPECT_EQ(VectorOf<double>({a, c}).Regress(VectorOf<double>({1, 1})), -99);
  EXPECT_EQ(VectorOf<double>({a, c}).SpecialNipalsRegressFix(VectorOf<double>({1, 1})), -99);
}

TYPED_TEST(NCDataVectorRegress, TheFixHoldsTheDenominatorAtAThirdOfTheFullSum) {
  const auto w = VectorOf<TypeParam>({2, -99, -99});
  EXPECT_EQ(VectorOf<TypeParam>({1, 1, 1}).SpecialNipalsRegressFix(w), 2);
  // The third is formed by multiplication with the double nearest to it, not by division.
  const long double third = 9 * static_cast<long double>(0x1.5555555555555p-2);
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, 2}).SpecialNipalsRegressFix(w), 2 / third);
  EXPECT_NE(third, 3);
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, 2}).Regress(w), 2);
}

TYPED_TEST(NCDataVectorRegress, TheFixCountsTheEnergyOfCellsThatAreNotLeftOut) {
  const auto v = VectorOf<TypeParam>({1, 2, 5, 2}), w = VectorOf<TypeParam>({2, -99, 1, -99});
  const long double third = 9 * static_cast<long double>(0x1.5555555555555p-2);
  EXPECT_EQ(v.SpecialNipalsRegressFixWithExclude(w, 3, 5), 2 / third);
  Groups groups(4, 1);
  groups(3) = 8;
  EXPECT_EQ(v.SpecialNipalsRegressFixWithExclude(w, groups, 8), 2 / third);
}

TYPED_TEST(NCDataVectorRegress, ASumOfProductsThatHappensToBeTheMissingValueGivesNoEstimate) {
  const auto v = VectorOf<TypeParam>({1, 1}), w = VectorOf<TypeParam>({-100, 1});
  EXPECT_EQ(v.Regress(w), -99);
  EXPECT_EQ(v.SpecialNipalsRegressFix(w), -99);
}

TYPED_TEST(NCDataVectorRegress, DotProductRunsOverPairs) {
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, 3}) * VectorOf<TypeParam>({4, 5, 6}), 32);
  EXPECT_EQ(VectorOf<TypeParam>({1, -99, 3}) * VectorOf<TypeParam>({4, 5, 6}), 22);
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, 3}) * VectorOf<TypeParam>({4, -99, 6}), 22);
  EXPECT_EQ(VectorOf<TypeParam>({1, 2, -99}) * VectorOf<TypeParam>({4, -99, 6}), 4);
  EXPECT_EQ(NCDataVector<TypeParam>() * NCDataVector<TypeParam>(), 0);
}

TYPED_TEST(NCDataVectorRegress, DotProductWithHolesOnlyDependsOnTheSideThatHasThem) {
  const NCDataVector<TypeParam> ones(3, 1), holes(3);
  const auto one = VectorOf<TypeParam>({1, -99, -99}), other = VectorOf<TypeParam>({-99, 1, 2});
  EXPECT_EQ(holes * ones, 0);  // no pair, yet only the argument's holes and those of both sides are looked for
  EXPECT_EQ(ones * holes, -99);
  EXPECT_EQ(holes * holes, -99);
  EXPECT_EQ(holes * one, -99);
  EXPECT_EQ(one * holes, -99);
  EXPECT_EQ(one * other, -99);
  EXPECT_EQ(VectorOf<TypeParam>({0, -99, 1}) * VectorOf<TypeParam>({5, 1, -99}), 0);  // a pair whose product is 0
}

TYPED_TEST(NCDataVectorRegress, DotProductIsTheSumOfPairsWithinRounding) {
  ForAllPairs<TypeParam>([](const NCDataVector<TypeParam>& v1, const NCDataVector<TypeParam>& v2) {
    long double sum = 0, magnitude = 0;
    bool pairs = false;
    for (int i = 1; i <= v1.Size(); ++i) {
      if (v1[i] == kHole<TypeParam> || v2[i] == kHole<TypeParam>) continue;
      pairs = true;
      sum += static_cast<long double>(v1[i]) * v2[i];
      magnitude += std::fabs(static_cast<long double>(v1[i]) * v2[i]);
    }
    if (!pairs && v2.GetNumMisVal() > 0) sum = -99;
    EXPECT_NEAR(v1 * v2, sum, (v1.Size() + 2) * 0x1p-53L * magnitude);
  });
}

TYPED_TEST(NCDataVectorRegress, LeavingOutPositionsMakesNoHoleOfACellThatTheCountTakesForANumber) {
  using T = TypeParam;
  NCDataVector<T> v = VectorOf<T>({-98, 1, 2, 3});
  v += VectorOf<T>({-1, 0, 0, 0});  // lands on -99, uncounted
  ASSERT_EQ(v[1], -99);
  ASSERT_EQ(v.GetNumMisVal(), 0);
  const auto w = VectorOf<T>({1, 1, 5, 1});
  Groups groups(4, 1);
  groups(3) = 2;
  const long double expected = (-99.0L + 1 + 3) / (9801 + 1 + 9);
  EXPECT_EQ(v.SpecialNipalsRegressFixWithExclude(w, groups, 2), expected);
  EXPECT_EQ(v.SpecialNipalsRegressFixWithExclude(w, 3, 5), expected);
  const auto x = MatrixOf<T>({{1, 1, 5, 1}, {1, -99, 5, 1}});
  const auto rows = x.SpecialNipalsRegressRowsFix(v, &groups, 2);
  EXPECT_EQ(rows[1], static_cast<T>(expected));
  EXPECT_EQ(rows[2], static_cast<T>((-99.0L + 3) / (9801 + 9)));
}

}  // namespace
