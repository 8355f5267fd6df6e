#pragma once

#include <vector>

#include "kalmia/cluster/DendroGramNode.h"

namespace kalmia {

/// Visits a subtree from the top down, left before right, without recursion. A node is handed out when its successor is
/// known already, so whoever gets it may swap its children or delete it.
class TreeWalk {
 public:
  explicit TreeWalk(const DendroGram::DendroGramNode* start) : next_(start) {}

  /// The next node, null at the end.
  const DendroGram::DendroGramNode* Next() {
    const DendroGram::DendroGramNode* const node = next_;
    if (!node) return nullptr;
    if (!node->IsLeaf()) {
      pending_.push_back(node->GetRight());
      next_ = node->GetLeft();
    } else if (pending_.empty()) {
      next_ = nullptr;
    } else {
      next_ = pending_.back();
      pending_.pop_back();
    }
    return node;
  }

 private:
  const DendroGram::DendroGramNode* next_;
  std::vector<const DendroGram::DendroGramNode*> pending_;  ///< right children; grows as needed, counts may be wrong
};

/// Computes something for every node of a subtree from the bottom up, without recursion: leaf(node), or inner(node,
/// left's value, right's value). Returns the root's value. A node's children may be swapped while its value is made.
template <class Value, class Leaf, class Inner>
Value FoldTree(const DendroGram::DendroGramNode& root, const Leaf& leaf, const Inner& inner) {
  std::vector<const DendroGram::DendroGramNode*> nodes;
  TreeWalk walk(&root);
  while (const DendroGram::DendroGramNode* const node = walk.Next()) nodes.push_back(node);
  std::vector<Value> done;  // of finished subtrees, the leftmost one last
  for (auto at = nodes.rbegin(); at != nodes.rend(); ++at) {
    if ((*at)->IsLeaf()) {
      done.push_back(leaf(*at));
      continue;
    }
    const Value left = done.back();
    done.pop_back();
    done.back() = inner(*at, left, done.back());
  }
  return done.back();
}

}  // namespace kalmia
