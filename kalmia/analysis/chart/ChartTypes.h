#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/statistics/ControlChart.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The words for the types of control charts, in the order of the types.
KALMIA_EXPORT const std::vector<std::string>& ChartTypeWords();
KALMIA_EXPORT std::optional<ControlChart::ControlType> ChartTypeOfWord(const std::string& word);
KALMIA_EXPORT const std::string& WordOfChartType(ControlChart::ControlType type);

/// Whether limits of that type rest on tables of factors, which there are for subgroups of 2 to 25.
KALMIA_EXPORT bool NeedsFactors(ControlChart::ControlType type);
KALMIA_EXPORT bool HasFactors(int subgroup);
KALMIA_EXPORT bool IsEwma(ControlChart::ControlType type);
/// Whether its points are judged one by one, so that runs of them can be told from chance.
KALMIA_EXPORT bool TakesRunRules(ControlChart::ControlType type);

// Where the standard deviation of a process comes from that is measured in single values.
constexpr auto kFromMovingRange = "moving-range";
constexpr auto kFromValues = "values";
constexpr auto kGiven = "given";  ///< by the recipe
/// Those that a recipe may ask for.
KALMIA_EXPORT const std::vector<std::string>& SigmaFromWords();
/// That of a recipe that asks for none. The type ewma-sd is by its meaning that of the values.
KALMIA_EXPORT const char* DefaultSigmaFrom(ControlChart::ControlType type);

/// The target, or where it is exactly -99, which the library takes for one that is not known, the number next to it.
KALMIA_EXPORT double TargetBeside99(double target);

}  // namespace kalmia::analysis
