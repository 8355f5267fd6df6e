#include "kalmia/kernels/threads/Team.h"

#include <omp.h>

#include <algorithm>

#include "kalmia/kernels/ThreadingControl.h"

namespace kalmia {
namespace {

/// A pass over fewer cells leaves too little to win. Measured with a deflation in cache (two 2.6 GHz cores, AVX-512): a
/// pass takes 0.17 ns a cell, thus 6 us here, and a team whose threads are still awake costs 1 us, or 2 us where OpenMP
/// looks at the load of the machine first. Threads that fell asleep take some 10 us to wake, once for a row of passes.
constexpr std::int64_t kCellsThatPayForATeam = 32768;

}  // namespace

int TeamSize(std::int64_t cells) {
  if (cells < kCellsThatPayForATeam || !NCMultiThreading::ThreadingControl::IsThreadingOn()) return 1;
  return std::max(1, omp_get_max_threads());
}

}  // namespace kalmia
