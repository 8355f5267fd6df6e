#pragma once

#include <cstdint>
#include <vector>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Which sums of randomly signed differences count against those that were found.
enum class FlipSide {
  AtLeast,          ///< sums as large
  AtLeastInSize     ///< sums as far from 0
};

/// For each column d of the differences (n units, no holes) the p-value that they are as likely positive as negative:
///
///   p = (1 + number of flips with sum of s_i d_i >= sum of d_i) / (flips + 1), the s_i = +-1 at random,
///
/// on the sizes of both sums for AtLeastInSize. All columns have the same signs: for each 64 units in turn, each flip
/// draws a word (of RandomUse::SignFlips), in which bit k, from the lowest, makes unit k of the 64 negative. Sums count
/// as equal within 1e-12 of the sum of all |d_i|, so that the order of additions decides nothing. No unit, or no
/// difference but 0, gives p = 1. `progress` may be null; throws Stopped where it wants to stop.
/// Cost: n x flips x columns additions.
std::vector<double> SignFlipPValues(const RealMatrix& differences, FlipSide side, int flips, std::uint64_t seed,
                                    NCProgress* progress);

/// E of units from E of rows: where rows come in groups, a group's mean over the rows that have one, otherwise the rows
/// themselves; units without one are left out. `groupOfRow` may be null. Columns stay.
RealMatrix ErrorsOfUnits(const RealMatrix& rowErrors, const std::vector<int>* groupOfRow);

}  // namespace kalmia::analysis
