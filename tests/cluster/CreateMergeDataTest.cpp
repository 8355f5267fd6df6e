#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <utility>

#include "cluster/Trees.h"
#include "kalmia/support/NCError.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Merges {
  explicit Merges(const DendroGramNode& root) {
    DendroGram::CreateMergeData(root, heights, left, right, merged, &leftItems, &rightItems);
  }

  // Something that has to go.
  NCDataVector<float> heights{7, 3.0F};
  NCIntegralVector<unsigned long, 0> left{2, 5}, right{1, 5}, merged{9, 5};
  std::vector<std::vector<unsigned long>> leftItems{3, {1, 2}}, rightItems{1, {8}};
};

TEST(CreateMergeData, ListsTheMergesByRisingHeight) {
  const Tree tree = FiveLeafs();
  const Merges merges(*tree);
  EXPECT_THAT(merges.heights, ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(merges.left, ElementsAre(1, 4, 3, 6));
  EXPECT_THAT(merges.right, ElementsAre(2, 5, 7, 8));
  EXPECT_THAT(merges.merged, ElementsAre(6, 7, 8, 9));
  EXPECT_THAT(merges.leftItems, ElementsAre(ElementsAre(1), ElementsAre(4), ElementsAre(3), IsEmpty()));
  EXPECT_THAT(merges.rightItems, ElementsAre(ElementsAre(2), ElementsAre(5), IsEmpty(), IsEmpty()));
}

TEST(CreateMergeData, NumbersLeafsByTheRankOfTheirSmallestItem) {
  const Tree tree = Merge(2, Leaf({40}), Merge(1, Leaf({30, 7}), Leaf({20})));
  const Merges merges(*tree);
  EXPECT_THAT(merges.left, ElementsAre(1, 3));
  EXPECT_THAT(merges.right, ElementsAre(2, 4));
  EXPECT_THAT(merges.leftItems, ElementsAre(ElementsAre(7, 30), ElementsAre(40)));
}

TEST(CreateMergeData, OfEqualHeightsTheOneWithFewerLeafsComesFirst) {
  const Tree tree = Merge(1, Merge(1, Leaf({1}), Merge(1, Leaf({2}), Leaf({3}))), Merge(1, Leaf({4}), Leaf({5})));
  const Merges merges(*tree);
  EXPECT_EQ(merges.merged[4], 9U);
  const unsigned long pairOfTwoAndThree = merges.left[1] == 2 ? 6 : 7;  // the two pairs are alike: any order
  EXPECT_EQ(merges.left[3], 1U);
  EXPECT_EQ(merges.right[3], pairOfTwoAndThree);
}

TEST(CreateMergeData, ChildrenComeFirstAlsoWhereHeightsFallOrAreNoNumbers) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  for (const float odd : {5.0F, nan, std::numeric_limits<float>::infinity()}) {
    const Tree tree = Merge(1, Merge(odd, Leaf({1}), Leaf({2})), Merge(3, Leaf({3}), Leaf({4})));
    const Merges merges(*tree);
    EXPECT_THAT(merges.left, ElementsAre(3, 1, 6)) << odd;
    EXPECT_THAT(merges.right, ElementsAre(4, 2, 5)) << odd;
    EXPECT_EQ(merges.heights[1], 3.0F);
    EXPECT_EQ(merges.heights[3], 1.0F) << "the node's own height, not the one it is sorted by";
  }
}

TEST(CreateMergeData, CountsLeafsItselfWhereASplitMadeTheCountsOld) {
  const Tree tree = Merge(1, Leaf({1, 2, 3}), Leaf({4}));
  DendroGramNode& leaf = const_cast<DendroGramNode&>(*tree->GetLeft());
  leaf.Split({1}, 1);
  const_cast<DendroGramNode*>(leaf.GetRight())->Split({2}, 1);
  const Merges merges(*tree);
  EXPECT_THAT(merges.left, ElementsAre(2, 1, 6));
  EXPECT_THAT(merges.right, ElementsAre(3, 5, 4));
}

TEST(CreateMergeData, OfALeafIsEmpty) {
  const Tree leaf = Leaf({1});
  const Merges merges(*leaf);
  EXPECT_EQ(merges.heights.Size(), 0);
  EXPECT_EQ(merges.left.Size() + merges.right.Size() + merges.merged.Size(), 0);
  EXPECT_THAT(merges.leftItems, IsEmpty());
  EXPECT_THAT(merges.rightItems, IsEmpty());
}

TEST(CreateMergeData, WantsBothItemListsOrNone) {
  const Tree leaf = Leaf({1}), tree = FiveLeafs();
  NCDataVector<float> heights;
  NCIntegralVector<unsigned long, 0> left, right, merged;
  std::vector<std::vector<unsigned long>> items;
  for (const DendroGramNode* const root : {leaf.get(), tree.get()})
    for (const bool isLeft : {false, true}) {
      try {
        DendroGram::CreateMergeData(*root, heights, left, right, merged, isLeft ? &items : nullptr,
                                    isLeft ? nullptr : &items);
        ADD_FAILURE() << "nothing thrown";
      } catch (const NCError& error) {
        EXPECT_EQ(error.GetMessage(), "Internal error in DendroGram::CreateMergeData");
      }
    }
  DendroGram::CreateMergeData(*tree, heights, left, right, merged, nullptr, nullptr);
  EXPECT_THAT(merged, ElementsAre(6, 7, 8, 9));
}

TEST(CreateMergeData, OfNLeafsEndsWithTheRoot) {
  for (unsigned seed = 0; seed < 10; ++seed) {
    const int n = 2 + static_cast<int>(seed) * 5;
    const Tree tree = RandomTree(n, seed);
    const Merges merges(*tree);
    ASSERT_EQ(merges.heights.Size(), n - 1);
    EXPECT_EQ(merges.merged[n - 1], 2UL * static_cast<unsigned long>(n) - 1);
    EXPECT_EQ(merges.heights[n - 1], tree->Height());
    std::vector<bool> used(static_cast<std::size_t>(2 * n), false);
    for (int row = 1; row < n; ++row)
      for (const unsigned long child : {merges.left[row], merges.right[row]}) {
        EXPECT_LT(child, merges.merged[row]);
        EXPECT_FALSE(used[child]);
        used[child] = true;
      }
  }
}

}  // namespace
