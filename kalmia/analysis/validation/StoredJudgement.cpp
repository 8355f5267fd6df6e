#include "kalmia/analysis/validation/StoredJudgement.h"

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace kalmia::analysis {

namespace {

std::vector<double> RowOf(const RealMatrix& matrix, std::size_t row) {
  const auto begin = matrix.cells.begin() + static_cast<std::ptrdiff_t>(row * matrix.columns);
  return {begin, begin + static_cast<std::ptrdiff_t>(matrix.columns)};
}

StoredValidation FoldsOf(const Folds& folds, const ValidationRecipe& recipe) {
  StoredValidation stored;
  stored.folds = folds.names.empty() ? WordOfFoldScheme(recipe.folds.scheme) : kFoldsOfLabels;
  stored.groups = folds.groups;
  stored.repeats = folds.Repeats();
  stored.seed = recipe.folds.seed;
  return stored;
}

template <class Validation>
StoredValidation ChoiceOf(const Validation& validation, const ValidationRecipe& recipe) {
  StoredValidation stored = FoldsOf(validation.folds, recipe);
  if (validation.choice) stored.rule = WordOfSelectionRule(validation.choice->rule);
  stored.chosen = validation.components;
  return stored;
}

/// Of the models of each number.
std::vector<StoredValidationEntry> EntriesOf(const LeftOutErrors& errors) {
  std::vector<StoredValidationEntry> entries;
  for (std::size_t a = 0; a < errors.press.size(); ++a) {
    StoredValidationEntry entry;
    entry.press = errors.press[a];
    entry.q2 = errors.q2[a];
    entry.rmsecv = RowOf(errors.rmsecv, a);
    entry.q2PerY = RowOf(errors.q2PerY, a);
    entries.push_back(std::move(entry));
  }
  return entries;
}

/// Of a block, by the kept components that it takes part in.
double ShareOf(const std::vector<O2PLSComponentRecord>& components, double O2PLSComponentRecord::* share,
               O2PLSComponentRecord::Kind unique) {
  double joint = 0.0, own = 0.0;
  for (const O2PLSComponentRecord& component : components) {
    if (!component.kept) continue;
    if (component.kind == O2PLSComponentRecord::Joint) joint += component.*share;
    if (component.kind == unique) own += component.*share;
  }
  return joint + own;
}

std::optional<StoredJackKnife> JackKnifeOf(const RefitValidation& validation) {
  if (validation.coefficients.empty()) return std::nullopt;
  StoredJackKnife stored;
  stored.coefficients = RealMatrix(validation.yNames.size(), validation.xNames.size() + 1);
  stored.coefficients.cells.clear();
  for (const JackKnifeResult& column : validation.coefficients) {
    stored.coefficients.cells.insert(stored.coefficients.cells.end(), column.standardErrors.begin(),
                                     column.standardErrors.end());
  }
  for (const JackKnifeResult& importance : validation.importances) {
    stored.importances.push_back({{}, importance.standardErrors});
  }
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
  StoredValidation stored = ChoiceOf(validation, recipe);
  stored.components = EntriesOf(validation.errors);
  for (std::size_t a = 0; a < stored.components.size(); ++a) {
    StoredValidationEntry& entry = stored.components[a];
    entry.components = validation.ComponentsOf(a);
    entry.r2x = validation.r2x[a];
    entry.r2y = validation.r2y[a];
    if (validation.classFigures.empty()) continue;
    entry.classes = ClassRates{validation.classFigures[a].accuracy, validation.classFigures[a].balancedAccuracy};
  }
  if (!validation.classes) stored.cvAnova = validation.cvAnova;
  stored.jackKnife = JackKnifeOf(validation);
  return stored;
}

StoredValidation JudgementOf(const OPLSValidation& validation, const ValidationRecipe& recipe) {
  StoredValidation stored = JudgementOf(static_cast<const RefitValidation&>(validation), recipe);
  for (std::size_t a = 0; a < stored.components.size(); ++a) {
    stored.components[a].kinds = {a == 0 ? 0 : validation.Predictive(), OPLSValidation::OrthogonalOf(a)};
  }
  return stored;
}

StoredValidation JudgementOf(const PCAValidation& validation, const ValidationRecipe& recipe,
                             const std::vector<PCAComponentRecord>& components) {
  StoredValidation stored = ChoiceOf(validation, recipe);
  for (std::size_t a = 0; a < validation.errors.press.size(); ++a) {
    StoredValidationEntry entry;
    entry.components = static_cast<int>(a);
    entry.r2x = a == 0 ? 0.0 : (a <= components.size() ? components[a - 1].r2xCum : kNotANumber);
    entry.press = validation.errors.press[a];
    entry.q2 = validation.errors.q2[a];
    stored.components.push_back(std::move(entry));
  }
  return stored;
}

StoredValidation JudgementOf(const O2PLSValidation& validation, const ValidationRecipe& recipe,
                             const std::vector<O2PLSComponentRecord>& components) {
  StoredValidation stored = FoldsOf(validation.folds, recipe);
  const O2PLSNumbers& numbers = validation.numbers;
  stored.chosen = numbers.joint + numbers.xUnique;
  stored.components = EntriesOf(validation.y);
  stored.xFromY = EntriesOf(validation.x);
  for (auto* entries : {&stored.components, &stored.xFromY}) {
    for (std::size_t a = 0; a < entries->size(); ++a) {
      StoredValidationEntry& entry = (*entries)[a];
      entry.kinds = {0, 0, 0};
      if (a > 0) entry.kinds = {numbers.joint, numbers.xUnique, numbers.yUnique};
      entry.components = a == 0 ? 0 : stored.chosen;
      entry.r2x = a == 0 ? 0.0 : ShareOf(components, &O2PLSComponentRecord::r2x, O2PLSComponentRecord::XUnique);
      entry.r2y = a == 0 ? 0.0 : ShareOf(components, &O2PLSComponentRecord::r2y, O2PLSComponentRecord::YUnique);
    }
  }
  return stored;
}

}  // namespace kalmia::analysis
