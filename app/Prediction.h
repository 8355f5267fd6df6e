#pragma once

#include <string>
#include <vector>

#include "app/ModelDiagnostics.h"
#include "app/StoredModel.h"
#include "kalmia/containers/NCDataMatrix.h"

namespace kalmia::app {

/// Share of the X cells that a row may lack; the same as in cross-validation. A row also needs one cell more than
/// components came before.
constexpr float kMissingTolerance = 0.9999F;

/// What a model says of one row.
struct RowPrediction {
  std::vector<double> y;  ///< in the units of the file, one for each Y column; empty where nothing can be predicted
  RowResidual residual;   ///< of X, after all components
  std::string reason;     ///< why nothing can be predicted; empty otherwise
};

/// Predicts the rows of a table that has the model's X columns in the model's order, in the units of the file, and -99
/// for what is missing. The same rows give the same bits, alone or among others, with a model just fitted or stored.
std::vector<RowPrediction> PredictRows(const StoredModel& model, NCDataMatrix<float> x);

/// A row's distance to the model: its residual deviation over the pooled one of the training rows; not a number for a
/// row that has no more cells than the model has components, or cannot be predicted.
double DistanceToModel(const StoredModel& model, const RowPrediction& row);

}  // namespace kalmia::app
