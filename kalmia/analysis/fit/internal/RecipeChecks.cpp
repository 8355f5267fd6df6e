#include "kalmia/analysis/fit/internal/RecipeChecks.h"

#include <string>

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::analysis {

namespace {

constexpr int kFewestGroups = 2;

void CheckAtLeast(const std::string& what, int number, int least) {
  if (number >= least) return;
  throw BadRequest("the number of " + what + " is " + std::to_string(number) + ", less than " + std::to_string(least));
}

void CheckAtLeast(const std::string& what, const std::optional<int>& number, int least) {
  if (number) CheckAtLeast(what, *number, least);
}

void CheckX(const XRecipe& recipe) {
  if (!recipe.x.empty() && !recipe.exclude.empty()) {
    throw BadRequest("columns of X are named, and columns to leave out of X too: only one of them can be");
  }
}

void CheckY(const std::vector<std::string>& y) {
  if (y.empty()) throw BadRequest("no column of Y is named");
}

void CheckYOrClasses(const YRecipe& recipe) {
  if (recipe.classes.empty()) {
    CheckY(recipe.y);
  } else if (!recipe.y.empty()) {
    throw BadRequest("columns of Y are named, and a column of classes too: only one of them can be");
  }
}

/// 0 components are the mean.
void CheckFit(const FitRecipe& recipe) {
  CheckX(recipe);
  CheckAtLeast("components", recipe.components, 0);
  CheckAtLeast("cross-validation groups", recipe.groups, kFewestGroups);
  if (!recipe.judgeComponents && !recipe.components) {
    throw BadRequest("nothing is to judge the components, so that their number has to be given");
  }
}

}  // namespace

void CheckRecipe(const PCARecipe& recipe) { CheckFit(recipe); }

void CheckRecipe(const PLSRecipe& recipe) {
  CheckFit(recipe);
  CheckYOrClasses(recipe);
}

void CheckRecipe(const OPLSRecipe& recipe) {
  CheckFit(recipe);
  CheckYOrClasses(recipe);
  CheckAtLeast("predictive components", recipe.predictive, 0);
  if (recipe.predictive == 0 && recipe.components.value_or(0) > 0) {
    throw BadRequest("without predictive components there can be no orthogonal ones");
  }
}

void CheckRecipe(const O2PLSRecipe& recipe) {
  CheckAtLeast("cross-validation groups", recipe.groups, kFewestGroups);
  if (!recipe.numbers) return;
  CheckAtLeast("joint components", recipe.numbers->joint, 1);
  CheckAtLeast("components unique to X", recipe.numbers->xUnique, 0);
  CheckAtLeast("components unique to Y", recipe.numbers->yUnique, 0);
}

void CheckRecipe(const FilterRecipe& recipe) {
  CheckX(recipe);
  CheckY(recipe.y);
  CheckAtLeast("components", recipe.components, 1);
}

void CheckRecipe(const FillRecipe& recipe) { CheckAtLeast("components", recipe.components, 0); }

}  // namespace kalmia::analysis
