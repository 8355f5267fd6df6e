#include "kalmia/cluster/DendroGramNodeLister.h"

#include <algorithm>
#include <iterator>

#include "kalmia/cluster/internal/TreeWalk.h"
#include "kalmia/containers/Missing.h"

namespace DendroGram {

namespace {

constexpr int kHorizontal = 1;
constexpr int kVertical = 2;
constexpr float kNoValue = kalmia::kMissingCell<float>;

int HalfRoundedUp(int sum) { return sum / 2 + sum % 2; }

}  // namespace

/// The rows from the first leaf to the last, then the merges from the last one back: what is met first is furthest
/// right, and of two merges in one cell (of leaves without items) that one counts.
DendroGramNodeLister::DendroGramNodeLister(const DendroGramNode& root) {
  std::vector<Stem> leafs;
  kalmia::TreeWalk walk(&root);
  while (const DendroGramNode* const node = walk.Next())
    if (node->IsLeaf()) leafs.push_back(ListLeaf(*node));
  const auto leaf = [&leafs](const DendroGramNode*) {
    const Stem stem = leafs.back();
    leafs.pop_back();
    return stem;
  };
  const auto merge = [this](const DendroGramNode* node, const Stem& left, const Stem& right) {
    return ListMerge(*node, left, right);
  };
  columns_ = kalmia::FoldTree<Stem>(root, leaf, merge).column;
}

/// Runs that touch or overlap become one.
void DendroGramNodeLister::Runs::Add(int line, int first, int last) {
  if (first > last) return;
  auto at = lastOf_.upper_bound({line, first});
  if (at != lastOf_.begin()) {
    const auto before = std::prev(at);
    if (before->first.first == line && before->second >= first - 1) {
      first = before->first.second;
      at = before;
    }
  }
  while (at != lastOf_.end() && at->first.first == line && at->first.second <= last + 1) {
    last = std::max(last, at->second);
    at = lastOf_.erase(at);
  }
  lastOf_.emplace_hint(at, std::make_pair(line, first), last);
}

bool DendroGramNodeLister::Runs::Has(int line, int place) const {
  const auto behind = lastOf_.upper_bound({line, place});
  if (behind == lastOf_.begin()) return false;
  const auto run = std::prev(behind);
  return run->first.first == line && run->second >= place;
}

DendroGramNodeLister::Stem DendroGramNodeLister::ListLeaf(const DendroGramNode& leaf) {
  rowIds_.insert(rowIds_.end(), leaf.Items()->begin(), leaf.Items()->end());
  const int centre = HalfRoundedUp(2 * rows_ + leaf.SizeItems());
  rows_ += leaf.SizeItems();
  breaks_.insert(rows_);
  return {centre, 0};
}

DendroGramNodeLister::Stem DendroGramNodeLister::ListMerge(const DendroGramNode& node, const Stem& left,
                                                           const Stem& right) {
  const int column = std::max(left.column, right.column) + 1;
  horizontal_.Add(left.row, left.column + 1, column - 1);  // the shallower child comes over to this column
  horizontal_.Add(right.row, right.column + 1, column - 1);
  vertical_.Add(column, left.row + 1, right.row);
  const int centre = HalfRoundedUp(left.row + right.row);
  horizontal_.Add(centre, column, column);
  merges_.emplace(std::make_pair(centre, column), node.Height());
  return {centre, column};
}

int DendroGramNodeLister::GetCellBorders(int row, int column) const {
  return (horizontal_.Has(row, column) ? kHorizontal : 0) + (vertical_.Has(column, row) ? kVertical : 0);
}

float DendroGramNodeLister::GetCellValue(int row, int column) const {
  const auto found = merges_.find({row, column});
  return found == merges_.end() ? kNoValue : found->second;
}

}  // namespace DendroGram
