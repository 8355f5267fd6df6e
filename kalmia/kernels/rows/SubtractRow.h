#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

/// X->TransformToDotSubRowVector(v) to the bit, by a team and with lanes: v is subtracted from every row, and cells
/// where either side is missing stay. Counts are left as they are. Shape: v as long as X has columns, not checked.
void SubtractRow(NCDataMatrix<float>* X, const NCDataVector<float>& v);

}  // namespace kalmia
