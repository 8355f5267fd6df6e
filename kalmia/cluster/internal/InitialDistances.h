#pragma once

#include <cstdint>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/cluster/internal/PairMemory.h"
#include "kalmia/support/WorkMeter.h"

namespace DendroGram {

/// What a column adds to the distance of two rows, and what is made of the sum.
using ElementFunction = float (*)(float, float);
using FinishFunction = float (*)(float);

float SquaredDifference(float a, float b);      ///< (a - b)^2, formed in double
float HalfSquaredDifference(float a, float b);  ///< (a - b)^2 / 2, formed in double
float Unchanged(float distance);
float SquareRootOfDistance(float distance);

/// The distances of the rows of a table: for m common present columns of K,
///   finish(float(sum(element(a, b)) * (K / m))),
/// the sum in double. Without a common column it is no number. For those that the calculators take it keeps a copy of
/// the table, sixteen rows side by side, column by column, so that a row's distances to all of them are computed
/// together; others are computed pair by pair. Safe to use concurrently, as far as the functions are.
/// Who wants to be able to stop gives a question, or a meter of the cells gone over, kCellsPerQuestion of which take
/// some milliseconds at most. What it throws passes through.
class RowDistances {
 public:
  static constexpr int kRowsSideBySide = 4;

  static constexpr std::int64_t kCellsPerQuestion = std::int64_t{1} << 21;

  RowDistances(const NCDataMatrix<float>& data, ElementFunction element, FinishFunction finish,
               const kalmia::Ask& ask = {});

  /// The pairs of the rows a, ..., a + count - 1, from 1, with all later rows, one behind the other: those of row a
  /// first, with a as `i`. count <= kRowsSideBySide. Returns the end of what it wrote.
  DistanceAndIndex* Calculate(int a, int count, DistanceAndIndex* pairs, kalmia::WorkMeter* cells = nullptr) const;

 private:
  bool HasTiles() const;
  void FillTiles(const kalmia::Ask& ask);
  void CalculateTile(const float* const* rows, int count, bool holesInRows, int tile, float* distances) const;
  const float* TileCells(int tile) const;
  float DistanceOf(int a, int b) const;
  DistanceAndIndex* CalculateOneByOne(int a, int count, DistanceAndIndex* pairs, kalmia::WorkMeter* cells) const;

  NCDataMatrix<float> data_;
  ElementFunction element_;
  FinishFunction finish_;
  std::vector<float> tiles_;    ///< tile by tile; rows beyond the last are zero
  std::vector<bool> hasHoles_;  ///< of each tile
};

/// Rows that share the pairs (a, b), a < b <= rows, about equally among `threads` threads: rising boundaries; the rows
/// of a thread begin at the boundary before, the first one's at 1, and end in front of its own. The last one is `rows`.
std::vector<int> SplitRowsForThreads(int threads, int rows);

/// Makes `list` the pairs of all rows, sorted by descending distance, a NaN in front of every number, equal distances
/// as their rows come: the same list for any number of threads, with a progress object and without. They are computed
/// by as many threads as ThreadingControl has processors, or as can be had. Throws ClusterAllocationError if the list
/// does not fit in memory, where its user has such needs, and NCError with the same text for more than 65535 rows;
/// NCError "Cluster analysis aborted." where the user stops. Up to 65536 pairs are sorted with a question at each
/// comparison; in longer work, some milliseconds lie between two questions. Nothing is asked while an earlier list is
/// given back to the system.
void CalculateInitialDistances(const NCDataMatrix<float>& data, NCProgress* progress,
                               std::vector<DistanceAndIndex>& list, ElementFunction element, FinishFunction finish,
                               const kalmia::MemoryNeeds& needs = kalmia::kNeedsOfList);

}  // namespace DendroGram
