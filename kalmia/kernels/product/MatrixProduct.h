#pragma once

#include "kalmia/kernels/product/ProductFactor.h"

namespace kalmia {

/// product[i][j] = sum over k of a's cell (i, k) times b's cell (j, k), for all vectors i of a and j of b; product[i]
/// is row i from 0, its cells from 0.
///
/// With `holes` only the k count at which both cells are present, and a cell without any such k is missing. Without,
/// every cell is a number, and an empty shared index gives 0. Each cell's sum runs in double in ascending order of k
/// and is rounded once, on storing: the same bits in any tiling and for any number of threads.
/// |error| before storing <= n u sum |a b|, n the shared length, u = 2^-53 (Higham 2002, Accuracy and Stability, 3.1).
/// Cost: 2 * outer * outer * shared operations, tile by tile through packed copies that stay in the second-level cache.
template <class T>
void MultiplyFactors(ProductFactor<T>& a, ProductFactor<T>& b, bool holes, T* const* product);

}  // namespace kalmia
