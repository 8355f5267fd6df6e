#include "kalmia/containers/NCDataVectorUtilities.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "testing/RandomTables.h"

namespace {

using NCDataVectorUtilities::InterPolate;

template <class T>
class InterPolateSpectra : public ::testing::Test {};
TYPED_TEST_SUITE(InterPolateSpectra, CellTypes, CellTypeNames);

template <class T>
class InterPolateCurve : public ::testing::Test {};
TYPED_TEST_SUITE(InterPolateCurve, CellTypes, CellTypeNames);

TYPED_TEST(InterPolateSpectra, FollowsTheLineBetweenTheTwo) {
  const auto u = VectorOf<TypeParam>({10, 20, 0}), v = VectorOf<TypeParam>({20, 0, 0});
  EXPECT_EQ(CellsOf(InterPolate(1.0f, 5.0f, u, v, 2.0f, true)), (std::vector<TypeParam>{12.5, 15, 0}));
  EXPECT_EQ(CellsOf(InterPolate(5.0f, 1.0f, v, u, 2.0f, false)), (std::vector<TypeParam>{12.5, 15, 0}));
}

TYPED_TEST(InterPolateSpectra, GivesTheSpectraThemselvesAtTheirAbscissas) {
  const TypeParam hole = kHole<TypeParam>;  // cells of few bits, whose differences are exact
  const auto u = VectorOf<TypeParam>({0.5, hole, -1.25, 3, hole}), v = VectorOf<TypeParam>({2, 1.5, hole, -0.75, hole});
  EXPECT_EQ(CellsOf(InterPolate(1.0f, 5.0f, u, v, 1.0f, true)), CellsOf(u));
  EXPECT_EQ(CellsOf(InterPolate(1.0f, 5.0f, u, v, 5.0f, true)), CellsOf(v));
}

TYPED_TEST(InterPolateSpectra, GoesOnAsALineUnlessItIsClamped) {
  const auto u = VectorOf<TypeParam>({10}), v = VectorOf<TypeParam>({20});
  EXPECT_EQ(InterPolate(1.0f, 3.0f, u, v, 5.0f, false)[1], 30);
  EXPECT_EQ(InterPolate(1.0f, 3.0f, u, v, -1.0f, false)[1], 0);
  for (const bool swapped : {false, true}) {  // the smaller abscissa may be either
    const auto at = [&](float x) {
      return swapped ? InterPolate(3.0f, 1.0f, v, u, x, true)[1] : InterPolate(1.0f, 3.0f, u, v, x, true)[1];
    };
    EXPECT_EQ(at(5.0f), 20);
    EXPECT_EQ(at(-1.0f), 10);
    EXPECT_EQ(at(2.0f), 15);
  }
}

TYPED_TEST(InterPolateSpectra, NeedsBothCellsUnlessItStandsOnOne) {
  const TypeParam hole = kHole<TypeParam>;
  const auto u = VectorOf<TypeParam>({hole, 1, hole}), v = VectorOf<TypeParam>({2, hole, hole});
  const NCDataVector<TypeParam> between = InterPolate(1.0f, 3.0f, u, v, 2.0f, true);
  EXPECT_EQ(CellsOf(between), (std::vector<TypeParam>{hole, hole, hole}));
  EXPECT_TRUE(HasExactCounts(between));
  EXPECT_EQ(CellsOf(InterPolate(1.0f, 3.0f, u, v, 1.0f, true)), (std::vector<TypeParam>{hole, 1, hole}));
  EXPECT_EQ(CellsOf(InterPolate(1.0f, 3.0f, u, v, 3.0f, true)), (std::vector<TypeParam>{2, hole, hole}));
}

TYPED_TEST(InterPolateSpectra, WithAMissingAbscissaGivesTheSpectrumThatItStandsOn) {
  const auto u = VectorOf<TypeParam>({1}), v = VectorOf<TypeParam>({2});
  EXPECT_EQ(InterPolate(-99.0f, 3.0f, u, v, 3.0f, true)[1], 2);
  EXPECT_EQ(InterPolate(-99.0f, 3.0f, u, v, -99.0f, true)[1], 1);
  EXPECT_EQ(InterPolate(-99.0f, 3.0f, u, v, 2.0f, true)[1], kHole<TypeParam>);
  EXPECT_EQ(InterPolate(1.0f, -99.0f, u, v, 1.0f, true)[1], 1);
}

TYPED_TEST(InterPolateSpectra, BetweenEqualAbscissasGivesTheFirst) {
  const auto u = VectorOf<TypeParam>({1}), v = VectorOf<TypeParam>({2});
  EXPECT_EQ(InterPolate(3.0f, 3.0f, u, v, 7.0f, true)[1], 1);
  const NCDataVector<TypeParam> hole(1);  // a missing spectrum comes before equal abscissas
  EXPECT_EQ(InterPolate(3.0f, 3.0f, u, hole, 7.0f, true)[1], kHole<TypeParam>);
  // 1 and 1 + 2^-23 differ by 2^-23, within 2^-23 * 2^1; 1 + 2^-21 does not.
  EXPECT_EQ(InterPolate(1.0f, 1.0f + 0x1p-23f, u, v, 7.0f, true)[1], 1);
  EXPECT_EQ(InterPolate(1.0f, 1.0f + 0x1p-21f, u, v, 7.0f, true)[1], 2);
}

TYPED_TEST(InterPolateSpectra, OfNaNIsNoTrouble) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const auto u = VectorOf<TypeParam>({1, nan}), v = VectorOf<TypeParam>({2, 3});
  EXPECT_TRUE(std::isnan(InterPolate(1.0f, 3.0f, u, v, 2.0f, true)[2]));
  EXPECT_EQ(InterPolate(1.0f, 3.0f, u, v, std::numeric_limits<float>::quiet_NaN(), false).Size(), 2);
}

TYPED_TEST(InterPolateSpectra, OfNothingIsNothing) {
  const NCDataVector<TypeParam> none;
  EXPECT_EQ(InterPolate(1.0f, 3.0f, none, none, 2.0f, true).Size(), 0);
}

TYPED_TEST(InterPolateCurve, FollowsThePiecewiseLine) {
  const auto xs = VectorOf<TypeParam>({1, 2, 4, 8}), ys = VectorOf<TypeParam>({10, 20, 0, 4});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({1, 1.5, 2, 3, 7, 8}), xs, ys)),
            (std::vector<TypeParam>{10, 15, 20, 10, 3, 4}));
}

TYPED_TEST(InterPolateCurve, TakesThePointsInAnyOrder) {
  const auto xs = VectorOf<TypeParam>({4, 1, 8, 2}), ys = VectorOf<TypeParam>({0, 10, 4, 20});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({1, 1.5, 2, 3, 7, 8}), xs, ys)),
            (std::vector<TypeParam>{10, 15, 20, 10, 3, 4}));
}

TYPED_TEST(InterPolateCurve, PassesOverPointsWithoutAnOrdinate) {
  const TypeParam hole = kHole<TypeParam>;
  const auto xs = VectorOf<TypeParam>({1, 2, 3}), ys = VectorOf<TypeParam>({10, hole, 30});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({1, 2, 2.5}), xs, ys)), (std::vector<TypeParam>{10, 20, 25}));
}

TYPED_TEST(InterPolateCurve, TakesTheFirstOfPointsWithEqualAbscissas) {
  const auto xs = VectorOf<TypeParam>({1, 2, 2, 3}), ys = VectorOf<TypeParam>({10, 20, 50, 30});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({1.5, 2, 2.5}), xs, ys)), (std::vector<TypeParam>{15, 20, 25}));
}

TYPED_TEST(InterPolateCurve, ExtrapolatesASingleCellBeyondEachEnd) {
  const auto xs = VectorOf<TypeParam>({1, 2, 4}), ys = VectorOf<TypeParam>({10, 20, 0});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({0, 1.5, 3, 5}), xs, ys)),
            (std::vector<TypeParam>{0, 15, 10, -10}));
}

// The first cell takes over the bracket's upper point of the second cell: where that one stands on the first point, the
// bracket has no width and the value is the point's.
TYPED_TEST(InterPolateCurve, ACellBeyondAnEndBesideOneOnTheEndTakesTheValueOfTheEnd) {
  const auto xs = VectorOf<TypeParam>({1, 2, 4}), ys = VectorOf<TypeParam>({10, 20, 0});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({0, 1, 4, 5}), xs, ys)), (std::vector<TypeParam>{10, 10, 0, 0}));
}

// The bracket of the cell beyond the end reaches to the far point of its neighbour's; without any cell inside, both
// cells fall on the end points' own brackets in turn.
TYPED_TEST(InterPolateCurve, ACellBeyondAnEndGoesToTheFarPointOfItsNeighboursBracket) {
  const auto xs = VectorOf<TypeParam>({1, 2, 4}), ys = VectorOf<TypeParam>({10, 20, 0});
  // From (1, 10) to (4, 0) at 0; rounded to the type.
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({0, 3}), xs, ys)),
            (std::vector<TypeParam>{static_cast<TypeParam>(10 + 10.0L / 3), 10}));
  // The upper bracket of 0 comes from 5, which has none, and is filled from the lower one of 0 afterwards.
  const auto bothBeyond = InterPolate(VectorOf<TypeParam>({0, 5}), xs, ys);
  EXPECT_EQ(bothBeyond[1], 10);
  // 10 - 10 / 3 * 4: the product of 13.3 and the difference round once each, the cell once more.
  EXPECT_NEAR(bothBeyond[2], -10.0 / 3, 4 * 13.4 * std::numeric_limits<TypeParam>::epsilon());
}

// By the steps: of cells -1, 0 and 1.5 the first gets low = 1, and its high becomes the second's, 1; the second gets
// low = 1. All brackets but the last have no width.
TYPED_TEST(InterPolateCurve, SeveralCellsBeyondAnEndTakeTheValueOfTheEnd) {
  const auto xs = VectorOf<TypeParam>({1, 2, 4}), ys = VectorOf<TypeParam>({10, 20, 0});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({-1, 0, 1.5}), xs, ys)), (std::vector<TypeParam>{10, 10, 15}));
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({3, 5, 6}), xs, ys)), (std::vector<TypeParam>{10, 0, 0}));
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({-3, -2, -1}), xs, ys)), (std::vector<TypeParam>{10, 10, 10}));
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({5, 6, 7}), xs, ys)), (std::vector<TypeParam>{0, 0, 0}));
}

TYPED_TEST(InterPolateCurve, WithTooFewCellsOrUnequalPointsIsEmpty) {
  const auto one = VectorOf<TypeParam>({1}), two = VectorOf<TypeParam>({1, 2}), three = VectorOf<TypeParam>({1, 2, 3});
  EXPECT_EQ(InterPolate(two, two, three).Size(), 0);
  EXPECT_EQ(InterPolate(one, two, two).Size(), 0);
  EXPECT_EQ(InterPolate(two, one, one).Size(), 0);
  EXPECT_EQ(InterPolate(two, NCDataVector<TypeParam>(), NCDataVector<TypeParam>()).Size(), 0);
  EXPECT_EQ(InterPolate(two, two, two).Size(), 2);
}

TYPED_TEST(InterPolateCurve, WithoutABracketGivesAMissingCell) {
  const TypeParam hole = kHole<TypeParam>, nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const auto xs = VectorOf<TypeParam>({1, 2, 4}), ys = VectorOf<TypeParam>({10, 20, 0});
  // Neither of the inner cells is in order: the ends are closed from outside only.
  const NCDataVector<TypeParam> result = InterPolate(VectorOf<TypeParam>({1, 0, nan, 9, 4}), xs, ys);
  EXPECT_EQ(CellsOf(result), (std::vector<TypeParam>{10, hole, hole, hole, 0}));
  EXPECT_TRUE(HasExactCounts(result));
  EXPECT_EQ(CellsOf(InterPolate(xs, xs, NCDataVector<TypeParam>(3))), (std::vector<TypeParam>{hole, hole, hole}));
}

TYPED_TEST(InterPolateCurve, PassesOverPointsWhoseAbscissaIsNaN) {
  const TypeParam nan = std::numeric_limits<TypeParam>::quiet_NaN();
  const auto xs = VectorOf<TypeParam>({nan, 1, nan, 3}), ys = VectorOf<TypeParam>({7, 10, 7, 30});
  EXPECT_EQ(CellsOf(InterPolate(VectorOf<TypeParam>({1, 2}), xs, ys)), (std::vector<TypeParam>{10, 20}));
}

/// The definition between the ends, by walking over all points for each cell.
template <class T>
T InnerValueByDefinition(T x, const NCDataVector<T>& xs, const NCDataVector<T>& ys) {
  int low = -1, high = -1;
  for (int k = 1; k <= xs.Size(); ++k) {
    if (ys[k] == kHole<T>) continue;
    if (xs[k] <= x && (low == -1 || xs[k] > xs[low])) low = k;
    if (xs[k] >= x && (high == -1 || xs[k] < xs[high])) high = k;
  }
  const double x1 = xs[low], x2 = xs[high], y1 = ys[low], y2 = ys[high];
  return static_cast<T>(x1 == x2 ? y1 : y1 + (y2 - y1) / (x2 - x1) * (x - x1));
}

TYPED_TEST(InterPolateCurve, FindsTheBracketsOfAWalkOverAllPoints) {
  auto xs = RandomVector<TypeParam>(80, 0, 5);
  for (int k = 1; k <= 80; ++k) xs(k, std::round(xs[k] * 8) / 8);  // so that abscissas are equal, and not almost
  const auto ys = RandomVector<TypeParam>(80, 0.3, 6);
  NCDataVector<TypeParam> x;
  for (int i = -16; i <= 16; ++i) x.push_back(static_cast<TypeParam>(i / 16.0));  // well inside of -3 .. 3
  const NCDataVector<TypeParam> result = InterPolate(x, xs, ys);
  for (int i = 1; i <= x.Size(); ++i) EXPECT_EQ(result[i], InnerValueByDefinition(x[i], xs, ys)) << x[i];
}

}  // namespace
