#pragma once

#include <string>

#include "kalmia/analysis/chart/HistogramResult.h"
#include "kalmia/analysis/figure/PlotTexts.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The drawing of a histogram, as an SVG file. Without texts of its own it is called after the column.
KALMIA_EXPORT std::string HistogramSvg(const HistogramResult& histogram, const PlotTexts& texts = {});

}  // namespace kalmia::analysis
