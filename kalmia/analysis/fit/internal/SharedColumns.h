#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/BlockPair.h"

namespace kalmia::analysis {

/// Columns of the two blocks that hold the same cells in all rows, missing ones too: "'a' of X is 'b' of Y", the first
/// ones, others counted; empty where there are none. Such a column would be predicted from itself. A column that was
/// rounded, converted to another unit or that has other holes in one block is none of them.
std::string SharedColumnsText(const Block& x, const Block& y);

}  // namespace kalmia::analysis
