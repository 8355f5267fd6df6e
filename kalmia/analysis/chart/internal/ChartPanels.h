#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/chart/ChartResult.h"
#include "kalmia/statistics/ControlChart.h"

namespace kalmia::analysis {

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
