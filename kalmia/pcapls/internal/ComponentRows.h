#pragma once

#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia {

// Matrices that grow row by row: the results of the models, with one component per row, those of a cross-validation,
// with one round per row, and parts of a table.

/// No rows yet, but this many columns, and room for that many rows.
NCDataMatrix<float> EmptyMatrix(int columns, int room = 0);

/// A share of `rows` with a further row in front of row `at`, or at the end where it has no such row.
NCDataMatrix<float> WithRow(const NCDataMatrix<float>& rows, int at, const NCDataVector<float>& row);

}  // namespace kalmia
