#include "kalmia/cluster/internal/WardClusters.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <utility>

#include "kalmia/containers/Missing.h"

namespace kalmia {

namespace {

/// The sum of squares around the mean of the present cells, scaled up to `size` cells.
double ScaledSS(double sum, double sumOfSquares, int count, int size) {
  const double ss = sumOfSquares - sum * sum / count;
  return count < size ? static_cast<double>(size) / count * ss : ss;
}

int SizeOf(const std::vector<int>& rows) { return static_cast<int>(rows.size()); }

}  // namespace

WardClusters::WardClusters(const NCDataMatrix<float>& data, const Ask& ask)
    : data_(data), clusters_(static_cast<std::size_t>(data.SizeRows())) {
  WorkMeter cells(ask, kCellsPerQuestion);
  for (std::size_t p = 0; p < clusters_.size(); ++p) {
    clusters_[p].rows.assign(1, static_cast<int>(p) + 1);
    SetErrorSS(&clusters_[p], ask);
    cells.Add(data.SizeColumns());
  }
}

/// Row by row, so that the cells of a column are added in the order of the rows.
WardClusters::ColumnSums WardClusters::SumsOf(const Cluster& cluster, const Ask& ask) const {
  const std::size_t columns = static_cast<std::size_t>(data_.SizeColumns());
  const bool holes = std::any_of(cluster.rows.begin(), cluster.rows.end(),
                                 [this](int row) { return data_[row].GetNumMisVal() > 0; });
  ColumnSums all = {std::vector<double>(columns), std::vector<double>(columns), std::vector<int>(holes ? columns : 0)};
  WorkMeter meter(ask, kCellsPerQuestion);
  for (const int row : cluster.rows) {
    meter.Add(data_.SizeColumns());
    const float* const cells = data_[row].begin();
    for (std::size_t c = 0; c < columns; ++c) {
      const double cell = static_cast<double>(cells[c]);
      if (holes && cells[c] == kMissingCell<float>) continue;
      all.sums[c] += cell;
      all.sumsOfSquares[c] += cell * cell;
      if (holes) ++all.counts[c];
    }
  }
  return all;
}

/// Sets what Increase wants to know of a cluster, once for the cluster instead of once for each of its pairs.
void WardClusters::SetErrorSS(Cluster* cluster, const Ask& ask) const {
  const int size = SizeOf(cluster->rows);
  ColumnSums all = SumsOf(*cluster, ask);
  cluster->errorSS = 0;
  for (std::size_t c = 0; c < all.sums.size(); ++c) {
    const int count = all.counts.empty() ? size : all.counts[c];
    if (count > 0) cluster->errorSS += ScaledSS(all.sums[c], all.sumsOfSquares[c], count, size);
  }
  cluster->columns = size > 1 ? std::move(all) : ColumnSums();
}

float WardClusters::Increase(int first, int second) const {
  const Cluster &one = clusters_[static_cast<std::size_t>(first)], &other = clusters_[static_cast<std::size_t>(second)];
  ColumnSums ofRows[2];
  const auto columnsOf = [this](const Cluster& cluster, ColumnSums& ofRow) -> const ColumnSums& {
    return cluster.rows.size() > 1 ? cluster.columns : ofRow = SumsOf(cluster, {});
  };
  const ColumnSums &a = columnsOf(one, ofRows[0]), &b = columnsOf(other, ofRows[1]);
  const int sizeA = SizeOf(one.rows), sizeB = SizeOf(other.rows), size = sizeA + sizeB;
  const bool holes = !a.counts.empty() || !b.counts.empty();
  double both = 0;
  for (std::size_t c = 0; c < a.sums.size(); ++c) {
    const int countA = a.counts.empty() ? sizeA : a.counts[c], countB = b.counts.empty() ? sizeB : b.counts[c];
    const int count = holes ? countA + countB : size;
    if (count > 0) both += ScaledSS(a.sums[c] + b.sums[c], a.sumsOfSquares[c] + b.sumsOfSquares[c], count, size);
  }
  return static_cast<float>(both - one.errorSS - other.errorSS);
}

void WardClusters::Merge(int first, int second, const Ask& ask) {
  Cluster &merged = clusters_[static_cast<std::size_t>(first)], &other = clusters_[static_cast<std::size_t>(second)];
  std::vector<int> rows;
  rows.reserve(merged.rows.size() + other.rows.size());
  std::merge(merged.rows.begin(), merged.rows.end(), other.rows.begin(), other.rows.end(), std::back_inserter(rows));
  merged.rows.swap(rows);
  other = Cluster();
  SetErrorSS(&merged, ask);
}

}  // namespace kalmia
