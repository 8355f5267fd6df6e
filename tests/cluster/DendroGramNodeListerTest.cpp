#include "kalmia/cluster/DendroGramNodeLister.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

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

TEST(DendroGramNodeLister, ListsAChainOf2000Leafs) {
  const Tree tree = Chain(2000, true);
  const DendroGramNodeLister lister(*tree);
  EXPECT_EQ(lister.SizeRows(), 2000);
  EXPECT_EQ(lister.SizeCols(), 1999);
  EXPECT_EQ(lister.GetCellBorders(2000, 1), 1) << "the last leaf comes over";
}

}  // namespace
