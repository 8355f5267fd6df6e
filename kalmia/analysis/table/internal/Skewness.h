#pragma once

#include <vector>

namespace kalmia::analysis {

/// The skewness of cells with this mean and standard deviation, or 0 where it is no more than what the cells, as
/// doubles hold them, can tell from 0. Each cell x is off by a rounding error, its own and its share of those of the
/// sums, which is taken to be up to 2^-50 |x|. With z = (x - mean) / s the skewness
/// g = n / ((n - 1) (n - 2)) sum(z^3) changes by
///   3 n / ((n - 1) (n - 2) s) (z^2 - (n - 1) / n - z (n - 2) g / n)
/// for a unit of one cell, and independent uniform errors of all cells give it a standard deviation; three of these are
/// the bound. Nothing that a sample tells is lost: the bound is about 3 * 2^-50 |x| / s of the sampling error
/// sqrt(6 / n) of a normal distribution, a small part unless the cells differ in their last digits alone. Missing cells
/// take no part.
/// Shape: n >= 3 present cells that are not all equal, with their skewness `g`. Cost: one pass.
double TellableSkewness(const std::vector<double>& cells, double mean, double standardDeviation, double g);

}  // namespace kalmia::analysis
