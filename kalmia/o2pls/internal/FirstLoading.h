#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia {

/// The loading, of unit length, of a table's first principal component: the direction in the space of its columns that
/// explains most of it, to the convergence of NCPCA. Of a cross product Y'X it is the direction in X that covaries most
/// with Y, at a cost that does not depend on the number of observations.
/// Progress: where `progress` is null NCPCA opens a bar of its own. Throws: NCError as NCPCA::NextComponent does;
/// std::bad_alloc.
NCDataVector<float> FirstLoading(const NCDataMatrix<float>& table, int maxIterations, NCProgress* progress);

}  // namespace kalmia
