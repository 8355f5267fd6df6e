#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ModelDiagnostics.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Notes.h"
#include "kalmia/containers/NCDataMatrix.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// Rounds of one component at most, in fits and for rows with missing cells.
constexpr int kMaxIterations = 500;

/// Share of the X cells that a row may lack; the same as in cross-validation. A row of PLS also needs one cell more
/// than components came before.
constexpr float kMissingTolerance = 0.9999F;

/// The reason of a row whose numbers overflow on the way.
constexpr auto kTooLarge = "its cells are too large for single precision";

/// What a model leaves of one row.
struct RowFit {
  RowResidual residual;   ///< of X, after all components
  std::vector<double> t;  ///< one score for each component, predictive or joint ones first, then orthogonal or unique
                          ///< ones; empty where nothing can be said
  std::string reason;     ///< why nothing can be said of the row; empty otherwise
};

/// What a PLS or OPLS model says of one row.
struct RowPrediction : RowFit {
  std::vector<double> y;  ///< in the units of the file, one for each Y column; empty where nothing can be predicted
};

/// Predicts the rows of a table that has the model's X columns in the model's order, in the units of the file, and -99
/// for what is missing. The same rows give the same bits, alone or among others, with a model just fitted or stored.
/// A model without components predicts the mean of Y for every row, also for one without any cell.
/// `progress` may be null. Throws Stopped where the bar wants to stop.
KALMIA_EXPORT std::vector<RowPrediction> PredictRows(const StoredPLS& model, NCDataMatrix<float> x,
                                                     NCProgress* progress = nullptr);
KALMIA_EXPORT std::vector<RowPrediction> PredictRows(const StoredOPLS& model, NCDataMatrix<float> x,
                                                     NCProgress* progress = nullptr);
KALMIA_EXPORT std::vector<RowPrediction> PredictRows(const StoredO2PLS& model, NCDataMatrix<float> x,
                                                     NCProgress* progress = nullptr);

/// What PredictRows leaves of X, in scaled units: the cells whose squares sum to RowFit::residual. Rows as there.
/// Missing: cells that the rows do not have, and all of a row of which nothing can be said. `progress` may be null.
/// Throws Stopped where the bar wants to stop.
KALMIA_EXPORT NCDataMatrix<float> XResiduals(const StoredPLS& model, NCDataMatrix<float> x,
                                             NCProgress* progress = nullptr);
KALMIA_EXPORT NCDataMatrix<float> XResiduals(const StoredOPLS& model, NCDataMatrix<float> x,
                                             NCProgress* progress = nullptr);
KALMIA_EXPORT NCDataMatrix<float> XResiduals(const StoredO2PLS& model, NCDataMatrix<float> x,
                                             NCProgress* progress = nullptr);

/// The pooled deviation of the training rows, those that have one: what distances to the model are measured by.
template <class Row>
KALMIA_EXPORT double PooledDeviationOf(const std::vector<Row>& rows, int components) {
  std::vector<RowResidual> residuals;
  for (const Row& row : rows) {
    if (row.reason.empty()) residuals.push_back(row.residual);
  }
  return PooledDeviation(residuals, components);
}

/// A row's absolute distance to a model of `components` components: its residual deviation, in scaled units.
KALMIA_EXPORT double AbsoluteDistance(int components, const RowFit& row);

/// The normalised distance: the absolute one over the pooled one of the training rows; not a number for a row that has
/// no more cells than there are components, or of which nothing can be said.
KALMIA_EXPORT double DistanceToModel(const ModelInfo& model, int components, const RowFit& row);

/// The same of each row.
template <class Row>
KALMIA_EXPORT std::vector<double> DistancesToModel(const ModelInfo& model, int components,
                                                   const std::vector<Row>& rows) {
  std::vector<double> distances;
  for (const Row& row : rows) distances.push_back(DistanceToModel(model, components, row));
  return distances;
}

/// Says once why no row has a distance to the model, where that is so.
KALMIA_EXPORT void NoteNoDistances(const ModelInfo& model, int components, Notes* notes);

/// "none of its 5 X cells is present" or "only 2 of its 5 X cells are present", with the name of the block.
KALMIA_EXPORT std::string PresentCellsText(const std::string& block, int present, int variables);

}  // namespace kalmia::analysis
