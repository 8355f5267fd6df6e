#include "cluster/PlainClustering.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>

#include "testing/RandomTables.h"

namespace {

struct Entry {
  float distance;
  int a, b;  // from 0
};

bool Falling(const Entry& x, const Entry& y) { return x.distance > y.distance; }

double ErrorSS(const NCDataMatrix<float>& data, int column, const std::vector<int>& rows) {
  double sum = 0, squares = 0;
  int n = 0;
  for (const int row : rows) {
    const double cell = static_cast<double>(data[row][column]);
    if (data[row][column] == kHole<float>) continue;
    sum += cell;
    squares += cell * cell;
    ++n;
  }
  if (n == 0) return 0;
  const double ss = squares - sum * sum / n;
  const double size = static_cast<double>(rows.size());
  return n < size ? size / n * ss : ss;
}

/// The increase as the list computes it: both clusters' sums are made apart and then added.
float Increase(const NCDataMatrix<float>& data, const std::vector<int>& first, const std::vector<int>& second) {
  double both = 0, one = 0, other = 0;
  for (int c = 1; c <= data.SizeColumns(); ++c) {
    double sum[2] = {0, 0}, squares[2] = {0, 0};
    int n[2] = {0, 0};
    const std::vector<int>* clusters[2] = {&first, &second};
    for (int k = 0; k < 2; ++k)
      for (const int row : *clusters[k]) {
        const double cell = static_cast<double>(data[row][c]);
        if (data[row][c] == kHole<float>) continue;
        sum[k] += cell;
        squares[k] += cell * cell;
        ++n[k];
      }
    one += ErrorSS(data, c, first);
    other += ErrorSS(data, c, second);
    const int present = n[0] + n[1];
    if (present == 0) continue;
    const double size = static_cast<double>(first.size() + second.size());
    const double ss = (squares[0] + squares[1]) - (sum[0] + sum[1]) * (sum[0] + sum[1]) / present;
    both += present < size ? size / present * ss : ss;
  }
  return static_cast<float>(both - one - other);
}

}  // namespace

bool operator==(const PlainMerge& a, const PlainMerge& b) {
  return a.i == b.i && a.j == b.j && a.height == b.height;
}

float PlainDistance(const NCDataMatrix<float>& data, int a, int b, bool half, bool root) {
  double sum = 0;
  std::int64_t m = 0;
  for (int c = 1; c <= data.SizeColumns(); ++c) {
    if (data[a][c] == kHole<float> || data[b][c] == kHole<float>) continue;
    const double d = static_cast<double>(data[a][c]) - static_cast<double>(data[b][c]);
    sum += static_cast<double>(static_cast<float>(half ? d * d / 2 : d * d));
    ++m;
  }
  const float scaled = static_cast<float>(sum * (data.SizeColumns() / static_cast<double>(m)));
  return root ? std::sqrt(scaled) : scaled;
}

std::vector<PlainMerge> PlainSingleLinkage(const NCDataMatrix<float>& data) {
  std::vector<std::vector<int>> clusters;
  for (int r = 1; r <= data.SizeRows(); ++r) clusters.push_back({r});
  std::vector<PlainMerge> merges;
  while (clusters.size() > 1) {
    PlainMerge best = {0, 0, std::numeric_limits<float>::infinity()};
    for (std::size_t i = 0; i < clusters.size(); ++i)
      for (std::size_t j = i + 1; j < clusters.size(); ++j)
        for (const int a : clusters[i])
          for (const int b : clusters[j]) {
            const float d = PlainDistance(data, std::min(a, b), std::max(a, b), false, true);
            if (d < best.height) best = {static_cast<int>(i), static_cast<int>(j), d};
          }
    std::vector<int>& into = clusters[static_cast<std::size_t>(best.i)];
    const std::vector<int>& from = clusters[static_cast<std::size_t>(best.j)];
    into.insert(into.end(), from.begin(), from.end());
    clusters.erase(clusters.begin() + best.j);
    merges.push_back(best);
  }
  return merges;
}

std::vector<PlainMerge> PlainWard(const NCDataMatrix<float>& data, bool root, WardCounts* counts) {
  std::vector<std::vector<int>> clusters;
  std::vector<Entry> list;
  for (int a = 1; a <= data.SizeRows(); ++a) {
    clusters.push_back({a});
    for (int b = a + 1; b <= data.SizeRows(); ++b)
      list.push_back({PlainDistance(data, a, b, true, root), a - 1, b - 1});
  }
  std::stable_sort(list.begin(), list.end(), Falling);
  const auto increase = [&](const Entry& entry) {
    return Increase(data, clusters[static_cast<std::size_t>(entry.a)], clusters[static_cast<std::size_t>(entry.b)]);
  };
  const auto computed = [&](const Entry& entry) {
    return root ? std::sqrt(std::max(increase(entry), 0.0F)) : increase(entry);
  };
  std::vector<PlainMerge> merges;
  while (clusters.size() > 1) {
    if (list.back().distance < 0) {
      std::size_t tail = list.size();
      while (tail > 0 && list[tail - 1].distance < 0) {
        --tail;
        if (counts && increase(list[tail]) < 0) ++counts->negative;
        list[tail].distance = computed(list[tail]);
      }
      std::stable_sort(list.begin() + static_cast<std::ptrdiff_t>(tail), list.end(), Falling);
      const float limit = tail > 0 ? list[tail - 1].distance : std::numeric_limits<float>::max();
      std::vector<Entry> above;
      while (tail > 0 && tail < list.size() && list[tail].distance > limit) {
        above.push_back(list[tail]);
        list.erase(list.begin() + static_cast<std::ptrdiff_t>(tail));
      }
      std::size_t place = tail;  // nothing from here on is nearer to the front
      for (auto entry = above.rbegin(); entry != above.rend(); ++entry) {
        while (place > 0 && list[place - 1].distance < entry->distance) --place;
        if (place > 0 && list[place - 1].distance == entry->distance) --place;
        list.insert(list.begin() + static_cast<std::ptrdiff_t>(place), *entry);
      }
    }
    const Entry nearest = list.back();
    if (counts)
      counts->passedOver += std::any_of(list.begin(), list.end(), [&](const Entry& entry) {
        return entry.distance < 0 && computed(entry) < nearest.distance;
      });
    list.pop_back();
    std::vector<int>& into = clusters[static_cast<std::size_t>(nearest.a)];
    const std::vector<int> from = clusters[static_cast<std::size_t>(nearest.b)];
    into.insert(into.end(), from.begin(), from.end());
    std::sort(into.begin(), into.end());
    clusters.erase(clusters.begin() + nearest.b);
    std::vector<Entry> kept;
    for (Entry entry : list) {
      if (entry.a == nearest.b || entry.b == nearest.b) continue;
      entry.a -= entry.a > nearest.b;
      entry.b -= entry.b > nearest.b;
      if (entry.a == nearest.a || entry.b == nearest.a) entry.distance = -1;
      kept.push_back(entry);
    }
    list = kept;
    merges.push_back({nearest.a, nearest.b, nearest.distance});
  }
  return merges;
}

std::vector<PlainMerge> ExactWard(const NCDataMatrix<float>& data) {
  struct Mean {
    double size;
    std::vector<double> cells;
  };
  std::vector<Mean> means;
  for (int r = 1; r <= data.SizeRows(); ++r) means.push_back({1, {data[r].begin(), data[r].end()}});
  const auto increase = [](const Mean& a, const Mean& b) {
    double squares = 0;
    for (std::size_t c = 0; c < a.cells.size(); ++c)
      squares += (a.cells[c] - b.cells[c]) * (a.cells[c] - b.cells[c]);
    return a.size * b.size / (a.size + b.size) * squares;
  };
  std::vector<PlainMerge> merges;
  while (means.size() > 1) {
    std::size_t i = 0, j = 1;
    for (std::size_t a = 0; a < means.size(); ++a)
      for (std::size_t b = a + 1; b < means.size(); ++b)
        if (increase(means[a], means[b]) < increase(means[i], means[j])) i = a, j = b;
    merges.push_back({static_cast<int>(i), static_cast<int>(j), static_cast<float>(increase(means[i], means[j]))});
    Mean &into = means[i], &from = means[j];
    for (std::size_t c = 0; c < into.cells.size(); ++c)
      into.cells[c] = (into.size * into.cells[c] + from.size * from.cells[c]) / (into.size + from.size);
    into.size += from.size;
    means.erase(means.begin() + static_cast<std::ptrdiff_t>(j));
  }
  return merges;
}

std::vector<int> PartitionAfter(const std::vector<PlainMerge>& merges, std::size_t count) {
  std::vector<std::vector<int>> clusters(merges.size() + 1);
  for (std::size_t row = 0; row < clusters.size(); ++row) clusters[row] = {static_cast<int>(row)};
  for (std::size_t k = 0; k < count; ++k) {
    std::vector<int>& into = clusters[static_cast<std::size_t>(merges[k].i)];
    const auto from = clusters.begin() + merges[k].j;
    into.insert(into.end(), from->begin(), from->end());
    clusters.erase(from);
  }
  std::vector<int> first(merges.size() + 1);
  for (const std::vector<int>& cluster : clusters)
    for (const int row : cluster)
      first[static_cast<std::size_t>(row)] = *std::min_element(cluster.begin(), cluster.end());
  return first;
}

NCDataMatrix<float> WholeNumbers(int rows, int columns, int largest, double holes, unsigned seed) {
  std::mt19937 random(seed);
  NCDataMatrix<float> table(rows, columns, 0);
  for (int r = 1; r <= rows; ++r)
    for (int c = 1; c <= columns; ++c) {
      const bool isHole = static_cast<double>(random() % 1000) < 1000 * holes;
      table(r, c, isHole ? kHole<float> : static_cast<float>(random() % (static_cast<unsigned>(largest) + 1)));
    }
  return table;
}

NCDataMatrix<float> TwelveRows() {
  return MatrixOf<float>({{-16, -26, -5}, {8, 23, 2}, {-11, -16, 15}, {33, 5, -25}, {-19, 32, 4}, {-35, -2, -23},
                          {-13, -10, -14}, {11, -1, -12}, {8, 17, -33}, {-5, -20, -3}, {-26, 0, -1}, {-6, -21, -8}});
}
