#include "kalmia/cluster/DendroGramNode.h"

#include <algorithm>
#include <cstdint>
#include <utility>

#include "kalmia/cluster/internal/TreeWalk.h"
#include "kalmia/support/NCError.h"

using kalmia::TreeWalk;

namespace DendroGram {

DendroGramNode::DendroGramNode() = default;

DendroGramNode::DendroGramNode(int item) : items_(1, item) {}

DendroGramNode::DendroGramNode(float height, DendroGramNode* left, DendroGramNode* right)
    : leaf_(false), left_(left), right_(right), height_(height) {
  // In 64 bits: trees from streams may claim any number of leaves.
  leafCount_ = static_cast<int>(static_cast<std::int64_t>(left->SizeLeafs()) + right->SizeLeafs());
  AdoptChildren();
  SetXOffset();
}

DendroGramNode::DendroGramNode(std::list<int>::const_iterator first, std::list<int>::const_iterator last)
    : items_(first, last) {
  std::sort(items_.begin(), items_.end());
}

DendroGramNode::DendroGramNode(std::vector<int>::const_iterator first, std::vector<int>::const_iterator last)
    : items_(first, last) {
  std::sort(items_.begin(), items_.end());
}

DendroGramNode::DendroGramNode(const DendroGramNode& other) : Persistent() {
  try {
    CopyTree(other);
  } catch (...) {  // the destructor would free this node alone
    Destroy(left_);
    Destroy(right_);
    throw;
  }
}

DendroGramNode::~DendroGramNode() = default;

DendroGramNode& DendroGramNode::operator=(const DendroGramNode& other) {
  DendroGramNode* const copy = new DendroGramNode(other);
  std::swap(copy->parent_, parent_);
  swap(*copy);
  Destroy(copy);
  return *this;
}

/// Turns the tree into a chain of right children while it deletes it: no stack, so nothing that could fail.
void DendroGramNode::Destroy(DendroGramNode* root) noexcept {
  while (root) {
    if (DendroGramNode* const left = root->left_) {
      root->left_ = left->right_;
      left->right_ = root;
      root = left;
    } else {
      DendroGramNode* const next = root->right_;
      delete root;
      root = next;
    }
  }
}

void DendroGramNode::CopyLocalData(const DendroGramNode& other) {
  items_ = other.items_;
  leaf_ = other.leaf_;
  height_ = other.height_;
  leafCount_ = other.leafCount_;
  xOffset_ = other.xOffset_;
  model_ = other.model_;
}

void DendroGramNode::CopyTree(const DendroGramNode& other) {
  struct Pair {
    DendroGramNode* copy;
    const DendroGramNode* source;
  };
  std::vector<Pair> waiting;  // inner copies without a right child, and the child to be copied there
  const auto newChild = [](DendroGramNode* parent) {
    DendroGramNode* const child = new DendroGramNode;
    child->parent_ = parent;
    return child;
  };
  Pair at = {this, &other};
  while (true) {
    at.copy->CopyLocalData(*at.source);
    if (!at.source->leaf_) {
      waiting.push_back({at.copy, at.source->right_});
      at.copy->left_ = newChild(at.copy);
      at = {at.copy->left_, at.source->left_};
    } else if (!waiting.empty()) {
      const Pair next = waiting.back();
      waiting.pop_back();
      next.copy->right_ = newChild(next.copy);
      at = {next.copy->right_, next.source};
    } else {
      return;
    }
  }
}

void DendroGramNode::AdoptChildren() {
  if (left_) left_->parent_ = this;
  if (right_) right_->parent_ = this;
}

void DendroGramNode::swap(DendroGramNode& other) {
  if (this == &other) return;
  std::swap(leaf_, other.leaf_);
  items_.swap(other.items_);
  std::swap(left_, other.left_);
  std::swap(right_, other.right_);
  std::swap(height_, other.height_);
  std::swap(leafCount_, other.leafCount_);
  std::swap(xOffset_, other.xOffset_);
  std::swap(parent_, other.parent_);
  std::swap(model_, other.model_);
  AdoptChildren();
  other.AdoptChildren();
}

bool DendroGramNode::operator==(const DendroGramNode& other) const {
  if (SizeLeafs() != other.SizeLeafs()) return false;
  if (this == &other) return true;
  TreeWalk mine(this), theirs(&other);
  while (const DendroGramNode* const a = mine.Next()) {
    const DendroGramNode* const b = theirs.Next();  // never null: up to here both trees have one shape
    if (a->xOffset_ != b->xOffset_ || a->leaf_ != b->leaf_) return false;
    if (a->leaf_ ? a->items_ != b->items_ : a->height_ != b->height_ || a->leafCount_ != b->leafCount_) return false;
  }
  return true;
}

void DendroGramNode::GetLeafs(std::list<int>& result) const {
  TreeWalk walk(this);
  while (const DendroGramNode* const node = walk.Next())
    result.insert(result.end(), node->items_.begin(), node->items_.end());
}

bool DendroGramNode::IsSubNode(const DendroGramNode* node) const {
  if (Height() < node->Height()) return false;
  TreeWalk walk(this);
  while (const DendroGramNode* const visited = walk.Next())
    if (visited == node) return true;
  return false;
}

void DendroGramNode::Normalise() {
  if (leaf_) return;
  const double divisor = height_;  // taken once: this node is the first to change
  for (std::vector<DendroGramNode*> pending = {this}; !pending.empty();) {
    DendroGramNode* const node = pending.back();
    pending.pop_back();
    if (node->leaf_) continue;
    node->height_ = static_cast<float>(node->height_ / divisor);
    pending.push_back(node->right_);
    pending.push_back(node->left_);
  }
}

void DendroGramNode::SetXOffset() const {
  const double n = SizeLeafs(), nLeft = left_->SizeLeafs(), nRight = right_->SizeLeafs();
  const float a = static_cast<float>(nLeft / n * left_->xOffset_);
  const float b = static_cast<float>((nRight * right_->xOffset_ + nLeft) / n);
  xOffset_ = static_cast<float>((static_cast<double>(a) + b) * 0.5);
}

void DendroGramNode::SetXOffsetUpwards() const {
  for (const DendroGramNode* node = this; node; node = node->parent_)
    if (!node->leaf_) node->SetXOffset();
}

void DendroGramNode::Split(const std::list<int>& items, float height) {
  std::vector<int> rest = items_;
  bool fits = leaf_ && !items.empty() && items.size() < rest.size();
  for (auto item = items.begin(); fits && item != items.end(); ++item) {
    const auto found = std::find(rest.begin(), rest.end(), *item);
    fits = found != rest.end();
    if (fits) rest.erase(found);
  }
  if (!fits) throw NCError("Internal error in DendroGramNode::Split");

  DendroGramNode* const left = new DendroGramNode(items.begin(), items.end());
  try {
    right_ = new DendroGramNode(rest.cbegin(), rest.cend());
  } catch (...) {
    Destroy(left);
    throw;
  }
  left_ = left;
  items_.clear();
  leaf_ = false;
  height_ = height;
  leafCount_ = 2;
  AdoptChildren();
  SetXOffsetUpwards();
}

}  // namespace DendroGram
