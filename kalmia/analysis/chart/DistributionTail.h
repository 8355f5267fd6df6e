#pragma once

namespace kalmia::analysis {

/// Which share of a distribution a probability is: what lies below its quantile, or above it.
enum class Tail { Lower, Upper };

// Degrees of freedom that quantiles are computed for.
constexpr double kLeastDf = 1e-3;
constexpr double kMostDf = 1e9;

}  // namespace kalmia::analysis
