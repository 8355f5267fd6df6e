#pragma once

#include <cstdint>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/WorkMeter.h"

namespace kalmia {

/// The clusters of Ward's criterion with the sums over their columns. A cluster is called by the place of its first
/// row, from 0.
/// Missing: the sum of squares of each column and cluster is scaled from the present cells to the size of the cluster.
class WardClusters {
 public:
  /// The work between two questions, in cells: some milliseconds.
  static constexpr std::int64_t kCellsPerQuestion = std::int64_t{1} << 20;

  WardClusters() = default;
  /// Each row is a cluster. The table is shared.
  WardClusters(const NCDataMatrix<float>& data, const Ask& ask);

  int Columns() const { return data_.SizeColumns(); }
  /// What the merge of two clusters adds to the sum of squares within clusters. Where cells are missing it may be
  /// slightly negative.
  float Increase(int first, int second) const;
  /// Merges the second cluster into the first, and ends the second.
  void Merge(int first, int second, const Ask& ask);

 private:
  /// The present cells of each column in a cluster.
  struct ColumnSums {
    std::vector<double> sums;
    std::vector<double> sumsOfSquares;
    std::vector<int> counts;  ///< empty where no cell is missing
  };
  struct Cluster {
    std::vector<int> rows;  ///< ascending, from 1
    ColumnSums columns;     ///< empty for a single row, whose cells say it all
    double errorSS = 0;     ///< within the cluster, scaled up column by column
  };

  ColumnSums SumsOf(const Cluster& cluster, const Ask& ask) const;
  void SetErrorSS(Cluster* cluster, const Ask& ask) const;

  NCDataMatrix<float> data_;
  std::vector<Cluster> clusters_;
};

}  // namespace kalmia
