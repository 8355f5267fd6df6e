#pragma once

#include <list>
#include <vector>

#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/VexStream.h"

namespace DendroGram {

/// A node of a binary cluster tree, and the tree below it. Leaves hold observation numbers; inner nodes hold the height
/// at which their two children were merged. Nodes live on the heap; the root owns the tree, and Destroy releases it.
/// A tree may be a chain as deep as the table is long, so nothing here recurses. One thread at a time: the re-ordering
/// operations write, although they are const. Cost: one visit for each node unless told otherwise. Throws
/// std::bad_alloc, and NCError where told.
class KALMIA_EXPORT DendroGramNode : public kalmia::Persistent<DendroGramNode> {
 public:
  DendroGramNode();                   ///< a leaf without items
  explicit DendroGramNode(int item);  ///< a leaf of this observation
  /// An inner node that takes over two trees, neither of them null.
  DendroGramNode(float height, DendroGramNode* left, DendroGramNode* right);
  // Leaves of a range of observations, which are sorted.
  DendroGramNode(std::list<int>::const_iterator first, std::list<int>::const_iterator last);
  DendroGramNode(std::vector<int>::const_iterator first, std::vector<int>::const_iterator last);
  DendroGramNode(const DendroGramNode& other);  ///< a deep copy of the subtree, with no parent
  /// Replaces the subtree by a copy of the other one, which may be a part of it, and destroys the old children. The
  /// node stays under its parent, whose count of leaves does not change.
  DendroGramNode& operator=(const DendroGramNode& other);

  /// Deletes all nodes of the subtree, even a half-read one. Null does nothing. A parent keeps a dangling link.
  static void Destroy(DendroGramNode* root) noexcept;

  bool IsLeaf() const { return leaf_; }
  const DendroGramNode* GetLeft() const { return left_; }    ///< null for a leaf
  const DendroGramNode* GetRight() const { return right_; }  ///< null for a leaf
  const DendroGramNode* GetParent() const { return parent_; }
  float Height() const { return leaf_ ? 0.0F : height_; }
  /// The place of the node's stem in the node's width, from 0 to 1: halfway between the stems of its children, which
  /// share the width by their leaves. 0.5 for a leaf.
  float GetXOffset() const { return xOffset_; }
  int GetModel() const { return model_; }                    ///< the application's own number; 0 at creation
  void SetModel(int model) { model_ = model; }
  int SizeLeafs() const { return leaf_ ? 1 : leafCount_; }   ///< as counted when the node was made; see Split
  int SizeItems() const { return leaf_ ? static_cast<int>(items_.size()) : 0; }
  const std::vector<int>* Items() const { return leaf_ ? &items_ : nullptr; }  ///< ascending; null for an inner node

  /// Appends the items of all leaves, from left to right.
  void GetLeafs(std::list<int>& result) const;
  /// The smallest list of nodes that covers exactly the leaves whose items are all in `ids`, sorted ascending. A leaf
  /// without items is always covered. Appends to `result`, and relinks all of `result`.
  void GetNodes(const std::vector<int>& ids, std::list<const DendroGramNode*>& result) const;
  std::list<const DendroGramNode*>* GetNodes(const std::vector<int>& ids) const;  ///< a new list, owned by the caller
  /// Replaces every two children of one parent by the parent, until there are none. A parent takes the place of the
  /// first of its children in the list, or of a child that was itself just put in.
  static void ReLink(std::list<const DendroGramNode*>& nodes);
  /// Whether `node` is in this subtree, which includes this node. False for a node of larger height, even one below
  /// this node, as is possible if heights fall towards the root.
  bool IsSubNode(const DendroGramNode* node) const;

  /// Divides the heights of the subtree by this node's height. A leaf does not change.
  void Normalise();

  // Orders of the children in the whole subtree. Equals keep their order.
  void SortBySize() const;    ///< the one with fewer leaves goes left
  void SortByHeight() const;  ///< the lower one goes left
  void SortByIndex() const;   ///< the one with the smallest item goes left; one without items stays where it is
  void MirrorImage() const;   ///< all children change sides

  /// Turns a leaf of several items into an inner node over two leaves: `items` left, the others right. Nodes above keep
  /// their counts of leaves. Throws NCError "Internal error in DendroGramNode::Split", with nothing changed, on an
  /// inner node, without items, with an item that is not in the leaf, and if no item would remain.
  void Split(const std::list<int>& items, float height);

  /// Exchanges all fields of two nodes, links and parents included, and updates the parents of their children. The
  /// nodes above keep pointing at the same addresses. Not for a node and one of its own children.
  void swap(DendroGramNode& other);

  /// Exact equality of shape, heights, counts, stems and items. Models and parents do not matter.
  bool operator==(const DendroGramNode& other) const;
  bool operator!=(const DendroGramNode& other) const { return !(*this == other); }

  // Persistence: magic "Dendro", version 1; the nodes from the top down, left before right. Another magic or version
  // leaves the node unchanged. After any other failed read the tree may only be destroyed.
  static DerivedStreamableData MyStreamableData;
  bool VexStreamableWrite(std::ostream& stream);
  bool VexStreamableRead(std::istream& stream);

 private:
  ~DendroGramNode() override;  ///< frees this node alone

  template <class MustSwap>
  void SwapWhere(const MustSwap& mustSwap) const;
  void SetXOffset() const;
  void SetXOffsetUpwards() const;
  void CopyLocalData(const DendroGramNode& other);
  void CopyTree(const DendroGramNode& other);
  void AdoptChildren();
  bool ReadNodes(std::istream& stream);
  bool Serialize(std::ostream& stream) const;
  bool DeSerialize(std::istream& stream);

  bool leaf_ = true;
  std::vector<int> items_;                   ///< of a leaf, ascending
  mutable DendroGramNode* left_ = nullptr;   ///< owned, by the root's Destroy
  mutable DendroGramNode* right_ = nullptr;
  float height_ = -0.5F;                     ///< of an inner node; nobody sees a leaf's
  int leafCount_ = 0;                        ///< of an inner node
  mutable float xOffset_ = 0.5F;
  DendroGramNode* parent_ = nullptr;         ///< not owned
  int model_ = 0;
};

/// The tree as a table of merges, one row for each inner node, children before parents, by rising height. If heights
/// fall towards the root, a node counts as high as the highest one below it. Equal heights: fewer leaves first. Leaves
/// have the ids 1 to n by the rank of their smallest item; the merge of row r makes the id n + r. The vectors get one
/// cell for each row. A row of `leftItems` or `rightItems` (from 0) has the items of a child that is a leaf, and is
/// empty otherwise. Give both or neither: otherwise NCError "Internal error in DendroGram::CreateMergeData".
KALMIA_EXPORT void CreateMergeData(const DendroGramNode& root, NCDataVector<float>& heights,
                                   NCIntegralVector<unsigned long, 0>& leftIds,
                                   NCIntegralVector<unsigned long, 0>& rightIds,
                                   NCIntegralVector<unsigned long, 0>& mergedIds,
                                   std::vector<std::vector<unsigned long>>* leftItems = nullptr,
                                   std::vector<std::vector<unsigned long>>* rightItems = nullptr);

}  // namespace DendroGram
