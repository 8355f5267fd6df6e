#pragma once

#include <string>

#include "kalmia/analysis/chart/ChartResult.h"
#include "kalmia/analysis/figure/PlotTexts.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The panels below each other. Of more points than a page can tell apart it draws the highest and the lowest of each
/// stretch, so that no signal is lost. Texts that are not given are taken from the result.
KALMIA_EXPORT std::string ChartSvg(const ChartResult& result, const PlotTexts& texts = {});

}  // namespace kalmia::analysis
