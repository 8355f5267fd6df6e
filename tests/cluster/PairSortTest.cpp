#include "kalmia/cluster/internal/PairSort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "testing/NoMoreThreads.h"
#include "testing/Threads.h"

namespace {

using DendroGram::DistanceAndIndex;
using Pairs = std::vector<DistanceAndIndex>;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

bool SamePairs(const Pairs& a, const Pairs& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const DistanceAndIndex& x, const DistanceAndIndex& y) {
    return !kalmia::ComesBefore(x, y) && !kalmia::ComesBefore(y, x);
  });
}

/// All pairs of so many rows, each with distance().
template <class Distance>
Pairs AllPairs(int rows, const Distance& distance) {
  Pairs pairs;
  for (int i = 1; i <= rows; ++i)
    for (int j = i + 1; j <= rows; ++j) pairs.push_back({distance(), i, j});
  return pairs;
}

void ExpectSorted(Pairs pairs) {
  Pairs plain = pairs;
  std::sort(plain.begin(), plain.end(), kalmia::ComesBefore);
  kalmia::SortPairs(pairs.data(), pairs.size());
  EXPECT_TRUE(SamePairs(pairs, plain));
}

TEST(SortPairs, GivesWhatComparingGives) {
  for (const int threads : {1, 3})
    for (const int rows : {1, 2, 3, 9, 60, 257, 500}) {  // 500: 124750 pairs, more than are sorted aside
      const Threads team(threads);
      std::mt19937 random(static_cast<unsigned>(rows));
      std::normal_distribution<float> normal(10, 1);
      SCOPED_TRACE(rows);
      ExpectSorted(AllPairs(rows, [&] { return std::abs(normal(random)); }));
      ExpectSorted(AllPairs(rows, [&] { return static_cast<float>(random() % 3); }));
      ExpectSorted(AllPairs(rows, [] { return 1.5F; }));
      ExpectSorted(AllPairs(rows, [&] { return normal(random) - 10; }));
      ExpectSorted(AllPairs(rows, [&] { return 0.0F * (1 - static_cast<float>(random() % 3)); }));  // 0 and -0
    }
}

TEST(SortListOfAnalysis, AsksAtEachComparisonOfAShortListAndGivesTheSame) {
  for (const int rows : {3, 60, 300}) {  // 300: 44850 pairs, which are dealt out first
    std::mt19937 random(static_cast<unsigned>(rows));
    Pairs pairs = AllPairs(rows, [&] { return static_cast<float>(random() % 1000); });
    Pairs asked = pairs;
    std::size_t polls = 0;
    kalmia::SortPairs(pairs.data(), pairs.size());
    kalmia::SortListOfAnalysis(asked.data(), asked.size(), [&polls] { ++polls; });
    EXPECT_TRUE(SamePairs(asked, pairs));
    // To tell the orders of n pairs apart takes log2(n!) comparisons; dealt out into ten buckets first, ten times those
    // of a tenth of them.
    const double parts = rows == 300 ? 10 : 1, share = static_cast<double>(pairs.size()) / parts;
    EXPECT_GE(static_cast<double>(polls), parts * std::lgamma(share + 1) / std::log(2.0));
  }
}

TEST(SortListOfAnalysis, AsksForManyComparisonsAtOnceWhereTheListIsLong) {
  Pairs pairs = AllPairs(363, [] { return 1.0F; });  // 65703
  std::size_t polls = 0;
  kalmia::SortListOfAnalysis(pairs.data(), pairs.size(), [&polls] { ++polls; });
  EXPECT_GE(polls, pairs.size() / 8192);
  EXPECT_LT(polls, pairs.size() / 100);
}

TEST(SortListOfAnalysis, GivesUpWhereTheQuestionThrows) {
  for (const int rows : {3, 60, 300})
    for (const int last : {1, 2, 30}) {
      int n = 0, polls = 0;
      Pairs pairs = AllPairs(rows, [&n] { return static_cast<float>(++n % 7); });
      const auto poll = [&] {
        if (++polls == last) throw last;
      };
      if (rows == 3 && last == 30) continue;  // three pairs need no thirty comparisons
      EXPECT_THROW(kalmia::SortListOfAnalysis(pairs.data(), pairs.size(), poll), int);
      EXPECT_EQ(polls, last);
    }
}

/// Many equal distances, and some that are alone.
Pairs ManyTies(int rows, unsigned seed) {
  std::mt19937 random(seed);
  return AllPairs(rows, [&] { return static_cast<float>(random() % 4 == 0 ? random() % 100000 : random() % 5); });
}

bool SameBits(const Pairs& a, const Pairs& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(DistanceAndIndex)) == 0;
}

TEST(SortPairs, GivesTheSameBitsForAnyNumberOfThreadsAskedOrNot) {
  for (const int rows : {40, 300, 600}) {  // 600: 179700 pairs, which are not asked for one by one
    Pairs sorted = ManyTies(rows, 1);
    sorted[5].distance = -0.0F;
    sorted[6].distance = -kNaN;
    const Pairs pairs = sorted;
    kalmia::SortPairs(sorted.data(), sorted.size());
    for (const int threads : {1, 2, 5}) {
      const Threads team(threads);
      Pairs silent = pairs, asked = pairs, analysed = pairs;
      kalmia::SortPairs(silent.data(), silent.size());
      kalmia::SortPairs(asked.data(), asked.size(), [] {});
      EXPECT_TRUE(SameBits(silent, sorted)) << threads;
      kalmia::SortListOfAnalysis(analysed.data(), analysed.size(), [] {});
      EXPECT_TRUE(SameBits(asked, sorted)) << threads;
      EXPECT_TRUE(SameBits(analysed, sorted)) << threads;
    }
  }
}

TEST(SortPairs, AsksOftenEnoughInAnyListTheSameNumberOfTimesForAnyNumberOfThreads) {
  for (const int rows : {300, 370, 600, 1500}) {  // 44850, 68265, 179700 and 1124250 pairs
    std::vector<int> questions;
    for (const int threads : {1, 2, 5}) {
      const Threads team(threads);
      Pairs pairs = ManyTies(rows, 2);
      questions.push_back(0);
      kalmia::SortPairs(pairs.data(), pairs.size(), [&questions] { ++questions.back(); });
    }
    // Sorting n pairs by comparing takes log2(n!) comparisons, 65536 of which a question may stand for.
    const double n = 0.5 * rows * (rows - 1);
    EXPECT_GE(questions[0], std::lgamma(n + 1) / std::log(2.0) / 65536);
    EXPECT_LT(questions[0], n / 100) << "and seldom enough to cost nothing";
    EXPECT_EQ(questions[1], questions[0]);
    EXPECT_EQ(questions[2], questions[0]);
  }
}

TEST(SortPairs, GivesUpALongListWhereTheQuestionThrowsOnWhicheverThreadItWasWanted) {
  for (const int threads : {1, 3})
    for (int last = 1; last <= 120; last += 7) {
      const Threads team(threads);
      Pairs pairs = ManyTies(600, 3);
      int polls = 0;
      EXPECT_THROW(kalmia::SortPairs(pairs.data(), pairs.size(), [&] { if (++polls == last) throw last; }), int);
      EXPECT_EQ(polls, last);
    }
}

TEST(SortPairs, OfRowsBeyond65535ComparesThem) {
  for (const int rows : {20, 400}) {
    Pairs pairs = ManyTies(rows, 4);
    for (DistanceAndIndex& pair : pairs) pair.j += 1000000;
    ExpectSorted(pairs);
    int questions = 0;
    Pairs asked = pairs;
    kalmia::SortPairs(asked.data(), asked.size(), [&questions] { ++questions; });
    kalmia::SortPairs(pairs.data(), pairs.size());
    EXPECT_TRUE(SameBits(asked, pairs));
    EXPECT_GE(questions, std::lgamma(static_cast<double>(pairs.size()) + 1) / std::log(2.0) / 65536);
  }
}

TEST(SortPairs, WithoutThreadsIsDoneByTheCallingOne) {
  const Threads team(8);
  const NoMoreThreads none;
  ExpectSorted(ManyTies(600, 5));
}

TEST(SortPairs, PutsInfinitiesInFrontAndNaNsBeforeThem) {
  const float odd[] = {0, kInfinity, kNaN, -kNaN, std::numeric_limits<float>::denorm_min(), 1,
                       std::numeric_limits<float>::max()};
  for (const int rows : {8, 300}) {
    std::mt19937 random(3);
    Pairs pairs = AllPairs(rows, [&] { return odd[random() % 7]; });
    ExpectSorted(pairs);
    kalmia::SortPairs(pairs.data(), pairs.size());
    EXPECT_TRUE(std::isnan(pairs.front().distance));
    EXPECT_EQ(pairs.back().distance, 0.0F);
  }
}

TEST(SortPairs, LeavesEqualDistancesInTheOrderOfTheirRows) {
  Pairs pairs = {{2, 65534, 65535}, {2, 1, 65535}, {3, 2, 3}, {2, 1, 2}};
  kalmia::SortPairs(pairs.data(), pairs.size());
  EXPECT_TRUE(SamePairs(pairs, {{3, 2, 3}, {2, 1, 2}, {2, 1, 65535}, {2, 65534, 65535}}));
}

}  // namespace
