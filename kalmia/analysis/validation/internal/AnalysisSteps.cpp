#include "kalmia/analysis/validation/internal/AnalysisSteps.h"

#include <cstddef>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

void CheckMethod(const ValidationRecipe& validation, bool isNumberGiven) {
  if (validation.method == ValidationMethod::None && !isNumberGiven) {
    throw BadRequest("without a validation nothing can choose the number of components: it has to be given");
  }
  if (validation.permutations != 0 && validation.method != ValidationMethod::Refit) {
    throw BadRequest("permutations of Y are judged by refits");
  }
  const FoldDealing& folds = validation.folds;
  if (validation.method == ValidationMethod::Component &&
      (folds.scheme != FoldScheme::Interleaved || folds.repeats != 1)) {
    throw BadRequest("validation by component takes interleaved groups, or those of a column");
  }
}

void TakeErrors(const RefitValidation& validation, YModelInfo* model) {
  model->groups = validation.folds.groups;
  for (std::size_t j = 0; j < model->quality.size(); ++j) {
    model->quality[j].rmsecv =
        validation.IsJudged() ? validation.errors.rmsecv(validation.model, j) : kNotANumber;
  }
}

}  // namespace kalmia::analysis
