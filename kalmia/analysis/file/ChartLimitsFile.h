#pragma once

#include <string>

#include "kalmia/analysis/chart/ChartResult.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

KALMIA_EXPORT std::string LimitsText(const StoredLimits& stored);

/// Throws BadFile for a text that LimitsText() has not written; `name` is how messages call it.
KALMIA_EXPORT StoredLimits ReadLimits(const std::string& text, const std::string& name);

}  // namespace kalmia::analysis
