#pragma once

#include <omp.h>

#include <algorithm>
#include <cstdint>

#include "kalmia/kernels/threads/FirstFailure.h"

namespace kalmia {

/// Slices of columns start at multiples of this: whole cache lines of a row.
constexpr int kColumnsPerGrain = 16;

/// How many of n positions come before part `k` of `parts` equal ones that consist of whole grains; n for k = parts.
inline int SliceBound(int n, int grain, int k, int parts) {
  const std::int64_t grains = (std::int64_t{n} + grain - 1) / grain;
  return static_cast<int>(std::min<std::int64_t>(n, grains * k / parts * grain));
}

/// Splits the positions 1 to n among a team: slice(first, last), both included, is called once for each thread, in
/// parallel where the team has more than one. Slices start at multiples of `grain` (plus one). Returns the sum of what
/// the slices return. Each position falls into one slice, and no sum is split: results do not depend on the team.
/// What a slice throws is thrown when all have ended.
template <class Slice>
int ForSlices(int n, int team, int grain, const Slice& slice) {
  if (team < 2) return n > 0 ? slice(1, n) : 0;
  int sum = 0;
  FirstFailure failure;
#pragma omp parallel num_threads(team) reduction(+ : sum)
  {
    const int threads = omp_get_num_threads(), me = omp_get_thread_num();
    const int first = SliceBound(n, grain, me, threads) + 1, last = SliceBound(n, grain, me + 1, threads);
    if (first <= last) sum += failure.Run([&] { return slice(first, last); });
  }
  failure.Rethrow();
  return sum;
}

}  // namespace kalmia
