#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/CountTable.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Which tables an exact test counts besides that observed: of a 2 x 2 table those whose first cell is smaller ("less")
/// or larger ("greater"), or all that are not more probable ("two-sided").
const std::vector<std::string>& AlternativeWords();

struct ExactTestRecipe {
  std::string alternative = "two-sided";  ///< one of AlternativeWords(); of larger tables only this one
  bool hybrid = false;  ///< larger tables: chi-square for parts whose expected counts are large enough
};

/// Fisher's exact test of a table of counts.
struct ExactTest {
  CountTable counts;
  std::string alternative;
  bool hybrid;  ///< whether chi-square may have taken part
  double probability;
};

/// Tests the counts. `progress` may be null; it tells nothing of the way through larger tables.
/// Throws BadRequest where the recipe does not go with the table, BadData where the table is too large, Stopped where
/// the bar wants to stop before the test.
ExactTest ComputeExactTest(const CountTable& counts, const ExactTestRecipe& recipe, NCProgress* progress);

}  // namespace kalmia::analysis
