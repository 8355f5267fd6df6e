#pragma once

#include <vector>

#include "kalmia/analysis/fit/Classes.h"
#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The classes of the rows that a model of their dummies was fitted to, and the rule that assigns rows by it.
struct ClassFit {
  Classes classes;
  DiscriminantRule rule;
  RealMatrix values;  ///< of the rows; not numbers where one has no prediction
};

/// Learns the rule from the fitted dummies of the rows.
KALMIA_EXPORT ClassFit FitClasses(const Classes& classes, const std::vector<RowPrediction>& fitted, ClassPriors priors);

}  // namespace kalmia::analysis
