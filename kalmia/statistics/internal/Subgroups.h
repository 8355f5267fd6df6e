#pragma once

#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

/// Statistics of consecutive blocks of n cells, one cell a block, -99 where a block has too few cells; a last
/// incomplete block is left out. n below 1 gives no block. Sums in double, rounded to float.
NCDataVector<float> SubgroupMeans(const NCDataVector<float>& data, int n);    ///< of at least one cell
NCDataVector<float> SubgroupRanges(const NCDataVector<float>& data, int n);   ///< largest - smallest, at least one cell
/// sqrt((m sum x^2 - (sum x)^2) / (m (m - 1))) over the m present cells, at least two.
NCDataVector<float> SubgroupStdDevs(const NCDataVector<float>& data, int n);

}  // namespace kalmia
