#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <numeric>
#include <random>
#include <vector>

#include "kalmia/containers/NCIntegralVector.h"
#include "testing/Ints.h"

// Statistics, comparison, order and search.

namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;
using ::testing::IsEmpty;
using IntVector = NCIntegralVector<int, -99>;
using BoolCells = NCIntegralVector<bool, 0>;
using LongVector = NCIntegralVector<unsigned long, 0>;

LongVector Longs(const std::vector<unsigned long>& cells) {
  return LongVector(cells.data(), static_cast<int>(cells.size()));
}

// ---- Statistics

TEST(NCIntegralVectorStatistics, OfTooFewCellsAreMissing) {
  const IntVector none, one = Ints({5});
  EXPECT_EQ(none.GetSum(), 0);
  EXPECT_EQ(none.GetMean(), -99);
  EXPECT_EQ(none.GetVariance(), -99);
  EXPECT_EQ(none.GetStdDev(), -99);
  EXPECT_EQ(one.GetMean(), 5);
  EXPECT_EQ(one.GetVariance(), -99);
  EXPECT_EQ(one.GetStdDev(), -99);
}

TEST(NCIntegralVectorStatistics, OfKnownCells) {
  const IntVector v = Ints({2, 4, 9});  // deviations -3, -1, 4
  EXPECT_EQ(v.GetSum(), 15);
  EXPECT_EQ(v.GetMean(), 5);
  EXPECT_EQ(v.GetVariance(), 26.0 / 2);
  EXPECT_EQ(v.GetStdDev(), std::sqrt(13.0));
  const bool flags[] = {true, false, true, true};
  EXPECT_EQ(BoolCells(flags, 4).GetSum(), 3);
  EXPECT_EQ(BoolCells(flags, 4).GetMean(), 0.75);
  EXPECT_EQ(Longs({1, 2}).GetMean(), 1.5);
}

TEST(NCIntegralVectorStatistics, SumIsWiderThanACell) {
  EXPECT_EQ(Ints({2147483647, 2147483647}).GetSum(), 4294967294L);
}

TEST(NCIntegralVectorStatistics, SumOfUnsignedLongsIsTakenInTheirOwnType) {
  constexpr unsigned long kLargest = std::numeric_limits<unsigned long>::max();
  EXPECT_EQ(Longs({kLargest, 6}).GetSum(), 5);  // it wraps, as unsigned numbers do
  EXPECT_EQ(Longs({kLargest / 2, kLargest / 2, 5}).GetSum(), 3);  // a signed sum would overflow at the second cell
}

TEST(NCIntegralVectorStatistics, AMeanOfExactlyMinus99HasNoVariance) {
  EXPECT_EQ(Ints({-98, -100}).GetMean(), -99);
  EXPECT_EQ(Ints({-98, -100}).GetVariance(), -99);
  EXPECT_EQ(Ints({-98, -100}).GetStdDev(), -99);
}

TEST(NCIntegralVectorStatistics, MissingCellsCountAsNumbers) { EXPECT_EQ(Ints({-99, 1}).GetSum(), -98); }

// ---- Comparison

TEST(NCIntegralVectorComparison, IsLexical) {
  const std::vector<std::vector<int>> ascending = {{}, {-99}, {-99, -100}, {1}, {1, 0}, {1, 2}, {2}};
  for (std::size_t i = 0; i < ascending.size(); ++i)
    for (std::size_t j = 0; j < ascending.size(); ++j) {
      const IntVector a = Ints(ascending[i]), b = Ints(ascending[j]);
      EXPECT_EQ(a == b, i == j);
      EXPECT_EQ(a != b, i != j);
      EXPECT_EQ(a < b, i < j);
      EXPECT_EQ(a <= b, i <= j);
      EXPECT_EQ(a > b, i > j);
      EXPECT_EQ(a >= b, i >= j);
    }
}

TEST(NCIntegralVectorComparison, LooksAtCellsNotAtSharing) {
  IntVector a = Ints({1, 2}), b(a);
  b.ForceUnlink();
  EXPECT_TRUE(a == b);
}

// ---- Order

TEST(NCIntegralVectorOrder, FewerThanTwoCellsAreSorted) {
  for (bool ascending : {false, true}) {
    EXPECT_TRUE(IntVector().IsSorted(ascending));
    EXPECT_TRUE(Ints({5}).IsSorted(ascending));
    EXPECT_TRUE(Ints({5, 5}).IsSorted(ascending));
  }
}

TEST(NCIntegralVectorOrder, KnowsWhetherItIsSorted) {
  EXPECT_TRUE(Ints({1, 1, 2}).IsSorted(true));
  EXPECT_FALSE(Ints({1, 1, 2}).IsSorted(false));
  EXPECT_TRUE(Ints({2, 1, 1}).IsSorted(false));
  EXPECT_FALSE(Ints({2, 1, 1}).IsSorted(true));
  EXPECT_TRUE(Ints({-99, 1}).IsSorted(true));
}

TEST(NCIntegralVectorOrder, SortPutsMissingCellsLastInBothDirectionsIfAsked) {
  const IntVector v = Ints({2, -99, 5});
  IntVector a(v), b(v), c(v), d(v);
  a.Sort(/*ascending=*/false, /*misValAware=*/true);
  EXPECT_THAT(a, ElementsAre(5, 2, -99));
  b.Sort(true, true);
  EXPECT_THAT(b, ElementsAre(2, 5, -99));
  c.Sort(true, false);
  EXPECT_THAT(c, ElementsAre(-99, 2, 5));
  d.Sort(false, false);
  EXPECT_THAT(d, ElementsAre(5, 2, -99));
  EXPECT_THAT(v, ElementsAre(2, -99, 5));
}

TEST(NCIntegralVectorOrder, ValuesBelowTheMissingOneAreNumbers) {
  IntVector v = Ints({-99, -200, 3, -99, -100});
  v.Sort(true, true);
  EXPECT_THAT(v, ElementsAre(-200, -100, 3, -99, -99));
  v.Sort(false, true);
  EXPECT_THAT(v, ElementsAre(3, -100, -200, -99, -99));
}

TEST(NCIntegralVectorOrder, TheMissingConstantIsThatOfTheType) {
  LongVector v = Longs({3, 0, 5});
  v.Sort(true, true);
  EXPECT_THAT(v, ElementsAre(3u, 5u, 0u));
  v.Sort(true, false);
  EXPECT_THAT(v, ElementsAre(0u, 3u, 5u));
  const bool flags[] = {false, true, false};
  BoolCells b(flags, 3);
  b.Sort(true, true);
  EXPECT_THAT(b, ElementsAre(true, false, false));
  b.Sort(true, false);
  EXPECT_THAT(b, ElementsAre(false, false, true));
}

/// Inputs on which a quicksort goes wrong most easily, at sizes around its switches to other methods.
std::vector<std::vector<int>> TroublesomeInputs() {
  std::vector<std::vector<int>> inputs;
  std::mt19937 random(5);
  for (int n : {0, 1, 2, 3, 31, 32, 33, 100, 5000}) {
    std::vector<int> shuffled(static_cast<std::size_t>(n)), rising(shuffled), falling(shuffled), few(shuffled), organ;
    std::iota(rising.begin(), rising.end(), -n / 2);
    falling.assign(rising.rbegin(), rising.rend());
    for (int& x : shuffled) x = static_cast<int>(random() % 1000) - 500;
    for (int& x : few) x = static_cast<int>(random() % 3) - 99;
    organ = rising;
    std::reverse(organ.begin() + n / 2, organ.end());
    inputs.insert(inputs.end(), {shuffled, rising, falling, few, organ});
  }
  return inputs;
}

TEST(NCIntegralVectorOrder, SortAgreesWithASortOfItsOwnOrder) {
  for (const std::vector<int>& input : TroublesomeInputs())
    for (bool ascending : {false, true})
      for (bool aware : {false, true}) {
        IntVector v = Ints(input);
        v.Sort(ascending, aware);
        std::vector<int> present(input), missing;
        if (aware) {
          present.erase(std::remove(present.begin(), present.end(), -99), present.end());
          missing.assign(input.size() - present.size(), -99);
        }
        std::sort(present.begin(), present.end());
        if (!ascending) std::reverse(present.begin(), present.end());
        present.insert(present.end(), missing.begin(), missing.end());
        ASSERT_THAT(v, ElementsAreArray(present));
      }
}

TEST(NCIntegralVectorOrder, SortWithOriginalIndexTellsWhereEachCellWas) {
  for (const std::vector<int>& input : TroublesomeInputs())
    for (bool ascending : {false, true})
      for (bool aware : {false, true}) {
        IntVector v = Ints(input), twin(v), sorted(v);
        std::vector<int> order(3, 77);
        v.SortWithOriginalIndex(ascending, aware, order);
        sorted.Sort(ascending, aware);
        ASSERT_TRUE(v == sorted);
        ASSERT_EQ(order.size(), input.size());
        std::vector<bool> seen(input.size(), false);
        for (int i = 1; i <= v.Size(); ++i) {
          const std::size_t was = static_cast<std::size_t>(order[static_cast<std::size_t>(i) - 1]) - 1;
          ASSERT_LT(was, input.size());
          ASSERT_FALSE(seen[was]);
          seen[was] = true;
          ASSERT_EQ(v[i], input[was]);
        }
        ASSERT_THAT(twin, ElementsAreArray(input));
      }
}

TEST(NCIntegralVectorOrder, SortWithOriginalIndexKeepsTiesInAscendingPositions) {
  const IntVector v = Ints({5, 2, -99, 5, 2, -99});
  std::vector<int> order;
  IntVector(v).SortWithOriginalIndex(/*ascending=*/true, /*misValAware=*/true, order);
  EXPECT_THAT(order, ElementsAre(2, 5, 1, 4, 3, 6));
  IntVector(v).SortWithOriginalIndex(false, true, order);
  EXPECT_THAT(order, ElementsAre(1, 4, 2, 5, 3, 6));
  IntVector(v).SortWithOriginalIndex(true, false, order);
  EXPECT_THAT(order, ElementsAre(3, 6, 2, 5, 1, 4));
  IntVector(v).SortWithOriginalIndex(false, false, order);
  EXPECT_THAT(order, ElementsAre(1, 4, 2, 5, 3, 6));
  // More cells than a sort finishes by insertion.
  IntVector(100, 7).SortWithOriginalIndex(false, true, order);
  std::vector<int> positions(100);
  std::iota(positions.begin(), positions.end(), 1);
  EXPECT_EQ(order, positions);
}

// ---- Search

TEST(NCIntegralVectorSearch, NothingIsFoundInAnEmptyVector) {
  const IntVector v;
  for (auto type : {IntVector::SortedAscending, IntVector::SortedDescending, IntVector::NotSorted})
    EXPECT_EQ(v.Find(2, type, 1, -1), -1);
  EXPECT_EQ(v.LowerBound(2, true), 1);
}

TEST(NCIntegralVectorSearch, SortTypesAreNumbered) {
  EXPECT_EQ(IntVector::SortedAscending, 0);
  EXPECT_EQ(IntVector::SortedDescending, 1);
  EXPECT_EQ(IntVector::NotSorted, 2);
}

TEST(NCIntegralVectorSearch, FindsInAscendingCells) {
  const IntVector v = Ints({1, 3, 3, 5});
  EXPECT_EQ(v.Find(1, IntVector::SortedAscending), 1);
  EXPECT_EQ(v.Find(3, IntVector::SortedAscending), 2);
  EXPECT_EQ(v.Find(5, IntVector::SortedAscending), 4);
  for (int absent : {0, 2, 4, 6}) EXPECT_EQ(v.Find(absent, IntVector::SortedAscending), -1);
}

TEST(NCIntegralVectorSearch, FindsInDescendingCells) {
  const IntVector v = Ints({5, 3, 3, 1});
  EXPECT_EQ(v.Find(5, IntVector::SortedDescending), 1);
  EXPECT_EQ(v.Find(3, IntVector::SortedDescending), 2);
  EXPECT_EQ(v.Find(1, IntVector::SortedDescending), 4);
  for (int absent : {0, 2, 4, 6}) EXPECT_EQ(v.Find(absent, IntVector::SortedDescending), -1);
}

TEST(NCIntegralVectorSearch, BinarySearchIgnoresTheRange) {
  EXPECT_EQ(Ints({1, 3, 5}).Find(1, IntVector::SortedAscending, 3, 3), 1);
  EXPECT_EQ(Ints({5, 3, 1}).Find(5, IntVector::SortedDescending, 3, 3), 1);
}

TEST(NCIntegralVectorSearch, FindsTheFirstInARangeOfUnsortedCells) {
  const IntVector v = Ints({4, 9, 4, 7, 4});
  EXPECT_EQ(v.Find(4, IntVector::NotSorted), 1);
  EXPECT_EQ(v.Find(4, IntVector::NotSorted, 2), 3);
  EXPECT_EQ(v.Find(4, IntVector::NotSorted, 2, 3), 3);
  EXPECT_EQ(v.Find(4, IntVector::NotSorted, 2, 2), -1);
  EXPECT_EQ(v.Find(4, IntVector::NotSorted, 4, -1), 5);
  EXPECT_EQ(v.Find(7, IntVector::NotSorted, 1, 3), -1);
  EXPECT_EQ(v.Find(8, IntVector::NotSorted), -1);
  EXPECT_EQ(v.Find(4, IntVector::NotSorted, 4, 3), -1);
}

TEST(NCIntegralVectorSearch, LowerBoundIsBehindTheEndWhereNothingFollows) {
  const IntVector up = Ints({1, 3, 3, 5}), down = Ints({5, 3, 3, 1});
  EXPECT_EQ(up.LowerBound(0, true), 1);
  EXPECT_EQ(up.LowerBound(3, true), 2);
  EXPECT_EQ(up.LowerBound(4, true), 4);
  EXPECT_EQ(up.LowerBound(6, true), 5);
  EXPECT_EQ(down.LowerBound(6, false), 1);
  EXPECT_EQ(down.LowerBound(3, false), 2);
  EXPECT_EQ(down.LowerBound(2, false), 4);
  EXPECT_EQ(down.LowerBound(0, false), 5);
}

TEST(NCIntegralVectorSearch, LookupVectorHoldsFirstPositions) {
  const LongVector table = Longs({10, 20, 10, 4294967296ul}), wanted = Longs({20, 10, 7, 4294967296ul, 10, 0});
  EXPECT_THAT(GetIndexLookupVector(wanted, table), ElementsAre(2, 1, -1, 4, 1, -1));
  EXPECT_THAT(GetIndexLookupVector(LongVector(), table), IsEmpty());
  EXPECT_THAT(GetIndexLookupVector(Longs({1}), LongVector()), ElementsAre(-1));
}

// ---- Scramble

/// The shuffle as it is defined, on the generator of the run-time library.
std::vector<int> Shuffled(int n) {
  std::vector<int> cells(static_cast<std::size_t>(n));
  std::iota(cells.begin(), cells.end(), 1);
  for (unsigned long k = 2; k <= static_cast<unsigned long>(n); ++k) {
    unsigned long r = static_cast<unsigned long>(std::rand()) % 32768;
    if (k >= 32768) r = r * 32768 + static_cast<unsigned long>(std::rand()) % 32768;
    std::swap(cells[k - 1], cells[r % k]);
  }
  return cells;
}

TEST(NCIntegralVectorScramble, IsFixedByTheSeedOfRand) {
  for (int n : {0, 1, 2, 3, 100, 32767, 32768, 40000}) {
    IntVector v(n, 0);
    v.GenerateIndex(1, 1);
    const IntVector twin(v);
    std::srand(42);
    v.Scramble();
    std::srand(42);
    EXPECT_THAT(v, ElementsAreArray(Shuffled(n)));
    EXPECT_TRUE(twin.IsSorted(true));
  }
}

TEST(NCIntegralVectorScramble, MovesTheCellsOfEveryType) {
  LongVector v(50);
  v.GenerateIndex(1, 1);
  LongVector scrambled(v);
  std::srand(1);
  scrambled.Scramble();
  EXPECT_FALSE(scrambled == v);
  scrambled.Sort(true, false);
  EXPECT_TRUE(scrambled == v);
}

}  // namespace
