#include "kalmia/analysis/fit/ClassFit.h"

#include "kalmia/analysis/model/ClassPredictions.h"

namespace kalmia::analysis {

ClassFit FitClasses(const Classes& classes, const std::vector<RowPrediction>& fitted, ClassPriors priors) {
  const RealMatrix dummies = PredictedMatrix(fitted, classes.names.size());
  ClassFit fit{classes, LearnDiscriminantRule(dummies, classes.classOfRow, priors), {}};
  fit.values = DiscriminantValues(fit.rule, dummies);
  return fit;
}

}  // namespace kalmia::analysis
