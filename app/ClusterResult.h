#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/ClusterData.h"
#include "app/ClusterTree.h"
#include "app/CsvMarks.h"
#include "app/Json.h"
#include "app/Notes.h"
#include "app/OutputPlaces.h"

namespace kalmia::app {

/// All that `kalmia cluster` has to report.
struct ClusterResult {
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

  bool IsCut() const { return !clusterOf.empty(); }
  int Clusters() const { return data.Rows() - keptMerges; }
  std::string Title() const;  ///< "Ward clusters of wine.csv"
};

/// What one cluster is.
struct ClusterSummary {
  int rows = 0;
  float highest = 0.0F;  ///< merge; 0 for a single row
};

std::vector<ClusterSummary> SummariesOf(const ClusterResult& result);

std::string ClusterText(const ClusterResult& result);
std::string ClusterJson(const CsvTable& table, const ClusterResult& result, const Notes& notes,
                        const std::vector<FilePlace>& written);
/// name,cluster of each row.
std::string ClusterCsv(const ClusterResult& result, const CsvMarks& marks);
/// The merges in the columns of a linkage matrix: two clusters, the smaller number first, height, rows.
std::string MergesCsv(const ClusterResult& result, const CsvMarks& marks);
/// The tree in the Newick format. The length of a branch is the difference between the heights of its ends.
std::string NewickText(const ClusterResult& result);
/// A drawing of the tree. Labels that would overlap are thinned out, beyond 200 rows.
std::string ClusterSvg(const ClusterResult& result);

}  // namespace kalmia::app
