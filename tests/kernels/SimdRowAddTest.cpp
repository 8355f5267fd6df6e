#include "kalmia/kernels/simd/RowAdd.h"

#include <gtest/gtest.h>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

template <class T>
class SimdRowAdd : public ::testing::Test {};
TYPED_TEST_SUITE(SimdRowAdd, CellTypes, CellTypeNames);

TYPED_TEST(SimdRowAdd, AddsTheMultipleToEveryCell) {
  TypeParam row[] = {1, 2, -99};
  const TypeParam w[] = {10, 20, 30};
  simd::scalar::AddScaled(row, w, TypeParam(2), 3);
  EXPECT_EQ(row[0], 21);
  EXPECT_EQ(row[1], 42);
  EXPECT_EQ(row[2], -39);
}

TYPED_TEST(SimdRowAdd, LeavesHolesAndCellsOppositeHolesAloneAndCountsTheLatter) {
  TypeParam row[] = {1, -99, 3, -99};
  const TypeParam w[] = {10, 20, -99, -99};
  EXPECT_EQ(simd::scalar::AddScaledMasked(row, w, TypeParam(2), 4), 1);
  EXPECT_EQ(row[0], 21);
  EXPECT_EQ(row[1], -99);
  EXPECT_EQ(row[2], 3);
  EXPECT_EQ(row[3], -99);
}

TEST(SimdRowAdd, AFloatCellIsRoundedFromTheExactProductAndADoubleSum) {
  float row[] = {-1.0f};
  const float w[] = {1.0f + 0x1p-12f};
  simd::scalar::AddScaled(row, w, w[0], 1);
  EXPECT_EQ(row[0], 0x1p-11f + 0x1p-24f);  // the last bit of (1 + 2^-12)^2, which no float product would have
}

TYPED_TEST(SimdRowAdd, LanesGiveTheBitsOfTheScalarTwin) {
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

TYPED_TEST(SimdRowAdd, LanesGiveTheBitsOfTheScalarTwinWithHoles) {
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

}  // namespace
