#pragma once

#include <string>

#include "kalmia/analysis/chart/QuantileResult.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The quantile, and what it means.
KALMIA_EXPORT std::string QuantileText(const QuantileResult& result);

/// The same as JSON, format kalmia-quantile.
KALMIA_EXPORT std::string QuantileJson(const QuantileResult& result);

}  // namespace kalmia::analysis
