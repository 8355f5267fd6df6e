#pragma once

#include <string>

#include "kalmia/analysis/chart/HistogramResult.h"
#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/figure/FigureSvg.h"
#include "kalmia/analysis/figure/PlotTexts.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// A bar for each bin, with ticks at edges of bins. Without texts of its own it is called after the column.
KALMIA_EXPORT Figure HistogramFigure(const HistogramResult& histogram, const PlotTexts& texts = {});

/// Its drawing, as an SVG file.
KALMIA_EXPORT std::string HistogramSvg(const HistogramResult& histogram, const PlotTexts& texts = {},
                                       const SvgOptions& options = {});

}  // namespace kalmia::analysis
