#include "kalmia/analysis/validation/ComponentChoice.h"

#include <algorithm>
#include <cmath>

#include "kalmia/analysis/text/Failure.h"
#include "kalmia/analysis/validation/internal/SignFlips.h"

namespace kalmia::analysis {

namespace {

void CheckRecipe(const SelectionRecipe& recipe) {
  if (recipe.rule != SelectionRule::Randomisation) return;
  if (!(recipe.alpha > 0.0 && recipe.alpha < 1.0)) throw BadRequest("alpha is above 0 and below 1");
  if (recipe.flips < 1) throw BadRequest("a randomisation takes one run or more");
}

std::vector<double> ColumnMeans(const RealMatrix& errors) {
  std::vector<double> means(errors.columns, 0.0);
  for (std::size_t i = 0; i < errors.rows; ++i) {
    for (std::size_t a = 0; a < errors.columns; ++a) means[a] += errors(i, a);
  }
  for (double& mean : means) mean /= static_cast<double>(errors.rows);
  return means;
}

/// Of the mean of a column.
double StandardError(const RealMatrix& errors, std::size_t column) {
  if (errors.rows < 2) return 0.0;
  const auto n = static_cast<double>(errors.rows);
  double sum = 0.0, squares = 0.0;
  for (std::size_t i = 0; i < errors.rows; ++i) sum += errors(i, column);
  for (std::size_t i = 0; i < errors.rows; ++i) {
    const double difference = errors(i, column) - sum / n;
    squares += difference * difference;
  }
  return std::sqrt(squares / (n - 1.0) / n);
}

/// Each column less that of the best number.
RealMatrix DifferencesFrom(const RealMatrix& errors, std::size_t best) {
  RealMatrix differences = errors;
  for (std::size_t i = 0; i < errors.rows; ++i) {
    for (std::size_t a = 0; a < errors.columns; ++a) differences(i, a) -= errors(i, best);
  }
  return differences;
}

std::vector<double> GainsByComponent(const std::vector<double>& meanErrors) {
  std::vector<double> gains = {kNotANumber};
  for (std::size_t a = 1; a < meanErrors.size(); ++a) {
    gains.push_back(meanErrors[a - 1] > 0.0 ? 1.0 - meanErrors[a] / meanErrors[a - 1] : kNotANumber);
  }
  return gains;
}

std::size_t FirstUpTo(double limit, const std::vector<double>& compared) {
  const auto isUpTo = [=](double value) { return value <= limit; };
  return static_cast<std::size_t>(std::find_if(compared.begin(), compared.end(), isUpTo) - compared.begin());
}

std::size_t FirstAbove(double limit, const std::vector<double>& compared) {
  const auto isAbove = [=](double value) { return value > limit; };
  return static_cast<std::size_t>(std::find_if(compared.begin(), compared.end(), isAbove) - compared.begin());
}

/// The number of components before the first one that gains too little.
std::size_t LastInARowAbove(double limit, const std::vector<double>& gains) {
  std::size_t a = 0;
  while (a + 1 < gains.size() && gains[a + 1] > limit) ++a;
  return a;
}

}  // namespace

const std::vector<std::string>& SelectionRuleWords() {
  static const std::vector<std::string> words = {"one-se", "randomisation", "min", "q2"};
  return words;
}

std::optional<SelectionRule> SelectionRuleOfWord(const std::string& word) {
  const std::vector<std::string>& words = SelectionRuleWords();
  const auto found = std::find(words.begin(), words.end(), word);
  if (found == words.end()) return std::nullopt;
  return static_cast<SelectionRule>(found - words.begin());
}

const std::string& WordOfSelectionRule(SelectionRule rule) {
  return SelectionRuleWords()[static_cast<std::size_t>(rule)];
}

ComponentChoice ChooseComponents(const RealMatrix& rowErrors, const SelectionRecipe& recipe,
                                 const std::vector<int>* groupOfRow, NCProgress* progress) {
  CheckRecipe(recipe);
  const std::vector<double> meanErrors = ColumnMeans(ErrorsOfUnits(rowErrors, /*groupOfRow=*/nullptr));
  const RealMatrix units = ErrorsOfUnits(rowErrors, groupOfRow);
  ComponentChoice choice;
  choice.rule = recipe.rule;
  choice.best = static_cast<std::size_t>(std::min_element(meanErrors.begin(), meanErrors.end()) - meanErrors.begin());
  choice.compared = meanErrors;
  switch (recipe.rule) {
    case SelectionRule::OneSE:
      choice.limit = meanErrors[choice.best] + StandardError(units, choice.best);
      choice.chosen = FirstUpTo(choice.limit, choice.compared);
      break;
    case SelectionRule::Min:
      choice.limit = meanErrors[choice.best];
      choice.chosen = choice.best;
      break;
    case SelectionRule::Randomisation:
      choice.limit = recipe.alpha;
      choice.compared = SignFlipPValues(DifferencesFrom(units, choice.best), FlipSide::AtLeast, recipe.flips,
                                        recipe.seed, progress);
      choice.chosen = FirstAbove(choice.limit, choice.compared);  // b at the latest: its p is 1
      break;
    case SelectionRule::Q2:
      choice.limit = recipe.q2Limit;
      choice.compared = GainsByComponent(meanErrors);
      choice.chosen = LastInARowAbove(choice.limit, choice.compared);
      break;
  }
  return choice;
}

}  // namespace kalmia::analysis
