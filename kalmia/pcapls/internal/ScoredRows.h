#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

/// matrix += f t v' in the rows of the observations that have a score; those of the others stay as they are, where
/// NCDataMatrix::AddVprimV would empty them. Columns where v is missing become missing in the former.
void AddOuterProductWhereScored(NCDataMatrix<float>* matrix, const NCDataVector<float>& t, const NCDataVector<float>& v,
                                float f);

}  // namespace kalmia
