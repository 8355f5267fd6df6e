#pragma once

#include <string>

#include "kalmia/analysis/chart/Quantile.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// The quantile, and what it means.
std::string QuantileText(const QuantileResult& result);

/// The same as JSON, format kalmia-quantile.
std::string QuantileJson(const QuantileResult& result, const Notes& notes);

}  // namespace kalmia::analysis
