#include "kalmia/kernels/simd/Standardise.h"

#include <gtest/gtest.h>

#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

constexpr double kCentre = 0.3, kFactor = 1.7, kOrigin = 5, kIntercept = 0.1, kSlope = -0.03;

/// Every sum and every cell that the passes give for these cells.
template <class T>
struct Passes {
  std::vector<double> sums;
  std::vector<T> cells;
  std::vector<bool> found;
};

template <class T>
void AddWritten(const std::vector<T>& out, bool found, Passes<T>& passes) {
  passes.cells.insert(passes.cells.end(), out.begin(), out.end());
  passes.found.push_back(found);
}

template <class T>
Passes<T> ByLanes(const std::vector<T>& x, bool holes) {
  const int n = static_cast<int>(x.size());
  Passes<T> passes;
  for (int power = 1; power <= 4; ++power)
    passes.sums.push_back(simd::PowerSum(power, x.data(), kCentre, kFactor, n, holes));
  for (const simd::TwoSums two : {simd::SumPositions(x.data(), kOrigin, n, holes),
                                  simd::SumMoments(x.data(), kOrigin, kCentre, n, holes)})
    passes.sums.insert(passes.sums.end(), {two.first, two.second});
  std::vector<T> out(x);
  AddWritten(out, simd::Standardise(out.data(), kCentre, kFactor, n, holes, out.data()), passes);
  passes.cells.insert(passes.cells.end(), out.begin(), out.end());
  out.assign(x.size(), T(7));
  const bool found = simd::SubtractLine(x.data(), kIntercept, kSlope, n, holes, out.data());
  AddWritten(out, found, passes);
  return passes;
}

template <class T>
Passes<T> ByTwins(const std::vector<T>& x, bool holes) {
  const int n = static_cast<int>(x.size());
  Passes<T> passes;
  for (int power = 1; power <= 4; ++power)
    passes.sums.push_back(simd::scalar::PowerSum(power, x.data(), kCentre, kFactor, n, holes));
  for (const simd::TwoSums two : {simd::scalar::SumPositions(x.data(), kOrigin, n, holes),
                                  simd::scalar::SumMoments(x.data(), kOrigin, kCentre, n, holes)})
    passes.sums.insert(passes.sums.end(), {two.first, two.second});
  std::vector<T> out(x);
  AddWritten(out, simd::scalar::Standardise(out.data(), kCentre, kFactor, n, holes, out.data()), passes);
  passes.cells.insert(passes.cells.end(), out.begin(), out.end());
  out.assign(x.size(), T(7));
  const bool found = simd::scalar::SubtractLine(x.data(), kIntercept, kSlope, n, holes, out.data());
  AddWritten(out, found, passes);
  return passes;
}

template <class T>
void ExpectSameBits(const std::vector<T>& x, bool holes) {
  const Passes<T> lanes = ByLanes(x, holes), twins = ByTwins(x, holes);
  EXPECT_TRUE(SameBitsOrNaNs(lanes.sums, twins.sums));
  EXPECT_TRUE(SameBitsOrNaNs(lanes.cells, twins.cells));
  EXPECT_EQ(lanes.found, twins.found);
}

template <class T>
class SimdStandardise : public ::testing::Test {};
TYPED_TEST_SUITE(SimdStandardise, CellTypes, CellTypeNames);

TYPED_TEST(SimdStandardise, LanesGiveTheBitsOfTheTwinsOnEveryMachine) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (const int n : TellingLengths())
      for (const HolePattern pattern : kHolePatterns)
        for (const bool holes : {false, true}) {  // without, a hole is a number
          SCOPED_TRACE(::testing::Message() << n << " cells, pattern " << static_cast<int>(pattern) << ", " << holes);
          ExpectSameBits(Cells<TypeParam>(n, pattern, static_cast<unsigned>(n)), holes);
        }
  }
}

TYPED_TEST(SimdStandardise, LanesGiveTheTwinsBitsOfSpecialCells) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (const int n : {1, 5, 16, 35, 200})
      for (const bool holes : {false, true}) ExpectSameBits(SpecialCells<TypeParam>(n, 11), holes);
  }
}

TYPED_TEST(SimdStandardise, SumsAreThoseOfTheVectorToTheBit) {
  for (const double share : {0.0, 0.3}) {
    const auto v = RandomVector<TypeParam>(1000, share, 3);
    const auto sum = [&v, share](int power, double centre) {
      return simd::PowerSum(power, v.begin(), centre, 1, v.Size(), share > 0);
    };
    EXPECT_EQ(sum(1, 0), static_cast<double>(v.GetSum()));
    EXPECT_EQ(sum(2, 0), static_cast<double>(v.GetSS()));
    EXPECT_EQ(sum(2, 0.7), static_cast<double>(v.GetSS(0.7)));
  }
}

TYPED_TEST(SimdStandardise, SumsAreThoseWorkedOutByHand) {
  const TypeParam x[] = {5, kHole<TypeParam>, 2, 1};
  EXPECT_EQ(simd::PowerSum(1, x, 1, 0.5, 4, true), 2.5);    // z: 2, -, 1/2, 0
  EXPECT_EQ(simd::PowerSum(2, x, 1, 0.5, 4, true), 4.25);
  EXPECT_EQ(simd::PowerSum(3, x, 1, 0.5, 4, true), 8.125);
  EXPECT_EQ(simd::PowerSum(4, x, 1, 0.5, 4, true), 16.0625);
  const simd::TwoSums positions = simd::SumPositions(x, 1, 4, true);  // -1, -, 1, 2
  EXPECT_EQ(positions.first, 2);
  EXPECT_EQ(positions.second, 6);
  const simd::TwoSums moments = simd::SumMoments(x, 1, 1, 4, true);  // cells 4, -, 1, 0
  EXPECT_EQ(moments.first, 5);
  EXPECT_EQ(moments.second, -3);
}

TYPED_TEST(SimdStandardise, CellsThatLandOnMinus99AreFoundWhereverTheyStand) {
  for (const int n : {1, 7, 16, 40})
    for (int at = 0; at < n; ++at) {
      std::vector<TypeParam> x(static_cast<std::size_t>(n), 1), out(x);
      EXPECT_FALSE(simd::Standardise(x.data(), 2, 1, n, false, out.data()));
      x[static_cast<std::size_t>(at)] = -97;
      EXPECT_TRUE(simd::Standardise(x.data(), 2, 1, n, false, out.data())) << at << " of " << n;
      EXPECT_TRUE(simd::SubtractLine(x.data(), 2, 0, n, true, out.data())) << at << " of " << n;
      EXPECT_EQ(out[static_cast<std::size_t>(at)], kHole<TypeParam>);
    }
}

}  // namespace
