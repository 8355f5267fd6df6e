#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "cluster/PlainClustering.h"
#include "kalmia/cluster/SingleLinkageDistanceCalculator.h"
#include "kalmia/cluster/WardDistanceCalculator.h"
#include "testing/RandomTables.h"
#include "testing/RecordingProgress.h"
#include "testing/Threads.h"

// The two calculators against brute force and against SciPy.

namespace {

using DendroGram::ClusterAllocationError;
using DendroGram::SingleLinkageDistanceCalculator;
using DendroGram::WardDistanceCalculator;

std::vector<float> HeightsOf(const std::vector<PlainMerge>& merges) {
  std::vector<float> heights;
  for (const PlainMerge& merge : merges) heights.push_back(merge.height);
  return heights;
}

/// What the next merge fails with.
CString MergeError(DendroGram::ClusterDistanceCalculator& calculator) {
  int i = 0, j = 0;
  try {
    calculator.FindNearestAndMerge(i, j);
  } catch (const NCError& error) {
    return error.GetMessage();
  }
  return "";
}

struct Case {
  int rows, columns;
  double holes;
};

class OnRandomTables : public ::testing::TestWithParam<Case> {};

TEST_P(OnRandomTables, SingleLinkageMergesAsALookAtAllPairsDoes) {
  const Case& c = GetParam();
  const NCDataMatrix<float> table = RandomMatrix<float>(c.rows, c.columns, c.holes, static_cast<unsigned>(c.rows));
  SingleLinkageDistanceCalculator calculator;
  EXPECT_TRUE(MergesOf(calculator, table) == PlainSingleLinkage(table));
}

TEST_P(OnRandomTables, WardMergesAsTheListDoesStepByStep) {
  const Case& c = GetParam();
  for (const bool root : {false, true})
    for (unsigned seed = 1; seed <= 5; ++seed) {
      const NCDataMatrix<float> table = RandomMatrix<float>(c.rows, c.columns, c.holes, seed);
      WardDistanceCalculator calculator(static_cast<WardDistanceCalculator::DistanceType>(root));
      EXPECT_TRUE(MergesOf(calculator, table) == PlainWard(table, root)) << "root " << root << ", table " << seed;
    }
}

INSTANTIATE_TEST_SUITE_P(Calculators, OnRandomTables,
                         ::testing::Values(Case{1, 3, 0}, Case{2, 1, 0}, Case{3, 4, 0}, Case{12, 5, 0}, Case{40, 7, 0},
                                           Case{60, 5, 0}, Case{12, 8, 0.2}, Case{40, 9, 0.1}, Case{50, 20, 0.3}));

TEST(SingleLinkageDistanceCalculator, GivesTheHeightsAndClustersOfBruteForceWhereDistancesAreEqual) {
  for (unsigned seed = 0; seed < 10; ++seed) {
    const NCDataMatrix<float> table = WholeNumbers(40, 3, 4, seed % 2 ? 0.1 : 0, seed);
    const std::vector<PlainMerge> plain = PlainSingleLinkage(table);
    SingleLinkageDistanceCalculator calculator;
    const std::vector<PlainMerge> merges = MergesOf(calculator, table);
    EXPECT_EQ(HeightsOf(merges), HeightsOf(plain)) << seed;
    for (std::size_t k = 1; k < plain.size(); ++k) {
      if (plain[k].height == plain[k - 1].height) continue;
      EXPECT_EQ(PartitionAfter(merges, k), PartitionAfter(plain, k)) << seed << ", " << k << " merges";
    }
  }
}

// scipy.cluster.hierarchy.linkage(X, 'single') and (X, 'ward') of SciPy 1.10.1, in double.
TEST(SingleLinkageDistanceCalculator, AgreesWithSciPy) {
  const double heights[] = {5.196152422706632,  11.575836902790225, 14.352700094407323, 19.390719429665317,
                            20.92844953645635,  23.853720883753127, 25.709920264364882, 26.248809496813376,
                            27.820855486487112, 27.94637722496424,  28.53068523537421};
  SingleLinkageDistanceCalculator calculator;
  const std::vector<float> found = HeightsOf(MergesOf(calculator, TwelveRows()));
  // Whole numbers: the sum is exact, so the height is the root of it, rounded to float once.
  for (std::size_t k = 0; k < 11; ++k) EXPECT_EQ(found[k], static_cast<float>(heights[k]));
}

TEST(WardDistanceCalculator, AgreesWithSciPyWhereNoNearerPairIsPassedOver) {
  const double heights[] = {5.196152422706632,  13.69914839202301, 19.10061081047759, 23.853720883753127,
                            26.248809496813376, 28.53068523537421, 28.78367592924851, 29.011491975882013,
                            47.89422870093161,  62.64290329585095, 92.4653603093767};
  WardCounts counts;
  PlainWard(TwelveRows(), false, &counts);
  ASSERT_EQ(counts.passedOver, 0);
  WardDistanceCalculator increase(WardDistanceCalculator::DistanceIncrease);
  WardDistanceCalculator rootIncrease(WardDistanceCalculator::DistanceRootIncrease);
  const std::vector<float> found = HeightsOf(MergesOf(increase, TwelveRows()));
  const std::vector<float> roots = HeightsOf(MergesOf(rootIncrease, TwelveRows()));
  for (std::size_t k = 0; k < 11; ++k) {
    // SciPy's height is the root of twice the increase; float cells of the list round once: 2^-24, and the root again.
    EXPECT_NEAR(found[k], heights[k] * heights[k] / 2, found[k] * 0x1p-23);
    EXPECT_EQ(roots[k], static_cast<float>(std::sqrt(static_cast<double>(found[k]))));
  }
}

TEST(WardDistanceCalculator, IsExactUntilANearerPairIsPassedOver) {
  int exact = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    const NCDataMatrix<float> table = RandomMatrix<float>(12, 4, 0, seed);
    WardCounts counts;
    PlainWard(table, false, &counts);
    WardDistanceCalculator calculator(WardDistanceCalculator::DistanceIncrease);
    const std::vector<PlainMerge> merges = MergesOf(calculator, table), toTheLetter = ExactWard(table);
    // The first merge is always that of the nearest.
    const std::size_t compared = counts.passedOver == 0 ? merges.size() : 1;
    exact += counts.passedOver == 0;
    for (std::size_t k = 0; k < compared; ++k) {
      EXPECT_EQ(merges[k].i, toTheLetter[k].i) << seed << ", merge " << k;
      EXPECT_EQ(merges[k].j, toTheLetter[k].j) << seed << ", merge " << k;
      // Cells of about 1: sums of squares of some 50 differ, which double takes to 1e-14, and the float rounds once;
      // the first distances add squares that are floats.
      EXPECT_NEAR(merges[k].height, toTheLetter[k].height, 0x1p-22 * toTheLetter[k].height + 1e-12);
    }
  }
  EXPECT_GT(exact, 20) << "most small tables have no such pair";
}

TEST(WardDistanceCalculator, TakesAPairByItsPlaceAlthoughAStaleOneIsNearer) {
  const NCDataMatrix<float> table = MatrixOf<float>({{33, -24}, {-40, -21}, {-9, 31}, {-5, -41}});
  WardDistanceCalculator calculator(WardDistanceCalculator::DistanceIncrease);
  const std::vector<PlainMerge> merges = MergesOf(calculator, table);
  EXPECT_TRUE(merges[0] == (PlainMerge{1, 3, 812.5F}));
  EXPECT_TRUE(merges[1] == (PlainMerge{0, 2, 2394.5F}));  // and not {2 4} with 1, at 2086.17
}

TEST(WardDistanceCalculator, RepeatedRowsHaveTheHeightZeroAndNeverNone) {
  for (const bool root : {false, true}) {
    NCDataMatrix<float> table(9, 4, 0);
    for (int r = 1; r <= 9; ++r)
      for (int c = 1; c <= 4; ++c) table(r, c, 0.1F * static_cast<float>(c) + (r > 6 ? 0.7F : 0));
    WardDistanceCalculator calculator(static_cast<WardDistanceCalculator::DistanceType>(root));
    const std::vector<PlainMerge> merges = MergesOf(calculator, table);
    EXPECT_EQ(merges[0].height, 0.0F);
    for (const PlainMerge& merge : merges) EXPECT_FALSE(std::isnan(merge.height));
    EXPECT_TRUE(merges == PlainWard(table, root));
  }
}

TEST(WardDistanceCalculator, IncreasesThatRoundToBelowZeroGiveNoHeightThatIsNoNumber) {
  // Many equal rows have sums of squares that cancel to 0 but for their rounding.
  for (const int different : {1, 2}) {
    const NCDataMatrix<float> some = RandomMatrix<float>(different, 4, 0, 1);
    NCDataMatrix<float> table(0, 4);
    for (int r = 0; r < 100; ++r) table.push_back(some[1 + r % different]);
    for (const bool root : {false, true}) {
      WardCounts counts;
      const std::vector<PlainMerge> plain = PlainWard(table, root, &counts);
      ASSERT_GT(counts.negative, 0) << "the table is one of those that show it";
      WardDistanceCalculator calculator(static_cast<WardDistanceCalculator::DistanceType>(root));
      const std::vector<PlainMerge> merges = MergesOf(calculator, table);
      EXPECT_TRUE(merges == plain);
      // All but the merge of the different rows, the last one, are of equal rows: four sums of squares of at most
      // 100 * 9 differ by some units of 2^-53 of that, 1e-13 each; the root of 4e-12 is 2e-6.
      for (std::size_t k = 0; k + static_cast<std::size_t>(different) < 100; ++k)
        EXPECT_NEAR(merges[k].height, 0, root ? 2e-6 : 4e-12);
      for (const PlainMerge& merge : merges) EXPECT_TRUE(!root || merge.height >= 0.0F);
    }
  }
}

TEST(WardDistanceCalculator, MergesTheSameOnAnyNumberOfThreads) {
  const NCDataMatrix<float> table = RandomMatrix<float>(400, 6, 0.05, 8);  // 79800 pairs: enough for a team
  std::vector<std::vector<PlainMerge>> results;
  for (const int threads : {1, 2, 3, 7}) {
    const Threads team(threads);
    WardDistanceCalculator calculator(WardDistanceCalculator::DistanceIncrease);
    results.push_back(MergesOf(calculator, table));
  }
  for (const std::vector<PlainMerge>& result : results) EXPECT_TRUE(result == results.front());
}

TEST(WardDistanceCalculator, ATypeWithoutDistancesMakesNoneAndShowsNoProgress) {
  WardDistanceCalculator calculator(static_cast<WardDistanceCalculator::DistanceType>(2));
  ProgressLog log;
  const std::unique_ptr<NCProgress> bar = RecordingBar(&log);
  calculator.Init(TwelveRows(), bar.get());
  EXPECT_TRUE(log.calls.empty());
  EXPECT_EQ(MergeError(calculator), "Cluster analysis: 2 is no type of Ward's distance.");
  EXPECT_EQ(calculator.GetId(), "WardDistanceCalculator2");
}

TEST(Calculators, BearTheirNames) {
  SingleLinkageDistanceCalculator single;
  WardDistanceCalculator increase(WardDistanceCalculator::DistanceIncrease);
  WardDistanceCalculator root(WardDistanceCalculator::DistanceRootIncrease);
  EXPECT_EQ(single.GetId(), "SingleLinkageDistanceCalculator");
  EXPECT_EQ(increase.GetId(), "WardDistanceCalculator0");
  EXPECT_EQ(root.GetId(), "WardDistanceCalculator1");
}

template <class Calculator>
void ExpectCopyGoesItsOwnWay(Calculator original) {
  const NCDataMatrix<float> table = RandomMatrix<float>(15, 4, 0, 1);
  Calculator witness = original;
  const std::vector<PlainMerge> whole = MergesOf(witness, table);
  original.Init(table, nullptr);
  int i = 0, j = 0;
  original.FindNearestAndMerge(i, j);
  Calculator copy(original), assigned(witness);
  assigned = original;
  for (Calculator* const calculator : {&original, &copy, &assigned})
    for (std::size_t k = 1; k < whole.size(); ++k) {
      const float height = calculator->FindNearestAndMerge(i, j);
      EXPECT_TRUE(whole[k] == (PlainMerge{i, j, height}));
    }
  EXPECT_EQ(MergeError(original), "Cluster analysis: there are no two clusters left to merge.");
}

TEST(Calculators, CopiesHaveTheirOwnState) {
  ExpectCopyGoesItsOwnWay(SingleLinkageDistanceCalculator());
  ExpectCopyGoesItsOwnWay(WardDistanceCalculator(WardDistanceCalculator::DistanceRootIncrease));
}

TEST(Calculators, TakeInfiniteCellsAndNaNsToAnEnd) {
  const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
  for (const float odd : {inf, nan}) {
    NCDataMatrix<float> table = RandomMatrix<float>(30, 3, 0, 2);
    for (int r = 1; r <= 30; r += 3) table(r, 1 + r % 3, odd);
    SingleLinkageDistanceCalculator single;
    WardDistanceCalculator increase(WardDistanceCalculator::DistanceIncrease);
    WardDistanceCalculator root(WardDistanceCalculator::DistanceRootIncrease);
    EXPECT_EQ(MergesOf(single, table).size(), 29U);
    EXPECT_EQ(MergesOf(increase, table).size(), 29U);
    EXPECT_EQ(MergesOf(root, table).size(), 29U);
  }
}

}  // namespace
