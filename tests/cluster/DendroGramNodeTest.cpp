#include "kalmia/cluster/DendroGramNode.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <list>
#include <sstream>
#include <string>

#include "cluster/Trees.h"
#include "kalmia/support/NCError.h"
#include "testing/AllocationMeter.h"
#include "testing/StreamAttacks.h"

namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST(DendroGramNode, AnEmptyLeafHasNoItemsAndNoHeight) {
  const Tree leaf(new DendroGramNode);
  EXPECT_TRUE(leaf->IsLeaf());
  EXPECT_THAT(*leaf->Items(), IsEmpty());
  EXPECT_EQ(leaf->SizeItems(), 0);
  EXPECT_EQ(leaf->SizeLeafs(), 1);
  EXPECT_EQ(leaf->Height(), 0.0F);
  EXPECT_EQ(leaf->GetXOffset(), 0.5F);
  EXPECT_EQ(leaf->GetModel(), 0);
  EXPECT_EQ(leaf->GetLeft(), nullptr);
  EXPECT_EQ(leaf->GetRight(), nullptr);
  EXPECT_EQ(leaf->GetParent(), nullptr);
}

TEST(DendroGramNode, LeafsOfRangesSortTheirItems) {
  const std::list<int> list = {3, 1, 2};
  const std::vector<int> vector = {9, 7, 8, 7};
  const Tree one(new DendroGramNode(5)), some(new DendroGramNode(list.begin(), list.end())),
      others(new DendroGramNode(vector.begin(), vector.end()));
  EXPECT_THAT(*one->Items(), ElementsAre(5));
  EXPECT_THAT(*some->Items(), ElementsAre(1, 2, 3));
  EXPECT_THAT(*others->Items(), ElementsAre(7, 7, 8, 9));
}

TEST(DendroGramNode, AMergeAdoptsItsChildrenAndCountsTheirLeafs) {
  const Tree tree = FiveLeafs();
  EXPECT_TRUE(HasSoundLinks(*tree));
  EXPECT_EQ(tree->SizeLeafs(), 5);
  EXPECT_EQ(tree->GetRight()->SizeLeafs(), 3);
  EXPECT_EQ(tree->Height(), 4.0F);
  EXPECT_EQ(tree->Items(), nullptr);
  EXPECT_EQ(tree->SizeItems(), 0);
  EXPECT_EQ(Text(*tree), "((1 2):1 (3 (4 5):2):3):4");
}

TEST(DendroGramNode, TheStemStandsHalfwayBetweenTheStemsOfTheChildren) {
  const Tree two = Merge(1, Leaf({1}), Leaf({2}));
  EXPECT_EQ(two->GetXOffset(), 0.5F);  // a = 0.25, b = 0.75
  const Tree three = Merge(2, Leaf({1}), Merge(1, Leaf({2}), Leaf({3})));
  // a = 1/6 and b = (2 * 0.5 + 1) / 3 are rounded to float each, then their mean is.
  const double a = static_cast<float>(1.0 / 3 * 0.5), b = static_cast<float>(2.0 / 3);
  EXPECT_EQ(three->GetXOffset(), static_cast<float>((a + b) * 0.5));
  EXPECT_FLOAT_EQ(three->GetXOffset(), 5.0F / 12);
}

TEST(DendroGramNode, GetLeafsAppendsTheItemsFromLeftToRight) {
  const Tree tree = Merge(1, Leaf({5, 3}), Merge(0.5F, Leaf({4}), Leaf({})));
  std::list<int> items = {0};
  tree->GetLeafs(items);
  EXPECT_THAT(items, ElementsAre(0, 3, 5, 4));
}

TEST(DendroGramNode, ACopyIsEqualAndHasItsOwnNodesAndModels) {
  const Tree tree = FiveLeafs();
  tree->SetModel(7);
  const Tree copy(new DendroGramNode(*tree)), part(new DendroGramNode(*tree->GetRight()));
  EXPECT_TRUE(*copy == *tree);
  EXPECT_TRUE(HasSoundLinks(*copy));
  EXPECT_EQ(copy->GetModel(), 7);
  EXPECT_EQ(part->GetParent(), nullptr);
  EXPECT_TRUE(*part == *tree->GetRight());
  for (const DendroGramNode* const node : Nodes(*copy)) EXPECT_FALSE(tree->IsSubNode(node));
}

TEST(DendroGramNode, ACopyThatFindsNoMemoryLeavesNothingBehind) {
  const Tree tree = FiveLeafs();
  bool failed = true;
  for (int which = 1; failed; ++which) {
    const PeakBytesDuring meter;
    {
      const FailAllocation fail(which);
      try {
        const Tree copy(new DendroGramNode(*tree));
      } catch (const std::bad_alloc&) {
      }
      failed = fail.HasFailed();
    }
    EXPECT_EQ(meter.GetLiveBytes(), 0) << "allocation " << which;
  }
}

TEST(DendroGramNode, AssignmentReplacesTheSubtreeAndKeepsItsPlace) {
  const Tree tree = FiveLeafs(), other = Merge(0.5F, Leaf({8}), Leaf({9}));
  DendroGramNode& left = const_cast<DendroGramNode&>(*tree->GetLeft());
  left = *other;
  EXPECT_EQ(Text(*tree), "((8 9):0.5 (3 (4 5):2):3):4");
  EXPECT_TRUE(HasSoundLinks(*tree));
  EXPECT_TRUE(HasSoundLinks(*other));
  *tree = *tree->GetRight();  // a part of itself
  EXPECT_EQ(Text(*tree), "(3 (4 5):2):3");
  EXPECT_EQ(tree->GetParent(), nullptr);
  DendroGramNode& same = *tree;
  *tree = same;
  EXPECT_EQ(Text(*tree), "(3 (4 5):2):3");
  EXPECT_TRUE(HasSoundLinks(*tree));
}

TEST(DendroGramNode, SwapExchangesWholeTrees) {
  const Tree a = FiveLeafs(), b = Leaf({9});
  a->SetModel(1);
  a->swap(*b);
  EXPECT_EQ(Text(*a), "9");
  EXPECT_EQ(Text(*b), "((1 2):1 (3 (4 5):2):3):4");
  EXPECT_EQ(b->GetModel(), 1);
  EXPECT_TRUE(HasSoundLinks(*b));
  b->swap(*b);
  EXPECT_EQ(b->SizeLeafs(), 5);
}

TEST(DendroGramNode, SwapExchangesParentsHeightsCountsAndStemsToo) {
  const Tree tree = Merge(4, Leaf({1}), Merge(3, Leaf({2}), Merge(2, Leaf({3}), Leaf({4})))), other = Leaf({9});
  DendroGramNode& right = const_cast<DendroGramNode&>(*tree->GetRight());
  const float stem = right.GetXOffset();
  right.swap(*other);
  EXPECT_EQ(other->GetParent(), tree.get());
  EXPECT_EQ(right.GetParent(), nullptr);
  EXPECT_EQ(other->Height(), 3.0F);
  EXPECT_EQ(other->SizeLeafs(), 3);
  EXPECT_EQ(other->GetXOffset(), stem);
  EXPECT_EQ(right.GetXOffset(), 0.5F);
  EXPECT_EQ(Text(*tree), "(1 9):4") << "the node above still points at the address";
  right.swap(*other);
  EXPECT_TRUE(HasSoundLinks(*tree));
  EXPECT_EQ(Text(*tree), "(1 (2 (3 4):2):3):4");
}

TEST(DendroGramNode, EqualityLooksAtTheStemsOfLeafsToo) {
  const Tree leaf = Leaf({1}), read(new DendroGramNode);
  std::string bytes = StreamOf(*leaf);
  const float half = 0.5F, third = 1.0F / 3;
  const std::size_t at = bytes.find(std::string(reinterpret_cast<const char*>(&half), sizeof half));
  ASSERT_NE(at, std::string::npos);
  bytes.replace(at, sizeof third, reinterpret_cast<const char*>(&third), sizeof third);
  std::istringstream stream(bytes);
  ASSERT_TRUE(stream >> *read);
  EXPECT_EQ(read->GetXOffset(), third);
  EXPECT_TRUE(*leaf != *read);
}

TEST(DendroGramNode, DestroyOfNothingDoesNothing) { DendroGramNode::Destroy(nullptr); }

TEST(DendroGramNode, EqualityLooksAtShapeHeightsAndItemsButNotAtModelsOrParents) {
  const Tree tree = FiveLeafs(), twin = FiveLeafs();
  twin->SetModel(3);
  EXPECT_TRUE(*tree == *tree);
  EXPECT_TRUE(*tree == *twin);
  EXPECT_FALSE(*tree != *twin);
  const Tree pair = Merge(1, Leaf({1}), Leaf({2}));
  EXPECT_TRUE(*pair == *tree->GetLeft());  // the second one has a parent
  twin->MirrorImage();
  EXPECT_TRUE(*tree != *twin);
  EXPECT_TRUE(*pair != *Merge(1.5F, Leaf({1}), Leaf({2})));
  EXPECT_TRUE(*pair != *Merge(1, Leaf({1}), Leaf({3})));
  EXPECT_TRUE(*pair != *Merge(1, Leaf({1}), Leaf({2, 3})));
  EXPECT_TRUE(*pair != *tree);
  EXPECT_TRUE(*Leaf({1}) != *Leaf({2}));
  EXPECT_TRUE(*Chain(5, true) != *Chain(5, false));
}

TEST(DendroGramNode, NormaliseDividesByItsOwnHeight) {
  const Tree tree = FiveLeafs();
  tree->Normalise();
  EXPECT_EQ(Text(*tree), "((1 2):0.25 (3 (4 5):0.5):0.75):1");
  const_cast<DendroGramNode*>(tree->GetRight())->Normalise();
  EXPECT_EQ(tree->Height(), 1.0F);
  EXPECT_EQ(tree->GetRight()->Height(), 1.0F);
  EXPECT_EQ(tree->GetRight()->GetRight()->Height(), static_cast<float>(0.5 / 0.75));
  const Tree leaf = Leaf({1});
  leaf->Normalise();
  EXPECT_TRUE(*leaf == *Leaf({1}));
}

TEST(DendroGramNode, ANodeIsItsOwnSubNodeAndAHigherOneIsNone) {
  const Tree tree = FiveLeafs();
  for (const DendroGramNode* const node : Nodes(*tree)) EXPECT_TRUE(tree->IsSubNode(node));
  EXPECT_FALSE(tree->GetLeft()->IsSubNode(tree.get()));
  EXPECT_FALSE(tree->GetRight()->IsSubNode(tree->GetLeft()));
  const Tree other = Leaf({1});
  EXPECT_FALSE(tree->IsSubNode(other.get()));
  EXPECT_TRUE(other->IsSubNode(other.get()));
  const Tree falling = Merge(1, Merge(2, Leaf({1}), Leaf({2})), Leaf({3}));
  EXPECT_FALSE(falling->IsSubNode(falling->GetLeft()));  // below, but higher
  const Tree negative = Merge(-0.3F, Leaf({1}), Leaf({2}));
  EXPECT_FALSE(negative->IsSubNode(negative->GetLeft()));  // a leaf has the height 0
}

TEST(DendroGramNode, SplitTurnsALeafOfSeveralItemsIntoTwo) {
  const Tree tree = Merge(2, Leaf({1, 2, 3, 4}), Leaf({5}));
  DendroGramNode& leaf = const_cast<DendroGramNode&>(*tree->GetLeft());
  leaf.Split({4, 2}, 1.5F);
  EXPECT_EQ(Text(*tree), "((2+4 1+3):1.5 5):2");
  EXPECT_TRUE(HasSoundLinks(*tree));
  EXPECT_EQ(leaf.SizeLeafs(), 2);
  EXPECT_EQ(leaf.GetXOffset(), 0.5F);
  EXPECT_EQ(tree->SizeLeafs(), 2);  // the counts above stay
  // The root's stem is set from its own count of 2: a = 2 / 2 * 0.5, b = (1 * 0.5 + 2) / 2.
  EXPECT_EQ(tree->GetXOffset(), 0.875F);
}

TEST(DendroGramNode, SplitRefusesAndChangesNothing) {
  struct Row {
    const char* what;
    std::list<int> items;
  };
  const Row rows[] = {{"no items", {}},
                      {"an item that is not there", {1, 9}},
                      {"an item twice", {1, 1}},
                      {"no item would remain", {1, 2, 3}},
                      {"more items than there are", {1, 2, 3, 4}}};
  const auto message = [](DendroGramNode& node, const std::list<int>& items) -> CString {
    try {
      node.Split(items, 1);
    } catch (const NCError& error) {
      return error.GetMessage();
    }
    return "nothing thrown";
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    const Tree leaf = Leaf({1, 2, 3});
    EXPECT_EQ(message(*leaf, row.items), "Internal error in DendroGramNode::Split");
    EXPECT_EQ(Text(*leaf), "1+2+3");
  }
  const Tree tree = FiveLeafs();
  EXPECT_EQ(message(*tree, {1}), "Internal error in DendroGramNode::Split");
  EXPECT_TRUE(*tree == *FiveLeafs());
}

}  // namespace
