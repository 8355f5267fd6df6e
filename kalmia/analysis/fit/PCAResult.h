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
  /// The kept ones, the one that failed if `auto` ended with it, and any further ones that were only described.
  std::vector<PCAComponentRecord> components;
  std::string endedEarly;        ///< why there are fewer components than asked for; empty if there are not
  StoredPCA model;               ///< to be used only where IsUsable()
  std::vector<RowScores> rows;   ///< the training rows, as the stored model sees them
  std::vector<double> columnR2;  ///< of each column, by all kept components
  /// Of each column, cumulated over the kept components; not numbers where none is judged.
  std::vector<double> columnQ2;
  Notes notes;  ///< what was done of its own accord

  bool AnyKept() const { return model.Components() > 0; }
  /// Whether there is a model: components, or 0 of them, the mean, where the recipe asked for 0.
  bool IsUsable() const { return !rows.empty(); }
};

/// Fits the model that the recipe asks for and judges it, as far as the recipe wants. Adds notes about what was cut.
/// `progress` may be null.
/// Throws as FitRecipes.h says, and BadData where there is one column only.
KALMIA_EXPORT PCAResult Fit(const PCARecipe& recipe, const Table& table, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
