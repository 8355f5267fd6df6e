#pragma once

namespace kalmia::analysis {

/// Two clusters become one. Clusters are numbered as in a linkage matrix: the n rows of the table are 0 to n - 1, the
/// cluster that merge k (from 0) makes is n + k.
struct ClusterMerge {
  int left, right;  ///< as they stand in the tree
  float height;
  int rows;         ///< of the merged cluster
};

}  // namespace kalmia::analysis
