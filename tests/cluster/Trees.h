#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/support/VexStream.h"

// Trees for tests.

using DendroGram::DendroGramNode;

struct DestroyTree {
  void operator()(DendroGramNode* root) const { DendroGramNode::Destroy(root); }
};
using Tree = std::unique_ptr<DendroGramNode, DestroyTree>;

Tree Leaf(std::initializer_list<int> items);
Tree Merge(float height, Tree left, Tree right);

/// ((1 2) (3 (4 5))) with the heights 1, 2, 3 (of 3 with the pair) and 4.
Tree FiveLeafs();

/// A chain: leaves 1 and 2 merge at height 1, each further leaf at the next whole height. `deepOnTheLeft` tells the
/// side of the tree so far.
Tree Chain(int leafs, bool deepOnTheLeft);

/// A random shape over the leaves 1 to `leafs`, with heights that rise towards the root and some equal ones.
Tree RandomTree(int leafs, unsigned seed);

/// "(1 (2 3):0.5):1", inner nodes with their heights, leaves with their items ("2+3" for several).
std::string Text(const DendroGramNode& tree);

/// All nodes from the top down, left before right, found by following the links.
std::vector<const DendroGramNode*> Nodes(const DendroGramNode& root);

/// Whether each inner node has two children that know it, and its links are those of its kind.
bool HasSoundLinks(const DendroGramNode& root);

/// A tree as an object of its own with an ordinary destructor, for attacks on its reader.
class HeldTree : public VexStreamBase {
 public:
  HeldTree() : tree_(new DendroGramNode) {}
  const DendroGramNode& Root() const { return *tree_; }

 protected:
  bool VexStreamableStartWrite(std::ostream& stream) override { return static_cast<bool>(stream << *tree_); }
  bool VexStreamableStartRead(std::istream& stream) override { return static_cast<bool>(stream >> *tree_); }

 private:
  Tree tree_;
};
