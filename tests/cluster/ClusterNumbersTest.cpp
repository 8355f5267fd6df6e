#include "kalmia/cluster/internal/ClusterNumbers.h"

#include <gtest/gtest.h>

namespace {

using kalmia::ClusterNumbers;

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

}  // namespace
