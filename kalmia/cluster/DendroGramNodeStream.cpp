#include <algorithm>
#include <cstdint>
#include <vector>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/cluster/internal/TreeWalk.h"

// The stream form: the nodes from the top down, left before right. Which node is whose child follows from that order
// and from which of them are leaves.

namespace DendroGram {

namespace {

/// Up to so many items are read without asking the stream how long it is, which costs a file its buffer.
constexpr std::uint32_t kFewItems = 64;

bool ReadItems(std::istream& stream, std::vector<int>& items) {
  std::uint32_t count = 0;
  if (!ReadFourBytes(&count, 1, stream)) return false;
  if (count > kFewItems) return kalmia::ReadCells(stream, count, items);
  items.resize(count);
  return ReadFourBytes(items.data(), static_cast<int>(count), stream);
}

}  // namespace

DendroGramNode::DerivedStreamableData DendroGramNode::MyStreamableData(1, "Dendro");

bool DendroGramNode::VexStreamableWrite(std::ostream& stream) {
  kalmia::TreeWalk walk(this);
  while (const DendroGramNode* const node = walk.Next())
    if (!node->Serialize(stream)) return false;
  return stream.good();
}

bool DendroGramNode::Serialize(std::ostream& stream) const {
  const char flag = leaf_ ? 1 : 0;
  bool good = WriteBytes(&flag, 1, stream) && WriteFourBytes(&xOffset_, 1, stream);
  if (leaf_) {
    const std::uint32_t count = static_cast<std::uint32_t>(items_.size());
    good = good && WriteFourBytes(&count, 1, stream) && WriteFourBytes(items_.data(), SizeItems(), stream);
  } else {
    good = good && WriteFourBytes(&height_, 1, stream) && WriteFourBytes(&leafCount_, 1, stream);
  }
  return good && WriteFourBytes(&model_, 1, stream);
}

bool DendroGramNode::VexStreamableRead(std::istream& stream) {
  if (GetVexStreamVersionNumber() > GetMyVexStreamVersionNumber() || !VexStreamableReadBases(stream)) return false;
  Destroy(left_);
  Destroy(right_);
  left_ = right_ = nullptr;
  try {
    return DeSerialize(stream) && ReadNodes(stream);
  } catch (const VexStreamError&) {
    return false;
  }
}

/// Reads one record into a node without children. Items are put in order, should the stream have them otherwise.
bool DendroGramNode::DeSerialize(std::istream& stream) {
  char flag = 0;
  if (!ReadBytes(&flag, 1, stream)) return false;
  leaf_ = flag != 0;
  items_.clear();
  if (!ReadFourBytes(&xOffset_, 1, stream)) return false;
  if (leaf_) {
    if (!ReadItems(stream, items_)) return false;
    if (!std::is_sorted(items_.begin(), items_.end())) std::sort(items_.begin(), items_.end());
  } else if (!ReadFourBytes(&height_, 1, stream) || !ReadFourBytes(&leafCount_, 1, stream)) {
    return false;
  }
  return ReadFourBytes(&model_, 1, stream);
}

/// Reads what lies below this node, which has just been read. On failure the nodes read so far stay below it.
bool DendroGramNode::ReadNodes(std::istream& stream) {
  std::vector<DendroGramNode*> waiting;  // inner nodes that still want a right child
  DendroGramNode* at = this;
  while (true) {
    if (at->leaf_ && waiting.empty()) return true;
    DendroGramNode* parent = at;
    DendroGramNode** place = &at->left_;
    if (at->leaf_) {
      parent = waiting.back();
      place = &parent->right_;
      waiting.pop_back();
    } else {
      waiting.push_back(at);
    }
    DendroGramNode* const child = new DendroGramNode;
    child->parent_ = parent;
    *place = child;
    if (!child->DeSerialize(stream)) return false;
    at = child;
  }
}

}  // namespace DendroGram
