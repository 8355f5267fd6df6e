#pragma once

#include "kalmia/containers/NCDataVector.h"

namespace kalmia::analysis {

/// The standard deviation of a process from the ranges of neighbours: the mean of |x_i - x_(i-1)| over the pairs of
/// present neighbours, divided by d2 of subgroups of 2, 1.128. A slow drift or a shift widens it less than the standard
/// deviation of the values. -99 without a pair.
double SpreadOfMovingRanges(const NCDataVector<float>& values);

}  // namespace kalmia::analysis
