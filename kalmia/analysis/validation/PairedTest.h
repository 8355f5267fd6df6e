#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Two models that predicted the same left-out rows: whether one does so better.
struct PairedTest {
  std::size_t units = 0;      ///< rows, or groups of rows, that both have an error for
  double meanError = 0.0;       ///< mean of E of the first one over the units
  double otherMeanError = 0.0;  ///< of the second one
  double difference = 0.0;      ///< the first less the second: below 0 the first is better
  double p = 1.0;               ///< two-sided
};

/// van der Voet's randomisation test: with d_i the difference of the squared errors E of unit i and s_i = +-1 at random
///
///   p = (1 + flips with |sum_i s_i d_i| >= |sum_i d_i|) / (flips + 1).
///
/// Rows that one of the models has no error for (not a number) do not count. With `groupOfRow`, which gives each row a
/// group from 0 on, the units are the groups and E of a group is its mean; null for rows. Without a unit the means are
/// no numbers and p is 1. Sizes are alike, not checked; `flips` is at least 1.
/// Throws BadRequest for fewer flips, Stopped where `progress`, which may be null, wants to stop.
/// Source: H. van der Voet, Chemom. Intell. Lab. Syst. 25 (1994) 313-323.
KALMIA_EXPORT PairedTest ComparePaired(const std::vector<double>& rowErrors, const std::vector<double>& otherRowErrors,
                                       const std::vector<int>* groupOfRow = nullptr, int flips = 999,
                                       std::uint64_t seed = 1, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
