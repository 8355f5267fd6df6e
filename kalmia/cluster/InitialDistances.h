#pragma once

#include <cmath>
#include <cstdint>
#include <vector>

#include "kalmia/cluster/ClusterDistanceCalculator.h"

namespace DendroGram {

/// What one column adds to a distance, and what makes the distance of the sum.
using ElementFunction = float (*)(float, float);
using FinishFunction = float (*)(float);

/// The difference is squared in double, and rounded to float before it is added to anything.
inline float SquaredDifference(float a, float b) {
  const double difference = static_cast<double>(a) - b;
  return static_cast<float>(difference * difference);
}
inline float HalfSquaredDifference(float a, float b) {
  const double difference = static_cast<double>(a) - b;
  return static_cast<float>(difference * difference / 2);
}
inline float Unchanged(float distance) { return distance; }
inline float SquareRootOfDistance(float distance) { return std::sqrt(distance); }

/// The kinds of distance of two rows: for m common present columns of K,  finish(float(sum(element(a, b)) * (K / m))).
/// Without a common column it is no number.
enum RowDistance {
  RowDistanceEuclidean,        ///< SquaredDifference, SquareRootOfDistance
  RowDistanceWard,             ///< HalfSquaredDifference, Unchanged
  RowDistanceWardSquareRoot,   ///< HalfSquaredDifference, SquareRootOfDistance
};

/// The distances of row `a` to the rows first, ..., last of the table, from 1, into `pairs`, one behind the other, with
/// a as `i`.
void CalculateRowDistances(RowDistance kind, const NCDataMatrix<float>& data, int a, int first, int last,
                           DistanceAndIndex* pairs);

/// Rows that share the pairs (a, b), a < b <= rows, about equally among `threads` threads: rising boundaries; the rows
/// of a thread begin at the boundary before, the first one's at 1, and end in front of its own. The last one is `rows`.
std::vector<int> SplitRowsForThreads(int threads, int rows);

/// Makes `list` the pairs of all rows, sorted by descending distance, a NaN in front of every number. The distances are
/// computed by as many threads as ThreadingControl has processors. Throws ClusterAllocationError if the list does not
/// fit in memory, and NCError with the same text for more than 65535 rows; NCError "Cluster analysis aborted." where
/// the user stops, which can be during the sort.
void CalculateInitialDistances(const NCDataMatrix<float>& data, NCProgress* progress,
                               std::vector<DistanceAndIndex>& list, RowDistance kind);

}  // namespace DendroGram

namespace kalmia {

/// The order of the list: descending, a NaN in front of every number, so that it is taken last.
inline bool IsFarther(float a, float b) { return std::isnan(a) ? !std::isnan(b) : a > b; }
inline bool IsFartherPair(const DendroGram::DistanceAndIndex& a, const DendroGram::DistanceAndIndex& b) {
  return IsFarther(a.distance, b.distance);
}

/// Number of pairs of so many rows.
inline std::int64_t PairCount(std::int64_t rows) { return rows * (rows - 1) / 2; }

/// How many pairs may be held in memory at most; see SetMaximumPairsInMemory.
std::uint64_t PairsThatFit();

}  // namespace kalmia
