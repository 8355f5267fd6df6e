#pragma once

#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

/// What FigureJson writes, for outputs that have it as a field, or on one line.
Json FigureFields(const std::vector<Figure>& figures);

}  // namespace kalmia::analysis
