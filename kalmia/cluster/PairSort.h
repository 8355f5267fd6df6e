#pragma once

#include <cmath>
#include <cstddef>
#include <functional>

#include "kalmia/cluster/ClusterDistanceCalculator.h"

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

/// Sorts pairs of at most 65535 rows by ComesBefore, in place; -0 may become 0. Long lists are dealt out among buckets
/// by distance, which a team sorts (American flag sort: McIlroy, Bostic & McIlroy 1993, Computing Systems 6, 5-27).
/// Each thread uses half a megabyte beside the list.
void SortPairs(DendroGram::DistanceAndIndex* pairs, std::size_t n);
/// The same on the calling thread, with a call of poll() at each comparison, which may throw: the list is then good for
/// nothing. One that fits the second cache is sorted by comparing alone.
void SortPairs(DendroGram::DistanceAndIndex* pairs, std::size_t n, const std::function<void()>& poll);

}  // namespace kalmia
