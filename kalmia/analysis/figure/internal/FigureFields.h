#pragma once

#include <vector>

#include "kalmia/analysis/figure/Figure.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

/// What FigureJson writes, to be a field of another output.
Json FigureFields(const std::vector<Figure>& figures);

}  // namespace kalmia::analysis
