#pragma once

#include <string>

#include "kalmia/analysis/chart/ChartResult.h"

namespace kalmia::analysis {

std::string LimitsText(const StoredLimits& stored);

/// Throws BadFile for a text that LimitsText() has not written; `name` is how messages call it.
StoredLimits ReadLimits(const std::string& text, const std::string& name);

}  // namespace kalmia::analysis
