#pragma once

#include <vector>

#include "kalmia/analysis/fit/BlockPair.h"
#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/support/Export.h"
#include "kalmia/support/NCProgress.h"

namespace kalmia::analysis {

/// An O2PLS model of a table, with all that there is to report of it.
struct O2PLSResult {
  BlockPair data;
  int filledX = 0;  ///< cells that were estimated
  int filledY = 0;
  std::vector<O2PLSComponentRecord> components;  ///< the kept ones, and those that were tried in vain
  StoredO2PLS model;
  std::vector<RowPrediction> fittedY;  ///< of the training rows, Y predicted from X, in the units of the file
  std::vector<RowPrediction> fittedX;  ///< X predicted from Y
  double r2y = 0.0;                    ///< share of scaled Y that its prediction from X describes
  double r2x = 0.0;                    ///< the same of X from Y
  Notes notes;  ///< what was done of its own accord

  bool AnyKept() const { return model.Joint() > 0; }
};

/// Fits the model that the recipe asks for and judges it. Adds notes about what was left out or filled. `progress` may
/// be null. Rows of the two tables belong together as the recipe says.
/// Throws BadRequest for a recipe that makes no sense; BadData: a column that does not exist; a row without an id, an
/// id that comes twice, no common id; without ids, tables of different length; a block without a column that varies; a
/// column of the same cells in both blocks; a hole, unless the recipe says `fill`, or one that cannot be estimated;
/// fewer than two rows; a row without a group, fewer than two groups; a cell that is no number; numbers of components
/// that the blocks cannot carry; Stopped where the progress wants to stop.
KALMIA_EXPORT O2PLSResult Fit(const O2PLSRecipe& recipe, const Table& xTable, const Table& yTable,
                NCProgress* progress = nullptr);

}  // namespace kalmia::analysis
