#include "kalmia/analysis/validation/internal/AnalysisSteps.h"

#include <algorithm>
#include <cstddef>
#include <string>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/text/DisplayText.h"
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

void NoteDependentRows(const ModelInfo& model, Notes* notes) {
  const bool hasFigures = model.rowTerms && (model.rowTerms->scores.rows > 0 || model.rowTerms->distances);
  if (model.groupColumn.empty() || !hasFigures || static_cast<std::size_t>(model.groups) >= model.rows) return;
  if (model.groups == 0) return;
  const std::vector<std::optional<YIntervalTerms>>& intervals = model.rowTerms->intervals;
  const bool hasIntervals =
      std::any_of(intervals.begin(), intervals.end(), [](const auto& ofColumn) { return ofColumn.has_value(); });
  notes->Add("limits of rows" + std::string(hasIntervals ? ", intervals and degrees of freedom" : "") + " count " +
             Counted(model.rows, "row") + ", not the " + std::to_string(model.groups) + " groups of " +
             OneLine(model.groupColumn) + ": where rows of a group repeat each other they claim too much");
}

}  // namespace kalmia::analysis
