#include "kalmia/analysis/validation/PermutationTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <set>
#include <vector>

#include "validation/LeftOutGasoline.h"

namespace kalmia::analysis {
namespace {

using ::testing::ElementsAre;
using ::testing::IsNan;

PermutationRun RunOf(double correlation, double r2, double q2) {
  PermutationRun run;
  run.correlation = correlation;
  run.r2 = r2;
  run.q2 = q2;
  return run;
}

TEST(PermutationTest, CountsRunsAsGoodOrBetterAndTheOriginal) {
  const std::vector<PermutationRun> runs = {RunOf(0.1, 0.5, -0.2), RunOf(-0.2, 0.9, 0.6), RunOf(0.3, 0.7, 0.7)};
  const PermutationJudgement judgement = JudgePermutations(RunOf(1.0, 0.7, 0.8), runs);
  EXPECT_DOUBLE_EQ(judgement.pR2, 3.0 / 4);
  EXPECT_DOUBLE_EQ(judgement.pQ2, 1.0 / 4);
  EXPECT_THAT(judgement.pAccuracy, IsNan());
}

TEST(PermutationTest, TakesRunsThatDifferByRoundingForAsGood) {
  const PermutationJudgement judgement = JudgePermutations(RunOf(1.0, 0.7, 0.8), {RunOf(1.0, 0.7 - 1e-15, 0.8 - 1e-8)});
  EXPECT_EQ(judgement.pR2, 1.0);
  EXPECT_EQ(judgement.pQ2, 0.5);
}

TEST(PermutationTest, DrawsItsLinesThroughTheRunsAlone) {
  // R2 = 0.2 + 0.5 |r|, Q2 = -0.3 + |r|
  std::vector<PermutationRun> runs;
  for (const double r : {0.1, -0.2, 0.4}) runs.push_back(RunOf(r, 0.2 + 0.5 * std::fabs(r), -0.3 + std::fabs(r)));
  const PermutationJudgement judgement = JudgePermutations(RunOf(1.0, 0.95, 0.1), runs);
  EXPECT_NEAR(judgement.interceptR2, 0.2, 1e-15);
  EXPECT_NEAR(judgement.interceptQ2, -0.3, 1e-15);
  // Least squares through (0, 0), (1, 0), (2, 3): slope 3 / 2, mean 1.
  runs = {RunOf(0.0, 0.0, 0.0), RunOf(1.0, 0.0, 0.0), RunOf(-2.0, 3.0, 0.0)};
  EXPECT_DOUBLE_EQ(JudgePermutations(RunOf(1.0, 0.0, 0.0), runs).interceptR2, -0.5);
}

TEST(PermutationTest, RunsWithoutAFigureCountAsBetterAndLieOnNoLine) {
  const std::vector<PermutationRun> runs = {RunOf(0.1, 0.5, kNotANumber), RunOf(0.2, 0.5, -0.1),
                                            RunOf(kNotANumber, 0.9, 0.0), RunOf(0.3, 0.5, -0.1)};
  const PermutationJudgement judgement = JudgePermutations(RunOf(1.0, 0.7, 0.8), runs);
  EXPECT_DOUBLE_EQ(judgement.pQ2, 2.0 / 5);
  EXPECT_DOUBLE_EQ(judgement.pR2, 2.0 / 5);
  EXPECT_NEAR(judgement.interceptR2, 0.5, 1e-15);
  EXPECT_NEAR(judgement.interceptQ2, -0.1, 1e-15);
}

TEST(PermutationTest, HasNoLineWhereAllCorrelationsAreAlike) {
  const std::vector<PermutationRun> runs = {RunOf(0.1, 0.2, 0.3), RunOf(-0.1, 0.3, 0.4)};
  const PermutationJudgement judgement = JudgePermutations(RunOf(1, 1, 1), runs);
  EXPECT_THAT(judgement.interceptR2, IsNan());
  EXPECT_THAT(judgement.interceptQ2, IsNan());
}

TEST(PermutationTest, JudgesTheAccuracyOfClasses) {
  PermutationRun original = RunOf(1, 1, 1), same = RunOf(0, 0, 0), worse = RunOf(0, 0, 0);
  original.accuracy = same.accuracy = 0.9;
  worse.accuracy = 0.4;
  EXPECT_DOUBLE_EQ(JudgePermutations(original, {same, worse, worse}).pAccuracy, 0.5);
}

TEST(PermutationTest, CorrelatesOverRowsThatBothHaveAndColumnsThatHaveOne) {
  EXPECT_DOUBLE_EQ(CorrelationWithPermuted(ColumnOf({1, 2, 3}), {0, 1, 2}), 1.0);
  EXPECT_DOUBLE_EQ(CorrelationWithPermuted(ColumnOf({1, 2, 3}), {2, 1, 0}), -1.0);
  // 1 2 3 with 2 3 1: sums of products about the means -1 of 2.
  EXPECT_DOUBLE_EQ(CorrelationWithPermuted(ColumnOf({1, 2, 3}), {1, 2, 0}), -0.5);
  RealMatrix y(4, 3);
  y.cells = {1, 7, 0.1, 2, 7, 0.1, 3, 5, 0.1, kNotANumber, 9, 0.1};
  // Column 1: the pairs (1, 2) and (2, 1) of rows 0 and 1; column 2: 7 7 5 9 with 7 7 9 5, -1; column 3 is constant.
  EXPECT_DOUBLE_EQ(CorrelationWithPermuted(y, {1, 0, 3, 2}), -1.0);
  EXPECT_THAT(CorrelationWithPermuted(ColumnOf({4, 4, 4}), {0, 1, 2}), IsNan());
  EXPECT_THAT(CorrelationWithPermuted(ColumnOf({1, kNotANumber}), {1, 0}), IsNan());
}

TEST(PermutationTest, GroupsChangePlacesAsWholes) {
  const std::vector<int> groups = {0, 1, 0, 2, 1, 2};
  EXPECT_TRUE(AreGroupsOfOneSize(groups));
  EXPECT_FALSE(AreGroupsOfOneSize({0, 1, 0}));
  RandomDraws draws(1, RandomUse::Permutations);
  std::set<std::vector<std::size_t>> seen;
  for (int run = 0; run < 200; ++run) {
    const std::vector<std::size_t> sources = PermutedGroups(groups, &draws);
    seen.insert(sources);
    EXPECT_EQ(groups[sources[0]], groups[sources[2]]);
    EXPECT_EQ(groups[sources[1]], groups[sources[4]]);
    EXPECT_LT(sources[0], sources[2]);  // the k-th row of one for the k-th of another
    EXPECT_EQ(std::set<std::size_t>(sources.begin(), sources.end()).size(), 6U);
  }
  EXPECT_EQ(seen.size(), 6U);  // the orders of three groups; 200 draws miss one of them once in 1e15
}

TEST(PermutationTest, CountsTheOrdersOfGroupsThatDifferInY) {
  EXPECT_EQ(OrdersOfGroups({0, 1, 0, 2, 1, 2}, ColumnOf({1, 2, 3, 4, 5, 6})), 6.0);
  EXPECT_EQ(OrdersOfGroups({0, 1, 2, 3, 4, 5}, ColumnOf({7, 7, 8, 8, 8, 8})), 15.0);  // 6! / (2! 4!)
  EXPECT_EQ(OrdersOfGroups({0, 1, 2, 3, 4, 5}, ColumnOf({7, 7, 7, 8, 8, 8})), 10.0) << "and turned around";
  EXPECT_EQ(OrdersOfGroups({0, 0, 1, 1, 2, 2}, ColumnOf({1, kNotANumber, 1, kNotANumber, 1, 1})), 3.0);
  EXPECT_EQ(OrdersOfGroups({0, 1}, ColumnOf({4, 4})), 1.0);
  std::vector<int> many(200);
  RealMatrix y(200, 1);
  for (std::size_t i = 0; i < 200; ++i) {
    many[i] = static_cast<int>(i);
    y(i, 0) = static_cast<double>(i);
  }
  EXPECT_EQ(OrdersOfGroups(many, y), std::numeric_limits<double>::infinity());
}

TEST(PermutationTest, GroupsOfOneRowAreRows) {
  RandomDraws draws(1), same(1);
  EXPECT_EQ(PermutedGroups({0, 1, 2, 3, 4, 5, 6, 7, 8, 9}, &draws), same.Order(10));
}

TEST(PermutationTest, GivesUniformPValuesWhereYHasNothingToDoWithX) {
  // The figure is the squared correlation of y with one column; 400 tables of 15 rows, 19 runs. A p of at most 0.1
  // comes in a tenth of them, 40; four standard deviations are 24.
  RandomDraws draws(7, RandomUse::Permutations);
  int small = 0;
  for (int table = 0; table < 400; ++table) {
    RealMatrix pair(15, 1);
    for (double& cell : pair.cells) cell = static_cast<double>(draws.Below(1U << 30));
    const auto figure = [&](const std::vector<std::size_t>& sources) {
      const double r = CorrelationWithPermuted(pair, sources);  // x is y in another order, by which both are unrelated
      return RunOf(r, r * r, r * r);
    };
    const std::vector<std::size_t> x = draws.Order(15);
    std::vector<PermutationRun> runs;
    for (int run = 0; run < 19; ++run) runs.push_back(figure(draws.Order(15)));
    if (JudgePermutations(figure(x), runs).pQ2 <= 0.1) ++small;
  }
  EXPECT_NEAR(small, 40, 24);
}

}  // namespace
}  // namespace kalmia::analysis
