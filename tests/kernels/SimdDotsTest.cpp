#include "kalmia/kernels/simd/Dots.h"

#include <gtest/gtest.h>

#include <cmath>

#include "kalmia/kernels/simd/Lanes.h"
#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

template <class T>
class SimdDots : public ::testing::Test {};
TYPED_TEST_SUITE(SimdDots, CellTypes, CellTypeNames);

/// Calls check(v, rows) for every length, every pattern of holes in v and in the rows, NaNs
/// and infinities opposite the holes of v.
template <class T, class Check>
void ForAllCases(const Check& check) {
  for (int n : TellingLengths())
    for (HolePattern ofV : kHolePatterns)
      for (HolePattern ofRows : kHolePatterns) {
        std::vector<T> v = Cells<T>(n, ofV, n);
        std::vector<std::vector<T>> rows;
        for (int k = 0; k < simd::kRowsSideBySide; ++k) {
          rows.push_back(Cells<T>(n, ofRows, 1000 * n + k));
          PoisonOppositeHoles(v, rows.back());
        }
        check(v, rows);
      }
}

template <class T>
std::vector<const T*> Pointers(const std::vector<std::vector<T>>& rows) {
  std::vector<const T*> pointers;
  for (const auto& row : rows) pointers.push_back(row.data());
  return pointers;
}

TYPED_TEST(SimdDots, DotOfThreeCellsIsTheirSumOfProducts) {
  const TypeParam a[] = {1, 2, -99}, b[] = {4, -99, 6};
  EXPECT_EQ(simd::scalar::Dot(a, b, 3), 4 - 198 - 594);
  EXPECT_EQ(simd::scalar::DotMasked(a, b, 3), 4 - 198);
  int pairs = -1;
  EXPECT_EQ(simd::scalar::DotMasked2(a, b, 3, pairs), 4);
  EXPECT_EQ(pairs, 1);
}

TYPED_TEST(SimdDots, PairSumsOfThreeCellsLeaveOutHolesOfTheRowAndWhereToldOfV) {
  const TypeParam v[] = {1, -99, 3}, row[] = {4, 5, -99};
  const TypeParam* rows[] = {row};
  simd::PairSums sums;
  simd::scalar::PairRows(v, rows, 1, 3, simd::Holes::InBoth, &sums);
  EXPECT_EQ(sums.product, 4);
  EXPECT_EQ(sums.square, 1);
  simd::scalar::PairRows(v, rows, 1, 3, simd::Holes::InRows, &sums);
  EXPECT_EQ(sums.product, 4 - 495);
  EXPECT_EQ(sums.square, 1 + 9801);
}

TYPED_TEST(SimdDots, CellsGoToSixteenLanesThatAreFoldedInHalves) {
  std::vector<TypeParam> a(17, 0), b(17, 1);
  a[0] = TypeParam(0x1p60), a[16] = TypeParam(-0x1p60);  // one lane: they cancel before anything else comes in
  a[8] = 1;
  EXPECT_EQ(simd::scalar::Dot(a.data(), b.data(), 17), 1);  // in the order of the cells it would be 0
  a.assign(17, 0);
  a[0] = TypeParam(0x1p60), a[8] = TypeParam(-0x1p60);  // lanes 0 and 8 meet first
  a[4] = 1;
  EXPECT_EQ(simd::scalar::Dot(a.data(), b.data(), 17), 1);
}

TYPED_TEST(SimdDots, LanesGiveTheBitsOfTheScalarTwinForTwoVectors) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    ForAllCases<TypeParam>([](const auto& v, const auto& rows) {
      const int n = static_cast<int>(v.size());
      const TypeParam *a = v.data(), *b = rows[0].data();
      int pairs = -1, twinPairs = -1;
      std::vector<double> lanes = {simd::DotMasked(a, b, n), simd::DotMasked2(a, b, n, pairs)};
      std::vector<double> twins = {simd::scalar::DotMasked(a, b, n), simd::scalar::DotMasked2(a, b, n, twinPairs)};
      EXPECT_TRUE(SameBits(lanes, twins)) << n;
      EXPECT_EQ(pairs, twinPairs);
    });
  }
}

TYPED_TEST(SimdDots, LanesGiveTheBitsOfTheScalarTwinForEveryNumberOfRows) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    ForAllCases<TypeParam>([](const auto& v, const auto& rows) {
      const int n = static_cast<int>(v.size());
      const auto pointers = Pointers(rows);
      for (int count = 1; count <= simd::kRowsSideBySide; ++count) {
        std::vector<double> lanes(count), twins(count);
        simd::DotRowsMasked(v.data(), pointers.data(), count, n, lanes.data());
        simd::scalar::DotRowsMasked(v.data(), pointers.data(), count, n, twins.data());
        EXPECT_TRUE(SameBits(lanes, twins)) << n << " cells, " << count << " rows";
      }
    });
  }
}

TYPED_TEST(SimdDots, LanesGiveTheBitsOfTheScalarTwinWhereNoCellIsLookedAt) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths()) {
      const auto v = Cells<TypeParam>(n, HolePattern::EveryThird, n);
      std::vector<std::vector<TypeParam>> rows;
      for (int k = 0; k < simd::kRowsSideBySide; ++k) rows.push_back(Cells<TypeParam>(n, HolePattern::Random, n + k));
      const auto pointers = Pointers(rows);
      for (int count = 1; count <= simd::kRowsSideBySide; ++count) {
        std::vector<double> lanes(count), twins(count);
        simd::DotRows(v.data(), pointers.data(), count, n, lanes.data());
        simd::scalar::DotRows(v.data(), pointers.data(), count, n, twins.data());
        EXPECT_TRUE(SameBits(lanes, twins)) << n << " cells, " << count << " rows";
      }
    }
  }
}

TYPED_TEST(SimdDots, LanesGiveTheBitsOfTheScalarTwinForPairSums) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    ForAllCases<TypeParam>([](const auto& v, const auto& rows) {
      const int n = static_cast<int>(v.size());
      const auto pointers = Pointers(rows);
      for (int count = 1; count <= simd::kRowsSideBySide; ++count) {
        std::vector<simd::PairSums> lanes(count), twins(count);
        simd::PairRows(v.data(), pointers.data(), count, n, simd::Holes::InBoth, lanes.data());
        simd::scalar::PairRows(v.data(), pointers.data(), count, n, simd::Holes::InBoth, twins.data());
        for (int k = 0; k < count; ++k)
          EXPECT_TRUE(SameBits<double>({lanes[k].product, lanes[k].square}, {twins[k].product, twins[k].square}))
              << n << " cells, row " << k << " of " << count;
      }
    });
  }
}

TYPED_TEST(SimdDots, PairSumsThatTrustVAreTheTwinsWhateverStandsOppositeAHoleOfTheRow) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths())
      for (HolePattern pattern : kHolePatterns) {
        auto v = Cells<TypeParam>(n, HolePattern::None, n);
        const auto row = Cells<TypeParam>(n, pattern, n + 1);
        PoisonOppositeHoles(row, v);
        const TypeParam* rows[] = {row.data()};
        simd::PairSums lanes, twins;
        simd::PairRows(v.data(), rows, 1, n, simd::Holes::InRows, &lanes);
        simd::scalar::PairRows(v.data(), rows, 1, n, simd::Holes::InRows, &twins);
        EXPECT_TRUE(SameBits<double>({lanes.product, lanes.square}, {twins.product, twins.square})) << n;
        EXPECT_FALSE(std::isnan(lanes.product)) << n;
      }
  }
}

TYPED_TEST(SimdDots, ANaNIsNoHole) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int at = 0; at < 37; ++at) {
      auto a = Cells<TypeParam>(37, HolePattern::None, 3), b = a;
      a[at] = std::numeric_limits<TypeParam>::quiet_NaN();
      const TypeParam* rows[] = {a.data()};
      simd::PairSums sums;
      simd::PairRows(b.data(), rows, 1, 37, simd::Holes::InBoth, &sums);
      int pairs;
      EXPECT_TRUE(std::isnan(sums.product)) << at;
      EXPECT_EQ(sums.square, simd::scalar::Dot(b.data(), b.data(), 37)) << at;
      EXPECT_TRUE(std::isnan(simd::DotMasked(a.data(), b.data(), 37))) << at;
      EXPECT_TRUE(std::isnan(simd::DotMasked2(b.data(), a.data(), 37, pairs))) << at;
      EXPECT_EQ(pairs, 37);
    }
  }
}

TYPED_TEST(SimdDots, StartAtAnyAlignment) {
  const auto a = Cells<TypeParam>(80, HolePattern::Random, 1), b = Cells<TypeParam>(80, HolePattern::Random, 2);
  for (int offset = 0; offset < 8; ++offset)
    for (int n : {5, 16, 37})
      EXPECT_EQ(simd::DotMasked(a.data() + offset, b.data() + 7 - offset, n),
                simd::scalar::DotMasked(a.data() + offset, b.data() + 7 - offset, n));
}

TYPED_TEST(SimdDots, NothingIsReadWithoutCells) {
  const TypeParam* none = nullptr;
  EXPECT_EQ(simd::Dot(none, none, 0), 0);
  EXPECT_EQ(simd::DotMasked(none, none, 0), 0);
  int pairs = -1;
  EXPECT_EQ(simd::DotMasked2(none, none, 0, pairs), 0);
  EXPECT_EQ(pairs, 0);
}

TYPED_TEST(SimdDots, SpecialValuesComeOutAsTheyDoFromTheScalarTwin) {
  using T = TypeParam;
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths()) {
      const auto a = SpecialCells<T>(n, n), b = SpecialCells<T>(n, n + 500);
      const T* rows[] = {b.data()};
      int pairs = -1, twinPairs = -1;
      simd::PairSums sums, twinSums;
      simd::PairRows(a.data(), rows, 1, n, simd::Holes::InBoth, &sums);
      simd::scalar::PairRows(a.data(), rows, 1, n, simd::Holes::InBoth, &twinSums);
      const std::vector<double> lanes = {simd::Dot(a.data(), b.data(), n), simd::DotMasked(a.data(), b.data(), n),
                                         simd::DotMasked2(a.data(), b.data(), n, pairs), sums.product, sums.square};
      const std::vector<double> twins = {
          simd::scalar::Dot(a.data(), b.data(), n), simd::scalar::DotMasked(a.data(), b.data(), n),
          simd::scalar::DotMasked2(a.data(), b.data(), n, twinPairs), twinSums.product, twinSums.square};
      EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << n;
      EXPECT_EQ(pairs, twinPairs);
    }
  }
}

TEST(SimdLanes, TheSwitchHoldsTheFunctionsToTheirTwins) {
  const bool before = simd::UsesScalarTwins();
  simd::UseScalarTwins(true);
  EXPECT_TRUE(simd::UsesScalarTwins());
  simd::UseScalarTwins(false);
  EXPECT_FALSE(simd::UsesScalarTwins());
  simd::UseScalarTwins(before);
}

}  // namespace
