#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/table/CsvText.h"
#include "kalmia/analysis/text/Json.h"

namespace kalmia::analysis {

constexpr std::size_t kLinesShown = 20;  ///< of loadings and of scores

// Principal components as they are shown for a model just fitted and for a stored one.

/// One line for each component: R2X, Q2 and its limit, then the verdicts of the rule on what is left of X and of
/// cross-validation.
std::string PCAComponentText(const std::vector<PCAComponentRecord>& components);
Json PCAComponentJson(const std::vector<PCAComponentRecord>& components);

/// A line for each name, a column for each component, its symbol and its number: matrices with components in rows,
/// turned. At most `most` lines, then one that says how many more there are.
std::string NamedComponentsText(const std::string& what, const std::vector<std::string>& names,
                                const std::vector<NamedComponents>& parts, std::size_t most);
/// A list of objects {"name": ..., symbol: [one number for each component], ...}, null for what is missing.
Json NamedComponentsJson(const std::vector<std::string>& names, const std::vector<NamedComponents>& parts);

}  // namespace kalmia::analysis
