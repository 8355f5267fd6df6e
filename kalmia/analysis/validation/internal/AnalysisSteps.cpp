#include "kalmia/analysis/validation/internal/AnalysisSteps.h"

#include <algorithm>
#include <cstddef>
#include <set>
#include <string>

#include "kalmia/analysis/model/RealMatrix.h"
#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

/// Different labels of the column.
std::size_t CountGroups(const Table& table, const std::string& groupColumn) {
  const int column = RequireColumn(table, groupColumn);
  std::set<std::string> labels;
  for (int row = 0; row < table.Rows(); ++row) labels.insert(table.Cell(row, column));
  return labels.size();
}

}  // namespace

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

void RequireRowsToNest(const FitRecipe& recipe, const Table& table, const ValidationRecipe& validation) {
  if (!validation.nested || recipe.components || validation.method != ValidationMethod::Refit) return;
  const std::string takes = "a nested validation, where the rows that stay in choose the number of components, takes ";
  if (!recipe.groupColumn.empty()) {
    if (CountGroups(table, recipe.groupColumn) != 2) return;
    throw BadData(takes + "three groups or more, and column " + Quoted(recipe.groupColumn) + " makes two");
  }
  const int rows = table.Rows();
  const bool isOneByOne = validation.folds.scheme == FoldScheme::LeaveOneOut;
  const int groups = isOneByOne ? rows : std::min(recipe.groups, rows);
  if (rows < 2 || rows - (rows + groups - 1) / groups >= 2) return;
  throw BadData(takes + "two of them or more in each round: there are " + std::to_string(rows) + " rows in " +
                std::to_string(groups) + " groups");
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
