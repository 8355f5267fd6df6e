#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Fitted lines, detrending, filling of holes, standard normal variate and lags of a vector.

namespace {

template <class T>
class NCDataVectorTrend : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorTrend, CellTypes, CellTypeNames);

constexpr long double kUnwritten = 12345;

template <class T>
struct Fit {
  Fit(const NCDataVector<T>& y, const NCDataVector<T>* x) : found(y.LeastSquare(x, intercept, slope)) {}
  long double intercept = kUnwritten, slope = kUnwritten;
  bool found;
};

TYPED_TEST(NCDataVectorTrend, LeastSquareOverThePositionsFindsTheLine) {
  const Fit<TypeParam> fit(VectorOf<TypeParam>({2, 4, 6}), nullptr);
  EXPECT_TRUE(fit.found);
  EXPECT_EQ(fit.slope, 2);
  EXPECT_EQ(fit.intercept, 0);
}

TYPED_TEST(NCDataVectorTrend, LeastSquareOverAbscissasFindsTheLine) {
  const auto x = VectorOf<TypeParam>({1, 5, 3});
  const Fit<TypeParam> fit(VectorOf<TypeParam>({-1, -3, -2}), &x);
  EXPECT_TRUE(fit.found);
  EXPECT_EQ(fit.slope, -0.5);
  EXPECT_EQ(fit.intercept, -0.5);
}

TYPED_TEST(NCDataVectorTrend, LeastSquareLeavesHolesOut) {
  const TypeParam hole = kHole<TypeParam>;
  const Fit<TypeParam> positions(VectorOf<TypeParam>({2, hole, 6, hole}), nullptr);
  EXPECT_EQ(positions.slope, 2);
  EXPECT_EQ(positions.intercept, 0);
  const auto x = VectorOf<TypeParam>({10, hole, 30, 40});  // a missing abscissa opposite a hole is not needed
  const Fit<TypeParam> abscissas(VectorOf<TypeParam>({2, hole, 6, 8}), &x);
  EXPECT_TRUE(abscissas.found);
  EXPECT_NEAR(abscissas.slope, 0.2, 1e-17);  // rounding of long double
  EXPECT_NEAR(abscissas.intercept, 0, 1e-17);
}

// The line that no other beats: residuals are orthogonal to 1 and to x.
TYPED_TEST(NCDataVectorTrend, LeastSquareLeavesResidualsOrthogonalToTheAbscissas) {
  const auto y = RandomVector<TypeParam>(50, 0.3, 4);
  const auto x = RandomVector<TypeParam>(50, 0, 5);
  const Fit<TypeParam> fit(y, &x);
  ASSERT_TRUE(fit.found);
  long double sum = 0, moment = 0;
  for (int i = 1; i <= 50; ++i) {
    if (y[i] == kHole<TypeParam>) continue;
    const long double residual = y[i] - (fit.slope * x[i] + fit.intercept);
    sum += residual;
    moment += residual * x[i];
  }
  EXPECT_NEAR(sum, 0, 50 * 10 * 0x1p-60);  // terms below 10 in long double
  EXPECT_NEAR(moment, 0, 50 * 30 * 0x1p-60);
}

TYPED_TEST(NCDataVectorTrend, LeastSquareBelowTwoCellsFails) {
  for (const auto& v : {NCDataVector<TypeParam>(), NCDataVector<TypeParam>(3), VectorOf<TypeParam>({4}),
                        VectorOf<TypeParam>({4, kHole<TypeParam>})}) {
    const Fit<TypeParam> fit(v, nullptr);
    EXPECT_FALSE(fit.found);
    EXPECT_EQ(fit.slope, kUnwritten);
    EXPECT_EQ(fit.intercept, kUnwritten);
  }
}

TYPED_TEST(NCDataVectorTrend, LeastSquareFailsOnAnAbscissaThatIsMissing) {
  const TypeParam hole = kHole<TypeParam>;
  const auto x = VectorOf<TypeParam>({1, hole, 3});
  EXPECT_FALSE(Fit<TypeParam>(VectorOf<TypeParam>({1, 2, 3}), &x).found);
  EXPECT_FALSE(Fit<TypeParam>(VectorOf<TypeParam>({1, 2, hole}), &x).found);
}

TYPED_TEST(NCDataVectorTrend, LeastSquareOverEqualAbscissasIsTheLargestFloatAndWritesNoIntercept) {
  for (const TypeParam abscissa : {TypeParam(0), TypeParam(7), static_cast<TypeParam>(0.1f)}) {
    const NCDataVector<TypeParam> x(3, abscissa);
    const Fit<TypeParam> fit(VectorOf<TypeParam>({1, 2, 3}), &x);
    EXPECT_TRUE(fit.found);
    EXPECT_EQ(fit.slope, 3.4028234663852886e38);
    EXPECT_EQ(fit.intercept, kUnwritten);
  }
}

// The sums of 0.1 and of its square round, so that their difference is no test for equal abscissas.
TYPED_TEST(NCDataVectorTrend, LeastSquareKnowsEqualAbscissasWhateverTheirNumber) {
  for (int n = 2; n <= 40; ++n) {
    const NCDataVector<TypeParam> x(n, static_cast<TypeParam>(0.1));
    NCDataVector<TypeParam> y(n, 1);
    y(1, 2);
    const Fit<TypeParam> fit(y, &x);
    EXPECT_EQ(fit.slope, 3.4028234663852886e38) << n;
    EXPECT_EQ(fit.intercept, kUnwritten) << n;
  }
}

// Of abscissas a unit in the last place apart nothing is left in the difference of the sums: sum(x^2) is 2 + 2^-51 and
// sum(x)^2 / 2 as well, both without their last term of 2^-103 or so.
TEST(NCDataVectorLeastSquare, OverAbscissasWhoseSpreadIsLostInRoundingIsTheLargestFloat) {
  const auto x = VectorOf<double>({1, 1 + 0x1p-52});
  const Fit<double> fit(VectorOf<double>({1, 2}), &x);
  EXPECT_TRUE(fit.found);
  EXPECT_EQ(fit.slope, 3.4028234663852886e38);
  EXPECT_EQ(fit.intercept, kUnwritten);
}

// A difference of complete vectors counts no hole, even where a cell lands on -99: that cell is a number to all.
TYPED_TEST(NCDataVectorTrend, CellsThatTheCountDoesNotKnowAsHolesAreTransformedAsNumbers) {
  const auto uncounted = VectorOf<TypeParam>({-98, 1, 6}) - VectorOf<TypeParam>({1, 0, 0});
  ASSERT_EQ(uncounted.GetNumMisVal(), 0);
  const NCDataVector<TypeParam> snv = uncounted.SNV();
  EXPECT_LT(snv[1], -1);
  EXPECT_TRUE(HasExactCounts(snv));
  auto centred = uncounted;
  long double mean = kUnwritten;
  centred.DetrendMean(mean);
  EXPECT_EQ(centred[1], static_cast<TypeParam>(-99 - mean));
}

TYPED_TEST(NCDataVectorTrend, DetrendMeanCentresThePresentCells) {
  auto v = VectorOf<TypeParam>({1, kHole<TypeParam>, 3});
  const NCDataVector<TypeParam> sharer(v);
  long double mean = kUnwritten;
  v.DetrendMean(mean);
  EXPECT_EQ(mean, 2);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{-1, kHole<TypeParam>, 1}));
  EXPECT_EQ(CellsOf(sharer), (std::vector<TypeParam>{1, kHole<TypeParam>, 3}));
  EXPECT_TRUE(HasExactCounts(v));
}

TYPED_TEST(NCDataVectorTrend, DetrendMeanWithoutAMeanChangesNothing) {
  for (const auto& before : {NCDataVector<TypeParam>(), NCDataVector<TypeParam>(2), VectorOf<TypeParam>({-100, -98})}) {
    auto v = before;
    long double mean = kUnwritten;
    v.DetrendMean(mean);
    EXPECT_EQ(mean, -99);
    EXPECT_EQ(CellsOf(v), CellsOf(before));
  }
}

TYPED_TEST(NCDataVectorTrend, DetrendMeanCountsADifferenceThatLandsOnTheMissingValue) {
  auto v = VectorOf<TypeParam>({-100, 98});
  long double mean;
  v.DetrendMean(mean);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{-99, 99}));
  EXPECT_TRUE(HasExactCounts(v));
}

TYPED_TEST(NCDataVectorTrend, DetrendLinearTakesTheFittedLineOff) {
  auto v = VectorOf<TypeParam>({5, 7, kHole<TypeParam>, 11});
  const NCDataVector<TypeParam> sharer(v);
  long double intercept = kUnwritten, slope = kUnwritten;
  v.DetrendLinear(intercept, slope);
  EXPECT_NEAR(intercept, 3, 1e-17);  // rounding of long double
  EXPECT_NEAR(slope, 2, 1e-17);
  for (const int i : {1, 2, 4}) EXPECT_NEAR(v[i], 0, 1e-17);
  EXPECT_EQ(v[3], kHole<TypeParam>);
  EXPECT_EQ(sharer[4], 11);
  EXPECT_TRUE(HasExactCounts(v));
}

TYPED_TEST(NCDataVectorTrend, DetrendLinearCountsADifferenceThatLandsOnTheMissingValue) {
  auto v = VectorOf<TypeParam>({-98, 199, -98});  // around the line of 1 everywhere
  long double intercept, slope;
  v.DetrendLinear(intercept, slope);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{-99, 198, -99}));
  EXPECT_TRUE(HasExactCounts(v));
}

TYPED_TEST(NCDataVectorTrend, DetrendLinearBelowTwoCellsDoesNothing) {
  for (const auto& before : {NCDataVector<TypeParam>(), NCDataVector<TypeParam>(2), VectorOf<TypeParam>({4})}) {
    auto v = before;
    long double intercept = kUnwritten, slope = kUnwritten;
    v.DetrendLinear(intercept, slope);
    EXPECT_EQ(intercept, kUnwritten);
    EXPECT_EQ(slope, kUnwritten);
    EXPECT_EQ(CellsOf(v), CellsOf(before));
  }
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsFillsInnerHolesByLinesAndEndsFlat) {
  const TypeParam hole = kHole<TypeParam>;
  auto v = VectorOf<TypeParam>({hole, 1, hole, 3, hole});
  const NCDataVector<TypeParam> sharer(v);
  EXPECT_TRUE(v.InterpolateMisVals(nullptr));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{1, 1, 2, 3, 3}));
  EXPECT_EQ(v.GetNumMisVal(), 0);
  EXPECT_EQ(sharer.GetNumMisVal(), 3);
  EXPECT_TRUE(HasExactCounts(sharer));
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsFillsLongRuns) {
  const TypeParam hole = kHole<TypeParam>;
  auto v = VectorOf<TypeParam>({hole, hole, 0, hole, hole, hole, 8, 6, hole, 2, hole, hole});
  EXPECT_TRUE(v.InterpolateMisVals(nullptr));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{0, 0, 0, 2, 4, 6, 8, 6, 4, 2, 2, 2}));
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsFollowsTheAbscissas) {
  const TypeParam hole = kHole<TypeParam>;
  auto v = VectorOf<TypeParam>({10, hole, hole, 30, hole});
  const auto x = VectorOf<TypeParam>({0, 1, 4, 8, hole});  // the last one is not needed: the ends are flat
  EXPECT_TRUE(v.InterpolateMisVals(&x));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{10, 12.5, 20, 30, 30}));
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsNeedsNoAbscissaOfCellsWithoutAHoleBetweenThem) {
  const TypeParam hole = kHole<TypeParam>;
  auto v = VectorOf<TypeParam>({7, 1, hole, 3, 8});
  const auto x = VectorOf<TypeParam>({hole, 1, 2, 3, hole});
  EXPECT_TRUE(v.InterpolateMisVals(&x));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{7, 1, 2, 3, 8}));
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsWithNothingToDoIsTrue) {
  NCDataVector<TypeParam> empty;
  EXPECT_TRUE(empty.InterpolateMisVals(nullptr));
  auto complete = VectorOf<TypeParam>({1, 2});
  const NCDataVector<TypeParam> noAbscissas(2);
  EXPECT_TRUE(complete.InterpolateMisVals(&noAbscissas));
  EXPECT_EQ(CellsOf(complete), (std::vector<TypeParam>{1, 2}));
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsOfNothingButHolesFails) {
  NCDataVector<TypeParam> v(3);
  EXPECT_FALSE(v.InterpolateMisVals(nullptr));
  EXPECT_EQ(v.GetNumMisVal(), 3);
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsStopsAtAMissingAbscissaAndLeavesWhatItHasDone) {
  const TypeParam hole = kHole<TypeParam>;
  for (const int bad : {4, 5, 6}) {  // both present ends of the run count
    auto v = VectorOf<TypeParam>({hole, 1, hole, 3, hole, 5, hole, 7, hole});
    auto x = VectorOf<TypeParam>({1, 2, 3, 4, 5, 6, 7, 8, 9});
    x(bad, hole);
    EXPECT_FALSE(v.InterpolateMisVals(&x));
    // The ends are filled first, then the runs in their order. Where cell 4 has no abscissa, its left run fails
    // already.
    const TypeParam firstRun = bad == 4 ? hole : TypeParam(2);
    EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{1, 1, firstRun, 3, hole, 5, hole, 7, 7}));
    EXPECT_TRUE(HasExactCounts(v));
  }
}

TYPED_TEST(NCDataVectorTrend, InterpolateMisValsCountsNoHoleEvenWhereALineCrossesMinus99) {
  auto v = VectorOf<TypeParam>({-98, kHole<TypeParam>, -100});
  EXPECT_TRUE(v.InterpolateMisVals(nullptr));
  EXPECT_EQ(v[2], -99);
  EXPECT_EQ(v.GetNumMisVal(), 0);
}

TYPED_TEST(NCDataVectorTrend, SNVHasMean0AndStandardDeviation1) {
  const auto v = RandomVector<TypeParam>(60, 0.2, 6);
  const NCDataVector<TypeParam> z = v.SNV();
  // Each of the at most 60 cells, below 4 in absolute value, is rounded once to its type.
  const double rounding = 60 * 4 * std::numeric_limits<TypeParam>::epsilon();
  EXPECT_NEAR(z.GetMean(), 0, rounding);
  EXPECT_NEAR(z.GetStdDev(), 1, rounding);
  EXPECT_EQ(z.GetNumMisVal(), v.GetNumMisVal());
  for (int i = 1; i <= 60; ++i) EXPECT_EQ(z[i] == kHole<TypeParam>, v[i] == kHole<TypeParam>);
  EXPECT_TRUE(HasExactCounts(z));
}

TYPED_TEST(NCDataVectorTrend, SNVOfASumOfMinus99IsTheDefinition) {
  // mean -49.5, sd 101 / sqrt(2)
  const NCDataVector<TypeParam> z = VectorOf<TypeParam>({-100, 1}).SNV();
  EXPECT_NEAR(z[1], -std::sqrt(0.5), std::numeric_limits<TypeParam>::epsilon());
  EXPECT_NEAR(z[2], std::sqrt(0.5), std::numeric_limits<TypeParam>::epsilon());
}

TYPED_TEST(NCDataVectorTrend, SNVWithoutSpreadIs0WhereCellsArePresent) {
  const NCDataVector<TypeParam> z = VectorOf<TypeParam>({4, kHole<TypeParam>, 4}).SNV();
  EXPECT_EQ(CellsOf(z), (std::vector<TypeParam>{0, kHole<TypeParam>, 0}));
  EXPECT_TRUE(HasExactCounts(z));
}

TYPED_TEST(NCDataVectorTrend, SNVBelowTwoCellsIsAllMissing) {
  const TypeParam hole = kHole<TypeParam>;
  EXPECT_EQ(CellsOf(VectorOf<TypeParam>({hole, 4}).SNV()), (std::vector<TypeParam>{hole, hole}));
  EXPECT_EQ(NCDataVector<TypeParam>().SNV().Size(), 0);
  auto target = VectorOf<TypeParam>({1, 2});
  VectorOf<TypeParam>({hole, 4}).Result(&target).SNV();
  EXPECT_EQ(CellsOf(target), (std::vector<TypeParam>{hole, hole}));
  EXPECT_TRUE(HasExactCounts(target));
}

TYPED_TEST(NCDataVectorTrend, SNVBuildsItsResultInATargetAndEvenInItself) {
  const auto v = RandomVector<TypeParam>(9, 0.3, 2);
  const NCDataVector<TypeParam> expected = v.SNV();
  NCDataVector<TypeParam> target(9, TypeParam(7));
  const NCDataVector<TypeParam> sharer(target);
  v.Result(&target).SNV();
  EXPECT_EQ(CellsOf(target), CellsOf(expected));
  EXPECT_EQ(sharer[1], 7);
  NCDataVector<TypeParam> self(v);
  self.Result(&self).SNV();
  EXPECT_EQ(CellsOf(self), CellsOf(expected));
  EXPECT_TRUE(HasExactCounts(self));
}

TYPED_TEST(NCDataVectorTrend, LagMovesCellsAndLeavesHolesBehind) {
  const TypeParam hole = kHole<TypeParam>;
  auto v = VectorOf<TypeParam>({1, 2, 3});
  const NCDataVector<TypeParam> sharer(v);
  v.Lag(1);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{hole, 1, 2}));
  v.Lag(-2);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{2, hole, hole}));
  EXPECT_TRUE(HasExactCounts(v));
  EXPECT_EQ(CellsOf(sharer), (std::vector<TypeParam>{1, 2, 3}));
}

TYPED_TEST(NCDataVectorTrend, LagAtOrAboveTheSizeEmptiesTheVector) {
  for (const int k : {3, 4, -3, -4, INT_MAX, INT_MIN}) {
    auto v = VectorOf<TypeParam>({1, 2, 3});
    v.Lag(k);
    EXPECT_EQ(v.GetNumMisVal(), 3) << k;
    EXPECT_TRUE(HasExactCounts(v));
  }
  NCDataVector<TypeParam> empty;
  empty.Lag(1);
  EXPECT_EQ(empty.Size(), 0);
}

TYPED_TEST(NCDataVectorTrend, LagBy0UnlinksNothing) {
  auto v = VectorOf<TypeParam>({1, 2, 3});
  const NCDataVector<TypeParam> sharer(v);
  v.Lag(0);
  EXPECT_EQ(v.GetVector(), sharer.GetVector());
}

TYPED_TEST(NCDataVectorTrend, LagIsAShiftForEveryDistance) {
  const auto before = RandomVector<TypeParam>(11, 0.3, 8);
  for (int k = -12; k <= 12; ++k) {
    auto v = before;
    v.Lag(k);
    for (int i = 1; i <= 11; ++i)
      EXPECT_EQ(v[i], i - k >= 1 && i - k <= 11 ? before[i - k] : kHole<TypeParam>) << k << ", " << i;
    EXPECT_TRUE(HasExactCounts(v));
  }
}

}  // namespace
