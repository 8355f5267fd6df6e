#pragma once

#include <string>

#include "kalmia/analysis/chart/SpectrumResult.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The correlations, and below them the power of each column, as an SVG file.
KALMIA_EXPORT std::string SpectrumSvg(const SpectrumResult& result);

}  // namespace kalmia::analysis
