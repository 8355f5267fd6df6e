#pragma once

#include <string>

#include "kalmia/analysis/chart/SpectrumResult.h"
#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/FigureSvg.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// A stem for each correlation with the limits of what chance does, and below it the power of each column, with its
/// peak.
KALMIA_EXPORT Figure SpectrumFigure(const SpectrumResult& result);

/// Its drawing, as an SVG file.
KALMIA_EXPORT std::string SpectrumSvg(const SpectrumResult& result, const SvgOptions& options = {});

}  // namespace kalmia::analysis
