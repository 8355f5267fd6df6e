#pragma once

#include <string>

#include "kalmia/analysis/chart/ChartResult.h"
#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/FigureSvg.h"
#include "kalmia/analysis/figure/PlotTexts.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The panels below each other: series with centre and limits, signals beyond these, and a ring around each point that
/// breaks another rule, with the numbers of the rules where they begin; notes say what the numbers stand for. Rings of
/// more points than a page can tell apart are thinned out. Texts that are not given are taken from the result.
KALMIA_EXPORT Figure ChartFigure(const ChartResult& result, const PlotTexts& texts = {});

/// Its drawing, as an SVG file.
KALMIA_EXPORT std::string ChartSvg(const ChartResult& result, const PlotTexts& texts = {},
                                   const SvgOptions& options = {});

}  // namespace kalmia::analysis
