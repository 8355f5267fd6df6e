#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "kalmia/analysis/chart/RunRules.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// A series of points, one for each subgroup; NaN where there is none.
struct ChartSeries {
  std::string name;
  std::vector<double> values;
};

/// One diagram of a control chart. Its limits are NaN where it has none.
struct KALMIA_EXPORT ChartPanel {
  std::string name;
  std::vector<ChartSeries> judged;  ///< drawn as a line, a signal wherever they leave the limits
  ChartSeries background;           ///< drawn as dots, judged by nobody; often empty
  RunZones zones;
  bool takesRuns = false;  ///< whether runs of its points tell anything: they do not lean on each other

  bool HasLimits() const;
};

/// A point that breaks a rule: that of the limits, or one of a set of run rules.
struct ChartSignal {
  std::size_t point = 0;  ///< from 0
  std::string series;
  double value = 0.0;
  double limit = 0.0;  ///< the line beyond which it lies; NaN for a rule without one
  RunRule rule = {};
  std::string direction;  ///< above, below, rising, falling, alternating, within, outside
};

}  // namespace kalmia::analysis
