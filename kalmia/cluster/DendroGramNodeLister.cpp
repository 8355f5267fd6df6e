#include "kalmia/cluster/DendroGramNodeLister.h"

#include <algorithm>
#include <iterator>

namespace DendroGram {

namespace {

constexpr int kHorizontal = 1;
constexpr int kVertical = 2;
constexpr float kNoValue = -99.0F;

int HalfRoundedUp(int sum) { return sum / 2 + sum % 2; }

}  // namespace

DendroGramNodeLister::DendroGramNodeLister(const DendroGramNode& root) {
  int centre = 0;
  columns_ = ListNode(root, centre);
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

/// Returns the node's column; `centre` becomes the row of its stem.
int DendroGramNodeLister::ListNode(const DendroGramNode& node, int& centre) {
  if (node.IsLeaf()) {
    rowIds_.insert(rowIds_.end(), node.Items()->begin(), node.Items()->end());
    centre = HalfRoundedUp(2 * rows_ + node.SizeItems());
    rows_ += node.SizeItems();
    breaks_.insert(rows_);
    return 0;
  }
  const int leftColumn = ListNode(*node.GetLeft(), centre), leftRow = centre;
  const int rightColumn = ListNode(*node.GetRight(), centre), rightRow = centre;
  const int column = std::max(leftColumn, rightColumn) + 1;
  horizontal_.Add(leftRow, leftColumn + 1, column - 1);  // the shallower child comes over to this column
  horizontal_.Add(rightRow, rightColumn + 1, column - 1);
  vertical_.Add(column, leftRow + 1, rightRow);
  centre = HalfRoundedUp(leftRow + rightRow);
  horizontal_.Add(centre, column, column);
  merges_[{centre, column}] = node.Height();
  return column;
}

int DendroGramNodeLister::GetCellBorders(int row, int column) const {
  return (horizontal_.Has(row, column) ? kHorizontal : 0) + (vertical_.Has(column, row) ? kVertical : 0);
}

float DendroGramNodeLister::GetCellValue(int row, int column) const {
  const auto found = merges_.find({row, column});
  return found == merges_.end() ? kNoValue : found->second;
}

}  // namespace DendroGram
