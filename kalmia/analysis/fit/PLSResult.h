#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/ClassFit.h"
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
  /// The kept ones, the one that failed if `auto` ended with it, and any further ones that were only described.
  std::vector<ComponentRecord> components;
  std::string endedEarly;                   ///< why there are fewer components than asked for; empty if there are not
  StoredPLS model;                          ///< to be used only where IsUsable()
  std::optional<ClassFit> classes;          ///< where Y are dummies of classes
  std::vector<RowPrediction> fitted;        ///< of the training rows, by the stored model
  Notes notes;  ///< what was done of its own accord

  bool AnyKept() const { return model.Components() > 0; }
  /// Whether there is a model: components, or 0 of them, the mean, where the recipe asked for 0.
  bool IsUsable() const { return !model.quality.empty(); }
};

/// Fits the model that the recipe asks for and judges it, as far as the recipe wants. Adds notes about what was cut.
/// `progress` may be null.
/// Throws as FitRecipes.h says.
KALMIA_EXPORT PLSResult Fit(const PLSRecipe& recipe, const Table& table, NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
