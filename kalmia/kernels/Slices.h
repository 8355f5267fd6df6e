#pragma once

#include <omp.h>

#include <algorithm>

#include "kalmia/kernels/FirstFailure.h"

namespace kalmia {

/// Slices of columns start at multiples of this: whole cache lines of a row.
constexpr int kColumnsPerGrain = 16;

/// Splits the positions 1 to n among a team: slice(first, last), both included, is called once for each thread, in
/// parallel where the team has more than one. Slices start at multiples of `grain` (plus one). Returns the sum of what
/// the slices return. Each position falls into one slice, and no sum is split: results do not depend on the team. What a
/// slice throws is thrown when all have ended.
template <class Slice>
int ForSlices(int n, int team, int grain, const Slice& slice) {
  if (team < 2) return n > 0 ? slice(1, n) : 0;
  int sum = 0;
  FirstFailure failure;
#pragma omp parallel num_threads(team) reduction(+ : sum)
  {
    const int grains = (n + grain - 1) / grain;
    const int threads = omp_get_num_threads(), me = omp_get_thread_num();
    const auto bound = [=](int t) {
      return std::min(n, static_cast<int>(static_cast<long long>(grains) * t / threads) * grain);
    };
    const int first = bound(me) + 1, last = bound(me + 1);
    if (first <= last) sum += failure.Run([&] { return slice(first, last); });
  }
  failure.Rethrow();
  return sum;
}

}  // namespace kalmia
