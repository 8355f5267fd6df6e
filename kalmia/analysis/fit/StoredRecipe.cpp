#include "kalmia/analysis/fit/StoredRecipe.h"

namespace kalmia::analysis {

namespace {

template <class Recipe>
Recipe CommonRecipe(const YModelInfo& model) {
  Recipe recipe;
  recipe.id = model.idColumn;
  recipe.x = model.chain.Empty() ? model.xNames : model.chain.inputNames;
  if (!model.chain.Empty()) recipe.steps = GivenSteps{"the steps of the model", {}, model.chain};
  if (model.classes) {
    recipe.classes = model.classes->column;
    recipe.classNames = model.yNames;
  } else {
    recipe.y = model.yNames;
  }
  recipe.scaling = model.scaling;
  if (model.groups >= 2) recipe.groups = model.groups;
  recipe.groupColumn = model.groupColumn;
  return recipe;
}

}  // namespace

PLSRecipe RecipeOf(const StoredPLS& model) {
  auto recipe = CommonRecipe<PLSRecipe>(model);
  recipe.components = model.Components();
  return recipe;
}

OPLSRecipe RecipeOf(const StoredOPLS& model) {
  auto recipe = CommonRecipe<OPLSRecipe>(model);
  recipe.predictive = model.Predictive();
  recipe.components = model.Orthogonal();
  return recipe;
}

}  // namespace kalmia::analysis
