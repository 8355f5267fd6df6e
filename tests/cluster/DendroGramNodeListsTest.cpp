// Lists of nodes that cover selected leaves: GetNodes, and ReLink, which makes them as short as can be.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "cluster/Trees.h"

namespace {

using ::testing::ElementsAre;

using NodeList = std::list<const DendroGramNode*>;

TEST(DendroGramNodeLists, GetNodesCoversTheSelectedLeafsWithTheFewestNodes) {
  const Tree tree = FiveLeafs();
  const auto texts = [&tree](const std::vector<int>& ids) {
    const std::unique_ptr<NodeList> nodes(tree->GetNodes(ids));
    std::string all;
    for (const DendroGramNode* const node : *nodes) all += (all.empty() ? "" : ", ") + Text(*node);
    return all;
  };
  EXPECT_EQ(texts({1, 2, 3, 4, 5}), Text(*tree));
  EXPECT_EQ(texts({}), "");
  EXPECT_EQ(texts({1, 3}), "1, 3");
  EXPECT_EQ(texts({1, 2, 4}), "(1 2):1, 4");
  EXPECT_EQ(texts({2, 3, 4, 5}), "2, (3 (4 5):2):3");
  EXPECT_EQ(texts({-1, 0, 4, 5, 6}), "(4 5):2");
}

TEST(DendroGramNodeLists, GetNodesRelinksWithWhatIsInTheListAlready) {
  const Tree tree = FiveLeafs(), other = Leaf({9});
  NodeList nodes = {tree->GetRight()->GetLeft(), other.get()};  // 3, and a stranger
  tree->GetNodes({4, 5}, nodes);
  EXPECT_THAT(nodes, ElementsAre(other.get(), tree->GetRight()));
}

TEST(DendroGramNodeLists, GetNodesTakesALeafOnlyWithAllItsItemsAndOneWithoutAnyAlways) {
  const Tree tree = Merge(2, Leaf({1, 2}), Merge(1, Leaf({3}), Leaf({})));
  const std::unique_ptr<NodeList> half(tree->GetNodes({1})), all(tree->GetNodes({1, 2, 3}));
  ASSERT_EQ(half->size(), 1U);
  EXPECT_EQ(half->front()->SizeItems(), 0);
  EXPECT_THAT(*all, ElementsAre(tree.get()));
}

TEST(DendroGramNodeLists, ReLinkTurnsAnyOrderOfLeafsIntoTheSmallestList) {
  const Tree tree = FiveLeafs();
  std::vector<const DendroGramNode*> leafs;
  for (const DendroGramNode* const node : Nodes(*tree))
    if (node->IsLeaf()) leafs.push_back(node);
  std::sort(leafs.begin(), leafs.end());
  do {
    NodeList nodes(leafs.begin(), leafs.end());
    DendroGramNode::ReLink(nodes);
    EXPECT_THAT(nodes, ElementsAre(tree.get()));
  } while (std::next_permutation(leafs.begin(), leafs.end()));
}

TEST(DendroGramNodeLists, ReLinkPutsAParentInThePlaceOfTheEntryThatFoundItsSibling) {
  const Tree tree = FiveLeafs();
  const DendroGramNode *pair = tree->GetLeft(), *three = tree->GetRight()->GetLeft(),
                       *late = tree->GetRight()->GetRight();
  // 3 stays where it is until 4 meets 5; their parent then finds 3 in front of it, and takes the later place.
  NodeList nodes = {three, pair->GetLeft(), late->GetLeft(), late->GetRight()};
  DendroGramNode::ReLink(nodes);
  EXPECT_THAT(nodes, ElementsAre(pair->GetLeft(), tree->GetRight()));
  NodeList twice = {pair->GetLeft(), three, pair->GetLeft()};  // a node that stands twice is no sibling of itself
  DendroGramNode::ReLink(twice);
  EXPECT_THAT(twice, ElementsAre(pair->GetLeft(), three));
  const Tree other = Leaf({9});
  NodeList roots = {tree.get(), other.get(), tree.get()};
  DendroGramNode::ReLink(roots);
  EXPECT_THAT(roots, ElementsAre(tree.get(), other.get()));
}

/// ReLink, step by step: a search behind each entry, and after each find one in front of it until it finds nothing.
void ReLinkPlainly(NodeList& nodes) {
  const auto belong = [](const DendroGramNode* a, const DendroGramNode* b) {
    return a == b || (a->GetParent() && a->GetParent() == b->GetParent());
  };
  const auto merge = [&nodes](NodeList::iterator at, NodeList::iterator found) {
    if (*found != *at) *at = (*at)->GetParent();
    return nodes.erase(found);
  };
  for (auto at = nodes.begin(); at != nodes.end();) {
    const auto behind = std::find_if(std::next(at), nodes.end(), [&](auto* node) { return belong(node, *at); });
    if (behind == nodes.end()) {
      ++at;
      continue;
    }
    merge(at, behind);
    for (bool found = true; found;) {
      found = false;
      for (auto front = nodes.begin(); front != at;) {
        const bool together = belong(*front, *at);
        found = found || together;
        front = together ? merge(at, front) : std::next(front);
      }
    }
  }
}

TEST(DendroGramNodeLists, ReLinkGivesWhatItsStepsGiveForAnyNodesOfAnyTrees) {
  for (unsigned seed = 1; seed <= 300; ++seed) {
    const Tree one = RandomTree(1 + static_cast<int>(seed % 12), seed), other = RandomTree(3, seed + 1);
    std::vector<const DendroGramNode*> nodes = Nodes(*one);
    for (const DendroGramNode* const node : Nodes(*other)) nodes.push_back(node);
    std::mt19937 random(seed);
    NodeList list;
    for (std::size_t k = 0; k < 2 * nodes.size(); ++k) list.push_back(nodes[random() % nodes.size()]);
    NodeList expected(list);
    DendroGramNode::ReLink(list);
    ReLinkPlainly(expected);
    EXPECT_EQ(list, expected) << "seed " << seed;
  }
}

TEST(DendroGramNodeLists, GetNodesTakesTheTimeOfTheListNotOfItsSquare) {
  // Without the first of the two deepest leaves no two of a chain's leaves have one parent: a search behind each of
  // them would take 5e9 steps.
  const Tree tree = Chain(100000, true);
  std::vector<int> ids;
  for (int item = 1; item <= 100000; ++item) ids.push_back(item);
  const std::unique_ptr<NodeList> all(tree->GetNodes(ids));
  EXPECT_THAT(*all, ElementsAre(tree.get()));
  ids.erase(ids.begin());
  const std::unique_ptr<NodeList> rest(tree->GetNodes(ids));
  EXPECT_EQ(rest->size(), 99999U);
}

}  // namespace
