#pragma once

#include <cstddef>

#include "kalmia/analysis/table/ColumnMoments.h"

namespace kalmia::analysis {

/// The skewness of the cells, or 0 where rounding alone can make it. Each cell x has a rounding error, its own and its
/// share of those of the sums, which is taken to be up to 2^-50 |x|. With z = (x - mean) / s the skewness
/// g = n / ((n - 1) (n - 2)) sum(z^3) changes by
///   3 n / ((n - 1) (n - 2) s) (z^2 - (n - 1) / n - z (n - 2) g / n)
/// where one cell changes by 1; independent uniform errors of all cells give it a standard deviation, and the bound is
/// three of these. The bound is about 3 * 2^-50 |x| / s of the sampling error sqrt(6 / n) of a normal distribution: a
/// small part, unless the cells differ in their last digits alone. Missing cells take no part.
/// Shape: n >= 3 present cells of `count` that are not all equal, with their moments. Cost: one pass.
double TellableSkewness(const double* cells, std::size_t count, const ColumnMoments& moments);

}  // namespace kalmia::analysis
