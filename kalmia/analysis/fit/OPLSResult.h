#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/ClassFit.h"
#include "kalmia/analysis/fit/CrossValidatedScores.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/fit/ModelData.h"
#include "kalmia/analysis/fit/StoredOPLSCv.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// An OPLS model of a table, with all that there is to report of it.
struct OPLSResult {
  ModelData data;
  NCDataMatrix<float> scaledX;                  ///< what the model was fitted to
  std::vector<OPLSComponentRecord> components;  ///< the kept ones, and the one that failed if `auto` ended with it
  std::string endedEarly;                       ///< why there are fewer components than asked for; or empty
  StoredOPLS model;
  NCDataMatrix<float> u;                        ///< Y scores of the predictive components
  CrossValidatedScores crossValidated;
  std::optional<ClassFit> classes;              ///< where Y are dummies of classes
  std::vector<RowPrediction> fitted;            ///< of the training rows, by the stored model
  StoredOPLSCv validation;                      ///< what a later fit can go on from
  Notes notes;  ///< what was done of its own accord
};

/// Fits the model that the recipe asks for and judges it, as far as the recipe wants, from `resumed` on unless that is
/// null. Adds notes about what was cut. `progress` may be null. Without a cross-validation there are no cross-validated
/// scores and nothing to go on from.
/// Throws as FitRecipes.h says; BadData where `resumed` was made of another table or with other groups or scaling, or
/// where without the rows of a group a Y column has no value or no variance, or an X column no value; BadFile where the
/// parts of `resumed` do not fit together.
KALMIA_EXPORT OPLSResult Fit(const OPLSRecipe& recipe, const Table& table, NCProgress* progress = nullptr,
               const StoredOPLSCv* resumed = nullptr);

}  // namespace kalmia::analysis
