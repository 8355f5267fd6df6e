#include "kalmia/cluster/WardDistanceCalculator.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iterator>
#include <limits>

#include "kalmia/cluster/InitialDistances.h"
#include "kalmia/cluster/PairSort.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/Team.h"

namespace DendroGram {

namespace {

constexpr float kStale = -1.0F;

/// The sum of squares around the mean of the present cells, scaled up to `size` cells.
double ScaledSS(double sum, double sumOfSquares, int count, int size) {
  const double ss = sumOfSquares - sum * sum / count;
  return count < size ? static_cast<double>(size) / count * ss : ss;
}

}  // namespace

void WardDistanceCalculator::Init(const NCDataMatrix<float>& data, NCProgress* progress) {
  data_ = data;
  distances_.clear();
  if (type_ == DistanceIncrease) CalculateInitialDistances(data_, progress, distances_, RowDistanceWard);
  if (type_ == DistanceRootIncrease) CalculateInitialDistances(data_, progress, distances_, RowDistanceWardSquareRoot);
  clusters_.assign(static_cast<std::size_t>(data.SizeRows()), Cluster());
  for (std::size_t p = 0; p < clusters_.size(); ++p) {
    clusters_[p].rows.assign(1, static_cast<int>(p) + 1);
    SetSums(clusters_[p]);
  }
}

CString WardDistanceCalculator::GetId() {
  CString id;
  id.Format("WardDistanceCalculator%i", static_cast<int>(type_));
  return id;
}

WardDistanceCalculator::ColumnSS WardDistanceCalculator::CalcColumnSS(int column, const Cluster& cluster) const {
  ColumnSS ss;
  for (const int row : cluster.rows) {
    const float cell = data_[row][column];
    if (cell == kalmia::kMissingCell<float>) continue;
    ss.sum += static_cast<double>(cell);
    ss.sumOfSquares += static_cast<double>(cell) * cell;
    ++ss.count;
  }
  return ss;
}

WardDistanceCalculator::ColumnSS WardDistanceCalculator::GetColumnSS(int column, const Cluster& cluster) const {
  if (cluster.columns.empty()) return CalcColumnSS(column, cluster);
  return cluster.columns[static_cast<std::size_t>(column) - 1];
}

/// What GetErrorSS wants to know of a cluster, once for the cluster instead of once for each of its pairs.
void WardDistanceCalculator::SetSums(Cluster& cluster) const {
  const int size = static_cast<int>(cluster.rows.size());
  std::vector<ColumnSS> columns(size > 1 ? static_cast<std::size_t>(data_.SizeColumns()) : 0);
  cluster.columns.clear();
  cluster.errorSS = 0;
  for (int c = 1; c <= data_.SizeColumns(); ++c) {
    const ColumnSS ss = CalcColumnSS(c, cluster);
    if (ss.count > 0) cluster.errorSS += ScaledSS(ss.sum, ss.sumOfSquares, ss.count, size);
    if (!columns.empty()) columns[static_cast<std::size_t>(c) - 1] = ss;
  }
  cluster.columns.swap(columns);
}

float WardDistanceCalculator::GetErrorSS(const Cluster& first, const Cluster& second) const {
  const int size = static_cast<int>(first.rows.size() + second.rows.size());
  double both = 0;
  for (int c = 1; c <= data_.SizeColumns(); ++c) {
    const ColumnSS a = GetColumnSS(c, first), b = GetColumnSS(c, second);
    if (a.count + b.count > 0)
      both += ScaledSS(a.sum + b.sum, a.sumOfSquares + b.sumOfSquares, a.count + b.count, size);
  }
  return static_cast<float>(both - first.errorSS - second.errorSS);
}

void WardDistanceCalculator::UpdateDistance(DistanceAndIndex& entry) const {
  const float increase = GetErrorSS(clusters_[static_cast<std::size_t>(entry.i) - 1],
                                    clusters_[static_cast<std::size_t>(entry.j) - 1]);
  entry.distance = type_ == DistanceRootIncrease ? std::sqrt(increase < 0 ? 0.0F : increase) : increase;
}

/// Computes the stale distances at the end of the list anew and brings them to their places.
void WardDistanceCalculator::RepairTail() {
  std::size_t front = distances_.size();
  while (front > 0 && distances_[front - 1].distance < 0) UpdateDistance(distances_[--front]);
  const auto tail = distances_.begin() + static_cast<std::ptrdiff_t>(front);
  std::stable_sort(tail, distances_.end(), kalmia::IsFartherPair);
  if (front == 0) return;
  const float limit = distances_[front - 1].distance;
  const auto end = std::partition_point(tail, distances_.end(), [limit](const DistanceAndIndex& entry) {
    return kalmia::IsFarther(entry.distance, limit);
  });
  InsertIntoFront(front, static_cast<std::size_t>(std::distance(distances_.begin(), end)));
}

/// Merges the sorted entries from `front` to `end` into those in front of them, from the smallest one on: in front of
/// an equal one, so that it is taken later, and past stale ones, which are below anything.
void WardDistanceCalculator::InsertIntoFront(std::size_t front, std::size_t end) {
  const auto at = [this](std::size_t k) { return distances_.begin() + static_cast<std::ptrdiff_t>(k); };
  const std::vector<DistanceAndIndex> entries(at(front), at(end));
  std::size_t place = end;
  for (auto entry = entries.rbegin(); entry != entries.rend(); ++entry) {
    while (front > 0 && kalmia::IsFarther(entry->distance, distances_[front - 1].distance))
      distances_[--place] = distances_[--front];
    if (front > 0 && !kalmia::IsFarther(distances_[front - 1].distance, entry->distance))
      distances_[--place] = distances_[--front];
    distances_[--place] = *entry;
  }
}

void WardDistanceCalculator::MergeClusters(int a, int b) {
  Cluster& merged = clusters_[static_cast<std::size_t>(a) - 1];
  const auto other = clusters_.begin() + (b - 1);
  merged.rows.insert(merged.rows.end(), other->rows.begin(), other->rows.end());
  std::sort(merged.rows.begin(), merged.rows.end());
  clusters_.erase(other);
  SetSums(merged);
}

/// Drops the pairs of b, marks those of a as stale, and counts the clusters behind b one lower. Each thread closes up
/// its block; the blocks are then moved together, so that the order stays.
void WardDistanceCalculator::MarkMerged(int a, int b) {
  const std::int64_t size = static_cast<std::int64_t>(distances_.size());
  const int blocks = kalmia::TeamSize(size);
  std::vector<DistanceAndIndex*> ends(static_cast<std::size_t>(blocks));
  DistanceAndIndex* const list = distances_.data();
  const auto begin = [=](int block) { return list + size * block / blocks; };
  const auto closeUp = [=](int block) {
    DistanceAndIndex* to = begin(block);
    for (const DistanceAndIndex* from = begin(block); from != begin(block + 1); ++from) {
      DistanceAndIndex entry = *from;
      if (entry.i == b || entry.j == b) continue;
      if (entry.i > b) --entry.i;
      if (entry.j > b) --entry.j;
      if (entry.i == a || entry.j == a) entry.distance = kStale;
      *to++ = entry;
    }
    return to;
  };
#pragma omp parallel for schedule(static) num_threads(blocks)
  for (int block = 0; block < blocks; ++block) ends[static_cast<std::size_t>(block)] = closeUp(block);
  DistanceAndIndex* to = ends[0];
  for (int block = 1; block < blocks; ++block) to = std::copy(begin(block), ends[static_cast<std::size_t>(block)], to);
  distances_.resize(static_cast<std::size_t>(to - list));
}

float WardDistanceCalculator::FindNearestAndMerge(int& i, int& j) {
  if (distances_.empty()) throw NCError("Cluster analysis: there are no two clusters left to merge.");
  if (distances_.back().distance < 0) RepairTail();
  const DistanceAndIndex nearest = distances_.back();
  distances_.pop_back();
  MergeClusters(nearest.i, nearest.j);
  if (!distances_.empty()) MarkMerged(nearest.i, nearest.j);
  i = nearest.i - 1;
  j = nearest.j - 1;
  return nearest.distance;
}

}  // namespace DendroGram
