#include "cluster/Trees.h"

#include <random>
#include <sstream>
#include <utility>

Tree Leaf(std::initializer_list<int> items) {
  const std::vector<int> range(items);
  return Tree(new DendroGramNode(range.begin(), range.end()));
}

Tree Merge(float height, Tree left, Tree right) {
  return Tree(new DendroGramNode(height, left.release(), right.release()));
}

Tree FiveLeafs() {
  return Merge(4, Merge(1, Leaf({1}), Leaf({2})), Merge(3, Leaf({3}), Merge(2, Leaf({4}), Leaf({5}))));
}

Tree Chain(int leafs, bool deepOnTheLeft) {
  Tree tree = Leaf({1});
  for (int i = 2; i <= leafs; ++i) {
    Tree leaf = Leaf({i});
    if (!deepOnTheLeft) tree.swap(leaf);
    tree = Merge(static_cast<float>(i - 1), std::move(tree), std::move(leaf));
  }
  return tree;
}

Tree RandomTree(int leafs, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Tree> forest;
  for (int i = 1; i <= leafs; ++i) forest.push_back(Leaf({i}));
  float height = 0;
  while (forest.size() > 1) {
    height += 0.25F * static_cast<float>(random() % 3);
    std::swap(forest[random() % forest.size()], forest.back());
    Tree left = std::move(forest.back());
    forest.pop_back();
    Tree& place = forest[random() % forest.size()];
    place = Merge(height, std::move(left), std::move(place));
  }
  return std::move(forest.front());
}

std::string Text(const DendroGramNode& tree) {
  std::ostringstream text;
  if (!tree.IsLeaf()) {
    text << "(" << Text(*tree.GetLeft()) << " " << Text(*tree.GetRight()) << "):" << tree.Height();
  } else {
    for (std::size_t i = 0; i < tree.Items()->size(); ++i) text << (i > 0 ? "+" : "") << (*tree.Items())[i];
  }
  return text.str();
}

std::vector<const DendroGramNode*> Nodes(const DendroGramNode& root) {
  std::vector<const DendroGramNode*> nodes, pending = {&root};
  while (!pending.empty()) {
    nodes.push_back(pending.back());
    pending.pop_back();
    if (nodes.back()->IsLeaf()) continue;
    pending.push_back(nodes.back()->GetRight());
    pending.push_back(nodes.back()->GetLeft());
  }
  return nodes;
}

bool HasSoundLinks(const DendroGramNode& root) {
  for (const DendroGramNode* const node : Nodes(root)) {
    const DendroGramNode *left = node->GetLeft(), *right = node->GetRight();
    if (node->IsLeaf() ? left || right : !left || !right || left->GetParent() != node || right->GetParent() != node)
      return false;
  }
  return true;
}
