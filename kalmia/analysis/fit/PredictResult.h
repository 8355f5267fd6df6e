#pragma once

#include <string>

#include "kalmia/analysis/model/PCAPredictions.h"
#include "kalmia/analysis/model/PLSPredictions.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

// What a stored model says of the rows of a table. Rows are named by the column `id`; where that is empty, as
// ReadNewRows says. Notes why no row has a distance to the model, where that is so, and what Diagnose notes. A model
// without components predicts the mean of Y; one of classes assigns rows, see PredictClasses. `progress` may be null.
// Throws BadRequest for an O2PLS model without components, and for what is left of a fit that kept none, BadData as
// ReadNewRows, Stopped where the bar wants to stop.

KALMIA_EXPORT PLSPredictions Predict(const StoredPLS& model, const Table& table, const std::string& id = "",
                       NCProgress* progress = nullptr);
KALMIA_EXPORT PLSPredictions Predict(const StoredOPLS& model, const Table& table, const std::string& id = "",
                       NCProgress* progress = nullptr);
/// Of the block of Y; a model that is turned around predicts the block of X.
KALMIA_EXPORT PLSPredictions Predict(const StoredO2PLS& model, const Table& table, const std::string& id = "",
                       NCProgress* progress = nullptr);
/// Where the rows lie in the model.
KALMIA_EXPORT PCAPredictions Predict(const StoredPCA& model, const Table& table, const std::string& id = "",
                       NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
