#pragma once

#include <string>

#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/analysis/validation/Comparison.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// A line for each model: components, Q2, RMSECV, and p of the test against the best one, which is marked.
KALMIA_EXPORT std::string ComparisonText(const Table& table, const Comparison& comparison);

/// The same and p of all pairs as JSON, format kalmia-compare.
KALMIA_EXPORT std::string ComparisonJson(const Table& table, const Comparison& comparison,
                                         const ValidationRecipe& validation, const Notes& notes);

}  // namespace kalmia::analysis
