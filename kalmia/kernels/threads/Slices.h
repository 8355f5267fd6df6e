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

/// Positions first to last, both included.
struct Slice {
  int first, last;

  bool Empty() const { return first > last; }
};

/// One thread of a team.
struct TeamMember {
  int number;  ///< from 0
  int team;    ///< how many there are

  /// Its part of some positions. Parts start at multiples of `grain` after the first position; some may be empty.
  Slice SliceOf(const Slice& whole, int grain) const {
    const int n = whole.last - whole.first + 1;
    return {whole.first + SliceBound(n, grain, number, team),
            whole.first + SliceBound(n, grain, number + 1, team) - 1};
  }
};

/// Splits the positions 1 to n among a team: slice(first, last), both included, is called once for each thread, in
/// parallel where the team has more than one. Slices start at multiples of `grain` (plus one). Returns the sum of what
/// the slices return. Each position falls into one slice, and no sum is split: results do not depend on the team.
/// What a slice throws is thrown when all have ended.
template <class Work>
int ForSlices(int n, int team, int grain, const Work& slice) {
  if (team < 2) return n > 0 ? slice(1, n) : 0;
  int sum = 0;
  FirstFailure failure;
#pragma omp parallel num_threads(team) reduction(+ : sum)
  {
    const Slice mine = TeamMember{omp_get_thread_num(), omp_get_num_threads()}.SliceOf({1, n}, grain);
    if (!mine.Empty()) sum += failure.Run([&] { return slice(mine.first, mine.last); });
  }
  failure.Rethrow();
  return sum;
}

/// Goes over the blocks 0, 1, ..., blocks - 1 in two steps each, with one team for all: every member calls
/// first(block, member) and, when all members have done this, second(block, member). Nobody waits after the second step,
/// so it must not touch what the first step of a later block writes. Neither may throw. Returns the sum of what the
/// first steps return.
template <class First, class Second>
int ForBlocksInTwoSteps(int blocks, int team, const First& first, const Second& second) {
  int sum = 0;
  if (team < 2) {  // no barrier: it would wait for the threads of a region that the caller may be in
    for (int block = 0; block < blocks; ++block) {
      sum += first(block, TeamMember{0, 1});
      second(block, TeamMember{0, 1});
    }
    return sum;
  }
#pragma omp parallel num_threads(team) reduction(+ : sum)
  {
    const TeamMember me{omp_get_thread_num(), omp_get_num_threads()};
    for (int block = 0; block < blocks; ++block) {
      sum += first(block, me);
#pragma omp barrier
      second(block, me);
    }
  }
  return sum;
}

}  // namespace kalmia
