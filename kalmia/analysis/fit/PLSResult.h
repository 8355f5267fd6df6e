#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A PLS model of a table, with all that there is to report of it.
struct PLSResult {
  ModelData data;
  std::vector<ComponentRecord> components;  ///< the kept ones, and the one that failed if `auto` ended with it
  std::string endedEarly;                   ///< why there are fewer components than asked for; empty if there are not
  StoredPLS model;                          ///< without components, and not to be used, where none is kept
  std::vector<RowPrediction> fitted;        ///< of the training rows, by the stored model
  Notes notes;  ///< what was done of its own accord

  bool AnyKept() const { return model.Components() > 0; }
};

/// Fits the model that the recipe asks for and judges it. Adds notes about what was cut. `progress` may be null.
/// Throws Failure as SelectData and ExtractPLS do.
KALMIA_EXPORT PLSResult Fit(const PLSRecipe& recipe, const Table& table, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
