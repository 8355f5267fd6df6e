#include "kalmia/analysis/validation/PairedTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "FailureOf.h"
#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/RandomDraws.h"
#include "testing/RecordingProgress.h"

namespace kalmia::analysis {
namespace {

using ::testing::IsNan;

/// The share of all 2^n flips whose sum is as far from 0 as that of the differences.
double ExactP(const std::vector<double>& differences) {
  double found = 0.0;
  for (const double d : differences) found += d;
  int count = 0;
  const auto flips = 1U << differences.size();
  for (unsigned flip = 0; flip < flips; ++flip) {
    double sum = 0.0;
    for (std::size_t i = 0; i < differences.size(); ++i) {
      sum += (flip >> i & 1U) != 0 ? -differences[i] : differences[i];
    }
    if (std::fabs(sum) >= std::fabs(found)) ++count;
  }
  return static_cast<double>(count) / flips;
}

TEST(PairedTest, ComesNearTheShareOfAllFlips) {
  // Whole numbers, whose sums are exact; ten rows have 1024 flips.
  const std::vector<double> errors = {5, 9, 2, 7, 7, 3, 8, 4, 6, 1}, others = {3, 4, 2, 8, 1, 1, 6, 5, 2, 1};
  std::vector<double> differences;
  for (std::size_t i = 0; i < errors.size(); ++i) differences.push_back(errors[i] - others[i]);
  const double exact = ExactP(differences);
  const PairedTest test = ComparePaired(errors, others, nullptr, /*flips=*/99999);
  // Four standard deviations of 99999 draws, and half a run for the flip that is counted once more.
  EXPECT_NEAR(test.p, exact, 4.0 * std::sqrt(exact * (1.0 - exact) / 99999) + 1e-5);
  EXPECT_EQ(test.units, 10U);
  EXPECT_DOUBLE_EQ(test.meanError, 5.2);
  EXPECT_DOUBLE_EQ(test.otherMeanError, 3.3);
  EXPECT_DOUBLE_EQ(test.difference, 1.9);
}

TEST(PairedTest, HasTwoSides) {
  const std::vector<double> errors = {5, 9, 2, 7, 7, 3}, others = {3, 4, 2, 8, 1, 1};
  const PairedTest one = ComparePaired(errors, others), other = ComparePaired(others, errors);
  EXPECT_EQ(one.p, other.p);
  EXPECT_EQ(one.difference, -other.difference);
}

TEST(PairedTest, OfModelsThatDoNotDifferIsOne) {
  const std::vector<double> errors = {5, 9, 2, 7};
  EXPECT_EQ(ComparePaired(errors, errors).p, 1.0);
}

TEST(PairedTest, IsNeverZero) {
  std::vector<double> errors, others;
  for (int i = 0; i < 60; ++i) {
    errors.push_back(1.0);
    others.push_back(2.0 + i);
  }
  EXPECT_DOUBLE_EQ(ComparePaired(errors, others).p, 1.0 / 1000);
}

TEST(PairedTest, TakesRowsThatBothHaveAnErrorFor) {
  const PairedTest test = ComparePaired({1, kNotANumber, 3, 5}, {2, 2, kNotANumber, 4});
  EXPECT_EQ(test.units, 2U);
  EXPECT_DOUBLE_EQ(test.meanError, 3.0);
  EXPECT_DOUBLE_EQ(test.otherMeanError, 3.0);
  EXPECT_EQ(test.difference, 0.0);
  EXPECT_EQ(test.p, 1.0);
}

TEST(PairedTest, TakesGroupsForUnits) {
  const std::vector<int> groups = {0, 1, 0, 1};
  const PairedTest test = ComparePaired({4, 1, 2, 1}, {1, 1, 1, 0}, &groups);
  EXPECT_EQ(test.units, 2U);
  EXPECT_DOUBLE_EQ(test.meanError, 2.0);  // of the groups' 3 and 1
  EXPECT_DOUBLE_EQ(test.difference, 1.25);
  EXPECT_NEAR(test.p, 0.5, 0.065);  // two of four flips; four standard deviations of 999 runs
}

TEST(PairedTest, WithoutARowOfBothHasNoMeans) {
  const PairedTest test = ComparePaired({1, kNotANumber}, {kNotANumber, 2});
  EXPECT_EQ(test.units, 0U);
  EXPECT_THAT(test.difference, IsNan());
  EXPECT_EQ(test.p, 1.0);
}

TEST(PairedTest, IsUniformWhereModelsAreAlike) {
  RandomDraws draws(9);
  int small = 0;
  constexpr int kTables = 400;
  for (int table = 0; table < kTables; ++table) {
    std::vector<double> errors, others;
    for (int i = 0; i < 20; ++i) {
      errors.push_back(static_cast<double>(draws.Below(1000)));
      others.push_back(static_cast<double>(draws.Below(1000)));
    }
    if (ComparePaired(errors, others, nullptr, /*flips=*/99, draws.Word()).p <= 0.1) ++small;
  }
  EXPECT_NEAR(small, 40, 18);  // three standard deviations of 400 tables
}

TEST(PairedTest, StopsWhenTheBarWantsToAndRefusesNoFlips) {
  ProgressLog log;
  log.stopAt = 1;
  const auto bar = RecordingBar(&log);
  EXPECT_THROW(ComparePaired({1, 2}, {2, 1}, nullptr, 999, 1, bar.get()), Stopped);
  EXPECT_EQ(FailureOf<BadRequest>([] { ComparePaired({1}, {2}, nullptr, 0); }),
            "a randomisation takes one run or more");
}

}  // namespace
}  // namespace kalmia::analysis
