#pragma once

#include "kalmia/containers/Missing.h"
#include "kalmia/containers/NCDataVector.h"

namespace kalmia::analysis {

/// A cell of scores, weights or loadings in double; 0 where it is missing.
inline double Present(float cell) { return cell == kMissingCell<float> ? 0.0 : static_cast<double>(cell); }

/// The sum of the squares of such cells, in their order.
double SumOfPresentSquares(const NCDataVector<float>& v);

}  // namespace kalmia::analysis
