#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

// What columns add to where rows lie, told alike by fits and predictions.

constexpr std::size_t kContributionsShown = 10;  ///< of T2 and of the residual each, in texts

/// For each row the largest parts of T2 and the largest residuals, by their absolute value, with the names of their
/// columns; below them T2, what its parts sum to, and the sum of the squared residuals. Empty without rows.
std::string ContributionText(const std::vector<RowContributions>& rows, const std::vector<std::string>& columns);

/// A list of {"row": ..., "t2": [...], "residual": [...]}, in the order of the X columns, null where there is none.
Json ContributionJson(const std::vector<RowContributions>& rows);

}  // namespace kalmia::analysis
