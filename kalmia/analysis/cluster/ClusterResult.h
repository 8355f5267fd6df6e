#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/cluster/ClusterData.h"
#include "kalmia/analysis/cluster/ClusterMerge.h"
#include "kalmia/analysis/cluster/ClusterRecipe.h"
#include "kalmia/analysis/cluster/OwnedTree.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A cluster tree of the rows of a table, and where it is cut.
struct KALMIA_EXPORT ClusterResult {
  std::string table;
  std::string method;
  NCScale::Scaling scaling;
  ClusterData data;
  OwnedTree root;
  std::vector<ClusterMerge> merges;
  double copheneticCorrelation;  ///< not a number where there is none
  int keptMerges;                ///< all where the tree is not cut
  std::optional<double> cutHeight;  ///< where it is cut at a height
  std::vector<int> clusterOf;    ///< of each row, from 1; empty where the tree is not cut
  Notes notes;                   ///< what was done of its own accord

  bool IsCut() const { return !clusterOf.empty(); }
  int Clusters() const { return data.Rows() - keptMerges; }
  std::string Title() const;  ///< "Ward clusters of wine.csv"
};

/// What one cluster is.
struct ClusterSummary {
  int rows = 0;
  float highest = 0.0F;  ///< merge; 0 for a single row
};

KALMIA_EXPORT std::vector<ClusterSummary> SummariesOf(const ClusterResult& result);

/// Builds the tree that the recipe asks for, cuts it, and judges it. Notes what it did of its own accord, and merges
/// that are lower than one within their cluster. `progress` may be null. Throws BadRequest for a method that there is
/// not, BadData for more clusters than rows and for distances that are too large, and as SelectClusterData and
/// BuildTree do.
KALMIA_EXPORT ClusterResult Fit(const ClusterRecipe& recipe, const Table& table, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
