#include "kalmia/analysis/chart/ChartPanel.h"

#include <cmath>

namespace kalmia::analysis {

bool ChartPanel::HasLimits() const { return !std::isnan(zones.upper); }

}  // namespace kalmia::analysis
