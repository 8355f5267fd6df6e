#pragma once

#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/fit/FitRecipes.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/WorkProgress.h"
#include "kalmia/analysis/validation/internal/RoundX.h"
#include "kalmia/analysis/validation/internal/SourceX.h"

namespace kalmia::analysis {

/// One block as a round of a validation has it.
struct RoundBlock {
  const std::vector<std::string>& names;
  RealColumns fitted;
  RealColumns leftOut;
};

/// What a model of the other rows says of those that were left out, predicted from the other block.
struct LeftOutBlock {
  std::vector<double> means;  ///< of each column, over the rows that stayed in; not a number without a cell
  std::vector<std::vector<double>> predicted;  ///< rows by columns, in the units of the table; no cells where it
                                               ///< cannot be predicted; empty without a model
  std::vector<double> distances;  ///< of the rows of the block that they are predicted from
  std::vector<std::string> withoutSpread;  ///< columns without a say, which their mean predicts
};

struct LeftOutBlocks {
  bool hasModel = false;
  LeftOutBlock x;
  LeftOutBlock y;
};

/// Shifts, centres, factors, estimates of missing cells (with `fill`) and the model of these numbers are learnt from
/// the rows that stayed in. No model where they cannot have so many components. Throws BadData where a column cannot be
/// scaled, or missing cells not be estimated; Stopped.
LeftOutBlocks JudgeO2PLSRound(const O2PLSRecipe& recipe, const O2PLSNumbers& numbers, const RoundBlock& x,
                              const RoundBlock& y, WorkProgress* progress);

}  // namespace kalmia::analysis
