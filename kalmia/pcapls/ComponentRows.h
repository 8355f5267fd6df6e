#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

// The result matrices of the models: one component per row.

NCDataMatrix<float> WithoutRows(int columns);  ///< the matrix before the first component

/// A share of `rows` with a further row in front of row `at`, or at the end where it has no such row.
NCDataMatrix<float> WithRow(const NCDataMatrix<float>& rows, int at, const NCDataVector<float>& row);

}  // namespace kalmia
