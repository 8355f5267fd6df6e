#include <algorithm>
#include <limits>
#include <memory>
#include <queue>
#include <unordered_map>
#include <utility>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/cluster/internal/TreeWalk.h"

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

/// The entries of a list by the parent of their nodes, seen from an entry that moves from the first to the last.
class Siblings {
 public:
  explicit Siblings(NodeList& nodes) {
    for (auto at = nodes.begin(); at != nodes.end(); ++at) GroupOf(*at).later.push(at);
  }

  /// Call Enter on reaching an entry and Leave on passing it.
  void Enter(NodeList::iterator at) { GroupOf(*at).later.pop(); }
  void Leave(NodeList::iterator at) { GroupOf(*at).earlier.push(at); }

  /// The next entry behind the present one, or one in front of it, whose node has the parent of `node` or is `node`;
  /// it is forgotten. False if there is none. Two entries in front never belong together: the first took the other.
  bool TakeLater(const DendroGramNode* node, NodeList::iterator& found) { return Take(GroupOf(node).later, found); }
  bool TakeEarlier(const DendroGramNode* node, NodeList::iterator& found) { return Take(GroupOf(node).earlier, found); }

 private:
  using Entries = std::queue<NodeList::iterator, std::list<NodeList::iterator>>;
  struct Group {
    Entries earlier, later;
  };

  Group& GroupOf(const DendroGramNode* node) {
    return node->GetParent() ? ofParents_[node->GetParent()] : ofRoots_[node];  // two roots have no parent in common
  }
  static bool Take(Entries& entries, NodeList::iterator& found) {
    if (entries.empty()) return false;
    found = entries.front();
    entries.pop();
    return true;
  }

  std::unordered_map<const DendroGramNode*, Group> ofParents_, ofRoots_;
};

/// The entry `found` goes, and the parent takes the place of `at`, unless both are one node.
void Merge(NodeList& nodes, NodeList::iterator at, NodeList::iterator found) {
  if (*found != *at) *at = (*at)->GetParent();
  nodes.erase(found);
}

}  // namespace

void DendroGramNode::ReLink(std::list<const DendroGramNode*>& nodes) {
  Siblings siblings(nodes);
  NodeList::iterator found;
  for (auto at = nodes.begin(); at != nodes.end(); ++at) {
    siblings.Enter(at);
    while (siblings.TakeLater(*at, found)) {
      Merge(nodes, at, found);
      while (siblings.TakeEarlier(*at, found)) Merge(nodes, at, found);
    }
    siblings.Leave(at);
  }
}

}  // namespace DendroGram
