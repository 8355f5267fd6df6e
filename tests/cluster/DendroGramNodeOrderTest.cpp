#include <gtest/gtest.h>

#include <algorithm>
#include <list>

#include "cluster/Trees.h"

// The orders of children, with a twin that swaps as told: node by node from the top, each time setting the stems of the
// node and of all nodes above.

namespace {

struct Twin {
  Twin* parent = nullptr;
  Twin* left = nullptr;
  Twin* right = nullptr;
  const DendroGramNode* node;
  float xOffset;
  std::list<int> items;
};

class TwinTree {
 public:
  explicit TwinTree(const DendroGramNode& root) { root_ = Add(root, nullptr); }

  template <class MustSwap>
  void Sort(const MustSwap& mustSwap) {
    for (Twin& twin : twins_) {  // in the order of Add: from the top down
      if (!twin.left || !mustSwap(*twin.left, *twin.right)) continue;
      std::swap(twin.left, twin.right);
      for (Twin* above = &twin; above; above = above->parent) SetXOffset(above);
    }
  }

  bool Agrees(const DendroGramNode& root) const { return Agrees(*root_, root); }

 private:
  Twin* Add(const DendroGramNode& node, Twin* parent) {
    twins_.push_back({parent, nullptr, nullptr, &node, node.GetXOffset(), {}});
    Twin* const twin = &twins_.back();
    node.GetLeafs(twin->items);
    twin->items.sort();
    if (node.IsLeaf()) return twin;
    twin->left = Add(*node.GetLeft(), twin);
    twin->right = Add(*node.GetRight(), twin);
    return twin;
  }

  static void SetXOffset(Twin* twin) {
    const double n = twin->node->SizeLeafs(), nL = twin->left->node->SizeLeafs(), nR = twin->right->node->SizeLeafs();
    const double a = static_cast<float>(nL / n * twin->left->xOffset);
    const double b = static_cast<float>((nR * twin->right->xOffset + nL) / n);
    twin->xOffset = static_cast<float>((a + b) * 0.5);
  }

  static bool Agrees(const Twin& twin, const DendroGramNode& node) {
    if (twin.node != &node || twin.xOffset != node.GetXOffset()) return false;
    return node.IsLeaf() || (Agrees(*twin.left, *node.GetLeft()) && Agrees(*twin.right, *node.GetRight()));
  }

  std::list<Twin> twins_;
  Twin* root_;
};

bool LargerLeft(const Twin& left, const Twin& right) { return left.node->SizeLeafs() > right.node->SizeLeafs(); }
bool HigherLeft(const Twin& left, const Twin& right) { return right.node->Height() < left.node->Height(); }
bool LaterLeft(const Twin& left, const Twin& right) { return left.items.front() > right.items.front(); }
bool Always(const Twin&, const Twin&) { return true; }

class Orders : public ::testing::TestWithParam<unsigned> {};

TEST_P(Orders, AreThoseOfSwapsOneByOneFromTheTop) {
  const Tree tree = RandomTree(1 + static_cast<int>(GetParam()) * 3, GetParam());
  TwinTree twin(*tree);
  tree->MirrorImage();
  twin.Sort(Always);
  EXPECT_TRUE(twin.Agrees(*tree)) << "mirror image";
  tree->SortBySize();
  twin.Sort(LargerLeft);
  EXPECT_TRUE(twin.Agrees(*tree)) << "by size";
  tree->SortByHeight();
  twin.Sort(HigherLeft);
  EXPECT_TRUE(twin.Agrees(*tree)) << "by height";
  tree->SortByIndex();
  twin.Sort(LaterLeft);
  EXPECT_TRUE(twin.Agrees(*tree)) << "by index";
  EXPECT_TRUE(HasSoundLinks(*tree));
}

INSTANTIATE_TEST_SUITE_P(RandomTrees, Orders, ::testing::Range(0U, 25U));

TEST(DendroGramNodeOrder, EqualsKeepTheirOrder) {
  const Tree tree = Merge(3, Merge(1, Leaf({4}), Leaf({3})), Merge(1, Leaf({2}), Leaf({1})));
  tree->SortBySize();
  tree->SortByHeight();
  EXPECT_EQ(Text(*tree), "((4 3):1 (2 1):1):3");
  tree->SortByIndex();
  EXPECT_EQ(Text(*tree), "((1 2):1 (3 4):1):3");
}

TEST(DendroGramNodeOrder, ALeafCountsAsHeightZero) {
  const Tree tree = Merge(1, Merge(0.5F, Leaf({1}), Leaf({2})), Leaf({3}));
  tree->SortByHeight();
  EXPECT_EQ(Text(*tree), "(3 (1 2):0.5):1");
  const Tree flat = Merge(1, Merge(0, Leaf({1}), Leaf({2})), Leaf({3}));  // 0 is not below 0, though -0.5 would be
  flat->SortByHeight();
  EXPECT_EQ(Text(*flat), "((1 2):0 3):1");
}

TEST(DendroGramNodeOrder, OfASubtreeMovesTheStemsAbove) {
  const Tree tree = FiveLeafs();
  const float before = tree->GetXOffset();
  tree->GetRight()->SortBySize();
  EXPECT_EQ(tree->GetXOffset(), before) << "already in order";
  tree->GetRight()->MirrorImage();
  EXPECT_EQ(Text(*tree), "((1 2):1 ((5 4):2 3):3):4");
  const Tree made = Merge(4, Merge(1, Leaf({1}), Leaf({2})), Merge(3, Merge(2, Leaf({5}), Leaf({4})), Leaf({3})));
  EXPECT_TRUE(*tree == *made);
}

TEST(DendroGramNodeOrder, AMirrorImageTwiceIsTheTree) {
  const Tree tree = RandomTree(40, 3), twin = RandomTree(40, 3);
  tree->MirrorImage();
  EXPECT_FALSE(*tree == *twin);
  tree->MirrorImage();
  EXPECT_TRUE(*tree == *twin);
}

TEST(DendroGramNodeOrder, SubtreesWithoutItemsStayWhereTheyAre) {
  const Tree tree = Merge(2, Leaf({}), Merge(1, Leaf({2}), Leaf({})));
  tree->SortByIndex();
  EXPECT_EQ(Text(*tree), "( (2 ):1):2");
}

TEST(DendroGramNodeOrder, OfALeafDoesNothing) {
  const Tree leaf = Leaf({2, 1});
  leaf->SortBySize();
  leaf->SortByHeight();
  leaf->SortByIndex();
  leaf->MirrorImage();
  EXPECT_TRUE(*leaf == *Leaf({1, 2}));
}

}  // namespace
