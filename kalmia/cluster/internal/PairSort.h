#pragma once

#include <cmath>
#include <cstddef>

#include "kalmia/cluster/ClusterDistanceCalculator.h"
#include "kalmia/support/WorkMeter.h"

namespace kalmia {

/// The order of distances in a list: descending, a NaN in front of every number, so that it is taken last.
inline bool IsFarther(float a, float b) { return std::isnan(a) ? !std::isnan(b) : a > b; }
inline bool IsFartherPair(const DendroGram::DistanceAndIndex& a, const DendroGram::DistanceAndIndex& b) {
  return IsFarther(a.distance, b.distance);
}

/// The order of the pairs of rows in a list: by descending distance, and equal ones as their rows come. No two pairs
/// are equal in it, so that it does not matter how a list is sorted.
inline bool ComesBefore(const DendroGram::DistanceAndIndex& a, const DendroGram::DistanceAndIndex& b) {
  if (IsFartherPair(a, b)) return true;
  if (IsFartherPair(b, a)) return false;
  return a.i != b.i ? a.i < b.i : a.j < b.j;
}

/// Sorts pairs by ComesBefore, in place; -0 becomes 0, and all NaNs the same one. Pairs of at most 65535 rows are dealt
/// out among buckets by distance, which a team sorts (American flag sort: McIlroy, Bostic & McIlroy 1993, Computing
/// Systems 6, 5-27); each thread uses half a megabyte beside the list. Others are sorted by comparing alone.
///
/// `ask`, if it is not empty, is called on the calling thread, once for at most 8192 pairs that a pass goes over, or
/// 65536 comparisons. It may throw: the list is then good for nothing. The result does not depend on whether anybody
/// asks, nor on the number of threads.
void SortPairs(DendroGram::DistanceAndIndex* pairs, std::size_t n, const Ask& ask = {});

/// Up to so many pairs, the list of an analysis asks at each comparison.
constexpr std::size_t kPairsAskedOneByOne = 65536;

/// SortPairs for the list of an analysis: asks at each comparison where the list is short, else as above.
void SortListOfAnalysis(DendroGram::DistanceAndIndex* pairs, std::size_t n, const Ask& ask);

}  // namespace kalmia
