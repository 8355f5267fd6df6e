#include "kalmia/analysis/cluster/internal/ClusterTree.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/containers/NCIntegralVector.h"
#include "kalmia/support/WorkMeter.h"

namespace kalmia::analysis {

namespace {

constexpr std::int64_t kCellsPerQuestion = std::int64_t{1} << 22;  ///< some milliseconds

std::size_t At(int place) { return static_cast<std::size_t>(place); }

int RowsOf(const std::vector<ClusterMerge>& merges) { return static_cast<int>(merges.size()) + 1; }

/// Where the rows of a tree stand from left to right, and which places each cluster takes.
class Places {
 public:
  explicit Places(const std::vector<ClusterMerge>& merges) : first_(2 * merges.size() + 1, 0), parent_(first_.size()) {
    const int rows = RowsOf(merges);
    const auto size = [&](int id) { return id < rows ? 1 : merges[At(id - rows)].rows; };
    for (int k = rows - 2; k >= 0; --k) {  // the root is the last
      const ClusterMerge& merge = merges[At(k)];
      first_[At(merge.left)] = first_[At(rows + k)];
      first_[At(merge.right)] = first_[At(rows + k)] + size(merge.left);
      parent_[At(merge.left)] = parent_[At(merge.right)] = rows + k;
    }
    for (int row = 0; row < rows; ++row) place_.push_back(first_[At(row)]);
  }

  int First(int id) const { return first_[At(id)]; }
  int Parent(int id) const { return parent_[At(id)]; }
  int PlaceOf(int row) const { return place_[At(row)]; }

 private:
  std::vector<int> first_;
  std::vector<int> parent_;  ///< of the root: 0, and unused
  std::vector<int> place_;
};

double DistanceOf(const float* a, const float* b, int columns) {
  double sum = 0.0;
  int common = 0;
  for (int c = 1; c <= columns; ++c) {
    if (a[c] == kMissingCell<float> || b[c] == kMissingCell<float>) continue;
    const double difference = static_cast<double>(a[c]) - b[c];
    sum += difference * difference;
    ++common;
  }
  return std::sqrt(sum * columns / common);
}

/// Sums over pairs. Long doubles lose no digit that float cells have.
class PairSums {
 public:
  void Add(long double distance, long double height) {
    ++pairs_;
    d_ += distance, h_ += height;
    dd_ += distance * distance, hh_ += height * height, dh_ += distance * height;
  }
  double Correlation() const {
    const long double d = dd_ - d_ * d_ / pairs_, h = hh_ - h_ * h_ / pairs_;
    if (!(d > kAlike * dd_ && h > kAlike * hh_)) return std::numeric_limits<double>::quiet_NaN();
    return static_cast<double>((dh_ - d_ * h_ / pairs_) / std::sqrt(d * h));
  }

 private:
  static constexpr long double kAlike = 1e-14L;  ///< what heights vary by, squared, when rounded to single precision
  long double pairs_ = 0, d_ = 0, h_ = 0, dd_ = 0, hh_ = 0, dh_ = 0;
};

/// The heights at which all other rows come into one cluster with `row`, by their places.
void FillHeights(const std::vector<ClusterMerge>& merges, const Places& places, int row, std::vector<float>* heights) {
  const int rows = RowsOf(merges), root = 2 * rows - 2;
  int begin = places.First(row), end = begin + 1;
  for (int id = row; id != root;) {
    id = places.Parent(id);
    const ClusterMerge& merge = merges[At(id - rows)];
    const int first = places.First(id), last = first + merge.rows;
    std::fill(heights->begin() + first, heights->begin() + begin, merge.height);
    std::fill(heights->begin() + end, heights->begin() + last, merge.height);
    begin = first;
    end = last;
  }
}

}  // namespace

std::vector<ClusterMerge> MergesOf(const DendroGram::DendroGramNode& root) {
  NCDataVector<float> heights;
  NCIntegralVector<unsigned long, 0> left, right, merged;
  DendroGram::CreateMergeData(root, heights, left, right, merged);
  const int rows = heights.Size() + 1;
  std::vector<ClusterMerge> merges;
  const auto size = [&](int id) { return id < rows ? 1 : merges[At(id - rows)].rows; };
  for (int k = 1; k < rows; ++k) {
    const int a = static_cast<int>(left[k]) - 1, b = static_cast<int>(right[k]) - 1;
    merges.push_back({a, b, heights[k], size(a) + size(b)});
  }
  return merges;
}

std::vector<float> HighestBelow(const std::vector<ClusterMerge>& merges) {
  const int rows = RowsOf(merges);
  std::vector<float> highest;
  for (const ClusterMerge& merge : merges) {
    float height = merge.height;
    for (const int child : {merge.left, merge.right}) {
      if (child >= rows) height = std::max(height, highest[At(child - rows)]);
    }
    highest.push_back(height);
  }
  return highest;
}

int KeptMerges(const std::vector<ClusterMerge>& merges, const ClusterRecipe& recipe) {
  if (recipe.cut > 0) return RowsOf(merges) - recipe.cut;
  const std::vector<float> highest = HighestBelow(merges);
  const auto end = std::upper_bound(highest.begin(), highest.end(), static_cast<float>(*recipe.height));
  return static_cast<int>(end - highest.begin());
}

std::vector<int> ClustersOfRows(const std::vector<ClusterMerge>& merges, int kept) {
  const int rows = RowsOf(merges);
  std::vector<int> top(2 * merges.size() + 1);  // the largest cluster that each one is part of
  for (int id = 2 * rows - 2; id >= 0; --id) {
    if (top[At(id)] == 0) top[At(id)] = id;  // no cluster but the first row has a part of number 0: itself
    if (id < rows || id - rows >= kept) continue;
    const ClusterMerge& merge = merges[At(id - rows)];
    top[At(merge.left)] = top[At(merge.right)] = top[At(id)];
  }
  std::vector<int> numberOf(top.size(), 0), clusters;
  int number = 0;
  for (int row = 0; row < rows; ++row) {
    int& of = numberOf[At(top[At(row)])];
    if (of == 0) of = ++number;
    clusters.push_back(of);
  }
  return clusters;
}

double CopheneticCorrelation(const NCDataMatrix<float>& cells, const std::vector<ClusterMerge>& merges,
                             NCProgress* progress) {
  const Places places(merges);
  const int rows = cells.SizeRows();
  std::vector<float> heights(At(rows));
  PairSums sums;
  WorkProgress work(progress);
  work.Begin("Comparing heights with distances");
  const Ask ask = [&work] { work.Ask(); };
  WorkMeter meter(ask, kCellsPerQuestion);
  for (int a = 0; a < rows; ++a) {
    work.MoveToPart(a + 1, rows);
    FillHeights(merges, places, a, &heights);
    const float* const row = cells[a + 1].GetVector();
    for (int b = a + 1; b < rows; ++b) {
      meter.Add(cells.SizeColumns());
      sums.Add(DistanceOf(row, cells[b + 1].GetVector(), cells.SizeColumns()), heights[At(places.PlaceOf(b))]);
    }
  }
  return sums.Correlation();
}

}  // namespace kalmia::analysis
