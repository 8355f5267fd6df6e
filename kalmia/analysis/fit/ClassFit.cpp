#include "kalmia/analysis/fit/ClassFit.h"

namespace kalmia::analysis {

RealMatrix PredictedMatrix(const std::vector<RowPrediction>& rows, std::size_t yColumns) {
  RealMatrix predicted(rows.size(), yColumns, kNotANumber);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    for (std::size_t j = 0; j < rows[i].y.size(); ++j) predicted(i, j) = rows[i].y[j];
  }
  return predicted;
}

ClassFit FitClasses(const Classes& classes, const std::vector<RowPrediction>& fitted, ClassPriors priors) {
  const RealMatrix dummies = PredictedMatrix(fitted, classes.names.size());
  ClassFit fit{classes, LearnDiscriminantRule(dummies, classes.classOfRow, priors), {}};
  fit.values = DiscriminantValues(fit.rule, dummies);
  return fit;
}

}  // namespace kalmia::analysis
