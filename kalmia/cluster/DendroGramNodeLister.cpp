#include "kalmia/cluster/DendroGramNodeLister.h"

#include <algorithm>

namespace DendroGram {

namespace {

constexpr int kHorizontal = 1;
constexpr int kVertical = 2;

int HalfRoundedUp(int sum) { return sum / 2 + sum % 2; }

}  // namespace

DendroGramNodeLister::DendroGramNodeLister(const DendroGramNode& root) {
  int centre = 0;
  columns_ = ListNode(root, centre);
}

/// The cells of a row from column `first` to `last`.
void DendroGramNodeLister::DrawRun(int row, int first, int last) {
  for (int column = first; column <= last; ++column) cells_[{row, column}].borders |= kHorizontal;
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
  DrawRun(leftRow, leftColumn + 1, column - 1);  // the shallower child comes over to this column
  DrawRun(rightRow, rightColumn + 1, column - 1);
  for (int row = leftRow + 1; row <= rightRow; ++row) cells_[{row, column}].borders |= kVertical;
  centre = HalfRoundedUp(leftRow + rightRow);
  Cell& merge = cells_[{centre, column}];
  merge.borders |= kHorizontal;
  merge.value = node.Height();
  return column;
}

int DendroGramNodeLister::GetCellBorders(int row, int column) const {
  const auto found = cells_.find({row, column});
  return found == cells_.end() ? Cell().borders : found->second.borders;
}

float DendroGramNodeLister::GetCellValue(int row, int column) const {
  const auto found = cells_.find({row, column});
  return found == cells_.end() ? Cell().value : found->second.value;
}

}  // namespace DendroGram
