#include "kalmia/analysis/validation/StoredJudgement.h"

#include <cstddef>
#include <vector>

namespace kalmia::analysis {

namespace {

constexpr auto kByColumn = "column";  ///< folds of labels

std::vector<double> RowOf(const RealMatrix& matrix, std::size_t row) {
  const auto begin = matrix.cells.begin() + static_cast<std::ptrdiff_t>(row * matrix.columns);
  return {begin, begin + static_cast<std::ptrdiff_t>(matrix.columns)};
}

template <class Validation>
StoredValidation FoldsOf(const Validation& validation, const ValidationRecipe& recipe) {
  StoredValidation stored;
  stored.folds = validation.folds.names.empty() ? WordOfFoldScheme(recipe.folds.scheme) : kByColumn;
  stored.groups = validation.folds.groups;
  stored.repeats = validation.folds.Repeats();
  stored.seed = recipe.folds.seed;
  if (validation.choice) stored.rule = WordOfSelectionRule(validation.choice->rule);
  stored.chosen = validation.components;
  return stored;
}

}  // namespace

LeftOutFigures LeftOutFiguresOf(const RefitValidation& validation) {
  if (!validation.IsJudged()) return {};
  return {validation.errors.squaredErrors[validation.model], validation.predicted, validation.distances};
}

LeftOutFigures LeftOutFiguresOf(const PCAValidation& validation) {
  if (!validation.IsJudged()) return {};
  LeftOutFigures figures;
  figures.distances = validation.distances;
  return figures;
}

LeftOutFigures LeftOutFiguresOfX(const O2PLSValidation& validation) {
  if (!validation.IsJudged()) return {};
  return {validation.y.squaredErrors[1], validation.y.predicted[1], validation.xDistances};
}

LeftOutFigures LeftOutFiguresOfY(const O2PLSValidation& validation) {
  if (!validation.IsJudged()) return {};
  return {validation.x.squaredErrors[1], validation.x.predicted[1], validation.yDistances};
}

StoredValidation JudgementOf(const RefitValidation& validation, const ValidationRecipe& recipe) {
  StoredValidation stored = FoldsOf(validation, recipe);
  for (std::size_t a = 0; a < validation.errors.press.size(); ++a) {
    stored.components.push_back({validation.ComponentsOf(a), validation.errors.press[a], validation.errors.q2[a],
                                 RowOf(validation.errors.rmsecv, a), RowOf(validation.errors.q2PerY, a)});
  }
  return stored;
}

StoredValidation JudgementOf(const PCAValidation& validation, const ValidationRecipe& recipe) {
  StoredValidation stored = FoldsOf(validation, recipe);
  for (std::size_t a = 0; a < validation.errors.press.size(); ++a) {
    stored.components.push_back({static_cast<int>(a), validation.errors.press[a], validation.errors.q2[a], {}, {}});
  }
  return stored;
}

}  // namespace kalmia::analysis
