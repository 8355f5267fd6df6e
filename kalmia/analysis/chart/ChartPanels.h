#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/chart/RunRules.h"
#include "kalmia/statistics/ControlChart.h"

namespace kalmia::analysis {

/// A series of points, one for each subgroup; NaN where there is none.
struct ChartSeries {
  std::string name;
  std::vector<double> values;
};

/// One diagram of a control chart. Its limits are NaN where it has none.
struct ChartPanel {
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

/// What a chart shows, by type: means (of single values: the values) with the limits of the type, and below them
/// ranges, standard deviations or CuSums; an EWMA with its limits among the means it forecasts. The low CuSum counts
/// downwards. Without limits of its own, the individual chart takes target +- 3 standard deviations: the one that was
/// set for the process, otherwise that of the values.
std::vector<ChartPanel> ChartPanels(const ControlChart& chart, int subgroup);

/// Whether the spread that the limits rest on is known.
bool HasLimits(const ControlChart& chart);

/// The points that break the rules of that word, see RunRulesOfWord(): panel after panel, each in the order of its
/// points. Panels that take no runs know the limits alone.
std::vector<ChartSignal> ChartSignals(const std::vector<ChartPanel>& panels, const std::string& rules);

}  // namespace kalmia::analysis
