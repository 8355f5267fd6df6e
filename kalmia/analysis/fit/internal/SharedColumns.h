#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/BlockPair.h"

namespace kalmia::analysis {

/// Names columns that hold the same cells in both blocks, holes included: "'a' of X is 'b' of Y", the first ones,
/// others counted; empty without any. The model would predict such a column from itself. Columns that were rounded,
/// converted to another unit, or have other holes in one block are not found.
std::string SharedColumnsText(const Block& x, const Block& y);

}  // namespace kalmia::analysis
