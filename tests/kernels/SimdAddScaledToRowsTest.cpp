#include "kalmia/kernels/simd/AddScaledToRows.h"

#include <gtest/gtest.h>

#include "kalmia/kernels/simd/AddScaled.h"
#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

template <class T>
using Rows = std::vector<std::vector<T>>;

template <class T>
std::vector<T*> PointersTo(Rows<T>& rows) {
  std::vector<T*> pointers;
  for (std::vector<T>& row : rows) pointers.push_back(row.data());
  return pointers;
}

template <class T>
class SimdAddScaledToRows : public ::testing::Test {};
TYPED_TEST_SUITE(SimdAddScaledToRows, CellTypes, CellTypeNames);

TYPED_TEST(SimdAddScaledToRows, AddsToEachRowItsMultiple) {
  Rows<TypeParam> rows = {{1, -99}, {3, 4}};
  const TypeParam factors[] = {2, -1}, w[] = {10, 20};
  simd::scalar::AddScaledToRows(PointersTo(rows).data(), factors, 2, w, 2);
  EXPECT_EQ(rows, (Rows<TypeParam>{{21, -59}, {-7, -16}}));
}

TYPED_TEST(SimdAddScaledToRows, LeavesHolesAloneWhereToldThatThereAreSome) {
  Rows<TypeParam> rows = {{1, -99}, {-99, 4}};
  const TypeParam factors[] = {2, -1}, w[] = {10, 20};
  simd::scalar::AddScaledToPresent(PointersTo(rows).data(), factors, 2, w, 2);
  EXPECT_EQ(rows, (Rows<TypeParam>{{21, -99}, {-99, -16}}));
}

TYPED_TEST(SimdAddScaledToRows, GivesTheBitsOfOneRowAtATime) {
  using T = TypeParam;
  Rows<T> rows;
  for (int k = 0; k < 11; ++k) rows.push_back(Cells<T>(100, HolePattern::Random, k));
  const auto w = Cells<T>(100, HolePattern::None, 50), factors = Cells<T>(11, HolePattern::None, 51);
  auto plain = rows, oneByOne = rows, present = rows, presentOneByOne = rows;
  simd::AddScaledToRows(PointersTo(plain).data(), factors.data(), 11, w.data(), 100);
  simd::AddScaledToPresent(PointersTo(present).data(), factors.data(), 11, w.data(), 100);
  for (int k = 0; k < 11; ++k) {
    simd::AddScaled(oneByOne[k].data(), w.data(), factors[k], 100);
    simd::AddScaledMasked(presentOneByOne[k].data(), w.data(), factors[k], 100);
  }
  EXPECT_TRUE(SameBits(plain, oneByOne));
  EXPECT_TRUE(SameBits(present, presentOneByOne));
}

TYPED_TEST(SimdAddScaledToRows, LanesGiveTheBitsOfTheScalarTwinForEveryNumberOfRows) {
  using T = TypeParam;
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths())
      for (int count = 0; count <= 2 * simd::kRowsSideBySide + 3; ++count) {
        Rows<T> rows;
        for (int k = 0; k < count; ++k) rows.push_back(Cells<T>(n, kHolePatterns[k % 7], n + k));
        const auto w = Cells<T>(n, HolePattern::None, n + 100), factors = Cells<T>(count, HolePattern::None, n + 101);
        auto lanes = rows, twins = rows, presentLanes = rows, presentTwins = rows;
        simd::AddScaledToRows(PointersTo(lanes).data(), factors.data(), count, w.data(), n);
        simd::scalar::AddScaledToRows(PointersTo(twins).data(), factors.data(), count, w.data(), n);
        simd::AddScaledToPresent(PointersTo(presentLanes).data(), factors.data(), count, w.data(), n);
        simd::scalar::AddScaledToPresent(PointersTo(presentTwins).data(), factors.data(), count, w.data(), n);
        EXPECT_TRUE(SameBits(lanes, twins)) << count << " rows of " << n;
        EXPECT_TRUE(SameBits(presentLanes, presentTwins)) << count << " rows of " << n;
      }
  }
}

TYPED_TEST(SimdAddScaledToRows, SpecialValuesComeOutAsTheyDoFromTheScalarTwin) {
  using T = TypeParam;
  const std::vector<T> factors = {T(0.7), std::numeric_limits<T>::max(), std::numeric_limits<T>::denorm_min(), T(-0.0),
                                  T(1),   T(-2),                         T(1e-30),                             T(1e30)};
  const int count = static_cast<int>(factors.size());
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int n : TellingLengths()) {
      Rows<T> rows;
      for (int k = 0; k < count; ++k) rows.push_back(SpecialCells<T>(n, n + k));
      const auto w = SpecialCells<T>(n, n + 500);
      auto lanes = rows, twins = rows, presentLanes = rows, presentTwins = rows;
      simd::AddScaledToRows(PointersTo(lanes).data(), factors.data(), count, w.data(), n);
      simd::scalar::AddScaledToRows(PointersTo(twins).data(), factors.data(), count, w.data(), n);
      simd::AddScaledToPresent(PointersTo(presentLanes).data(), factors.data(), count, w.data(), n);
      simd::scalar::AddScaledToPresent(PointersTo(presentTwins).data(), factors.data(), count, w.data(), n);
      for (int k = 0; k < count; ++k) {
        EXPECT_TRUE(SameBitsOrNaNs(lanes[k], twins[k])) << "row " << k << " of " << n;
        EXPECT_TRUE(SameBitsOrNaNs(presentLanes[k], presentTwins[k])) << "row " << k << " of " << n;
      }
    }
  }
}

}  // namespace
