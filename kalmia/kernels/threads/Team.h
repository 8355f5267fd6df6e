#pragma once

#include <cstdint>

namespace kalmia {

/// How many OpenMP threads pay for one pass over `cells` cells of a table: for the `num_threads` clause of a region.
/// 1 where threading is off or the pass takes no longer than starting a team does; otherwise omp_get_max_threads().
/// Never below 1. OpenMP may give a team that is smaller, so results must not depend on its size.
int TeamSize(std::int64_t cells);

}  // namespace kalmia
