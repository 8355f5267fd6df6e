#pragma once

#include <vector>

#include "kalmia/analysis/model/NewRows.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/RowDiagnosis.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// New rows and where they lie in a PCA model.
struct PCAPredictions {
  NewRows rows;
  std::vector<RowScores> scores;
  RowDiagnosis diagnosis;
  Notes notes;  ///< what was done of its own accord
};

/// Where rows that were read for the model lie in it. `progress` may be null. Throws Stopped where the bar wants to
/// stop.
KALMIA_EXPORT PCAPredictions PredictTable(const StoredPCA& model, const Table& table, NewRows rows, Notes* notes,
                            NCProgress* progress);

}  // namespace kalmia::analysis
