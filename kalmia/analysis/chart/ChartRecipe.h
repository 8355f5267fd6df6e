#pragma once

#include <optional>
#include <string>

namespace kalmia::analysis {

/// A control chart of one column of a table.
struct ChartRecipe {
  std::string column;
  std::string type;                            ///< one of ChartTypeWords()
  int subgroup = 0;                            ///< values in a subgroup; 0: that of the limits given, otherwise 1
  std::optional<double> target, sigma, lambda; ///< nothing: estimated
  std::string sigmaFrom;                       ///< moving-range or values; empty: what suits the type
  std::string rules;                           ///< one of RunRuleWords(); empty: the limits alone
};

}  // namespace kalmia::analysis
