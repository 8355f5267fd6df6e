#include "kalmia/cluster/internal/WardPairList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

#include "cluster/PlainClustering.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "kalmia/cluster/internal/PairSort.h"
#include "testing/AllocationMeter.h"
#include "testing/RandomTables.h"

namespace {

using DendroGram::DistanceAndIndex;
using DendroGram::WardDistanceCalculator;
using kalmia::WardPairList;
using Pairs = std::vector<DistanceAndIndex>;

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
  Pairs stale;
  list.RepairTail([&stale](DistanceAndIndex* pair) {
    stale.push_back(*pair);
    pair->distance = pair->j == 4 ? 3 : 2;
  });
  ASSERT_EQ(stale.size(), 2U);
  EXPECT_EQ(stale[0].i, 5) << "the number of the merged cluster";
  EXPECT_EQ(stale[0].j, 4);
  EXPECT_EQ(stale[1].j, 3);
  EXPECT_THAT(DistancesFromTheEnd(list), ::testing::ElementsAre(2, 3));
}

TEST(WardPairList, InsertsBehindAFartherPairAndInFrontOfAnEquallyFarOneAndPastStaleOnes) {
  // Merging 1 and 2 leaves 1 with 5 stale at the place of 8, and 1 with 3, 6 and 4 at the end.
  WardPairList list({{9, 3, 4}, {8, 1, 5}, {7, 3, 5}, {6, 4, 5}, {4, 1, 3}, {3, 1, 6}, {2, 1, 4}, {1, 1, 2}}, 6);
  list.TakeLast();
  const int merged = list.Numbers().Merge(1, 2);
  ASSERT_FALSE(list.IsEmpty());
  // 8.5 goes behind 9, in front of the stale pair; 7 in front of the 7 that is there, and so behind the stale pair.
  list.RepairTail([merged](DistanceAndIndex* pair) {
    EXPECT_EQ(pair->i, merged);
    pair->distance = pair->j == 3 ? 8.5F : pair->j == 6 ? 7 : 5;
  });
  std::vector<int> partners;
  while (!list.IsEmpty()) {
    const bool stale = list.EndsStale();
    const DistanceAndIndex pair = list.TakeLast();
    partners.push_back(stale ? -1 : 10 * pair.i + pair.j);
  }
  EXPECT_THAT(partners, ::testing::ElementsAre(74, 45, 35, 76, -1, 73, 34));
}

TEST(WardPairList, APairOfNegativeDistanceIsStaleFromTheStart) {
  WardPairList list({{1, 1, 2}, {-1, 1, 3}}, 3);
  ASSERT_FALSE(list.IsEmpty());
  ASSERT_TRUE(list.EndsStale());
  list.RepairTail([](DistanceAndIndex* pair) { pair->distance = -0.5F; });
  ASSERT_FALSE(list.IsEmpty());
  EXPECT_TRUE(list.EndsStale());
  EXPECT_EQ(list.TakeLast().distance, -0.5F) << "and taken if it is negative again";
}

/// All pairs of so many rows, the nearest last; the last `stale` of them are stale.
Pairs FallingPairs(int rows, std::size_t stale) {
  Pairs pairs;
  for (int i = 1; i <= rows; ++i)
    for (int j = i + 1; j <= rows; ++j) pairs.push_back({0, i, j});
  for (std::size_t k = 0; k < pairs.size(); ++k)
    pairs[k].distance = k + stale < pairs.size() ? static_cast<float>((pairs.size() - k) / 8) : -1.0F;
  return pairs;
}

/// What becomes of a list whose end is repaired, one entry at a time: the tail is sorted as a whole, then each pair of
/// it that is farther than the last one in front walks to its place.
Pairs PlainlyRepaired(Pairs pairs, std::size_t stale, const std::function<void(DistanceAndIndex*)>& update) {
  const auto begin = pairs.end() - static_cast<std::ptrdiff_t>(stale);
  Pairs tail(begin, pairs.end());
  pairs.erase(begin, pairs.end());
  for (DistanceAndIndex& pair : tail) update(&pair);
  std::stable_sort(tail.begin(), tail.end(), kalmia::IsFartherPair);
  const float limit = pairs.empty() ? std::numeric_limits<float>::max() : pairs.back().distance;
  std::size_t place = pairs.size(), farther = 0;
  while (farther < tail.size() && tail[farther].distance > limit) ++farther;
  for (std::size_t k = farther; k > 0; --k) {
    while (place > 0 && pairs[place - 1].distance < tail[k - 1].distance) --place;
    if (place > 0 && pairs[place - 1].distance == tail[k - 1].distance) --place;
    pairs.insert(pairs.begin() + static_cast<std::ptrdiff_t>(place), tail[k - 1]);
  }
  pairs.insert(pairs.end(), tail.begin() + static_cast<std::ptrdiff_t>(farther), tail.end());
  return pairs;
}

TEST(WardPairList, RepairsALongTailInRunsAsItWouldAtOnce) {
  const int rows = 420;  // 87990 pairs
  struct Case {
    std::size_t stale;
    unsigned distances;  ///< how many different ones there are in the tail
    float scale;
  };
  // All of them; more than two runs, most of which stay at the end; a run and a bit, some of which go far.
  for (const Case& c : {Case{87990, 1000, 1}, Case{87990, 3, 1}, Case{70000, 500, 5}, Case{33000, 1000, 8}}) {
    SCOPED_TRACE(c.stale);
    const auto update = [&c](DistanceAndIndex* pair) {
      const unsigned i = static_cast<unsigned>(pair->i), j = static_cast<unsigned>(pair->j);
      const unsigned mixed = (i * 7919U + j * 104729U) % 65521U;
      pair->distance = c.scale * static_cast<float>(mixed % c.distances);
    };
    const Pairs pairs = FallingPairs(rows, c.stale), plain = PlainlyRepaired(pairs, c.stale, update);
    WardPairList list{Pairs(pairs), rows};
    ASSERT_FALSE(list.IsEmpty());
    int questions = 0;
    list.RepairTail(update, [&questions] { ++questions; });
    EXPECT_GE(questions, 2 * static_cast<int>(c.stale / 8192)) << "computed anew, and put back";
    for (auto pair = plain.rbegin(); pair != plain.rend(); ++pair) {
      ASSERT_FALSE(list.IsEmpty());
      const DistanceAndIndex last = list.TakeLast();
      ASSERT_EQ(last.distance, pair->distance);
      ASSERT_EQ(last.i, pair->i);
      ASSERT_EQ(last.j, pair->j);
    }
    EXPECT_TRUE(list.IsEmpty());
  }
}

/// How many questions the repair of a list's tail takes where each pair of it is given this distance.
int QuestionsOfRepair(WardPairList* list, float distance) {
  int questions = 0;
  list->RepairTail([distance](DistanceAndIndex* pair) { pair->distance = distance; }, [&questions] { ++questions; });
  return questions;
}

/// Merges rows two by two up to a row: of each two, one pair is stale with each other two, and three are gone.
void MergeTwoByTwo(WardPairList* list, int rows) {
  for (int row = 1; row < rows; row += 2) list->Numbers().Merge(row, row + 1);
}

TEST(WardPairList, AsksForThePairsThatAnInsertionPassesAndPassesThemAsBlocksTheNextTime) {
  const int rows = 420;
  Pairs pairs = {{100000, 417, 418}};
  for (int i = 3; i <= 416; ++i)
    for (int j = i + 1; j <= 416; ++j) pairs.push_back({static_cast<float>(99999 - pairs.size()), i, j});
  const int passed = static_cast<int>(pairs.size()) - 1;
  for (const DistanceAndIndex& pair : Pairs{{4, 417, 419}, {3, 1, 3}, {2, 419, 420}, {1, 1, 5}}) pairs.push_back(pair);
  WardPairList list(std::move(pairs), rows);
  MergeTwoByTwo(&list, 416);
  ASSERT_FALSE(list.IsEmpty());
  ASSERT_TRUE(list.EndsStale());
  EXPECT_GE(QuestionsOfRepair(&list, 4.5F), passed / 8192) << "1 and 2 with 5 and 6 go behind 417 with 418";
  EXPECT_EQ(list.TakeLast().distance, 2);
  ASSERT_FALSE(list.IsEmpty());
  ASSERT_TRUE(list.EndsStale());
  EXPECT_EQ(QuestionsOfRepair(&list, 4.25F), 0) << "1 and 2 with 3 and 4 go there, too, past some 170 blocks";
  std::vector<float> fresh;
  while (!list.IsEmpty()) {
    const bool stale = list.EndsStale();
    const float distance = list.TakeLast().distance;
    if (!stale) fresh.push_back(distance);
  }
  EXPECT_THAT(fresh, ::testing::ElementsAre(4, 4.25F, 4.5F, 100000));
}

TEST(WardPairList, AsksForThePairsThatAreGoneBetweenTheStaleOnesOfItsTail) {
  const int rows = 420;
  Pairs pairs;
  for (int i = 1; i <= rows; ++i)
    for (int j = i + 1; j <= rows; ++j) pairs.push_back({1, i, j});
  WardPairList list(std::move(pairs), rows);
  MergeTwoByTwo(&list, rows);
  const int stale = 210 * 209 / 2;
  EXPECT_GE(QuestionsOfRepair(&list, 1), 87990 / 8192 + 2 * stale / 8192) << "and put back, and turned round";
}

TEST(WardPairList, AsksForThePairsThatItComputesPutsBackAndTurns) {
  WardPairList list(FallingPairs(420, 87990), 420);
  ASSERT_FALSE(list.IsEmpty());
  // All stay at the end, in blocks that are turned round when all have been put into them.
  EXPECT_GE(QuestionsOfRepair(&list, 1), 2 * (87990 / 8192) + 87990 / 8192);
}

TEST(WardPairList, IsLeftByAQuestionThatThrowsAtWhicheverItIs) {
  const auto update = [](DistanceAndIndex* pair) { pair->distance = static_cast<float>(pair->j); };
  for (int last = 1; last <= 20; ++last) {
    WardPairList list(FallingPairs(420, 87990), 420);
    ASSERT_FALSE(list.IsEmpty());
    int questions = 0;
    EXPECT_THROW(list.RepairTail(update, [&] { if (++questions == last) throw last; }), int) << last;
    EXPECT_EQ(questions, last);
  }
}

TEST(WardPairList, RepairsItsTailInLittleMoreThanItsOwnMemory) {
  const int rows = 1500;  // 1124250 pairs, all stale, 13 MB
  Pairs pairs = FallingPairs(rows, 1124250);
  WardPairList list(std::move(pairs), rows);
  ASSERT_FALSE(list.IsEmpty());
  const PeakBytesDuring meter;
  list.RepairTail([](DistanceAndIndex* pair) { pair->distance = static_cast<float>(pair->j % 100); });
  // A run of 32768 pairs and the room of its sort, 0.6 MB; a slice of 512 pairs for each of 35 runs, 0.2 MB; an index.
  EXPECT_LE(meter.GetBytes(), 1200000);
}

TEST(WardPairList, GrowsLittleWhereManyPairsGoToScatteredPlacesOfFullBlocks) {
  const int rows = 1500, stale = 8000;
  const std::size_t bytes = 1124250 * sizeof(DistanceAndIndex);
  WardPairList list(FallingPairs(rows, stale), rows);
  ASSERT_FALSE(list.IsEmpty());
  const PeakBytesDuring meter;
  list.RepairTail([](DistanceAndIndex* pair) {
    const unsigned mixed = static_cast<unsigned>(pair->i) * 7919U + static_cast<unsigned>(pair->j) * 104729U;
    pair->distance = static_cast<float>(mixed % 139529U + 1000U);
  });
  // A 32nd for blocks that were split; the tail and the room of its sort, twice 8000 pairs and a half, and an index.
  EXPECT_LE(meter.GetBytes(), static_cast<std::int64_t>(bytes / 32 + 8000 * 12 * 3 + 131072));
  const std::vector<float> distances = DistancesFromTheEnd(list);
  EXPECT_EQ(distances.size(), 1124250U);
  EXPECT_TRUE(std::is_sorted(distances.begin(), distances.end()));
}

/// A copy of the list that goes on beside it.
TEST(WardPairList, ACopyHasItsOwnPairs) {
  Pairs pairs;
  for (int i = 1; i <= 60; ++i)
    for (int j = i + 1; j <= 60; ++j) pairs.push_back({static_cast<float>(10000 - pairs.size()), i, j});
  pairs.push_back({-1, 1, 2});
  WardPairList list(std::move(pairs), 60);
  ASSERT_FALSE(list.IsEmpty());
  list.RepairTail([](DistanceAndIndex* pair) { pair->distance = 10000.5F; });
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
