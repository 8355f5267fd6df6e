#pragma once

#include <string>

#include "app/SpectrumResult.h"

namespace kalmia::app {

/// The correlations, and below them the power of each column, as an SVG file.
std::string SpectrumSvg(const SpectrumResult& result);

}  // namespace kalmia::app
