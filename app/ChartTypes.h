#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/statistics/ControlChart.h"

namespace kalmia::app {

/// The command's words for the types of control charts, in the order of the types.
const std::vector<std::string>& ChartTypeWords();
std::optional<ControlChart::ControlType> ChartTypeOfWord(const std::string& word);
const std::string& WordOfChartType(ControlChart::ControlType type);

/// Whether limits of that type rest on tables of factors, which there are for subgroups of 2 to 25.
bool NeedsFactors(ControlChart::ControlType type);
bool HasFactors(int subgroup);
bool IsEwma(ControlChart::ControlType type);

}  // namespace kalmia::app
