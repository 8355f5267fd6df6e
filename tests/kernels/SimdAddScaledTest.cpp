#include "kalmia/kernels/simd/AddScaled.h"

#include <gtest/gtest.h>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

template <class T>
class SimdAddScaled : public ::testing::Test {};
TYPED_TEST_SUITE(SimdAddScaled, CellTypes, CellTypeNames);

TYPED_TEST(SimdAddScaled, AddsTheMultipleToEveryCell) {
  TypeParam row[] = {1, 2, -99};
  const TypeParam w[] = {10, 20, 30};
  simd::scalar::AddScaled(row, w, TypeParam(2), 3);
  EXPECT_EQ(row[0], 21);
  EXPECT_EQ(row[1], 42);
  EXPECT_EQ(row[2], -39);
}

TYPED_TEST(SimdAddScaled, LeavesHolesAndCellsOppositeHolesAloneAndCountsTheLatter) {
  TypeParam row[] = {1, -99, 3, -99};
  const TypeParam w[] = {10, 20, -99, -99};
  EXPECT_EQ(simd::scalar::AddScaledMasked(row, w, TypeParam(2), 4), 1);
  EXPECT_EQ(row[0], 21);
  EXPECT_EQ(row[1], -99);
  EXPECT_EQ(row[2], 3);
  EXPECT_EQ(row[3], -99);
}

TEST(SimdAddScaled, AFloatCellIsRoundedFromTheExactProductAndADoubleSum) {
  float row[] = {-1.0f};
  const float w[] = {1.0f + 0x1p-12f};
  simd::scalar::AddScaled(row, w, w[0], 1);
  EXPECT_EQ(row[0], 0x1p-11f + 0x1p-24f);  // the last bit of (1 + 2^-12)^2, which no float product would have
}

TYPED_TEST(SimdAddScaled, LanesGiveTheBitsOfTheScalarTwin) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths()) {
      const auto row = Cells<TypeParam>(n, HolePattern::Random, n), w = Cells<TypeParam>(n, HolePattern::Last, n + 1);
      auto lanes = row, twins = row;
      simd::AddScaled(lanes.data(), w.data(), TypeParam(0.7), n);
      simd::scalar::AddScaled(twins.data(), w.data(), TypeParam(0.7), n);
      EXPECT_TRUE(SameBits(lanes, twins)) << n;
    }
  }
}

TYPED_TEST(SimdAddScaled, LanesGiveTheBitsOfTheScalarTwinWithHoles) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths())
      for (HolePattern ofRow : kHolePatterns)
        for (HolePattern ofW : kHolePatterns) {
          auto row = Cells<TypeParam>(n, ofRow, n), w = Cells<TypeParam>(n, ofW, n + 1);
          PoisonOppositeHoles(row, w);
          auto lanes = row, twins = row;
          const int counted = simd::AddScaledMasked(lanes.data(), w.data(), TypeParam(0.7), n);
          EXPECT_EQ(counted, simd::scalar::AddScaledMasked(twins.data(), w.data(), TypeParam(0.7), n)) << n;
          EXPECT_TRUE(SameBits(lanes, twins)) << n;
        }
  }
}

TYPED_TEST(SimdAddScaled, SpecialValuesComeOutAsTheyDoFromTheScalarTwin) {
  using T = TypeParam;
  const T factors[] = {T(0.7), std::numeric_limits<T>::max(), std::numeric_limits<T>::denorm_min(), T(-0.0)};
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (const T factor : factors)
      for (int n : TellingLengths()) {
        const auto row = SpecialCells<T>(n, n), w = SpecialCells<T>(n, n + 500);
        auto lanes = row, twins = row, maskedLanes = row, maskedTwins = row;
        simd::AddScaled(lanes.data(), w.data(), factor, n);
        simd::scalar::AddScaled(twins.data(), w.data(), factor, n);
        EXPECT_TRUE(SameBitsOrNaNs(lanes, twins)) << n;
        EXPECT_EQ(simd::AddScaledMasked(maskedLanes.data(), w.data(), factor, n),
                  simd::scalar::AddScaledMasked(maskedTwins.data(), w.data(), factor, n));
        EXPECT_TRUE(SameBitsOrNaNs(maskedLanes, maskedTwins)) << n;
      }
  }
}

TYPED_TEST(SimdAddScaled, WhatExceedsTheTypeOfTheCellsIsInfinite) {
  using T = TypeParam;
  const T most = std::numeric_limits<T>::max(), infinity = std::numeric_limits<T>::infinity();
  for (int64_t target : TargetsOfThisMachine()) {
    const OneTarget only(target);
    std::vector<T> row(40, most), w(40, most);
    simd::AddScaled(row.data(), w.data(), T(2), 40);
    EXPECT_EQ(row, std::vector<T>(40, infinity)) << hwy::TargetName(target);
    simd::AddScaledMasked(row.data(), w.data(), T(2), 40);
    EXPECT_EQ(row, std::vector<T>(40, infinity)) << hwy::TargetName(target);
  }
}

TYPED_TEST(SimdAddScaled, StartsAtAnyAlignment) {
  using T = TypeParam;
  const auto row = Cells<T>(80, HolePattern::Random, 1), w = Cells<T>(80, HolePattern::EveryThird, 2);
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int offset = 0; offset < 8; ++offset)
      for (int n : {5, 16, 37}) {
        auto lanes = row, twins = row;
        simd::AddScaledMasked(lanes.data() + offset, w.data() + 7 - offset, T(0.7), n);
        simd::scalar::AddScaledMasked(twins.data() + offset, w.data() + 7 - offset, T(0.7), n);
        simd::AddScaled(lanes.data() + offset, w.data() + 7 - offset, T(0.3), n);
        simd::scalar::AddScaled(twins.data() + offset, w.data() + 7 - offset, T(0.3), n);
        EXPECT_TRUE(SameBits(lanes, twins)) << offset << ", " << n;
      }
  }
}

TYPED_TEST(SimdAddScaled, NothingIsReadWithoutCells) {
  TypeParam* none = nullptr;
  for (int64_t target : TargetsOfThisMachine()) {
    const OneTarget only(target);
    simd::AddScaled(none, none, TypeParam(1), 0);
    EXPECT_EQ(simd::AddScaledMasked(none, none, TypeParam(1), 0), 0);
  }
}

}  // namespace
