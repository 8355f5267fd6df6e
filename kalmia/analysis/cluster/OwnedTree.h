#pragma once

#include <memory>

#include "kalmia/cluster/DendroGramNode.h"

namespace kalmia::analysis {

struct DestroyTree {
  void operator()(DendroGram::DendroGramNode* root) const { DendroGram::DendroGramNode::Destroy(root); }
};
/// A cluster tree that ends with its owner.
using OwnedTree = std::unique_ptr<DendroGram::DendroGramNode, DestroyTree>;

}  // namespace kalmia::analysis
