#pragma once

#include <list>
#include <map>
#include <unordered_set>
#include <vector>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// The surface on which a tree is drawn, supplied by the application. y runs downward.
class KALMIA_EXPORT DendroGramDrawOutput {
 public:
  virtual ~DendroGramDrawOutput() = default;
  virtual void DrawLine(float x1, float y1, float x2, float y2, const DendroGramNode* node) = 0;  ///< a line of `node`
  virtual void DrawLabel(const std::vector<int>* items, float x, float y) = 0;  ///< of a leaf, below the base line
  /// The rectangle of the label; false if there is no such label.
  virtual bool GetLabelRect(const std::vector<int>* items, float x, float y, float* left, float* top, float* width,
                            float* height) = 0;
};

/// Draws a tree: the root's crossbar at the top, leaves of equal width at the bottom. The tree must outlive the drawer.
/// Nothing recurses. The caller owns the lists that are returned.
class KALMIA_EXPORT DendroGramDrawer {
 public:
  explicit DendroGramDrawer(const DendroGramNode& root) : root_(&root) {}

  void DisplayLabels(bool display) { displayLabels_ = display; }  ///< on at the beginning
  /// Excludes the subtree; its place stays empty. Ignores null.
  void AddExcluded(const DendroGramNode* node) {
    if (node) excluded_.insert(node);
  }
  /// Draws only the subtrees added this way. Ignores null.
  void AddDrawn(const DendroGramNode* node) {
    if (node) drawn_.insert(node);
  }
  void ClearExcluded() { excluded_.clear(); }
  void ClearDrawn() { drawn_.clear(); }

  /// One crossbar for each inner node, one stem up to the parent's crossbar for each node with a parent (so a subtree's
  /// drawer draws a stem beyond its top), one label for each leaf. Under a root of height 0 all bars are at y = -99.
  /// A node below an excluded one, but of larger height, is still drawn: see DendroGramNode::IsSubNode.
  /// Cost: one visit and one look-up for each node, for any number of excluded ones.
  void Draw(DendroGramDrawOutput& output, float left, float right, float top, float bottom) const;

  /// Raises `bottom` by the height of the labels below it, measured at the present `bottom`. Without labels nothing
  /// changes. Excluded subtrees do not count; subtrees that are not drawn do.
  void AdjustForLabels(DendroGramDrawOutput& output, float& left, float& right, float& top, float& bottom) const;

  /// The nodes whose drawn lines cross the rectangle of half sides dx and dy around (x, y), nearest first, each once;
  /// or only the nearest ones.
  std::list<const DendroGramNode*>* HitTest(float left, float right, float top, float bottom, float x, float y,
                                            float dx, float dy, bool nearestOnly) const;

  /// The highest nodes with the stems of all leaves between `from` and `to`, in either order; from left to right.
  std::list<const DendroGramNode*>* WidthHitTest(float left, float right, float from, float to) const;

  /// The clusters of a horizontal cut at y, from left to right: the nodes below the cut whose parents are above it. A
  /// cut at exactly the height of a merge takes neither the node nor its children.
  std::list<const DendroGramNode*>* SplitByHeight(float top, float bottom, float y) const;

 private:
  class ExcludedHeight;
  struct Item;
  struct Frame;
  template <class Visitor>
  static void Walk(const Item& start, const Visitor& visit);
  Item WholeTree(float left, float right) const;
  std::vector<Item> StartItems(float left, float right) const;
  void NoteIfExcluded(const DendroGramNode* node, ExcludedHeight* excluded) const;
  void DrawItem(DendroGramDrawOutput& output, const Item& item, const Frame& frame) const;

  const DendroGramNode* root_;
  std::unordered_set<const DendroGramNode*> excluded_;
  std::unordered_set<const DendroGramNode*> drawn_;
  bool displayLabels_ = true;
};

/// Measures the distance of each line from a cursor instead of drawing it. For one test.
class KALMIA_EXPORT HitTester : public DendroGramDrawOutput {
 public:
  /// Ignores lines outside the rectangle.
  HitTester(float left, float top, float right, float bottom, float x, float y)
      : left_(left), top_(top), right_(right), bottom_(bottom), x_(x), y_(y) {}

  void DrawLine(float x1, float y1, float x2, float y2, const DendroGramNode* node) override;
  void DrawLabel(const std::vector<int>*, float, float) override {}
  bool GetLabelRect(const std::vector<int>*, float, float, float*, float*, float*, float*) override { return false; }

  /// The nodes hit, nearest first, equally near ones in the order of drawing, each once at its least distance.
  std::list<const DendroGramNode*> GetNodes(bool nearestOnly) const;

 private:
  float left_, top_, right_, bottom_, x_, y_;
  std::multimap<float, const DendroGramNode*> hits_;  ///< by distance
};

}  // namespace DendroGram
