#include "kalmia/cluster/DendroGramDrawer.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <unordered_set>
#include <utility>

#include "kalmia/containers/Missing.h"

namespace DendroGram {

namespace {

constexpr float kNoHeight = kalmia::kMissingCell<float>;  ///< the y of crossbars where the root has the height 0

float Middle(float low, float high) { return static_cast<float>((static_cast<double>(low) + high) * 0.5); }

/// Share of a child in the leaves of its parent.
float ShareOf(const DendroGramNode* child, const DendroGramNode* node) {
  return static_cast<float>(static_cast<double>(child->SizeLeafs()) / node->SizeLeafs());
}

using NodeList = std::list<const DendroGramNode*>;
using NodesByPlace = std::multimap<float, const DendroGramNode*>;

/// The nodes from left to right; each visit of a walk is to another node, so there are no repeats.
NodeList* InOrder(const NodesByPlace& nodes) {
  auto list = std::make_unique<NodeList>();
  for (const auto& entry : nodes) list->push_back(entry.second);
  return list.release();
}

}  // namespace

/// The largest height among excluded nodes, if there are any.
class DendroGramDrawer::ExcludedHeight {
 public:
  void Add(float height) {
    // A height that is no number is above all others: no node is higher.
    if (std::isnan(height)) height = std::numeric_limits<float>::infinity();
    largest_ = any_ ? std::max(largest_, height) : height;
    any_ = true;
  }
  /// Whether one of the excluded nodes, all of them above a node of this height, takes it along.
  bool Covers(float height) const { return any_ && !(largest_ < height); }

 private:
  float largest_ = 0;
  bool any_ = false;
};

/// A subtree, its horizontal range, and what is excluded above it.
struct DendroGramDrawer::Item {
  const DendroGramNode* node;
  float low, high;
  ExcludedHeight excluded;
};

/// How heights become y.
struct DendroGramDrawer::Frame {
  float bottom;
  double scale;  ///< bottom - top
  float rootHeight;

  float YOf(float height) const {
    return rootHeight != 0 ? static_cast<float>(bottom - scale * height / rootHeight) : kNoHeight;
  }
};

/// Visits the subtree from the top down, left before right; where visit(item) is true it does not descend. The children
/// share the range by their leaves, so that all leaves are equally wide. A visitor may add to what is excluded: the
/// children take it over.
template <class Visitor>
void DendroGramDrawer::Walk(const Item& start, const Visitor& visit) {
  std::vector<Item> pending = {start};
  while (!pending.empty()) {
    Item item = pending.back();
    pending.pop_back();
    if (visit(item) || item.node->IsLeaf()) continue;
    const float split = static_cast<float>(static_cast<double>(item.low) +
                                           static_cast<double>(item.high - item.low) *
                                               ShareOf(item.node->GetLeft(), item.node));
    pending.push_back({item.node->GetRight(), split, item.high, item.excluded});
    pending.push_back({item.node->GetLeft(), item.low, split, item.excluded});
  }
}

DendroGramDrawer::Item DendroGramDrawer::WholeTree(float left, float right) const {
  Item item = {root_, left, right, {}};
  for (const DendroGramNode* above = root_->GetParent(); above && !excluded_.empty(); above = above->GetParent())
    NoteIfExcluded(above, &item.excluded);
  return item;
}

/// Where drawing starts. What is excluded above an item is noted with it; the item itself is still to be looked up.
std::vector<DendroGramDrawer::Item> DendroGramDrawer::StartItems(float left, float right) const {
  if (drawn_.empty()) return {WholeTree(left, right)};
  std::vector<Item> items;
  Walk(WholeTree(left, right), [this, &items](Item& item) {
    if (items.size() == drawn_.size()) return true;
    if (drawn_.count(item.node) == 0) {
      NoteIfExcluded(item.node, &item.excluded);
      return false;
    }
    items.push_back(item);
    return true;
  });
  return items;
}

void DendroGramDrawer::NoteIfExcluded(const DendroGramNode* node, ExcludedHeight* excluded) const {
  if (excluded_.count(node) > 0) excluded->Add(node->Height());
}

void DendroGramDrawer::DrawItem(DendroGramDrawOutput& output, const Item& item, const Frame& frame) const {
  const DendroGramNode* const node = item.node;
  float x = Middle(item.low, item.high), y = frame.bottom;
  if (node->IsLeaf()) {
    if (displayLabels_) output.DrawLabel(node->Items(), x, y);
  } else {
    const DendroGramNode *left = node->GetLeft(), *right = node->GetRight();
    const float leftShare = ShareOf(left, node), rightShare = ShareOf(right, node);
    const double a = static_cast<double>(left->GetXOffset()) * leftShare;
    const float b = static_cast<float>(leftShare + static_cast<double>(right->GetXOffset()) * rightShare);
    const double width = static_cast<double>(item.high) - item.low;
    const float xLeft = static_cast<float>(width * a + item.low);
    const float xRight = static_cast<float>(width * b + item.low);
    y = frame.YOf(node->Height());
    output.DrawLine(xLeft, y, xRight, y, node);
    x = Middle(xLeft, xRight);
  }
  if (node->GetParent()) output.DrawLine(x, y, x, frame.YOf(node->GetParent()->Height()), node);
}

void DendroGramDrawer::Draw(DendroGramDrawOutput& output, float left, float right, float top, float bottom) const {
  const Frame frame = {bottom, static_cast<double>(bottom) - top, root_->Height()};
  for (const Item& start : StartItems(left, right))
    Walk(start, [&](Item& item) {
      NoteIfExcluded(item.node, &item.excluded);
      if (item.excluded.Covers(item.node->Height())) return true;
      DrawItem(output, item, frame);
      return false;
    });
}

void DendroGramDrawer::AdjustForLabels(DendroGramDrawOutput& output, float& left, float& right, float&,
                                       float& bottom) const {
  if (!displayLabels_) return;
  bool found = false;
  float lowest = 0;
  Walk({root_, left, right, {}}, [&](const Item& item) {
    if (excluded_.count(item.node) > 0) return true;
    float x = 0, y = 0, width = 0, height = 0;
    if (item.node->IsLeaf() &&
        output.GetLabelRect(item.node->Items(), Middle(item.low, item.high), bottom, &x, &y, &width, &height)) {
      lowest = found ? std::max(lowest, y + height) : y + height;
      found = true;
    }
    return false;
  });
  if (found && bottom < lowest) bottom -= lowest - bottom;
}

std::list<const DendroGramNode*>* DendroGramDrawer::HitTest(float left, float right, float top, float bottom, float x,
                                                            float y, float dx, float dy, bool nearestOnly) const {
  HitTester tester(x - dx, y - dy, x + dx, y + dy, x, y);
  Draw(tester, left, right, top, bottom);
  return new NodeList(tester.GetNodes(nearestOnly));
}

std::list<const DendroGramNode*>* DendroGramDrawer::WidthHitTest(float left, float right, float from, float to) const {
  if (to < from) std::swap(from, to);
  NodesByPlace nodes;
  Walk({root_, left, right, {}}, [&](const Item& item) {
    const float half = static_cast<float>((static_cast<double>(item.high) - item.low) / (2.0 * item.node->SizeLeafs()));
    if (!(from <= item.low + half && to >= item.high - half)) return false;  // nothing is inside a NaN
    nodes.emplace(item.low, item.node);
    return true;
  });
  return InOrder(nodes);
}

std::list<const DendroGramNode*>* DendroGramDrawer::SplitByHeight(float top, float bottom, float y) const {
  // In double and rounded once: at the top it has to be the root's height to the bit.
  const float h = static_cast<float>((static_cast<double>(bottom) - y) * root_->Height() /
                                     (static_cast<double>(bottom) - top));
  NodesByPlace nodes;
  Walk({root_, 0, std::numeric_limits<float>::max(), {}}, [&](const Item& item) {
    const DendroGramNode* const parent = item.node->GetParent();
    if (h <= item.node->Height() || (parent && !(h < parent->Height()))) return false;  // nothing is below a NaN
    nodes.emplace(item.low, item.node);
    return true;
  });
  return InOrder(nodes);
}

void HitTester::DrawLine(float x1, float y1, float x2, float y2, const DendroGramNode* node) {
  const float minX = std::min(x1, x2), maxX = std::max(x1, x2), minY = std::min(y1, y2), maxY = std::max(y1, y2);
  if (!(right_ >= minX && left_ <= maxX && bottom_ >= minY && top_ <= maxY)) return;
  const auto gap = [](double at, double low, double high) { return std::max({low - at, at - high, 0.0}); };
  const double dx = gap(x_, minX, maxX), dy = gap(y_, minY, maxY);
  hits_.emplace(static_cast<float>(std::sqrt(dx * dx + dy * dy)), node);
}

std::list<const DendroGramNode*> HitTester::GetNodes(bool nearestOnly) const {
  NodeList nodes;
  std::unordered_set<const DendroGramNode*> met;
  for (const auto& hit : hits_) {
    if (nearestOnly && hit.first != hits_.begin()->first) break;
    if (met.insert(hit.second).second) nodes.push_back(hit.second);
  }
  return nodes;
}

}  // namespace DendroGram
