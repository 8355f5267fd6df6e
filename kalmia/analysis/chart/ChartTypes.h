#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/statistics/ControlChart.h"

namespace kalmia::analysis {

/// The command's words for the types of control charts, in the order of the types.
const std::vector<std::string>& ChartTypeWords();
std::optional<ControlChart::ControlType> ChartTypeOfWord(const std::string& word);
const std::string& WordOfChartType(ControlChart::ControlType type);

/// Whether limits of that type rest on tables of factors, which there are for subgroups of 2 to 25.
bool NeedsFactors(ControlChart::ControlType type);
bool HasFactors(int subgroup);
bool IsEwma(ControlChart::ControlType type);
/// Whether its points are judged one by one, so that runs of them can be told from chance.
bool TakesRunRules(ControlChart::ControlType type);

// Where the standard deviation of a process comes from that is measured in single values.
constexpr auto kFromMovingRange = "moving-range";
constexpr auto kFromValues = "values";
constexpr auto kGiven = "given";  ///< by the recipe
/// Those that a recipe may ask for.
const std::vector<std::string>& SigmaFromWords();
/// That of a recipe that asks for none. The type ewma-sd is by its meaning that of the values.
const char* DefaultSigmaFrom(ControlChart::ControlType type);

/// The target, or where it is exactly -99, which the library takes for one that is not known, the number next to it.
double TargetBeside99(double target);

}  // namespace kalmia::analysis
