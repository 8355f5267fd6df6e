#pragma once

#include <string>

#include "app/Notes.h"
#include "app/Quantile.h"

namespace kalmia::app {

/// The quantile, and what it means.
std::string QuantileText(const QuantileResult& result);

/// The same as JSON, format kalmia-quantile.
std::string QuantileJson(const QuantileResult& result, const Notes& notes);

}  // namespace kalmia::app
