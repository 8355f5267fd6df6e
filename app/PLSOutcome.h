#pragma once

#include <string>
#include <vector>

#include "app/ComponentRecord.h"
#include "app/CsvTable.h"
#include "app/FitRecipes.h"
#include "app/ModelData.h"
#include "app/Prediction.h"
#include "app/StoredModel.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// All that `kalmia pls` has to report.
struct PLSOutcome {
  ModelData data;
  std::vector<ComponentRecord> components;  ///< the kept ones, and the one that failed if `auto` ended with it
  std::string endedEarly;                   ///< why there are fewer components than asked for; empty if there are not
  StoredPLS model;                          ///< without components, and not to be used, where none is kept
  std::vector<RowPrediction> fitted;        ///< of the training rows, by the stored model

  bool AnyKept() const { return model.Components() > 0; }
};

/// Fits the model that the recipe asks for and judges it. Adds notes about what was cut. `progress` may be null.
/// Throws Failure as SelectData and FitPLS do.
PLSOutcome ComputePLS(const CsvTable& table, const PLSRecipe& recipe, Notes* notes, NCProgress* progress);

}  // namespace kalmia::app
