#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "kalmia/containers/NCDataMatrix.h"

using kalmia::kMissing;

namespace {

/// Whether a cell can be placed on a grid.
template <class T>
bool IsCoordinate(T x) {
  return x != kMissing && std::isfinite(x);
}

/// The largest b with b^power <= n; n >= 1.
int WholeRoot(int n, int power) {
  const auto isAtMostN = [n, power](std::int64_t base) {
    std::int64_t product = 1;
    for (int i = 0; i < power; ++i)
      if ((product *= base) > n) return false;
    return true;
  };
  int root = 1;  // the estimate may be one off where n is a power, and below n^(1/power) there is nothing to search
  const int estimate = static_cast<int>(std::pow(static_cast<double>(n), 1.0 / power));
  for (int b = std::max(estimate - 1, 2); b <= estimate + 1; ++b)
    if (isAtMostN(b)) root = b;
  return root;
}

int DefaultShifts(int bins) {
  if (bins > 1000) return 1;
  if (bins > 500) return 2;
  if (bins > 200) return 4;
  if (bins > 50) return 8;
  return 16;
}

/// One grid axis: cells of `width` from `min` on.
struct Axis {
  long double min = 0;
  long double width = 0;
};

template <class T>
Axis AxisOfRow(const NCDataVector<T>& row, int bins) {
  constexpr long double kWidthWithoutSpread = 0.001L;
  long double min = 0, max = 0;
  bool first = true;
  for (int c = 1; c <= row.Size(); ++c) {
    if (!IsCoordinate(row[c])) continue;
    const long double x = row[c];
    min = first ? x : std::min(min, x);
    max = first ? x : std::max(max, x);
    first = false;
  }
  return {min, min == max ? kWidthWithoutSpread : (max - min) / bins};
}

/// Index from 1 of the grid cell of x; one cell beyond the last comes down into it.
std::int64_t GridIndex(long double x, long double origin, long double step, std::int64_t cells) {
  const long double distance = (x - origin) / step;
  if (!(distance < static_cast<long double>(cells))) return cells;
  return static_cast<std::int64_t>(distance) + 1;
}

/// Which points share a grid cell. The grid itself is never built: points are split dimension by dimension into the
/// groups that still agree, so the memory taken is that of the points, whatever the number of dimensions and cells.
class CellsOfPoints {
 public:
  explicit CellsOfPoints(std::size_t points) : group_(points, 0), groups_(points == 0 ? 0 : 1) {}

  /// Splits every group by the points' indices on one more axis.
  template <class IndexOf>
  void Split(IndexOf indexOf) {
    std::unordered_map<Key, std::size_t, KeyHash> seen;
    for (std::size_t p = 0; p < group_.size(); ++p)
      group_[p] = seen.try_emplace(Key{group_[p], indexOf(p)}, seen.size()).first->second;
    groups_ = seen.size();
  }

  bool AllAlone() const { return groups_ == group_.size(); }

  /// For each point the number of points in its cell, itself included.
  std::vector<std::int64_t> Neighbours() const {
    std::vector<std::int64_t> size(groups_, 0), neighbours;
    for (const std::size_t g : group_) ++size[g];
    neighbours.reserve(group_.size());
    for (const std::size_t g : group_) neighbours.push_back(size[g]);
    return neighbours;
  }

 private:
  struct Key {
    std::size_t group;
    std::int64_t index;
    bool operator==(const Key& other) const { return group == other.group && index == other.index; }
  };
  struct KeyHash {
    std::size_t operator()(const Key& key) const {
      // Multiplication by odd constants spreads neighbouring groups and indices (Knuth, TAOCP 3, 6.4).
      const std::uint64_t mixed =
          key.group * 0x9E3779B97F4A7C15u ^ static_cast<std::uint64_t>(key.index) * 0xC2B2AE3D27D4EB4Fu;
      return static_cast<std::size_t>(mixed ^ (mixed >> 32));
    }
  };

  std::vector<std::size_t> group_;
  std::size_t groups_;
};

/// The columns that can be placed on the grid, and what the histograms have added to them so far.
template <class T>
class ShiftedHistograms {
 public:
  ShiftedHistograms(const NCDataMatrix<T>& m, int bins) : m_(m), bins_(bins) {
    for (const NCDataVector<T>& row : m) axes_.push_back(AxisOfRow(row, bins));
    for (int c = 1; c <= m.SizeColumns(); ++c)
      if (std::all_of(m.begin(), m.end(), [c](const auto& row) { return IsCoordinate(row[c]); })) points_.push_back(c);
    density_.assign(points_.size(), 0);
  }

  /// One histogram for each s = 1, 2, 4 ... up to `shifts`, with cells of width / s. `moved` starts the grid half a
  /// step earlier, with cells for one more bin.
  void Sweep(int shifts, bool moved) {
    for (std::int64_t s = 1; s <= shifts; s *= 2) AddHistogram(s, moved);
  }

  const std::vector<int>& Points() const { return points_; }
  const std::vector<double>& Density() const { return density_; }

 private:
  void AddHistogram(std::int64_t s, bool moved) {
    const std::int64_t cells = s * (static_cast<std::int64_t>(bins_) + (moved ? 1 : 0));
    CellsOfPoints cellOf(points_.size());
    for (int r = 1; r <= m_.SizeRows() && !cellOf.AllAlone(); ++r) {
      const Axis& axis = axes_[static_cast<std::size_t>(r - 1)];
      const long double step = axis.width / static_cast<long double>(s);
      const long double origin = moved ? axis.min - step * 0.5L : axis.min;
      const NCDataVector<T>& row = m_[r];
      cellOf.Split([&](std::size_t p) { return GridIndex(row[points_[p]], origin, step, cells); });
    }
    const std::int64_t weight = (s + 2) / 2;
    const std::vector<std::int64_t> neighbours = cellOf.Neighbours();
    for (std::size_t p = 0; p < density_.size(); ++p) density_[p] += static_cast<double>(weight * neighbours[p]);
  }

  const NCDataMatrix<T>& m_;
  int bins_;
  std::vector<Axis> axes_;       ///< of row r at r - 1
  std::vector<int> points_;      ///< columns all of whose cells are coordinates
  std::vector<double> density_;  ///< of each point
};

/// Scales to 0 .. 1, unless all are equal.
void ScaleToUnitRange(std::vector<double>& values) {
  const auto [min, max] = std::minmax_element(values.begin(), values.end());
  if (min == values.end() || *min == *max) return;
  const double lowest = *min, range = *max - *min;
  for (double& value : values) value = (value - lowest) / range;
}

}  // namespace

template <class T>
NCDataVector<T> NCDataMatrix<T>::GetDensity(int bins, int shifts, bool all) const {
  constexpr int kColumnsForOneSweep = 5000;  // from here on the second sweep is left out unless asked for
  std::vector<double> density(static_cast<std::size_t>(columns_), 0);
  if (rows_ > 0 && columns_ > 0) {
    if (bins < 1) bins = WholeRoot(columns_, rows_ + 1);
    if (shifts < 1) shifts = DefaultShifts(bins);
    ShiftedHistograms<T> histograms(*this, bins);
    histograms.Sweep(shifts, /*moved=*/false);
    if (all || columns_ < kColumnsForOneSweep) histograms.Sweep(shifts, /*moved=*/true);
    for (std::size_t p = 0; p < histograms.Points().size(); ++p)
      density[static_cast<std::size_t>(histograms.Points()[p] - 1)] = histograms.Density()[p];
    ScaleToUnitRange(density);
  }
  VectorDestroyer<T> holder;
  GetReturnVector(holder, columns_);
  for (int c = 1; c <= columns_; ++c)
    (*holder.vector)(c, static_cast<T>(density[static_cast<std::size_t>(c - 1)]));
  return *holder.vector;
}

template NCDataVector<float> NCDataMatrix<float>::GetDensity(int bins, int shifts, bool all) const;
template NCDataVector<double> NCDataMatrix<double>::GetDensity(int bins, int shifts, bool all) const;
