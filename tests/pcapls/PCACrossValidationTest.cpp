#include "kalmia/pcapls/PCACrossValidation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using ::testing::ElementsAre;

std::vector<int> GroupsOf(int count, int groups) {
  const NCIntegralVector<int, -99> vector = GetDeafultCVGroupsVector(count, groups);
  return std::vector<int>(vector.begin(), vector.end());
}

TEST(GetDeafultCVGroupsVector, DealsTheElementsOutFromGroupOneOn) {
  EXPECT_THAT(GroupsOf(9, 7), ElementsAre(1, 2, 3, 4, 5, 6, 0, 1, 2));
}

TEST(GetDeafultCVGroupsVector, PutsEverythingIntoGroupZeroWhereThereIsOneGroup) {
  EXPECT_THAT(GroupsOf(3, 1), ElementsAre(0, 0, 0));
}

TEST(GetDeafultCVGroupsVector, LeavesGroupsEmptyThatAreMoreThanTheElements) {
  EXPECT_THAT(GroupsOf(2, 5), ElementsAre(1, 2));
}

TEST(GetDeafultCVGroupsVector, IsEmptyWithoutElements) { EXPECT_TRUE(GroupsOf(0, 3).empty()); }

}  // namespace
