#include "kalmia/kernels/simd/SlidingWindows.h"

#include <gtest/gtest.h>

#include <vector>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

constexpr int kMostFilters = 3;

struct Result {
  std::vector<float> means, sums[kMostFilters];
};

using Filter = decltype(&simd::FilterWindows);

/// The first `count` windows of `cells`, through the first `filterCount` of three filters.
Result RunOn(Filter filter, const double* cells, int count, int window, int filterCount) {
  Result result;
  result.means.resize(count);
  std::vector<std::vector<double>> filters;
  const double* filterRows[kMostFilters];
  float* sums[kMostFilters];
  for (int k = 0; k < kMostFilters; ++k) {
    filters.push_back(Cells<double>(window, HolePattern::None, 100 + k));
    result.sums[k].resize(count);
  }
  for (int k = 0; k < kMostFilters; ++k) {
    filterRows[k] = filters[k].data();
    sums[k] = result.sums[k].data();
  }
  filter(cells, count, window, filterRows, filterCount, result.means.data(), sums);
  return result;
}

void ExpectSame(const Result& a, const Result& b) {
  EXPECT_TRUE(SameBitsOrNaNs(a.means, b.means));
  for (int k = 0; k < kMostFilters; ++k) EXPECT_TRUE(SameBitsOrNaNs(a.sums[k], b.sums[k])) << "filter " << k;
}

TEST(SimdSlidingWindows, CentresEachWindowOnItsMeanAndAppliesTheFilters) {
  const double cells[] = {1, 2, 6, 1};
  const double slope[] = {-1, 0, 1}, bend[] = {1, -2, 1}, first[] = {1, 0, 0};
  const double* const filters[] = {slope, bend, first};
  float means[2], slopes[2], bends[2], firsts[2];
  float* const sums[] = {slopes, bends, firsts};
  simd::scalar::FilterWindows(cells, 2, 3, filters, 3, means, sums);
  EXPECT_EQ(means[0], 3);
  EXPECT_EQ(means[1], 3);
  EXPECT_EQ(slopes[0], 5);
  EXPECT_EQ(slopes[1], -1);
  EXPECT_EQ(bends[0], 3);
  EXPECT_EQ(bends[1], -9);
  EXPECT_EQ(firsts[0], -2);  // less the mean
  EXPECT_EQ(firsts[1], -1);
}

TEST(SimdSlidingWindows, SubtractsTheMeanAsItWasRoundedToFloat) {
  const double cells[] = {1, 1, 2};
  const double one[] = {1, 1, 1};
  const double* const filters[] = {one};
  float mean, sum;
  float* const sums[] = {&sum};
  simd::scalar::FilterWindows(cells, 1, 3, filters, 1, &mean, sums);
  EXPECT_EQ(mean, 4.0F / 3);
  EXPECT_EQ(sum, static_cast<float>((1 - double{mean}) + (1 - double{mean}) + (2 - double{mean})));
  EXPECT_NE(sum, 0);
}

TEST(SimdSlidingWindows, LanesGiveTheBitsOfTheScalarTwin) {
  const std::vector<double> cells = Cells<double>(1060, HolePattern::None, 1);
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int filters = 1; filters <= kMostFilters; ++filters)
      for (int window : {1, 2, 5, 15, 31})
        for (int count : TellingLengths()) {
          SCOPED_TRACE(count);
          ExpectSame(RunOn(simd::FilterWindows, cells.data(), count, window, filters),
                     RunOn(simd::scalar::FilterWindows, cells.data(), count, window, filters));
        }
  }
}

TEST(SimdSlidingWindows, SpecialValuesComeOutAsTheyDoFromTheScalarTwin) {
  const std::vector<double> cells = SpecialCells<double>(120, 3);
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (int filters = 1; filters <= kMostFilters; ++filters)
      for (int window : {1, 2, 5})
        ExpectSame(RunOn(simd::FilterWindows, cells.data(), 100, window, filters),
                   RunOn(simd::scalar::FilterWindows, cells.data(), 100, window, filters));
  }
}

TEST(SimdSlidingWindows, AWindowIsTheSameWhateverItsNeighboursAre) {
  const std::vector<double> cells = Cells<double>(100, HolePattern::None, 5);
  for (int64_t target : TargetsOfThisMachine()) {
    const OneTarget only(target);
    const Result all = RunOn(simd::FilterWindows, cells.data(), 90, 11, 2);
    for (int j = 0; j < 90; ++j) {
      const Result one = RunOn(simd::FilterWindows, cells.data() + j, 1, 11, 2);
      EXPECT_EQ(one.means[0], all.means[j]);
      EXPECT_EQ(one.sums[0][0], all.sums[0][j]);
      EXPECT_EQ(one.sums[1][0], all.sums[1][j]);
    }
  }
}

TEST(SimdSlidingWindows, NothingIsReadWithoutWindows) {
  for (int64_t target : TargetsOfThisMachine()) {
    const OneTarget only(target);
    for (int filters = 1; filters <= kMostFilters; ++filters) RunOn(simd::FilterWindows, nullptr, 0, 3, filters);
  }
}

}  // namespace
