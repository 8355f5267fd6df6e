#include <algorithm>
#include <iterator>
#include <limits>
#include <memory>
#include <utility>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/cluster/TreeWalk.h"

// The order of children, and lists of nodes.

using kalmia::FoldTree;
using kalmia::TreeWalk;

namespace DendroGram {

namespace {

constexpr int kNoItem = std::numeric_limits<int>::max();

/// What is known of a subtree once its children are in order.
struct Ordered {
  int smallestItem = kNoItem;
  bool changed = false;  ///< some children have changed sides, so stems have moved
};

}  // namespace

/// Swaps the children of each node where mustSwap(node, smallest item of left, of right). Stems are set anew once for
/// each node above a swap, after those below it: the same numbers as after an update of all the ancestors at each swap.
template <class MustSwap>
void DendroGramNode::SwapWhere(const MustSwap& mustSwap) const {
  const auto order = [&mustSwap](const DendroGramNode* node, const Ordered& left, const Ordered& right) {
    const bool swapped = mustSwap(*node, left.smallestItem, right.smallestItem);
    if (swapped) std::swap(node->left_, node->right_);
    const bool changed = swapped || left.changed || right.changed;
    if (changed) node->SetXOffset();
    return Ordered{std::min(left.smallestItem, right.smallestItem), changed};
  };
  const auto leaf = [](const DendroGramNode* node) {
    const auto smallest = std::min_element(node->items_.begin(), node->items_.end());
    return Ordered{smallest == node->items_.end() ? kNoItem : *smallest, false};
  };
  if (FoldTree<Ordered>(*this, leaf, order).changed) SetXOffsetUpwards();
}

void DendroGramNode::SortBySize() const {
  SwapWhere([](const DendroGramNode& node, int, int) { return node.left_->SizeLeafs() > node.right_->SizeLeafs(); });
}

void DendroGramNode::SortByHeight() const {
  SwapWhere([](const DendroGramNode& node, int, int) { return node.right_->Height() < node.left_->Height(); });
}

void DendroGramNode::SortByIndex() const {
  SwapWhere([](const DendroGramNode&, int left, int right) {
    return left != kNoItem && right != kNoItem && left > right;
  });
}

void DendroGramNode::MirrorImage() const {
  SwapWhere([](const DendroGramNode&, int, int) { return true; });
}

void DendroGramNode::GetNodes(const std::vector<int>& ids, std::list<const DendroGramNode*>& result) const {
  const auto isIn = [&ids](int item) { return std::binary_search(ids.begin(), ids.end(), item); };
  TreeWalk walk(this);
  while (const DendroGramNode* const node = walk.Next())
    if (node->leaf_ && std::all_of(node->items_.begin(), node->items_.end(), isIn)) result.push_back(node);
  ReLink(result);
}

std::list<const DendroGramNode*>* DendroGramNode::GetNodes(const std::vector<int>& ids) const {
  auto result = std::make_unique<std::list<const DendroGramNode*>>();
  GetNodes(ids, *result);
  return result.release();
}

namespace {

using NodeList = std::list<const DendroGramNode*>;

/// Looks from `first` to `last` for a node under the parent of the one at `at`; if there is one, its entry goes, and
/// the parent takes the place of `at`, unless both entries are one node. Two roots have no parent in common.
bool MergeWithSibling(NodeList& nodes, NodeList::iterator at, NodeList::iterator first, NodeList::iterator last) {
  const DendroGramNode* const parent = (*at)->GetParent();
  const auto found = std::find_if(first, last, [&](const DendroGramNode* node) {
    return node == *at || (parent && node->GetParent() == parent);
  });
  if (found == last) return false;
  if (*found != *at) *at = parent;
  nodes.erase(found);
  return true;
}

}  // namespace

void DendroGramNode::ReLink(std::list<const DendroGramNode*>& nodes) {
  for (auto at = nodes.begin(); at != nodes.end(); ++at)
    while (MergeWithSibling(nodes, at, std::next(at), nodes.end()))
      while (MergeWithSibling(nodes, at, nodes.begin(), at)) {
      }
}

}  // namespace DendroGram
