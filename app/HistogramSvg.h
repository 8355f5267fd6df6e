#pragma once

#include <string>

#include "app/HistogramResult.h"
#include "app/Plot.h"

namespace kalmia::app {

/// The drawing of a histogram, as an SVG file. Without texts of its own it is called after the column.
std::string HistogramSvg(const HistogramResult& histogram, const PlotTexts& texts);

}  // namespace kalmia::app
