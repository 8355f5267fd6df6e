// How many components of their own the search finds in simulated blocks, at several sizes and levels of noise. The
// rates are printed, so that a change of the method shows in the report even where it stays within the bounds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

#include "O2PLSCase.h"
#include "O2PLSTwin.h"
#include "PlainO2PLS.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"

namespace {

constexpr unsigned kSeeds = 20;
constexpr int kGroups = 5;
constexpr double kLeastNoise = 0.02;

/// What a component has to gain in Q2.
constexpr double kLimit = 0.01;

struct Size {
  const char* name;
  plain::BlocksShape shape;
};

const Size kSizes[] = {{"Small", {40, 7, 6, 1, 1, 1}},       {"Medium", {40, 10, 8, 1, 1, 1}},
                       {"Long", {100, 8, 6, 1, 1, 1}},       {"WideX", {30, 40, 6, 1, 1, 1}},
                       {"TwoInCommon", {50, 16, 12, 2, 1, 1}}};

class O2PLSUniqueComponentsOfBlocks : public ::testing::TestWithParam<Size> {};

INSTANTIATE_TEST_SUITE_P(, O2PLSUniqueComponentsOfBlocks, ::testing::ValuesIn(kSizes),
                         [](const ::testing::TestParamInfo<Size>& info) { return info.param.name; });

O2PLSCVResults Search(const FloatBlocks& blocks) {
  return O2PLSCrossValidation(&blocks.X, &blocks.Y, kGroups, nullptr, nullptr, 500, -1, -1, -1).GetResults();
}

// ---- Against a twin

/// How many components of a side a twin keeps: those that raise `q2(count)` by the limit, up to `most` of them. -1
/// where the gain is too near to the limit to say.
int KeptOfASide(const std::function<double(int)>& q2, int most) {
  int count = 0;
  for (double before = q2(0); count < most; ++count) {
    const double after = q2(count + 1);
    if (std::abs(after - before - kLimit) < kConvergence) return -1;
    if (after - before < kLimit) break;
    before = after;
  }
  return count;
}

/// What the twin makes of both sides; -1 where a gain is too near to the limit to say.
struct Kept {
  int x, y;
};

Kept KeptByTwin(const O2PLSTwin& twin, const plain::BlocksShape& shape, int predictive) {
  const int training = shape.rows - shape.rows / kGroups;
  const int mostX = std::min(shape.xVariables, training) - predictive;
  const int mostY = std::min(shape.yVariables, training) - predictive;
  const auto ofX = [&](int y) { return KeptOfASide([&](int o) { return twin.Q2OfY(predictive, o, y); }, mostX); };
  const int first = ofX(0);
  if (first < 0) return {-1, -1};
  const int y = KeptOfASide([&](int o) { return twin.Q2OfX(predictive, first, o); }, mostY);
  return {y > 0 ? ofX(y) : first, y};  // with Y's own in the models X's own are counted anew
}

TEST_P(O2PLSUniqueComponentsOfBlocks, AreThoseByWhichATwinGains) {
  const plain::BlocksShape& shape = GetParam().shape;
  for (const double noise : {kLeastNoise, 0.1, 0.3}) {
    int compared = 0;
    for (unsigned seed = 1; seed <= kSeeds; ++seed) {
      SCOPED_TRACE("noise " + std::to_string(noise) + ", seed " + std::to_string(seed));
      const FloatBlocks blocks = MakeFloatBlocks(shape, noise, seed);
      const O2PLSCVResults r = Search(blocks);
      const int predictive = r.Q2Cum.Size();  // in the models of the search; some may have been cut off behind it
      if (predictive == 0) continue;
      const O2PLSTwin twin(blocks, kGroups);
      for (int o = 1; o <= r.Q2XSide.Size(); ++o)
        EXPECT_NEAR(r.Q2XSide[o], twin.Q2OfY(predictive, o, r.YSideComponents), kConvergence) << "trial " << o;
      const Kept kept = KeptByTwin(twin, shape, predictive);
      if (kept.x < 0 || kept.y < 0) continue;
      ++compared;
      EXPECT_EQ(r.XSideComponents, kept.x);
      EXPECT_EQ(r.YSideComponents, kept.y);
    }
    EXPECT_GE(compared, 17) << "of twenty draws few have a gain within 2e-4 of the limit; noise " << noise;
  }
}

// ---- What their overlap is worth

/// What the first component of a block's own is worth to the prediction of the other one, in Q2: all of one component
/// in common of the length l, and one of its own in each block. The predictive weight is the common loading, so that
/// the score is that in common and a part of the block's own, |own| cos(angle of the loadings). Of the common part of
/// the other block that leaves l^2 / (l^2 + |own|^2 cos^2); a component that takes it out gains the rest. Blocks
/// without noise.
double WorthOfOverlap(const plain::Table& block, const plain::Table& other) {
  constexpr double kSquaredLength = 100.0;  // of the common score as plain::MakeBlocks draws it
  const plain::Vector w = plain::FirstLoading(plain::Product(plain::Transposed(other), block));
  const plain::Vector t = plain::Product(block, w);
  const double squares = plain::Dot(t, t);
  return kSquaredLength / plain::SquaresOf(other) * (squares - kSquaredLength) / squares;
}

/// How often a side was found to have something of its own, where that is worth a lot and where it is worth little.
struct Found {
  int worthIt = 0, ofThose = 0, once = 0;
  int worthLittle = 0, nevertheless = 0;

  void Count(double worth, int components) {
    if (worth >= 5 * kLimit) {
      ++worthIt;
      ofThose += components > 0 ? 1 : 0;
      once += components == 1 ? 1 : 0;
    } else if (worth <= 0.5 * kLimit) {
      ++worthLittle;
      nevertheless += components > 0 ? 1 : 0;
    }
  }
};

Found CountFound(const plain::BlocksShape& shape) {
  Found found;
  for (unsigned seed = 1; seed <= kSeeds; ++seed) {
    const O2PLSCVResults r = Search(MakeFloatBlocks(shape, kLeastNoise, seed));
    if (r.PredictiveComponents != 1) continue;  // what is unique has passed for one more in common
    const plain::Blocks clean = plain::MakeBlocks(shape, 0.0, seed);
    found.Count(WorthOfOverlap(clean.X, clean.Y), r.XSideComponents);
    found.Count(WorthOfOverlap(clean.Y, clean.X), r.YSideComponents);
  }
  return found;
}

TEST(O2PLSUniqueComponents, AreFoundWhereTheirOverlapWithOneInCommonIsWorthTheLimitSeveralTimes) {
  for (const auto& [name, shape] : kSizes) {
    if (shape.common != 1) continue;  // with two in common there is no such simple angle
    SCOPED_TRACE(name);
    const Found found = CountFound(shape);
    std::printf("%s: found %d of %d worth finding, %d of them as one component; %d of %d worth little\n", name,
                found.ofThose, found.worthIt, found.once, found.nevertheless, found.worthLittle);
    // The worth is that of all rows. Without a fifth of them scores at right angles have a cosine of about
    // 0.4 / sqrt(N), at most 0.07, and the cosine of the loadings counts as changed by as much. An overlap that is
    // worth five limits has 0.37, one of a limit 0.16: nearly three such deviations lie between, and in the mean of
    // five rounds more, so none of these is missed. From half a limit, 0.11, to a limit it is one of them, which one
    // draw of a size may pass.
    EXPECT_GE(found.worthIt, 5) << "else it would show nothing";
    EXPECT_EQ(found.ofThose, found.worthIt);
    EXPECT_GE(found.worthLittle, 5);
    EXPECT_LE(found.nevertheless, 1);
  }
}

}  // namespace
