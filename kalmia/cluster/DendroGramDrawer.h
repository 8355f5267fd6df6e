#pragma once

#include <list>
#include <map>
#include <unordered_set>
#include <vector>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/support/Export.h"

namespace DendroGram {

/// The surface that a tree is drawn on; the application's. y runs downward.
class KALMIA_EXPORT DendroGramDrawOutput {
 public:
  virtual ~DendroGramDrawOutput() = default;
  virtual void DrawLine(float x1, float y1, float x2, float y2, const DendroGramNode* node) = 0;  ///< a line of `node`
  virtual void DrawLabel(const std::vector<int>* items, float x, float y) = 0;  ///< of a leaf, below the base line
  /// The rectangle that the label would take; false where there is no such label.
  virtual bool GetLabelRect(const std::vector<int>* items, float x, float y, float* left, float* top, float* width,
                            float* height) = 0;
};

/// Draws a tree: the root's crossbar at the top, leaves at the bottom, all leaves equally wide. Refers to the tree,
/// which has to outlive it, and keeps nothing else but its settings. No walk recurses. The lists that it returns are
/// new and the caller's.
class KALMIA_EXPORT DendroGramDrawer {
 public:
  explicit DendroGramDrawer(const DendroGramNode& root) : root_(&root) {}

  void DisplayLabels(bool display) { displayLabels_ = display; }  ///< on at the beginning
  /// Leaves the subtree out; its place stays empty. Null is ignored.
  void AddExcluded(const DendroGramNode* node) {
    if (node) excluded_.insert(node);
  }
  /// Draws only the subtrees that were added. Null is ignored.
  void AddDrawn(const DendroGramNode* node) {
    if (node) drawn_.insert(node);
  }
  void ClearExcluded() { excluded_.clear(); }
  void ClearDrawn() { drawn_.clear(); }

  /// One crossbar for each inner node, one stem up to the parent's crossbar for each node with a parent (so a subtree's
  /// drawer draws a stem beyond its top), one label for each leaf. Under a root of height 0 all bars are at y = -99.
  /// A node below an excluded one, but higher than it, is drawn all the same: see DendroGramNode::IsSubNode.
  /// Cost: one visit and one look-up for each node, however many are excluded.
  void Draw(DendroGramDrawOutput& output, float left, float right, float top, float bottom) const;

  /// Raises `bottom` by as much as the labels, asked for at the present one, reach below it. Without labels nothing
  /// changes. Excluded subtrees do not count; which subtrees are drawn does not matter.
  void AdjustForLabels(DendroGramDrawOutput& output, float& left, float& right, float& top, float& bottom) const;

  /// The nodes whose lines cross the rectangle of half sides dx and dy around (x, y), nearest first, each once; or only
  /// the nearest ones. Of what Draw draws.
  std::list<const DendroGramNode*>* HitTest(float left, float right, float top, float bottom, float x, float y,
                                            float dx, float dy, bool nearestOnly) const;

  /// The highest nodes all of whose leaves have their stems between `from` and `to`, in either order; from left to
  /// right.
  std::list<const DendroGramNode*>* WidthHitTest(float left, float right, float from, float to) const;

  /// The clusters that a horizontal cut at y makes, from left to right: the nodes below the cut whose parents are above
  /// it. A cut at the very height of a merge takes neither the node nor its children.
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

/// Measures, instead of drawing, how far each line is from a cursor. For one test.
class KALMIA_EXPORT HitTester : public DendroGramDrawOutput {
 public:
  /// Lines outside the rectangle do not count.
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
