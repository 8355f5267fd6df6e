#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/table/CountTable.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Which tables an exact test counts besides that observed: of a 2 x 2 table those whose first cell is smaller ("less")
/// or larger ("greater"), or all that are not more probable ("two-sided").
KALMIA_EXPORT const std::vector<std::string>& AlternativeWords();

struct ExactTestRecipe {
  std::string alternative = "two-sided";  ///< one of AlternativeWords(); of larger tables only this one
  bool hybrid = false;  ///< larger tables: chi-square for parts whose expected counts are large enough
};

/// Fisher's exact test of a table of counts.
struct ExactTestResult {
  CountTable counts;
  std::string alternative;
  bool hybrid;  ///< whether chi-square may have taken part
  double probability;
  Notes notes;  ///< what was done of its own accord
};

/// Tests the counts in a table, or such as are given. `progress` may be null; it tells nothing of the way through
/// larger tables. Throws BadRequest for an alternative that there is not; BadData as ReadCounts, for an alternative
/// that does not go with the table, and where the table is too large; Stopped where the bar wants to stop before the
/// test.
KALMIA_EXPORT ExactTestResult ComputeExactTest(const ExactTestRecipe& recipe, const Table& table,
                                               NCProgress* progress = nullptr);
KALMIA_EXPORT ExactTestResult ComputeExactTest(const ExactTestRecipe& recipe, const CountTable& counts,
                                 NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
