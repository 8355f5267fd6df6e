#include <algorithm>
#include <cmath>
#include <limits>
#include <unordered_map>
#include <vector>

#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/cluster/internal/TreeWalk.h"
#include "kalmia/support/NCError.h"

namespace DendroGram {

namespace {

/// What places a node in the table.
struct Rank {
  float height;   ///< the largest one of the subtree, so that a parent never comes before its child
  int leafs;      ///< counted, as the node's own count may be out of date
};

struct RankedNode {
  const DendroGramNode* node;
  Rank rank;
};

bool ComesBefore(const RankedNode& a, const RankedNode& b) {
  return a.rank.height != b.rank.height ? a.rank.height < b.rank.height : a.rank.leafs < b.rank.leafs;
}

/// A NaN has no place in an order; it counts as the largest height.
float HeightForRank(float height) { return std::isnan(height) ? std::numeric_limits<float>::infinity() : height; }

/// The inner nodes in the order of the merges.
std::vector<RankedNode> MergesInOrder(const DendroGramNode& root) {
  std::vector<RankedNode> merges;
  const auto leaf = [](const DendroGramNode*) { return Rank{-std::numeric_limits<float>::infinity(), 1}; };
  const auto inner = [&merges](const DendroGramNode* node, const Rank& left, const Rank& right) {
    const Rank rank = {std::max({HeightForRank(node->Height()), left.height, right.height}), left.leafs + right.leafs};
    merges.push_back({node, rank});
    return rank;
  };
  kalmia::FoldTree<Rank>(root, leaf, inner);
  std::stable_sort(merges.begin(), merges.end(), ComesBefore);
  return merges;
}

using Ids = std::unordered_map<const DendroGramNode*, unsigned long>;

/// The leaves numbered by the rank of their smallest item; those without items come last.
Ids NumberLeafs(const DendroGramNode& root) {
  std::vector<const DendroGramNode*> leafs;
  kalmia::TreeWalk walk(&root);
  while (const DendroGramNode* const node = walk.Next())
    if (node->IsLeaf()) leafs.push_back(node);
  std::stable_sort(leafs.begin(), leafs.end(), [](const DendroGramNode* a, const DendroGramNode* b) {
    if (a->Items()->empty() || b->Items()->empty()) return !a->Items()->empty() && b->Items()->empty();
    return a->Items()->front() < b->Items()->front();
  });
  Ids ids;
  for (const DendroGramNode* const leaf : leafs) ids.emplace(leaf, ids.size() + 1);
  return ids;
}

void AppendItems(const DendroGramNode& child, std::vector<unsigned long>& row) {
  if (!child.IsLeaf()) return;
  for (const int item : *child.Items()) row.push_back(static_cast<unsigned long>(item));
}

}  // namespace

void CreateMergeData(const DendroGramNode& root, NCDataVector<float>& heights,
                     NCIntegralVector<unsigned long, 0>& leftIds, NCIntegralVector<unsigned long, 0>& rightIds,
                     NCIntegralVector<unsigned long, 0>& mergedIds,
                     std::vector<std::vector<unsigned long>>* leftItems,
                     std::vector<std::vector<unsigned long>>* rightItems) {
  if (!leftItems != !rightItems) throw NCError("Internal error in DendroGram::CreateMergeData");
  const std::vector<RankedNode> merges = MergesInOrder(root);
  Ids ids = NumberLeafs(root);
  const int rows = static_cast<int>(merges.size());
  heights = NCDataVector<float>(rows);
  for (auto* const column : {&leftIds, &rightIds, &mergedIds}) column->SetNumValues(rows, 0);
  if (leftItems) {
    leftItems->assign(merges.size(), {});
    rightItems->assign(merges.size(), {});
  }
  for (int row = 1; row <= rows; ++row) {
    const std::size_t k = static_cast<std::size_t>(row) - 1;
    const DendroGramNode& node = *merges[k].node;
    const unsigned long id = ids.size() + 1;
    heights(row, node.Height());
    leftIds(row) = ids.at(node.GetLeft());
    rightIds(row) = ids.at(node.GetRight());
    mergedIds(row) = id;
    if (leftItems) {
      AppendItems(*node.GetLeft(), (*leftItems)[k]);
      AppendItems(*node.GetRight(), (*rightItems)[k]);
    }
    ids.emplace(&node, id);
  }
}

}  // namespace DendroGram
