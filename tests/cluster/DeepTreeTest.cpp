#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <sstream>

#include "cluster/SmallStack.h"
#include "cluster/Trees.h"
#include "kalmia/cluster/DendroGramDrawer.h"
#include "testing/StreamAttacks.h"

// A chain of 100,000 leaves. A walk that recursed would need more stack than there is; one that paid for the depth at
// each node would run for minutes.

namespace {

constexpr int kLeafs = 100000;

class DeepTree : public ::testing::TestWithParam<bool> {
 protected:
  const SmallStack stack_;
  const Tree tree_ = Chain(kLeafs, GetParam());
};

TEST_P(DeepTree, IsCopiedComparedAndDestroyed) {
  const Tree copy(new DendroGramNode(*tree_));
  EXPECT_TRUE(*copy == *tree_);
  EXPECT_TRUE(HasSoundLinks(*copy));
}

TEST_P(DeepTree, IsStoredAndRead) {
  std::istringstream stream(StreamOf(*tree_));
  const Tree read(new DendroGramNode);
  ASSERT_TRUE(stream >> *read);
  EXPECT_TRUE(*read == *tree_);
}

TEST_P(DeepTree, IsReordered) {
  const Tree twin = Chain(kLeafs, GetParam());
  tree_->MirrorImage();
  tree_->MirrorImage();
  EXPECT_TRUE(*twin == *tree_);
  tree_->SortBySize();
  EXPECT_EQ(tree_->GetLeft()->SizeLeafs(), 1);
  tree_->SortByHeight();
  EXPECT_EQ(tree_->GetLeft()->SizeLeafs(), 1);
  tree_->SortByIndex();
  EXPECT_EQ(tree_->GetRight()->SizeLeafs(), 1);
  EXPECT_TRUE(HasSoundLinks(*tree_));
}

TEST_P(DeepTree, IsListedSearchedAndNormalised) {
  NCDataVector<float> heights;
  NCIntegralVector<unsigned long, 0> left, right, merged;
  DendroGram::CreateMergeData(*tree_, heights, left, right, merged);
  EXPECT_EQ(heights[kLeafs - 1], static_cast<float>(kLeafs - 1));
  const DendroGramNode* deepest = tree_.get();
  while (!deepest->IsLeaf()) deepest = GetParam() ? deepest->GetLeft() : deepest->GetRight();
  EXPECT_TRUE(tree_->IsSubNode(deepest));
  std::list<int> items;
  tree_->GetLeafs(items);
  EXPECT_EQ(items.size(), static_cast<std::size_t>(kLeafs));
  tree_->Normalise();
  EXPECT_EQ(tree_->Height(), 1.0F);
}

TEST_P(DeepTree, IsDrawnHitAndCut) {
  using Nodes = std::list<const DendroGramNode*>;
  const DendroGram::DendroGramDrawer drawer(*tree_);
  // A stem that stands alone: that of the leaf merged last, at one end, from the bottom up to the root's crossbar.
  const float x = GetParam() ? 99999.5F : 0.5F;
  const std::unique_ptr<Nodes> hits(drawer.HitTest(0, 100000, 0, 1000, x, 500, 0.25F, 0.25F, true));
  EXPECT_EQ(*hits, Nodes({GetParam() ? tree_->GetRight() : tree_->GetLeft()}));
  // The merges at 50000 to 99999 are undone: 50000 of them, so there is one cluster more.
  const std::unique_ptr<Nodes> cut(drawer.SplitByHeight(0, 99999, 49999.5F));
  EXPECT_EQ(cut->size(), 50001U);
}

INSTANTIATE_TEST_SUITE_P(Sides, DeepTree, ::testing::Bool(), [](const ::testing::TestParamInfo<bool>& side) {
  return side.param ? "DeepOnTheLeft" : "DeepOnTheRight";
});

}  // namespace
