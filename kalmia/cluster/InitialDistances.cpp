#include "kalmia/cluster/InitialDistances.h"

#include <algorithm>
#include <boost/thread.hpp>
#include <cmath>
#include <cstddef>
#include <utility>

#include "kalmia/cluster/PairMemory.h"
#include "kalmia/cluster/PairSort.h"
#include "kalmia/cluster/StoppableProgress.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/FirstFailure.h"
#include "kalmia/kernels/ThreadingControl.h"
#include "kalmia/kernels/simd/SquareSums.h"

using kalmia::StoppableProgress;
using kalmia::simd::kTileRows;

namespace DendroGram {

static_assert(RowDistances::kRowsAtOnce <= kalmia::simd::kRowsBesideTile, "rows that are held against a tile at once");

namespace {

CString NoMemoryText(int rows) {
  CString text;
  text.Format(
      "Memory allocation error.\nWhen doing cluster analysis, a total of N*(N-1)/2 initial distances are calculated. "
      "In this case, enough RAM to hold these distances could not be allocated (N=%u). ",
      static_cast<unsigned>(rows));
  return text;
}

/// The pairs of the rows first to last with all later rows, on one thread.
struct InitDistancesThreadClass {
  const RowDistances& distances;
  int first;
  int last;
  DistanceAndIndex* pairs;

  int operator()() const {
    DistanceAndIndex* at = pairs;
    for (int a = first; a <= last; a += RowDistances::kRowsAtOnce)
      at = distances.Calculate(a, std::min(RowDistances::kRowsAtOnce, last - a + 1), at);
    return last - first + 1;
  }
};

/// Joins its threads at the end, whatever happens.
struct ThreadGroup : std::vector<boost::thread> {
  ~ThreadGroup() { Join(); }
  void Join() {
    for (boost::thread& thread : *this)
      if (thread.joinable()) thread.join();
  }
};

void FillList(const RowDistances& distances, int size, std::vector<DistanceAndIndex>& list) {
  using NCMultiThreading::ThreadingControl;
  const std::int64_t rows = size;
  const int processors = ThreadingControl::IsThreadingOn() ? ThreadingControl::GetNumberOfProcessors() : 1;
  const std::vector<int> ends = SplitRowsForThreads(std::max(1, processors), size);
  kalmia::FirstFailure failure;
  ThreadGroup threads;
  threads.reserve(ends.size());
  int first = 1;
  for (const int end : ends) {
    if (end <= first) continue;
    const std::int64_t offset = (first - 1) * rows - std::int64_t{first} * (first - 1) / 2;
    const InitDistancesThreadClass work = {distances, first, end - 1, list.data() + offset};
    if (end == ends.back())
      failure.Run(work);  // the calling thread takes the last share
    else
      threads.emplace_back([work, &failure] { failure.Run(work); });
    first = end;
  }
  threads.Join();
  failure.Rethrow();
}

}  // namespace

float SquaredDifference(float a, float b) {
  const double difference = static_cast<double>(a) - b;
  return static_cast<float>(difference * difference);
}

float HalfSquaredDifference(float a, float b) {
  const double difference = static_cast<double>(a) - b;
  return static_cast<float>(difference * difference / 2);
}

float Unchanged(float distance) { return distance; }

float SquareRootOfDistance(float distance) { return std::sqrt(distance); }

RowDistances::RowDistances(const NCDataMatrix<float>& data, ElementFunction element, FinishFunction finish)
    : data_(data), element_(element), finish_(finish) {
  if (HasTiles()) FillTiles();
}

/// Whether there is lane code for the squares. The finish is taken as it comes.
bool RowDistances::HasTiles() const { return element_ == SquaredDifference || element_ == HalfSquaredDifference; }

void RowDistances::FillTiles() {
  const int rows = data_.SizeRows(), columns = data_.SizeColumns(), tiles = (rows + kTileRows - 1) / kTileRows;
  tiles_.resize(static_cast<std::size_t>(tiles) * kTileRows * static_cast<std::size_t>(columns));
  hasHoles_.resize(static_cast<std::size_t>(tiles));
  for (int r = 0; r < rows; ++r) {
    const int tile = r / kTileRows;
    if (data_[r + 1].GetNumMisVal() > 0) hasHoles_[static_cast<std::size_t>(tile)] = true;
    float* const cells = tiles_.data() + (TileCells(tile) - tiles_.data()) + r % kTileRows;
    const float* const row = std::as_const(data_)[r + 1].begin();
    for (int c = 0; c < columns; ++c) cells[std::ptrdiff_t{c} * kTileRows] = row[c];
  }
}

const float* RowDistances::TileCells(int tile) const {
  return tiles_.data() + std::ptrdiff_t{tile} * kTileRows * data_.SizeColumns();
}

/// distances[r * kTileRows + l] is that of rows[r] and row l of the tile.
void RowDistances::CalculateTile(const float* const* rows, int count, bool holesInRows, int tile,
                                 float* distances) const {
  using kalmia::simd::Square;
  const Square square = element_ == SquaredDifference ? Square::Whole : Square::Half;
  const int columns = data_.SizeColumns(), n = count * kTileRows;
  double sums[kRowsAtOnce * kTileRows], common[kRowsAtOnce * kTileRows];
  if (holesInRows || hasHoles_[static_cast<std::size_t>(tile)]) {
    kalmia::simd::SquareSumsMasked(square, rows, count, TileCells(tile), columns, sums, common);
    for (int k = 0; k < n; ++k) distances[k] = static_cast<float>(sums[k] * (columns / common[k]));
  } else {
    kalmia::simd::SquareSums(square, rows, count, TileCells(tile), columns, sums);
    for (int k = 0; k < n; ++k) distances[k] = static_cast<float>(sums[k]);
  }
  if (finish_ == Unchanged) return;
  if (finish_ == SquareRootOfDistance) {  // in lanes too
    for (int k = 0; k < n; ++k) distances[k] = std::sqrt(distances[k]);
  } else {
    for (int k = 0; k < n; ++k) distances[k] = finish_(distances[k]);
  }
}

float RowDistances::DistanceOf(int a, int b) const {
  const float *const cells = data_[a].begin(), *const others = data_[b].begin();
  double sum = 0;
  std::int64_t common = 0;
  for (int c = 0; c < data_.SizeColumns(); ++c) {
    if (cells[c] == kalmia::kMissingCell<float> || others[c] == kalmia::kMissingCell<float>) continue;
    sum += static_cast<double>(element_(cells[c], others[c]));
    ++common;
  }
  return finish_(static_cast<float>(sum * (data_.SizeColumns() / static_cast<double>(common))));
}

DistanceAndIndex* RowDistances::CalculateOneByOne(int a, int count, DistanceAndIndex* pairs) const {
  for (int row = a; row < a + count; ++row)
    for (int b = row + 1; b <= data_.SizeRows(); ++b) *pairs++ = {DistanceOf(row, b), row, b};
  return pairs;
}

DistanceAndIndex* RowDistances::Calculate(int a, int count, DistanceAndIndex* pairs) const {
  if (!HasTiles()) return CalculateOneByOne(a, count, pairs);
  const int rows = data_.SizeRows();
  const float* cells[kRowsAtOnce] = {};
  DistanceAndIndex* to[kRowsAtOnce] = {};
  bool holes = false;
  for (int r = 0; r < count; ++r) {
    cells[r] = data_[a + r].begin();
    holes = holes || data_[a + r].GetNumMisVal() > 0;
    to[r] = pairs;
    pairs += rows - a - r;
  }
  float distances[kRowsAtOnce * kTileRows];
  for (int tile = a / kTileRows; tile * kTileRows < rows; ++tile) {
    CalculateTile(cells, count, holes, tile, distances);
    const int begin = tile * kTileRows + 1, end = std::min(begin + kTileRows, rows + 1);  // rows of the tile
    for (int r = 0; r < count; ++r)
      for (int b = std::max(begin, a + r + 1); b < end; ++b)
        *to[r]++ = {distances[r * kTileRows + b - begin], a + r, b};
  }
  return pairs;
}

std::vector<int> SplitRowsForThreads(int threads, int rows) {
  const std::int64_t n = rows, total = kalmia::PairCount(n);
  const float b = static_cast<float>(2 * n - 1) / 2;
  std::vector<int> ends;
  std::int64_t done = 0, previous = 0;
  for (int left = threads; left > 0; --left) {
    const std::int64_t target = (total - done) / left + done;
    // Inverts the number of pairs of the first r rows.
    const float root = static_cast<float>(std::sqrt(static_cast<double>(b) * b - 2.0 * static_cast<double>(target)));
    const float r = b - root;
    std::int64_t v = static_cast<std::int64_t>(r + 0.5);
    if (v == previous) ++v;
    if (v + 1 >= n) break;
    ends.push_back(static_cast<int>(v + 1));
    previous = v;
    done = v * n - (v + 1) * v / 2;
  }
  ends.push_back(rows);
  return ends;
}

void CalculateInitialDistances(const NCDataMatrix<float>& data, NCProgress* progress,
                               std::vector<DistanceAndIndex>& list, ElementFunction element, FinishFunction finish,
                               const kalmia::MemoryNeeds& needs) {
  const StoppableProgress bar(progress);
  const int rows = data.SizeRows();
  // The number of pairs is told in 32 bits.
  if (rows > std::sqrt(4294967294.0)) throw NCError(NoMemoryText(rows));
  const std::int64_t count = kalmia::PairCount(rows);
  bar.SetRange(0, 3);
  bar.SetText("Allocating memory");
  list = std::vector<DistanceAndIndex>();  // that of an earlier analysis does not count as taken
  if (static_cast<std::uint64_t>(count) > kalmia::PairsThatFit(rows, data.SizeColumns(), needs))
    throw ClusterAllocationError(NoMemoryText(rows));
  try {
    list.resize(static_cast<std::size_t>(count));
  } catch (const std::exception&) {
    throw ClusterAllocationError(NoMemoryText(rows));
  }
  CString text;
  text.Format("Calculating %u distances", static_cast<unsigned>(count));
  bar.SetText(text);
  bar.SetValue(1);
  FillList(RowDistances(data, element, finish), rows, list);
  bar.SetValue(2);
  bar.SetText("Sorting");
  if (bar)
    kalmia::SortPairs(list.data(), list.size(), [&bar] { bar.Poll(); });
  else
    kalmia::SortPairs(list.data(), list.size());
  bar.SetValue(3);
}

}  // namespace DendroGram
