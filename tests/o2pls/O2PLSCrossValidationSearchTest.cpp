// On what the search for orthogonal components ends.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "O2PLSCase.h"
#include "kalmia/o2pls/O2PLSCrossValidation.h"
#include "testing/Ints.h"

namespace {

using Table = NCDataMatrix<float>;
using Groups = NCIntegralVector<int, -99>;

struct LimitIs {
  explicit LimitIs(float limit) { SetO2PLSQ2Limit(limit); }
  ~LimitIs() { SetO2PLSQ2Limit(0.01F); }
};

// ---- The smallest training set

/// Many variables beside one, so that only their side can have orthogonal components. Of the twelve rows one group
/// holds eight: its round has four to train with, of which one direction is predictive, and three are not.
struct FewTrainingRows {
  FewTrainingRows(bool wideX, unsigned seed) : wideX(wideX) {
    const FloatBlocks made = MakeFloatBlocks({12, 9, 1, 1, 6, 0}, 0.0, seed);
    blocks = wideX ? made : FloatBlocks{made.Y, made.X};
  }
  O2PLSCVResults Validate(int predictive, int orthogonal) const {
    Groups groups = Ints({0, 0, 0, 0, 0, 0, 0, 0, 1, 2, 1, 2});
    const int other = orthogonal < 0 ? -1 : 0;
    return O2PLSCrossValidation(&blocks.X, &blocks.Y, -1, nullptr, &groups, 200, predictive,
                                wideX ? orthogonal : other, wideX ? other : orthogonal)
        .GetResults();
  }
  NCDataVector<float> Q2Of(const O2PLSCVResults& r) const { return wideX ? r.Q2XSide : r.Q2YSide; }

  bool wideX;
  FloatBlocks blocks;
};

TEST(O2PLSCrossValidationSearch, TriesNoMoreThanTheSmallestTrainingSetHasDimensionsFor) {
  const LimitIs limit(0.0F);
  int full = 0;
  for (const bool wideX : {true, false})
    for (unsigned seed = 1; seed <= 12; ++seed) {
      SCOPED_TRACE(std::string(wideX ? "wide X" : "wide Y") + ", seed " + std::to_string(seed));
      const FewTrainingRows few(wideX, seed);
      const O2PLSCVResults search = few.Validate(-1, -1);
      ASSERT_EQ(search.PredictiveComponents, 1);
      const NCDataVector<float> fixed = few.Q2Of(few.Validate(1, 4));
      ASSERT_EQ(fixed.Size(), 4) << "a fourth one can be computed, of rounding in that round";
      const int kept = wideX ? search.XSideComponents : search.YSideComponents;
      if (kept == 0 || fixed[2] < fixed[1] || fixed[3] < fixed[2]) continue;  // one before the fourth ends the search
      ++full;
      EXPECT_EQ(few.Q2Of(search).Size(), 3);
      EXPECT_EQ(kept, 3) << "and none is taken back";
    }
  EXPECT_GE(full, 6);
}

// ---- A gain that is no number

std::vector<int> CodesOf(const Groups& codes) { return {codes.begin(), codes.end()}; }

/// Y is the first variable of X. The other two have the same direction of their own in one group, and opposite ones in
/// the other; the last row of the first group has nothing but these two, of a size that floats hold, but not their sum.
FloatBlocks OverflowingInOneRound(const Groups& groups) {
  constexpr float kHuge = 3e38F;
  const float common[] = {1, -1, 1, -1, 0}, own[] = {1, 1, -1, -1, 0};
  FloatBlocks blocks{Table(10, 3), Table(10, 1)};
  for (int i = 1; i <= 10; ++i) {
    const float c = common[(i - 1) % 5], overlaid = own[(i - 1) % 5] + 0.5F * c;
    blocks.X(i, 1, c);
    blocks.X(i, 2, overlaid);
    blocks.X(i, 3, groups[i] == 0 ? -overlaid : overlaid);
    blocks.Y(i, 1, c);
  }
  blocks.X(5, 2, kHuge);
  blocks.X(5, 3, kHuge);
  return blocks;
}

TEST(O2PLSCrossValidationSearch, KeepsAComponentWhoseGainIsNoNumberThoughItIsNotSignificant) {
  Groups groups = Ints({0, 0, 0, 0, 0, 1, 1, 1, 1, 1});
  const FloatBlocks blocks = OverflowingInOneRound(groups);
  const O2PLSCVResults r =
      O2PLSCrossValidation(&blocks.X, &blocks.Y, -1, nullptr, &groups, 200, -1, -1, -1).GetResults();
  ASSERT_EQ(r.PredictiveComponents, 1);
  ASSERT_EQ(r.Q2XSide.Size(), 2) << "all that three variables can have";
  for (const float q2 : r.Q2XSide) EXPECT_TRUE(std::isnan(q2)) << q2;
  EXPECT_EQ(CodesOf(r.XSideSignificance), (std::vector<int>{3, 3}));
  EXPECT_EQ(r.XSideComponents, 2) << "what is no number is not less than the limit";
  EXPECT_EQ(r.ToSet.size(), 2U);
}

}  // namespace
