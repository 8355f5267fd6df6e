#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "testing/RandomTables.h"

// Median, quartiles and sorting of a vector.

namespace {

constexpr double kNoEstimate = kalmia::kMissing;

template <class T>
class NCDataVectorOrder : public ::testing::Test {};
TYPED_TEST_SUITE(NCDataVectorOrder, CellTypes, CellTypeNames);

template <class T>
struct Quartiles {
  explicit Quartiles(const NCDataVector<T>& v) : found(v.GetInterquartiles(q1, median, q3)) {}
  long double q1 = 0, median = 0, q3 = 0;
  bool found;
};

std::vector<int> CellsOfPermutation(const NCIntegralVector<int, -99>& v) {
  return std::vector<int>(v.begin(), v.end());
}

TYPED_TEST(NCDataVectorOrder, MedianIsTheMiddleCellOrTheMeanOfTheTwoMiddleOnes) {
  EXPECT_EQ(VectorOf<TypeParam>({7}).GetMedian(), 7);
  EXPECT_EQ(VectorOf<TypeParam>({5, 1, 3}).GetMedian(), 3);
  EXPECT_EQ(VectorOf<TypeParam>({5, 1, 4, 2}).GetMedian(), 3);
}

TYPED_TEST(NCDataVectorOrder, MedianGoesByTheCellsWhereTheCountIsTooHigh) {
  auto v = VectorOf<TypeParam>({kHole<TypeParam>, kHole<TypeParam>, 4});
  const int holes[] = {1, 2};
  v.Remove(NCIntegralVector<int, -99>(holes, 2));  // leaves the count, 2, as it was
  EXPECT_EQ(v.GetMedian(), 4);
}

TYPED_TEST(NCDataVectorOrder, MedianLeavesHolesOut) {
  const TypeParam hole = kHole<TypeParam>;
  EXPECT_EQ(VectorOf<TypeParam>({hole, 5, hole, 1, 3}).GetMedian(), 3);
  EXPECT_EQ(NCDataVector<TypeParam>(4).GetMedian(), kNoEstimate);
  EXPECT_EQ(NCDataVector<TypeParam>().GetMedian(), kNoEstimate);
}

TYPED_TEST(NCDataVectorOrder, MedianOfTheLargestNumbersDoesNotOverflow) {
  const TypeParam largest = std::numeric_limits<TypeParam>::max();
  EXPECT_EQ(VectorOf<TypeParam>({largest, largest}).GetMedian(), largest);
}

TYPED_TEST(NCDataVectorOrder, QuartilesLeaveTheMedianOutOfBothHalves) {
  const Quartiles<TypeParam> odd(VectorOf<TypeParam>({4, 2, 5, 1, 3}));
  EXPECT_TRUE(odd.found);
  EXPECT_EQ(odd.q1, 1.5);
  EXPECT_EQ(odd.median, 3);
  EXPECT_EQ(odd.q3, 4.5);
  const Quartiles<TypeParam> even(VectorOf<TypeParam>({4, 2, 1, 3}));
  EXPECT_TRUE(even.found);
  EXPECT_EQ(even.q1, 1.5);
  EXPECT_EQ(even.median, 2.5);
  EXPECT_EQ(even.q3, 3.5);
}

TYPED_TEST(NCDataVectorOrder, QuartilesOfTwoAndThreeCellsAreTheOuterOnes) {
  const Quartiles<TypeParam> two(VectorOf<TypeParam>({8, kHole<TypeParam>, 6}));
  EXPECT_EQ(two.q1, 6);
  EXPECT_EQ(two.median, 7);
  EXPECT_EQ(two.q3, 8);
  const Quartiles<TypeParam> three(VectorOf<TypeParam>({8, 6, 7}));
  EXPECT_EQ(three.q1, 6);
  EXPECT_EQ(three.median, 7);
  EXPECT_EQ(three.q3, 8);
}

TYPED_TEST(NCDataVectorOrder, QuartilesBelowTwoCellsAreNoEstimate) {
  for (const auto& v : {NCDataVector<TypeParam>(), NCDataVector<TypeParam>(3), VectorOf<TypeParam>({4})}) {
    const Quartiles<TypeParam> quartiles(v);
    EXPECT_FALSE(quartiles.found);
    EXPECT_EQ(quartiles.q1, kNoEstimate);
    EXPECT_EQ(quartiles.median, kNoEstimate);
    EXPECT_EQ(quartiles.q3, kNoEstimate);
    EXPECT_EQ(v.GetInterquartileRange(), kNoEstimate);
    EXPECT_EQ(v.GetRobustStdDev(), kNoEstimate);
  }
}

TYPED_TEST(NCDataVectorOrder, RobustStandardDeviationIsTheRangeOver1075) {
  const auto v = VectorOf<TypeParam>({1, 2, 3, 4});
  EXPECT_EQ(v.GetInterquartileRange(), 2);
  EXPECT_DOUBLE_EQ(static_cast<double>(v.GetRobustStdDev()), 2 / 1.075);
}

TYPED_TEST(NCDataVectorOrder, SortsItselfInPlaceAndGivesTheOldPositions) {
  auto v = VectorOf<TypeParam>({3, 1, 2});
  EXPECT_EQ(CellsOfPermutation(v.Sort(nullptr, /*ascending=*/true)), (std::vector<int>{2, 3, 1}));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{1, 2, 3}));
  EXPECT_EQ(CellsOfPermutation(v.Sort(nullptr, /*ascending=*/false)), (std::vector<int>{3, 2, 1}));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{3, 2, 1}));
}

TYPED_TEST(NCDataVectorOrder, SortPutsHolesLastInBothDirections) {
  const TypeParam hole = kHole<TypeParam>;
  auto up = VectorOf<TypeParam>({hole, 2, -200, hole, 1});
  auto down = up;
  EXPECT_EQ(CellsOfPermutation(up.Sort(nullptr, true)), (std::vector<int>{3, 5, 2, 1, 4}));
  EXPECT_EQ(CellsOf(up), (std::vector<TypeParam>{-200, 1, 2, hole, hole}));
  EXPECT_EQ(CellsOfPermutation(down.Sort(nullptr, false)), (std::vector<int>{2, 5, 3, 1, 4}));
  EXPECT_EQ(CellsOf(down), (std::vector<TypeParam>{2, 1, -200, hole, hole}));
  EXPECT_TRUE(HasExactCounts(up));
  EXPECT_TRUE(HasExactCounts(down));
}

TYPED_TEST(NCDataVectorOrder, SortKeepsThePositionsOfEqualCellsAscendingInBothDirections) {
  auto up = VectorOf<TypeParam>({2, 1, 2, 1, 2});
  auto down = up;
  EXPECT_EQ(CellsOfPermutation(up.Sort(nullptr, true)), (std::vector<int>{2, 4, 1, 3, 5}));
  EXPECT_EQ(CellsOfPermutation(down.Sort(nullptr, false)), (std::vector<int>{1, 3, 5, 2, 4}));
}

TYPED_TEST(NCDataVectorOrder, SortPutsNaNBehindTheNumbersAndBeforeTheHoles) {
  const TypeParam hole = kHole<TypeParam>, nan = std::numeric_limits<TypeParam>::quiet_NaN();
  for (const bool ascending : {true, false}) {
    auto v = VectorOf<TypeParam>({nan, hole, 1, nan, 1});
    EXPECT_EQ(CellsOfPermutation(v.Sort(nullptr, ascending)), (std::vector<int>{3, 5, 1, 4, 2}));
  }
  EXPECT_EQ(VectorOf<TypeParam>({nan, 2, 1}).GetMedian(), 2);
}

TYPED_TEST(NCDataVectorOrder, SortIntoAVectorOfTheSameSizeDoesNothing) {
  auto v = VectorOf<TypeParam>({3, 1, 2});
  auto out = VectorOf<TypeParam>({7, 8, 9});
  EXPECT_EQ(v.Sort(&out, true).Size(), 0);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{3, 1, 2}));
  EXPECT_EQ(CellsOf(out), (std::vector<TypeParam>{7, 8, 9}));
  EXPECT_EQ(v.Sort(&v, true).Size(), 0);
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{3, 1, 2}));
}

TYPED_TEST(NCDataVectorOrder, SortIntoALargerVectorFillsItsFirstCells) {
  auto v = VectorOf<TypeParam>({3, kHole<TypeParam>, 2});
  const NCDataVector<TypeParam> sharer(v);
  auto out = VectorOf<TypeParam>({kHole<TypeParam>, 8, 9, 10});
  const NCDataVector<TypeParam> outSharer(out);
  EXPECT_EQ(CellsOfPermutation(v.Sort(&out, true)), (std::vector<int>{3, 1, 2}));
  EXPECT_EQ(CellsOf(out), (std::vector<TypeParam>{2, 3, kHole<TypeParam>, 10}));
  EXPECT_TRUE(HasExactCounts(out));
  EXPECT_EQ(CellsOf(v), (std::vector<TypeParam>{3, kHole<TypeParam>, 2}));
  EXPECT_EQ(CellsOf(outSharer), (std::vector<TypeParam>{kHole<TypeParam>, 8, 9, 10}));
}

TYPED_TEST(NCDataVectorOrder, SortOfFewerThanTwoCellsGivesAnEmptyPermutation) {
  NCDataVector<TypeParam> empty;
  EXPECT_EQ(empty.Sort(nullptr, true).Size(), 0);
  auto one = VectorOf<TypeParam>({1});
  auto out = VectorOf<TypeParam>({7, 8});
  EXPECT_EQ(one.Sort(nullptr, true).Size(), 0);
  EXPECT_EQ(one.Sort(&out, true).Size(), 0);
  EXPECT_EQ(CellsOf(out), (std::vector<TypeParam>{7, 8}));
}

TYPED_TEST(NCDataVectorOrder, SortLeavesSharersAlone) {
  auto v = VectorOf<TypeParam>({3, 1, 2});
  const NCDataVector<TypeParam> sharer(v);
  v.Sort(nullptr, true);
  EXPECT_EQ(CellsOf(sharer), (std::vector<TypeParam>{3, 1, 2}));
}

TYPED_TEST(NCDataVectorOrder, SortOfManyCellsIsAStableSortWithTheHolesBehind) {
  for (const bool ascending : {true, false}) {
    auto v = RandomVector<TypeParam>(1000, 0.2, 17);
    for (int i = 1; i <= 1000; ++i)
      if (v[i] != kHole<TypeParam>) v(i, std::round(v[i] * 8));  // so that there are ties
    const NCDataVector<TypeParam> before(v);
    std::vector<int> expected;
    for (int i = 1; i <= 1000; ++i) expected.push_back(i);
    const auto holes = std::stable_partition(expected.begin(), expected.end(),
                                             [&](int i) { return before[i] != kHole<TypeParam>; });
    std::stable_sort(expected.begin(), holes, [&](int a, int b) {
      return ascending ? before[a] < before[b] : before[a] > before[b];
    });
    EXPECT_EQ(CellsOfPermutation(v.Sort(nullptr, ascending)), expected);
    for (int i = 1; i <= 1000; ++i) ASSERT_EQ(v[i], before[expected[i - 1]]);
  }
}

}  // namespace
