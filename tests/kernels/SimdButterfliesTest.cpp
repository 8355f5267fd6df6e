#include "kalmia/kernels/simd/Butterflies.h"

#include <gtest/gtest.h>

#include <cmath>

#include "kernels/SimdCases.h"

namespace simd = kalmia::simd;

namespace {

using PassFunction = void (*)(const simd::FourierPass&);

/// A pass over random cells, with the roots of unity up to its size.
struct Case {
  Case(int length, int count, unsigned seed)
      : xRe(Numbers(length * count, seed)), xIm(Numbers(length * count, seed + 1)), yRe(xRe.size()), yIm(xRe.size()),
        rootRe(4 * length), rootIm(4 * length), length(length), count(count) {
    for (int half = 1; half <= 2 * length; half *= 2)
      for (int k = 0; k < half; ++k) {
        rootRe[half + k] = std::cos(std::acos(-1.0) * k / half);
        rootIm[half + k] = std::sin(std::acos(-1.0) * k / half);
      }
  }
  static std::vector<double> Numbers(int n, unsigned seed) {
    std::mt19937 random(seed);
    std::normal_distribution<double> normal;
    std::vector<double> numbers(n);
    for (double& number : numbers) number = normal(random);
    return numbers;
  }
  void Run(PassFunction pass) {
    pass({xRe.data(), xIm.data(), yRe.data(), yIm.data(), rootRe.data(), rootIm.data(), length, count});
  }
  std::vector<double> xRe, xIm, yRe, yIm, rootRe, rootIm;
  int length, count;
};

TEST(SimdButterflies, FourSingleCellsBecomeTheirTransform) {
  for (const PassFunction pass : {&simd::scalar::CombineSideBySide, &simd::scalar::CombineInRows}) {
    Case four(1, 4, 1);
    four.xRe = {1, 2, 3, 5};
    four.xIm = {0, 0, 0, 7};
    four.Run(pass);  // by hand: 1 + 2 i^q + 3 (-1)^q + (5 + 7 i) (-i)^q
    EXPECT_EQ(four.yRe, (std::vector<double>{11, 5, -3, -9}));
    EXPECT_EQ(four.yIm, (std::vector<double>{7, -3, -7, 3}));
  }
}

TEST(SimdButterflies, BothLayoutsHoldTheSameTransforms) {
  const int length = 8, count = 16;
  Case rows(length, count, 1), side(length, count, 1);
  for (int p = 0; p < count; ++p)
    for (int j = 0; j < length; ++j) {
      side.xRe[j * count + p] = rows.xRe[p * length + j];
      side.xIm[j * count + p] = rows.xIm[p * length + j];
    }
  rows.Run(&simd::scalar::CombineInRows);
  side.Run(&simd::scalar::CombineSideBySide);
  for (int p = 0; p < count / 4; ++p)
    for (int j = 0; j < 4 * length; ++j) {
      EXPECT_EQ(side.yRe[j * count / 4 + p], rows.yRe[p * 4 * length + j]);
      EXPECT_EQ(side.yIm[j * count / 4 + p], rows.yIm[p * 4 * length + j]);
    }
}

TEST(SimdButterflies, LanesGiveTheBitsOfTheScalarTwin) {
  for (int64_t target : TargetsOfThisMachine()) {
    SCOPED_TRACE(hwy::TargetName(target));
    const OneTarget only(target);
    for (const int length : {1, 2, 4, 8, 16, 32, 64})
      for (const int count : {4, 8, 16, 32, 64, 128}) {
        Case lanes(length, count, length), twins = lanes;
        lanes.Run(&simd::CombineSideBySide);
        twins.Run(&simd::scalar::CombineSideBySide);
        EXPECT_TRUE(SameBits(lanes.yRe, twins.yRe) && SameBits(lanes.yIm, twins.yIm)) << length << ", " << count;
        lanes.Run(&simd::CombineInRows);
        twins.Run(&simd::scalar::CombineInRows);
        EXPECT_TRUE(SameBits(lanes.yRe, twins.yRe) && SameBits(lanes.yIm, twins.yIm)) << length << ", " << count;
      }
  }
}

}  // namespace
