#include "kalmia/cluster/WardDistanceCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>

#include "kalmia/cluster/InitialDistances.h"
#include "kalmia/cluster/PairMemory.h"
#include "kalmia/cluster/StoppableProgress.h"
#include "kalmia/containers/Missing.h"

namespace DendroGram {

namespace {

/// The sum of squares around the mean of the present cells, scaled up to `size` cells.
double ScaledSS(double sum, double sumOfSquares, int count, int size) {
  const double ss = sumOfSquares - sum * sum / count;
  return count < size ? static_cast<double>(size) / count * ss : ss;
}

constexpr std::int64_t kCellsPerQuestion = std::int64_t{1} << 20;  ///< some milliseconds

int SizeOf(const std::vector<int>& rows) { return static_cast<int>(rows.size()); }

}  // namespace

void WardDistanceCalculator::Init(const NCDataMatrix<float>& data, NCProgress* progress) {
  data_ = data;
  ask_ = kalmia::QuestionsTo(kalmia::StoppableProgress(progress));
  distances_ = kalmia::WardPairList();
  std::vector<DistanceAndIndex> list;
  if (HasDistances())
    CalculateInitialDistances(data_, progress, list, HalfSquaredDifference,
                              type_ == DistanceIncrease ? Unchanged : SquareRootOfDistance, kalmia::kNeedsOfWard);
  distances_ = kalmia::WardPairList(std::move(list), data.SizeRows());
  clusters_.assign(static_cast<std::size_t>(data.SizeRows()), Cluster());
  kalmia::WorkMeter cells(ask_, kCellsPerQuestion);
  for (std::size_t p = 0; p < clusters_.size(); ++p) {
    clusters_[p].rows.assign(1, static_cast<int>(p) + 1);
    SetErrorSS(clusters_[p]);
    cells.Add(data.SizeColumns());
  }
}

CString WardDistanceCalculator::GetId() {
  CString id;
  id.Format("WardDistanceCalculator%i", static_cast<int>(type_));
  return id;
}

/// Row by row, so that the cells of a column are added in the order of the rows.
WardDistanceCalculator::ColumnSums WardDistanceCalculator::CalcColumnSS(const Cluster& cluster) const {
  const std::size_t columns = static_cast<std::size_t>(data_.SizeColumns());
  const bool holes = std::any_of(cluster.rows.begin(), cluster.rows.end(),
                                 [this](int row) { return data_[row].GetNumMisVal() > 0; });
  ColumnSums all = {std::vector<double>(columns), std::vector<double>(columns), std::vector<int>(holes ? columns : 0)};
  kalmia::WorkMeter meter(ask_, kCellsPerQuestion);
  for (const int row : cluster.rows) {
    meter.Add(data_.SizeColumns());
    const float* const cells = data_[row].begin();
    for (std::size_t c = 0; c < columns; ++c) {
      const double cell = static_cast<double>(cells[c]);
      if (holes && cells[c] == kalmia::kMissingCell<float>) continue;
      all.sums[c] += cell;
      all.sumsOfSquares[c] += cell * cell;
      if (holes) ++all.counts[c];
    }
  }
  return all;
}

/// Sets what GetErrorSS wants to know of a cluster, once for the cluster instead of once for each of its pairs.
void WardDistanceCalculator::SetErrorSS(Cluster& cluster) const {
  const int size = SizeOf(cluster.rows);
  ColumnSums all = CalcColumnSS(cluster);
  cluster.errorSS = 0;
  for (std::size_t c = 0; c < all.sums.size(); ++c) {
    const int count = all.counts.empty() ? size : all.counts[c];
    if (count > 0) cluster.errorSS += ScaledSS(all.sums[c], all.sumsOfSquares[c], count, size);
  }
  cluster.columns = size > 1 ? std::move(all) : ColumnSums();
}

float WardDistanceCalculator::GetErrorSS(const Cluster& first, const Cluster& second) const {
  ColumnSums ofRows[2];
  const auto columnsOf = [this](const Cluster& cluster, ColumnSums& ofRow) -> const ColumnSums& {
    return cluster.rows.size() > 1 ? cluster.columns : ofRow = CalcColumnSS(cluster);
  };
  const ColumnSums &a = columnsOf(first, ofRows[0]), &b = columnsOf(second, ofRows[1]);
  const int sizeA = SizeOf(first.rows), sizeB = SizeOf(second.rows), size = sizeA + sizeB;
  const bool holes = !a.counts.empty() || !b.counts.empty();
  double both = 0;
  for (std::size_t c = 0; c < a.sums.size(); ++c) {
    const int countA = a.counts.empty() ? sizeA : a.counts[c], countB = b.counts.empty() ? sizeB : b.counts[c];
    const int count = holes ? countA + countB : size;
    if (count > 0) both += ScaledSS(a.sums[c] + b.sums[c], a.sumsOfSquares[c] + b.sumsOfSquares[c], count, size);
  }
  return static_cast<float>(both - first.errorSS - second.errorSS);
}

const WardDistanceCalculator::Cluster& WardDistanceCalculator::ClusterOf(int number) const {
  return clusters_[static_cast<std::size_t>(distances_.Numbers().FirstRow(number))];
}

void WardDistanceCalculator::UpdateDistance(DistanceAndIndex& entry) const {
  const float increase = GetErrorSS(ClusterOf(entry.i), ClusterOf(entry.j));
  entry.distance = type_ == DistanceRootIncrease ? std::sqrt(increase < 0 ? 0.0F : increase) : increase;
}

/// Computes the stale distances at the end of the list anew and brings them to their places.
void WardDistanceCalculator::RepairTail() {
  kalmia::WorkMeter cells(ask_, kCellsPerQuestion);
  const auto update = [this, &cells](DistanceAndIndex* entry) {
    UpdateDistance(*entry);
    cells.Add(data_.SizeColumns());
  };
  distances_.RepairTail(update, ask_);
}

void WardDistanceCalculator::MergeClusters(int a, int b) {
  const auto clusterOf = [this](int number) {
    return clusters_.begin() + static_cast<std::ptrdiff_t>(distances_.Numbers().FirstRow(number));
  };
  Cluster &merged = *clusterOf(a), &other = *clusterOf(b);
  std::vector<int> rows;
  rows.reserve(merged.rows.size() + other.rows.size());
  std::merge(merged.rows.begin(), merged.rows.end(), other.rows.begin(), other.rows.end(), std::back_inserter(rows));
  merged.rows.swap(rows);
  other = Cluster();
  SetErrorSS(merged);
  distances_.Numbers().Merge(a, b);
}

CString WardDistanceCalculator::NothingToMergeText() const {
  if (HasDistances()) return "Cluster analysis: there are no two clusters left to merge.";
  CString text;
  text.Format("Cluster analysis: %i is no type of Ward's distance.", static_cast<int>(type_));
  return text;
}

float WardDistanceCalculator::FindNearestAndMerge(int& i, int& j) {
  if (distances_.IsEmpty(ask_)) throw NCError(NothingToMergeText());
  if (distances_.EndsStale()) RepairTail();
  const DistanceAndIndex nearest = distances_.TakeLast();
  i = distances_.Numbers().Position(nearest.i);
  j = distances_.Numbers().Position(nearest.j);
  MergeClusters(nearest.i, nearest.j);
  return nearest.distance;
}

}  // namespace DendroGram
