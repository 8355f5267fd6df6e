#pragma once

#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia {

/// out[r] = T(X[r] * v) for rows first to last, both included, a few rows at a time, with the bits of the dot product
/// of each row alone. `out` is 1-based and none of X's rows. Returns how many of the results are missing.
template <class T>
int DotRows(const NCDataMatrix<T>& X, const NCDataVector<T>& v, T* out, int first, int last);

}  // namespace kalmia
