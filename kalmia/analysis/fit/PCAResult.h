#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// A PCA model of a table, with all that there is to report of it.
struct PCAResult {
  ModelData data;
  std::vector<PCAComponentRecord> components;  ///< the kept ones, and the one that failed if `auto` ended with it
  std::string endedEarly;        ///< why there are fewer components than asked for; empty if there are not
  StoredPCA model;               ///< without components, and not to be used, where none is kept
  std::vector<RowScores> rows;   ///< the training rows, as the stored model sees them
  std::vector<double> columnR2;  ///< of each column, by all kept components
  std::vector<double> columnQ2;  ///< of each column, cumulated over the kept components
  Notes notes;  ///< what was done of its own accord

  bool AnyKept() const { return model.Components() > 0; }
};

/// Fits the model that the recipe asks for and judges it. Adds notes about what was cut. `progress` may be null.
/// Throws Failure as SelectData and ExtractPCA do, and BadData where there is one column only.
KALMIA_EXPORT PCAResult Fit(const PCARecipe& recipe, const Table& table, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
