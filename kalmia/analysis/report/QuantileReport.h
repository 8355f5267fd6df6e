#pragma once

#include <string>

#include "kalmia/analysis/chart/QuantileResult.h"

namespace kalmia::analysis {

/// The quantile, and what it means.
std::string QuantileText(const QuantileResult& result);

/// The same as JSON, format kalmia-quantile.
std::string QuantileJson(const QuantileResult& result);

}  // namespace kalmia::analysis
