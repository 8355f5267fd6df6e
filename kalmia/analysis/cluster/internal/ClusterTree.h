#pragma once

#include <vector>

#include "kalmia/analysis/cluster/ClusterMerge.h"
#include "kalmia/analysis/cluster/ClusterRecipe.h"
#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The merges of a tree by rising height; those within a cluster come before its own.
std::vector<ClusterMerge> MergesOf(const DendroGram::DendroGramNode& root);

/// The largest height at or below each merge. It differs from the merge's own height where heights fall towards the
/// root, and never falls from merge to merge.
std::vector<float> HighestBelow(const std::vector<ClusterMerge>& merges);

/// How many merges, from the first on, remain when the tree is cut as the recipe says: into a number of clusters, or at
/// a height, into clusters without a higher merge.
int KeptMerges(const std::vector<ClusterMerge>& merges, const ClusterRecipe& recipe);

/// The cluster of each row, from 1 in the order of their first rows, where only the first `kept` merges are made.
std::vector<int> ClustersOfRows(const std::vector<ClusterMerge>& merges, int kept);

/// Correlation, over all pairs of rows, between their distance and the height at which one cluster holds both (Sokal
/// and Rohlf 1962, Taxon 11, 33-40). Distances are Euclidean over the columns that both rows have, times sqrt(all
/// columns / common columns). Not a number where all distances or all heights are equal. `progress` may be null. Throws
/// Stopped where the bar wants to stop.
double CopheneticCorrelation(const NCDataMatrix<float>& cells, const std::vector<ClusterMerge>& merges,
                             NCProgress* progress);

}  // namespace kalmia::analysis
