#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/chart/ChartPanel.h"
#include "kalmia/statistics/ControlChart.h"

namespace kalmia::analysis {

/// The panels of a chart, by its type: the means of the subgroups, or single values, with the limits of the type; below
/// them ranges, standard deviations or CuSums. An EWMA stands with its limits among the means it forecasts. The low
/// CuSum counts downwards. An individual chart without limits of its own takes target +- 3 standard deviations: that
/// set for the process, otherwise that of the values.
std::vector<ChartPanel> ChartPanels(const ControlChart& chart, int subgroup);

/// Whether the standard deviation behind the limits is known.
bool HasLimits(const ControlChart& chart);

/// The points that break the rules of that word (RunRulesOfWord()), panel after panel, each in the order of its points.
/// Panels whose points lean on each other are judged by their limits alone.
std::vector<ChartSignal> ChartSignals(const std::vector<ChartPanel>& panels, const std::string& rules);

}  // namespace kalmia::analysis
