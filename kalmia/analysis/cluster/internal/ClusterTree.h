#pragma once

#include <vector>

#include "kalmia/analysis/cluster/ClusterRecipe.h"
#include "kalmia/analysis/cluster/ClusterResult.h"
#include "kalmia/cluster/DendroGramNode.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// The merges of a tree, those of a cluster always before that of it, by rising height.
std::vector<ClusterMerge> MergesOf(const DendroGram::DendroGramNode& root);

/// The largest height at or below each merge. It is another one than the merge's own where heights fall towards the
/// root; it never falls from merge to merge.
std::vector<float> HighestBelow(const std::vector<ClusterMerge>& merges);

/// How many of the merges, from the first on, stay where a tree is cut into so many clusters, or at a height: the
/// latter keeps the clusters in which no merge is higher.
int KeptMerges(const std::vector<ClusterMerge>& merges, const ClusterRecipe& recipe);

/// The cluster of each row, from 1 in the order of their first rows, where only the first `kept` merges are made.
std::vector<int> ClustersOfRows(const std::vector<ClusterMerge>& merges, int kept);

/// Correlation, over all pairs of rows, of their distance and of the height at which they come into one cluster
/// (Sokal and Rohlf 1962, Taxon 11, 33-40). Distances are Euclidean, over the common columns, times the root of all
/// columns over the common ones. Not a number where all are alike. `progress` may be null. Throws Stopped
/// where the bar wants to stop.
double CopheneticCorrelation(const NCDataMatrix<float>& cells, const std::vector<ClusterMerge>& merges,
                             NCProgress* progress);

}  // namespace kalmia::analysis
