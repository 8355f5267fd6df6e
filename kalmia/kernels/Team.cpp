#include "kalmia/kernels/Team.h"

#include <omp.h>

#include <algorithm>

#include "kalmia/kernels/ThreadingControl.h"

namespace kalmia {
namespace {

/// A pass over fewer cells is over before a team has started and joined.
constexpr std::int64_t kCellsThatPayForATeam = 65536;

}  // namespace

int TeamSize(std::int64_t cells) {
  if (cells < kCellsThatPayForATeam || !NCMultiThreading::ThreadingControl::IsThreadingOn()) return 1;
  return std::max(1, omp_get_max_threads());
}

}  // namespace kalmia
