#include "kalmia/cluster/WardPairList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "cluster/PlainClustering.h"
#include "kalmia/cluster/PairSort.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "testing/RandomTables.h"

namespace {

using DendroGram::DistanceAndIndex;
using DendroGram::WardDistanceCalculator;
using kalmia::ClusterNumbers;
using kalmia::WardPairList;
using Pairs = std::vector<DistanceAndIndex>;

TEST(ClusterNumbers, LeadFromTheEarlierClusterToTheMergedOneAndFromTheLaterOneNowhere) {
  ClusterNumbers numbers(5);
  EXPECT_EQ(numbers.Merge(2, 4), 6);
  EXPECT_EQ(numbers.Merge(3, 5), 7);
  EXPECT_EQ(numbers.Merge(6, 7), 8);
  const int latest[] = {1, 8, 0, 0, 0, 8, 0, 8};
  for (int number = 1; number <= 8; ++number) {
    EXPECT_EQ(numbers.Latest(number), latest[number - 1]) << number;
    EXPECT_EQ(numbers.Latest(number), latest[number - 1]) << number << " once more";
    EXPECT_EQ(numbers.IsCurrent(number), number == 1 || number == 8);
  }
  EXPECT_EQ(numbers.FirstRow(8), 1);
  EXPECT_EQ(numbers.Position(1), 0);
  EXPECT_EQ(numbers.Position(8), 1);
}

TEST(ClusterNumbers, CountThePositionsOfThoseThatAreLeft) {
  ClusterNumbers numbers(5);
  const int merged = numbers.Merge(1, 3);
  EXPECT_EQ(numbers.Position(merged), 0);
  EXPECT_EQ(numbers.Position(2), 1);
  EXPECT_EQ(numbers.Position(4), 2);
  EXPECT_EQ(numbers.Position(5), 3);
}

/// All pairs of a list, from its end.
std::vector<float> DistancesFromTheEnd(WardPairList& list) {
  std::vector<float> distances;
  while (!list.IsEmpty()) distances.push_back(list.TakeLast().distance);
  return distances;
}

TEST(WardPairList, HasNoPairsOfTheLaterClusterAndTheStaleOnesOfTheEarlierOne) {
  WardPairList list({{9, 1, 4}, {8, 2, 3}, {7, 1, 3}, {6, 2, 4}, {5, 3, 4}, {4, 1, 2}}, 4);
  EXPECT_FALSE(list.IsEmpty());
  EXPECT_FALSE(list.EndsStale());
  EXPECT_EQ(list.TakeLast().distance, 4);
  list.Numbers().Merge(1, 2);
  EXPECT_FALSE(list.IsEmpty());
  EXPECT_FALSE(list.EndsStale());  // 3 with 4
  EXPECT_EQ(list.TakeLast().distance, 5);
  EXPECT_FALSE(list.IsEmpty());  // past 2 with 4
  EXPECT_TRUE(list.EndsStale());
  const Pairs tail = list.TakeStaleTail();
  ASSERT_EQ(tail.size(), 2U);
  EXPECT_EQ(tail[0].i, 5) << "the number of the merged cluster";
  EXPECT_EQ(tail[0].j, 4);
  EXPECT_EQ(tail[1].j, 3);
  EXPECT_TRUE(list.IsEmpty());
  list.PutBack({{3, 5, 4}, {2, 5, 3}});
  EXPECT_THAT(DistancesFromTheEnd(list), ::testing::ElementsAre(2, 3));
}

TEST(WardPairList, InsertsBehindAFartherPairAndInFrontOfAnEquallyFarOneAndPastStaleOnes) {
  // Merging 1 and 2 leaves 1 with 5 stale at the place of 8, and 1 with 6 at the end.
  WardPairList list({{9, 3, 4}, {8, 1, 5}, {7, 3, 5}, {6, 4, 5}, {2, 1, 6}, {1, 1, 2}}, 6);
  list.TakeLast();
  const int merged = list.Numbers().Merge(1, 2);
  ASSERT_FALSE(list.IsEmpty());
  EXPECT_EQ(list.TakeStaleTail().size(), 1U);
  // 8.5 goes behind 9, in front of the stale pair; 7 in front of the 7 that is there, and so behind the stale pair.
  list.PutBack({{8.5F, merged, 3}, {7, merged, 6}, {5, merged, 4}});
  std::vector<int> partners;
  while (!list.IsEmpty()) {
    const bool stale = list.EndsStale();
    const DistanceAndIndex pair = list.TakeLast();
    partners.push_back(stale ? -1 : 10 * pair.i + pair.j);
  }
  EXPECT_THAT(partners, ::testing::ElementsAre(74, 45, 35, 76, -1, 73, 34));
}

TEST(WardPairList, APairOfNegativeDistanceIsStaleFromTheStart) {
  WardPairList list({{1, 1, 2}}, 3);
  list.PutBack({{-0.5F, 1, 3}});
  ASSERT_FALSE(list.IsEmpty());
  EXPECT_TRUE(list.EndsStale());
  EXPECT_EQ(list.TakeLast().distance, -0.5F) << "and taken if it is negative again";
}

/// A copy of the list that goes on beside it.
TEST(WardPairList, ACopyHasItsOwnPairs) {
  Pairs pairs;
  for (int i = 1; i <= 60; ++i)
    for (int j = i + 1; j <= 60; ++j) pairs.push_back({static_cast<float>(10000 - pairs.size()), i, j});
  WardPairList list(std::move(pairs), 60);
  list.PutBack({{10000.5F, 1, 2}});
  WardPairList copy = list;
  const std::vector<float> distances = DistancesFromTheEnd(list);
  EXPECT_EQ(distances.size(), 1771U);
  EXPECT_TRUE(std::is_sorted(distances.begin(), distances.end()));
  EXPECT_EQ(DistancesFromTheEnd(copy), distances);
}

// 130 rows have 8385 pairs, seventeen blocks at the start: they fill, split, and are taken over again.
TEST(WardPairList, OfManyBlocksGivesTheMergesOfThePlainList) {
  for (const bool root : {false, true})
    for (const double holes : {0.0, 0.05}) {
      const NCDataMatrix<float> tables[] = {RandomMatrix<float>(130, 12, holes, 5), WholeNumbers(130, 9, 3, holes, 6)};
      for (const NCDataMatrix<float>& table : tables) {
        WardDistanceCalculator calculator(static_cast<WardDistanceCalculator::DistanceType>(root));
        EXPECT_TRUE(MergesOf(calculator, table) == PlainWard(table, root)) << root << " " << holes;
      }
    }
}

}  // namespace
