#include "kalmia/cluster/DendroGramNodeLister.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "cluster/Trees.h"

namespace {

using DendroGram::DendroGramNodeLister;

/// One line for each row: the borders of its cells.
std::string Borders(const DendroGramNodeLister& lister) {
  std::string text;
  for (int row = 1; row <= lister.SizeRows(); ++row) {
    if (row > 1) text += ' ';
    for (int column = 1; column <= lister.SizeCols(); ++column)
      text += std::to_string(lister.GetCellBorders(row, column));
  }
  return text;
}

TEST(DendroGramNodeLister, OfALeafHasNoColumns) {
  const Tree leaf = Leaf({7});
  const DendroGramNodeLister lister(*leaf);
  EXPECT_EQ(lister.SizeRows(), 1);
  EXPECT_EQ(lister.SizeCols(), 0);
  EXPECT_EQ(lister.GetRowID(1), 7);
  EXPECT_TRUE(lister.IsBreak(1));
  EXPECT_FALSE(lister.IsBreak(0));
}

TEST(DendroGramNodeLister, OfTwoLeafsHasTheMergeOnTheSecondRow) {
  const Tree tree = Merge(2.5F, Leaf({3}), Leaf({1}));
  const DendroGramNodeLister lister(*tree);
  EXPECT_EQ(lister.SizeRows(), 2);
  EXPECT_EQ(lister.SizeCols(), 1);
  EXPECT_EQ(Borders(lister), "0 3");  // the stem is on row ceil(1.5), where the vertical line ends too
  EXPECT_EQ(lister.GetCellValue(2, 1), 2.5F);
  EXPECT_EQ(lister.GetCellValue(1, 1), -99.0F);
  EXPECT_EQ(lister.GetRowID(1), 3);
  EXPECT_EQ(lister.GetRowID(2), 1);
}

TEST(DendroGramNodeLister, BringsTheShallowerChildOver) {
  // Columns: (4 5) 1, with 3 it is 2, (1 2) 1, the root 3. Stems: 1 on row 1, 2 on 2, so (1 2) on 2; (4 5) on 5, with
  // 3 on ceil((3 + 5) / 2) = 4; the root on 3.
  const Tree tree = FiveLeafs();
  const DendroGramNodeLister lister(*tree);
  EXPECT_EQ(lister.SizeCols(), 3);
  EXPECT_EQ(Borders(lister), "000 310 103 032 320");
  EXPECT_EQ(lister.GetCellValue(2, 1), 1.0F);
  EXPECT_EQ(lister.GetCellValue(5, 1), 2.0F);
  EXPECT_EQ(lister.GetCellValue(4, 2), 3.0F);
  EXPECT_EQ(lister.GetCellValue(3, 3), 4.0F);
  for (int row = 1; row <= 5; ++row) EXPECT_TRUE(lister.IsBreak(row));
}

TEST(DendroGramNodeLister, GivesALeafARowForEachItem) {
  const Tree tree = Merge(1, Leaf({2, 4, 9}), Leaf({1, 3}));
  const DendroGramNodeLister lister(*tree);
  EXPECT_EQ(lister.SizeRows(), 5);
  const int ids[] = {2, 4, 9, 1, 3};
  for (int row = 1; row <= 5; ++row) {
    EXPECT_EQ(lister.GetRowID(row), ids[row - 1]);
    EXPECT_EQ(lister.IsBreak(row), row == 3 || row == 5);
  }
  // Stems on rows ceil(3 / 2) = 2 and ceil((6 + 2) / 2) = 4; the merge on 3.
  EXPECT_EQ(Borders(lister), "0 0 3 2 0");
}

TEST(DendroGramNodeLister, HasNothingOutsideItsGrid) {
  const Tree tree = FiveLeafs();
  const DendroGramNodeLister lister(*tree);
  for (const int outside : {-1, 0, 6, 1000}) {
    EXPECT_EQ(lister.GetCellBorders(outside, 1), 0);
    EXPECT_EQ(lister.GetCellBorders(1, outside), 0);
    EXPECT_EQ(lister.GetCellValue(outside, 1), -99.0F);
  }
}

TEST(DendroGramNodeLister, IsCopiedAndOutlivesTheTree) {
  Tree tree = FiveLeafs();
  const Tree leaf = Leaf({1});
  const DendroGramNodeLister lister(*tree), copy(lister);
  DendroGramNodeLister assigned(*leaf);
  assigned = lister;
  tree.reset();
  EXPECT_EQ(Borders(copy), Borders(lister));
  EXPECT_EQ(Borders(assigned), Borders(lister));
  EXPECT_EQ(assigned.GetRowID(5), 5);
}

/// The grid cell by cell, as plainly as it can be said.
class PlainGrid {
 public:
  explicit PlainGrid(const DendroGramNode& root) {
    int centre = 0;
    columns = List(root, centre);
  }
  int Borders(int row, int column) const {
    const auto cell = cells_.find({row, column});
    return cell == cells_.end() ? 0 : cell->second.second;
  }
  float Value(int row, int column) const {
    const auto cell = cells_.find({row, column});
    return cell == cells_.end() ? -99.0F : cell->second.first;
  }
  int rows = 0, columns = 0;

 private:
  std::pair<float, int>& At(int row, int column) {
    return cells_.emplace(std::make_pair(row, column), std::make_pair(-99.0F, 0)).first->second;
  }
  int List(const DendroGramNode& node, int& centre) {
    if (node.IsLeaf()) {
      centre = static_cast<int>(std::ceil((2 * rows + node.SizeItems()) * 0.5));
      rows += node.SizeItems();
      return 0;
    }
    const int c1 = List(*node.GetLeft(), centre), r1 = centre;
    const int c2 = List(*node.GetRight(), centre), r2 = centre;
    const int column = std::max(c1, c2) + 1;
    for (int c = c1 + 1; c < column; ++c) At(r1, c).second |= 1;
    for (int c = c2 + 1; c < column; ++c) At(r2, c).second |= 1;
    for (int r = r1 + 1; r <= r2; ++r) At(r, column).second |= 2;
    centre = static_cast<int>(std::ceil((r2 + r1) * 0.5));
    At(centre, column) = {node.Height(), At(centre, column).second | 1};
    return column;
  }

  std::map<std::pair<int, int>, std::pair<float, int>> cells_;
};

/// A random tree whose leaves have up to three items, or none: their stems then share rows.
Tree RandomTreeOfSets(int leafs, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<Tree> trees;
  for (int k = 0, item = 0; k < leafs; ++k) {
    std::vector<int> items(random() % 4);
    for (int& each : items) each = ++item;
    trees.emplace_back(new DendroGramNode(items.cbegin(), items.cend()));
  }
  for (float height = 1; trees.size() > 1; ++height) {
    const std::size_t at = random() % (trees.size() - 1);
    trees[at] = Merge(height, std::move(trees[at]), std::move(trees[at + 1]));
    trees.erase(trees.begin() + static_cast<std::ptrdiff_t>(at) + 1);
  }
  return std::move(trees.front());
}

TEST(DendroGramNodeLister, HasTheCellsOfAPlainGrid) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    const Tree tree = RandomTreeOfSets(1 + static_cast<int>(seed), seed);
    const PlainGrid plain(*tree);
    const DendroGramNodeLister lister(*tree);
    ASSERT_EQ(lister.SizeRows(), plain.rows);
    ASSERT_EQ(lister.SizeCols(), plain.columns);
    for (int row = -1; row <= plain.rows + 1; ++row)
      for (int column = -1; column <= plain.columns + 1; ++column) {
        SCOPED_TRACE(std::to_string(seed) + ": " + std::to_string(row) + ", " + std::to_string(column));
        EXPECT_EQ(lister.GetCellBorders(row, column), plain.Borders(row, column));
        EXPECT_EQ(lister.GetCellValue(row, column), plain.Value(row, column));
      }
  }
}

TEST(DendroGramNodeLister, ListsAChainOf100000LeafsWithoutAStack) {
  const Tree left = Chain(100000, true), right = Chain(100000, false);
  const DendroGramNodeLister ofLeft(*left), ofRight(*right);
  for (const DendroGramNodeLister* const lister : {&ofLeft, &ofRight}) {
    EXPECT_EQ(lister->SizeRows(), 100000);
    EXPECT_EQ(lister->SizeCols(), 99999);
  }
  EXPECT_EQ(ofLeft.GetCellBorders(100000, 1), 1) << "the last leaf comes over";
  EXPECT_EQ(ofRight.GetCellBorders(1, 99998), 1) << "the first one does";
}

}  // namespace
