#pragma once

#include <vector>

#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Where a row lies in a PCA model.
struct RowScores : RowFit {};

/// The scores of the rows of a table that has the model's columns in the model's order, in the units of the file, and
/// -99 for what is missing. A model without components gives every row no scores and no reason. The same rows give the
/// same bits, alone or among others. `progress` may be null. Throws Stopped where the bar wants to stop.
KALMIA_EXPORT std::vector<RowScores> ScoreRows(const StoredPCA& model, NCDataMatrix<float> x,
                                               NCProgress* progress = nullptr);

/// What ScoreRows leaves of X, in scaled units: the cells whose squares sum to RowFit::residual. Rows as there.
/// Missing: cells that the rows do not have, and all of a row without scores. `progress` may be null. Throws Stopped
/// where the bar wants to stop.
KALMIA_EXPORT NCDataMatrix<float> XResiduals(const StoredPCA& model, NCDataMatrix<float> x,
                                             NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
