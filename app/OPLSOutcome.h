#pragma once

#include <string>
#include <vector>

#include "app/CsvTable.h"
#include "app/FitRecipes.h"
#include "app/ModelData.h"
#include "app/OPLSValidation.h"
#include "app/OPLSFit.h"
#include "app/Prediction.h"
#include "app/StoredModel.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::app {

/// All that `kalmia opls` has to report.
struct OPLSOutcome {
  ModelData data;
  NCDataMatrix<float> scaledX;                  ///< what the model was fitted to
  std::vector<OPLSComponentRecord> components;  ///< the kept ones, and the one that failed if `auto` ended with it
  std::string endedEarly;                       ///< why there are fewer components than asked for; or empty
  StoredOPLS model;
  NCDataMatrix<float> u;                        ///< Y scores of the predictive components
  CrossValidatedScores crossValidated;
  std::vector<RowPrediction> fitted;            ///< of the training rows, by the stored model
  StoredOPLSCv validation;                      ///< what --save-cv stores
};

/// Fits the model that the recipe asks for and judges it, from `resumed` on unless that is null. Adds notes about what
/// was cut. `progress` may be null.
/// Throws Failure as SelectData and FitOPLS do, and BadData where `resumed` was made of another table or with other
/// groups or scaling, or where without the rows of a group a Y column has no value or no variance, or an X column no
/// value.
OPLSOutcome ComputeOPLS(const CsvTable& table, const OPLSRecipe& recipe, const StoredOPLSCv* resumed, Notes* notes,
                        NCProgress* progress = nullptr);

}  // namespace kalmia::app
