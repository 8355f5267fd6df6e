#include "kalmia/cluster/internal/InitialDistances.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "kalmia/cluster/internal/ClusterProgress.h"
#include "kalmia/cluster/internal/PairMemory.h"
#include "kalmia/cluster/internal/PairSort.h"
#include "kalmia/containers/Missing.h"
#include "kalmia/kernels/simd/SquareSums.h"

using kalmia::Ask;
using kalmia::ClusterProgress;
using kalmia::WorkMeter;
using kalmia::simd::kTileRows;

namespace DendroGram {

static_assert(RowDistances::kRowsSideBySide <= kalmia::simd::kRowsBesideTile,
              "rows that are held against a tile at once");

namespace {

CString NoMemoryText(int rows) {
  CString text;
  text.Format(
      "Memory allocation error.\nWhen doing cluster analysis, a total of N*(N-1)/2 initial distances are calculated. "
      "In this case, enough RAM to hold these distances could not be allocated (N=%u). ",
      static_cast<unsigned>(rows));
  return text;
}

constexpr std::int64_t kMostShares = 256;  ///< of the rows, which threads take one by one
/// About: eight passes, each with a question for eight times so many.
constexpr std::int64_t kPairsSortedPerQuestion = 1024;

/// So many, whatever the number of threads, that each is worth a question.
int SharesOf(std::int64_t cells) {
  return static_cast<int>(std::min(kMostShares, cells / RowDistances::kCellsPerQuestion + 1));
}

void FillList(const RowDistances& distances, int size, int shares, std::vector<DistanceAndIndex>& list,
              const Ask& ask) {
  const std::int64_t rows = size;
  const std::vector<int> ends = SplitRowsForThreads(shares, size);
  const auto fill = [&](int share, const Ask& askToo) {
    WorkMeter cells(askToo, RowDistances::kCellsPerQuestion);
    const int first = share == 0 ? 1 : ends[static_cast<std::size_t>(share) - 1];
    const int end = ends[static_cast<std::size_t>(share)];
    DistanceAndIndex* at = list.data() + ((first - 1) * rows - std::int64_t{first} * (first - 1) / 2);
    for (int a = first; a < end; a += RowDistances::kRowsSideBySide)
      at = distances.Calculate(a, std::min(RowDistances::kRowsSideBySide, end - a), at, &cells);
    if (shares > 1 && askToo) askToo();
  };
  kalmia::ForPieces(static_cast<int>(ends.size()), kalmia::ThreadsForLongWork(), ask, fill);
}

/// Questions in the course of a step that takes the bar from `from` on by 1: about `expected` of them.
Ask QuestionsOfStep(const ClusterProgress& bar, float from, std::int64_t expected) {
  if (!bar.IsThere()) return {};
  return [&bar, from, expected, asked = std::int64_t{0}]() mutable {
    bar.ThrowIfStopped();
    if (++asked < expected) bar.SetValue(from + static_cast<float>(asked) / static_cast<float>(expected));
  };
}

/// The questions of a sort: a short one asks too often for each to move the bar.
Ask QuestionsOfSort(const ClusterProgress& bar, std::int64_t pairs) {
  if (pairs > static_cast<std::int64_t>(kalmia::kPairsAskedOneByOne))
    return QuestionsOfStep(bar, 2, pairs / kPairsSortedPerQuestion);
  return kalmia::QuestionsTo(bar);
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

RowDistances::RowDistances(const NCDataMatrix<float>& data, ElementFunction element, FinishFunction finish,
                           const Ask& ask)
    : data_(data), element_(element), finish_(finish) {
  if (HasTiles()) FillTiles(ask);
}

/// Whether there is lane code for the squares. The finish is taken as it comes.
bool RowDistances::HasTiles() const { return element_ == SquaredDifference || element_ == HalfSquaredDifference; }

void RowDistances::FillTiles(const Ask& ask) {
  WorkMeter meter(ask, kCellsPerQuestion);
  const int rows = data_.SizeRows(), columns = data_.SizeColumns(), tiles = (rows + kTileRows - 1) / kTileRows;
  kalmia::GrowTo(static_cast<std::size_t>(tiles) * kTileRows * static_cast<std::size_t>(columns), ask, &tiles_);
  hasHoles_.resize(static_cast<std::size_t>(tiles));
  for (int r = 0; r < rows; ++r) {
    const int tile = r / kTileRows;
    if (data_[r + 1].GetNumMisVal() > 0) hasHoles_[static_cast<std::size_t>(tile)] = true;
    float* const cells = tiles_.data() + (TileCells(tile) - tiles_.data()) + r % kTileRows;
    const float* const row = std::as_const(data_)[r + 1].begin();
    for (int c = 0; c < columns; ++c) cells[std::ptrdiff_t{c} * kTileRows] = row[c];
    meter.Add(columns);
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
  double sums[kRowsSideBySide * kTileRows], common[kRowsSideBySide * kTileRows];
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

DistanceAndIndex* RowDistances::CalculateOneByOne(int a, int count, DistanceAndIndex* pairs, WorkMeter* cells) const {
  for (int row = a; row < a + count; ++row)
    for (int b = row + 1; b <= data_.SizeRows(); ++b) {
      *pairs++ = {DistanceOf(row, b), row, b};
      if (cells) cells->Add(data_.SizeColumns());
    }
  return pairs;
}

DistanceAndIndex* RowDistances::Calculate(int a, int count, DistanceAndIndex* pairs, WorkMeter* meter) const {
  if (!HasTiles()) return CalculateOneByOne(a, count, pairs, meter);
  const int rows = data_.SizeRows();
  const float* cells[kRowsSideBySide] = {};
  DistanceAndIndex* to[kRowsSideBySide] = {};
  bool holes = false;
  for (int r = 0; r < count; ++r) {
    cells[r] = data_[a + r].begin();
    holes = holes || data_[a + r].GetNumMisVal() > 0;
    to[r] = pairs;
    pairs += rows - a - r;
  }
  float distances[kRowsSideBySide * kTileRows];
  for (int tile = a / kTileRows; tile * kTileRows < rows; ++tile) {
    CalculateTile(cells, count, holes, tile, distances);
    const int begin = tile * kTileRows + 1, end = std::min(begin + kTileRows, rows + 1);  // rows of the tile
    for (int r = 0; r < count; ++r)
      for (int b = std::max(begin, a + r + 1); b < end; ++b)
        *to[r]++ = {distances[r * kTileRows + b - begin], a + r, b};
    if (meter) meter->Add(std::int64_t{count} * kTileRows * data_.SizeColumns());
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
  const ClusterProgress bar(progress);
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
    list.reserve(static_cast<std::size_t>(count));
  } catch (const std::exception&) {
    throw ClusterAllocationError(NoMemoryText(rows));
  }
  const Ask poll = kalmia::QuestionsTo(bar);
  kalmia::GrowTo(static_cast<std::size_t>(count), poll, &list);
  CString text;
  text.Format("Calculating %u distances", static_cast<unsigned>(count));
  bar.SetText(text);
  bar.SetValue(1);
  const std::int64_t cells = count * data.SizeColumns();
  const int shares = SharesOf(cells);
  FillList(RowDistances(data, element, finish, poll), rows, shares, list,
           QuestionsOfStep(bar, 1, cells / RowDistances::kCellsPerQuestion + shares));
  bar.SetValue(2);
  bar.SetText("Sorting");
  kalmia::SortListOfAnalysis(list.data(), list.size(), QuestionsOfSort(bar, count));
  bar.SetValue(3);
}

}  // namespace DendroGram
