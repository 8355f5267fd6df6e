#include "kalmia/cluster/DendroGramDrawer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <list>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "cluster/Trees.h"

namespace {

using DendroGram::DendroGramDrawer;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// Writes down what is drawn.
class Notes : public DendroGram::DendroGramDrawOutput {
 public:
  void DrawLine(float x1, float y1, float x2, float y2, const DendroGramNode* node) override {
    std::ostringstream line;
    line << Text(*node) << ": " << x1 << "," << y1 << " " << x2 << "," << y2;
    lines.push_back(line.str());
  }
  void DrawLabel(const std::vector<int>* items, float x, float y) override {
    std::ostringstream label;
    label << items->at(0) << " at " << x << "," << y;
    labels.push_back(label.str());
  }
  bool GetLabelRect(const std::vector<int>* items, float x, float y, float* left, float* top, float* width,
                    float* height) override {
    asked.push_back(items->at(0));
    std::ostringstream label;
    label << items->at(0) << " at " << x << "," << y;
    askedAt.push_back(label.str());
    *left = x;
    *top = y + 1 + shift;
    *width = 3;
    *height = static_cast<float>(items->at(0));
    return items->at(0) != unlabelled && unlabelled != 0;
  }

  std::vector<std::string> lines, labels;
  std::vector<int> asked;
  std::vector<std::string> askedAt;
  float shift = 0;     ///< of all labels, downwards
  int unlabelled = 0;  ///< the item without a label; 0: nothing has one
};

std::vector<std::string> Texts(std::list<const DendroGramNode*>* nodes) {
  const std::unique_ptr<std::list<const DendroGramNode*>> owner(nodes);
  std::vector<std::string> texts;
  for (const DendroGramNode* const node : *owner) texts.push_back(Text(*node));
  return texts;
}

/// ((1 2):2 (3 4):1):4 over x from 0 to 8 and y from 0 (top) to 8: every number is exact.
class DrawnTree : public ::testing::Test {
 protected:
  Notes Drawn() const {
    Notes notes;
    drawer_.Draw(notes, 0, 8, 0, 8);
    return notes;
  }
  std::vector<std::string> Hit(float x, float y, float d, bool nearestOnly) const {
    return Texts(drawer_.HitTest(0, 8, 0, 8, x, y, d, d, nearestOnly));
  }

  const Tree tree_ = Merge(4, Merge(2, Leaf({1}), Leaf({2})), Merge(1, Leaf({3}), Leaf({4})));
  const DendroGramNode* left_ = tree_->GetLeft();
  const DendroGramNode* right_ = tree_->GetRight();
  DendroGramDrawer drawer_{*tree_};
};

TEST_F(DrawnTree, HasACrossbarForEachMergeAndAStemForEachChild) {
  const Notes notes = Drawn();
  EXPECT_THAT(notes.lines, ElementsAre("((1 2):2 (3 4):1):4: 2,0 6,0",               // the root, without a stem
                                       "(1 2):2: 1,4 3,4", "(1 2):2: 2,4 2,0",       //
                                       "1: 1,8 1,4", "2: 3,8 3,4",                   //
                                       "(3 4):1: 5,6 7,6", "(3 4):1: 6,6 6,0",       //
                                       "3: 5,8 5,6", "4: 7,8 7,6"));
  EXPECT_THAT(notes.labels, ElementsAre("1 at 1,8", "2 at 3,8", "3 at 5,8", "4 at 7,8"));
}

TEST_F(DrawnTree, SharesTheWidthByLeafs) {
  const Tree tree = Merge(2, Leaf({1}), Merge(1, Leaf({2}), Merge(0.5F, Leaf({3}), Leaf({4}))));
  Notes notes;
  DendroGramDrawer(*tree).Draw(notes, 0, 4, 0, 4);
  EXPECT_THAT(notes.labels, ElementsAre("1 at 0.5,4", "2 at 1.5,4", "3 at 2.5,4", "4 at 3.5,4"));
  // Stems of the pair at 3, of the three at (1.5 + 3) / 2 = 2.25.
  EXPECT_THAT(notes.lines, ::testing::Contains("(3 4):0.5: 3,3 3,2"));
  EXPECT_THAT(notes.lines, ::testing::Contains("(2 (3 4):0.5):1: 1.5,2 3,2"));
  EXPECT_THAT(notes.lines, ::testing::Contains("(2 (3 4):0.5):1: 2.25,2 2.25,0"));
}

TEST_F(DrawnTree, OfALeafIsOneLabel) {
  const Tree leaf = Leaf({7});
  Notes notes;
  DendroGramDrawer(*leaf).Draw(notes, 0, 8, 0, 6);
  EXPECT_THAT(notes.lines, IsEmpty());
  EXPECT_THAT(notes.labels, ElementsAre("7 at 4,6"));
}

TEST_F(DrawnTree, HasNoLabelsWhereTheyAreOff) {
  drawer_.DisplayLabels(false);
  const Notes notes = Drawn();
  EXPECT_THAT(notes.labels, IsEmpty());
  EXPECT_EQ(notes.lines.size(), 9U);
}

TEST_F(DrawnTree, KeepsTheSelectedSubtreesAtTheirPlacesWithTheirStems) {
  drawer_.AddDrawn(right_);
  EXPECT_THAT(Drawn().lines,
              ElementsAre("(3 4):1: 5,6 7,6", "(3 4):1: 6,6 6,0", "3: 5,8 5,6", "4: 7,8 7,6"));
  drawer_.AddDrawn(left_->GetRight());
  EXPECT_THAT(Drawn().labels, ElementsAre("2 at 3,8", "3 at 5,8", "4 at 7,8"));
  drawer_.ClearDrawn();
  EXPECT_EQ(Drawn().lines.size(), 9U);
}

TEST_F(DrawnTree, LeavesOutWholeSubtreesAndTheirRoomStays) {
  drawer_.AddExcluded(left_);
  const Notes notes = Drawn();
  EXPECT_THAT(notes.labels, ElementsAre("3 at 5,8", "4 at 7,8"));
  EXPECT_EQ(notes.lines.size(), 5U);
  drawer_.ClearExcluded();
  EXPECT_EQ(Drawn().lines.size(), 9U);
}

TEST_F(DrawnTree, DrawsAHigherNodeBelowAnExcludedOne) {
  const Tree tree = Merge(4, Leaf({1}), Merge(1, Merge(2, Leaf({2}), Leaf({3})), Leaf({4})));
  DendroGramDrawer drawer(*tree);
  drawer.AddExcluded(tree->GetRight());
  Notes notes;
  drawer.Draw(notes, 0, 8, 0, 8);
  EXPECT_THAT(notes.labels, ElementsAre("1 at 1,8")) << "the walk does not come below the excluded node";
  DendroGramDrawer below(*tree);
  below.AddExcluded(tree->GetRight());
  below.AddDrawn(tree->GetRight()->GetLeft());  // starts below it, and is higher
  Notes high;
  below.Draw(high, 0, 8, 0, 8);
  EXPECT_EQ(high.lines.size(), 2U) << "its crossbar and stem; its leaves are excluded";
}

/// What a drawing should hold: the nodes that no excluded one has in its subtree, found by asking each of these.
std::vector<std::string> LabelsOfTheRest(const DendroGramNode& root,
                                         const std::vector<const DendroGramNode*>& excluded) {
  std::vector<std::string> texts;
  std::vector<const DendroGramNode*> pending = {&root};
  while (!pending.empty()) {
    const DendroGramNode* const node = pending.back();
    pending.pop_back();
    bool leftOut = false;
    for (const DendroGramNode* const other : excluded) leftOut = leftOut || other->IsSubNode(node);
    if (leftOut) continue;
    if (node->IsLeaf()) texts.push_back(std::to_string(node->Items()->at(0)));
    if (node->IsLeaf()) continue;
    pending.push_back(node->GetRight());
    pending.push_back(node->GetLeft());
  }
  return texts;
}

std::vector<std::string> DrawnLabels(const DendroGramDrawer& drawer) {
  Notes notes;
  drawer.Draw(notes, 0, 1024, 0, 8);
  std::vector<std::string> texts;
  for (const std::string& label : notes.labels) texts.push_back(label.substr(0, label.find(' ')));
  return texts;
}

/// A tree of random shape whose heights rise and fall, some of them no numbers.
Tree TreeOfAnyHeights(int leafs, std::mt19937& random) {
  const float heights[] = {0, 1, 2, 3, 4, 5, -1, std::numeric_limits<float>::quiet_NaN()};
  std::vector<Tree> trees;
  for (int item = 1; item <= leafs; ++item) trees.push_back(Leaf({item}));
  while (trees.size() > 1) {
    Tree last = std::move(trees.back());
    trees.pop_back();
    Tree& other = trees[random() % trees.size()];
    other = Merge(heights[random() % 8], std::move(last), std::move(other));
  }
  return std::move(trees.front());
}

TEST_F(DrawnTree, LeavesOutWhatAnExcludedNodeHasAsItsSubNodeWhateverTheHeights) {
  std::mt19937 random(1);
  for (int run = 0; run < 300; ++run) {
    const Tree tree = TreeOfAnyHeights(2 + static_cast<int>(random() % 20), random);
    const std::vector<const DendroGramNode*> nodes = Nodes(*tree);
    // The drawer of a part of the tree: nodes above it may be excluded, too.
    const DendroGramNode& root = *nodes[run % 2 == 0 ? 0 : random() % nodes.size()];
    DendroGramDrawer drawer(root);
    std::vector<const DendroGramNode*> excluded;
    for (unsigned k = random() % 5; k > 0; --k) excluded.push_back(nodes[random() % nodes.size()]);
    for (const DendroGramNode* const node : excluded) drawer.AddExcluded(node);
    EXPECT_EQ(DrawnLabels(drawer), LabelsOfTheRest(root, excluded)) << Text(*tree);
    const DendroGramNode* const drawn = Nodes(root)[random() % Nodes(root).size()];
    drawer.AddDrawn(drawn);
    EXPECT_EQ(DrawnLabels(drawer), LabelsOfTheRest(*drawn, excluded)) << Text(*drawn) << " of " << Text(*tree);
  }
}

/// With a search of the tree for each excluded node this would take hours.
TEST_F(DrawnTree, OfSixtyThousandLeafsTakesAnyNumberOfExcludedOnes) {
  const int leafs = 60000;
  const Tree tree = Chain(leafs, /*deepOnTheLeft=*/true);
  DendroGramDrawer drawer(*tree);
  for (const DendroGramNode* const node : Nodes(*tree))
    if (node->IsLeaf() && node->Items()->at(0) % 2 == 0) drawer.AddExcluded(node);
  struct Counter : DendroGram::DendroGramDrawOutput {
    void DrawLine(float, float, float, float, const DendroGramNode*) override { ++lines; }
    void DrawLabel(const std::vector<int>*, float, float) override { ++labels; }
    bool GetLabelRect(const std::vector<int>*, float, float, float*, float*, float*, float*) override { return false; }
    int lines = 0, labels = 0;
  } counter;
  drawer.Draw(counter, 0, 1, 0, 1);
  EXPECT_EQ(counter.labels, leafs / 2);
  EXPECT_EQ(counter.lines, 2 * (leafs - 1) - 1 + leafs / 2);  // a bar and a stem for each merge, the root without one
}

TEST_F(DrawnTree, IgnoresAnExcludedNodeThatIsNull) {
  drawer_.AddExcluded(nullptr);
  EXPECT_EQ(Drawn().lines.size(), 9U);
  drawer_.AddExcluded(left_);
  EXPECT_EQ(Drawn().lines.size(), 5U);
  EXPECT_THAT(Hit(4, 8, 1, true), ElementsAre("3"));
}

TEST_F(DrawnTree, IgnoresADrawnNodeThatIsNull) {
  drawer_.AddDrawn(nullptr);
  EXPECT_EQ(Drawn().lines.size(), 9U) << "nothing is selected";
  drawer_.AddDrawn(right_);
  drawer_.AddDrawn(nullptr);
  EXPECT_THAT(Drawn().labels, ElementsAre("3 at 5,8", "4 at 7,8"));
}

TEST_F(DrawnTree, DrawsASelectedSubtreeOnceThoughAPartOfItIsSelectedToo) {
  drawer_.AddDrawn(right_);
  drawer_.AddDrawn(right_->GetLeft());
  EXPECT_THAT(Drawn().labels, ElementsAre("3 at 5,8", "4 at 7,8"));
  const Tree stranger = Leaf({9});
  DendroGramDrawer ofNothing(*tree_);
  ofNothing.AddDrawn(stranger.get());
  Notes notes;
  ofNothing.Draw(notes, 0, 8, 0, 8);
  EXPECT_THAT(notes.lines, IsEmpty());
  EXPECT_THAT(notes.labels, IsEmpty());
}

TEST_F(DrawnTree, IsDrawnAlikeByACopyOfTheDrawer) {
  drawer_.AddDrawn(right_);
  drawer_.AddExcluded(right_->GetLeft());
  drawer_.DisplayLabels(false);
  const DendroGramDrawer copy(drawer_);
  drawer_.ClearDrawn();
  drawer_.ClearExcluded();
  drawer_.DisplayLabels(true);
  Notes notes;
  copy.Draw(notes, 0, 8, 0, 8);
  EXPECT_THAT(notes.lines, ElementsAre("(3 4):1: 5,6 7,6", "(3 4):1: 6,6 6,0", "4: 7,8 7,6"));
  EXPECT_THAT(notes.labels, IsEmpty());
}

TEST_F(DrawnTree, OfASubtreeHasAStemBeyondItsTop) {
  Notes notes;
  DendroGramDrawer(*left_).Draw(notes, 0, 4, 0, 8);
  EXPECT_THAT(notes.lines, ElementsAre("(1 2):2: 1,0 3,0", "(1 2):2: 2,0 2,-8", "1: 1,8 1,0", "2: 3,8 3,0"));
}

TEST_F(DrawnTree, OfHeightZeroHasItsCrossbarsAtMinus99) {
  const Tree tree = Merge(0, Leaf({1}), Leaf({2}));
  Notes notes;
  DendroGramDrawer(*tree).Draw(notes, 0, 4, 0, 8);
  EXPECT_EQ(notes.lines[0], "(1 2):0: 1,-99 3,-99");
}

TEST_F(DrawnTree, MakesRoomForItsLowestLabel) {
  Notes notes;
  notes.unlabelled = 4;
  float left = 0, right = 8, top = 0, bottom = 8;
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_EQ(bottom, 4.0F);  // the label of 3 ends at 8 + 1 + 3 = 12
  EXPECT_THAT(std::vector<float>({left, right, top}), ElementsAre(0, 8, 0));
  EXPECT_THAT(notes.asked, ElementsAre(1, 2, 3, 4));
  notes.asked.clear();
  bottom = 8;
  drawer_.AddDrawn(left_);  // plays no part
  drawer_.AddExcluded(right_);
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_EQ(bottom, 5.0F);  // that of 2 at 11
  EXPECT_THAT(notes.asked, ElementsAre(1, 2));
}

TEST_F(DrawnTree, AsksForLabelsWhereItDrawsThem) {
  Notes notes;
  notes.unlabelled = 9;
  float left = 0, right = 8, top = 0, bottom = 8;
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_THAT(notes.askedAt, ElementsAre("1 at 1,8", "2 at 3,8", "3 at 5,8", "4 at 7,8"));
}

TEST_F(DrawnTree, NeedsNoRoomForLabelsThatEndAboveItsBase) {
  Notes notes;
  notes.unlabelled = 9;
  notes.shift = -20;
  float left = 0, right = 8, top = 0, bottom = 8;
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_EQ(bottom, 8.0F);
  notes.shift = -5;  // that of 4 ends at 8 + 1 - 5 + 4, on the base
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_EQ(bottom, 8.0F);
}

TEST_F(DrawnTree, NeedsNoRoomWithoutLabels) {
  Notes notes;
  float left = 0, right = 8, top = 0, bottom = 8;
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_EQ(bottom, 8.0F) << "no label has a rectangle";
  notes.unlabelled = 9;
  notes.asked.clear();
  drawer_.DisplayLabels(false);
  drawer_.AdjustForLabels(notes, left, right, top, bottom);
  EXPECT_EQ(bottom, 8.0F);
  EXPECT_THAT(notes.asked, IsEmpty());
}

TEST_F(DrawnTree, IsHitNearestFirstAndEachNodeOnce) {
  EXPECT_THAT(Hit(2.5F, 4, 0.25F, false), ElementsAre("(1 2):2")) << "on the crossbar";
  EXPECT_THAT(Hit(2, 4, 0.25F, false), ElementsAre("(1 2):2")) << "where crossbar and stem meet";
  EXPECT_THAT(Hit(3, 5, 1.5F, false), ElementsAre("2", "(1 2):2")) << "stem at 0, crossbar at 1";
  EXPECT_THAT(Hit(3, 5, 1.5F, true), ElementsAre("2"));
  EXPECT_THAT(Hit(4, 8, 1, true), ElementsAre("2", "3")) << "equally near, in the order of drawing";
  EXPECT_THAT(Hit(4, 2, 0.5F, false), IsEmpty());
  EXPECT_THAT(Hit(4, 2, 0.5F, true), IsEmpty());
  drawer_.AddExcluded(left_);
  EXPECT_THAT(Hit(4, 8, 1, true), ElementsAre("3"));
}

TEST(HitTester, CountsALineOnlyWhereItsBoxMeetsTheRectangle) {
  const Tree a = Leaf({1}), b = Leaf({2});
  DendroGram::HitTester tester(0, 0, 10, 10, 5, 5);
  tester.DrawLine(12, 2, 10, 2, a.get());     // touches the right side: gaps 5 and 3
  tester.DrawLine(11, 2, 10.5F, 2, b.get());  // does not
  tester.DrawLine(2, 9, 8, 9, a.get());       // nearer
  EXPECT_THAT(tester.GetNodes(false), ElementsAre(a.get()));
  tester.DrawLine(5, 9, 5, 20, b.get());
  EXPECT_THAT(tester.GetNodes(true), ElementsAre(a.get(), b.get()));
  float unused = 0;
  EXPECT_FALSE(tester.GetLabelRect(a->Items(), 0, 0, &unused, &unused, &unused, &unused));
}

TEST_F(DrawnTree, FindsTheHighestNodesInsideABand) {
  const auto band = [this](float from, float to) { return Texts(drawer_.WidthHitTest(0, 8, from, to)); };
  EXPECT_THAT(band(2.5F, 3.5F), ElementsAre("2"));
  EXPECT_THAT(band(3.5F, 2.5F), ElementsAre("2"));
  EXPECT_THAT(band(1, 3), ElementsAre("(1 2):2")) << "the stems at the very ends";
  EXPECT_THAT(band(1, 6), ElementsAre("(1 2):2", "3"));
  EXPECT_THAT(band(0, 8), ElementsAre(Text(*tree_)));
  EXPECT_THAT(band(3.25F, 4.75F), IsEmpty());
  drawer_.AddExcluded(tree_.get());
  EXPECT_THAT(band(1, 3), ElementsAre("(1 2):2")) << "excluded or not";
}

TEST_F(DrawnTree, HasNothingInABandOrNearACursorThatIsNoNumber) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  EXPECT_THAT(Texts(drawer_.WidthHitTest(0, 8, nan, 8)), IsEmpty());
  EXPECT_THAT(Texts(drawer_.WidthHitTest(0, 8, 0, nan)), IsEmpty());
  EXPECT_THAT(Texts(drawer_.WidthHitTest(0, nan, 0, 8)), IsEmpty());
  for (const bool nearestOnly : {false, true}) {
    EXPECT_THAT(Hit(nan, 4, 1, nearestOnly), IsEmpty());
    EXPECT_THAT(Hit(2, 4, nan, nearestOnly), IsEmpty());
  }
}

TEST_F(DrawnTree, IsCutIntoTheClustersBelowALine) {
  const auto cut = [this](float y) { return Texts(drawer_.SplitByHeight(0, 8, y)); };
  EXPECT_THAT(cut(2), ElementsAre("(1 2):2", "(3 4):1"));                // at height 3
  EXPECT_THAT(cut(5), ElementsAre("1", "2", "(3 4):1"));                 // at 1.5
  EXPECT_THAT(cut(7), ElementsAre("1", "2", "3", "4"));                  // at 0.5
  EXPECT_THAT(cut(4), ElementsAre("(3 4):1")) << "at the very height of the merge of 1 and 2";
  EXPECT_THAT(cut(0), IsEmpty());
  EXPECT_THAT(cut(8), IsEmpty());
  EXPECT_THAT(cut(-1), ElementsAre(Text(*tree_))) << "above the root";
}

TEST_F(DrawnTree, TakesNoClusterBelowAHeightThatIsNoNumber) {
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const Tree tree = Merge(4, Merge(nan, Leaf({1}), Leaf({2})), Leaf({3}));
  EXPECT_THAT(Texts(DendroGramDrawer(*tree).SplitByHeight(0, 8, 4)), ElementsAre("(1 2):nan", "3"));
  EXPECT_THAT(Texts(DendroGramDrawer(*tree->GetLeft()).SplitByHeight(0, 8, 4)), IsEmpty()) << "cut at a NaN";
  EXPECT_THAT(Texts(DendroGramDrawer(*left_).SplitByHeight(8, 8, 8)), IsEmpty()) << "0 / 0 of a picture without height";
}

TEST_F(DrawnTree, IsCutThroughANodeThatIsHigherThanItsParent) {
  const Tree tree = Merge(4, Merge(1, Merge(3, Leaf({1}), Leaf({2})), Leaf({3})), Leaf({4}));
  // At 2 the node of height 1 is below and its parent above: what is above the cut inside of it stays with it.
  EXPECT_THAT(Texts(DendroGramDrawer(*tree).SplitByHeight(0, 8, 4)), ElementsAre("((1 2):3 3):1", "4"));
  // At 0.5 the walk comes down to it: the leaves of the higher node, and 3.
  EXPECT_THAT(Texts(DendroGramDrawer(*tree).SplitByHeight(0, 8, 7)), ElementsAre("1", "2", "3", "4"));
}

TEST_F(DrawnTree, IsNotCutAtItsTopWhateverTheHeight) {
  for (const float height : {0.1F, 1.0F / 3, 7.7777F, 1e30F}) {
    const Tree tree = Merge(height, Leaf({1}), Leaf({2}));
    EXPECT_THAT(Texts(DendroGramDrawer(*tree).SplitByHeight(0.3F, 777.1F, 0.3F)), IsEmpty()) << height;
  }
}

}  // namespace
