#pragma once

#include <vector>

#include "kalmia/analysis/fit/OPLSResult.h"
#include "kalmia/analysis/fit/PCAResult.h"
#include "kalmia/analysis/fit/PLSResult.h"
#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// What each column of X adds to where rows of the table of a fit lie, see ContributionsOfTrainingRows. The rows are
// those of the table, from 0, as RequireRows finds them. `notes` takes what there is to note of them.
// Throws BadData for a row that the model was not fitted to, since it has no cell of X, and where no component was
// kept.

KALMIA_EXPORT std::vector<RowContributions> Contributions(const PLSResult& fit, const Table& table,
                                                          const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> Contributions(const PCAResult& fit, const Table& table,
                                                          const std::vector<int>& rows, Notes* notes);
KALMIA_EXPORT std::vector<RowContributions> Contributions(const OPLSResult& fit, const Table& table,
                                                          const std::vector<int>& rows, Notes* notes);

}  // namespace kalmia::analysis
