#include "kalmia/analysis/fit/internal/FitSetup.h"

#include "kalmia/analysis/fit/internal/SelectData.h"
#include "kalmia/analysis/table/internal/Refuse.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Version.h"

namespace kalmia::analysis {

void FillInfo(const Table& table, const XRecipe& recipe, const ModelData& data, ModelInfo* frame) {
  frame->writtenBy = kVersion;
  frame->table = table.Name();
  frame->idColumn = recipe.id;
  frame->scaling = recipe.scaling;
  frame->chain = data.chain;
  frame->xNames = data.xNames;
  frame->rows = data.rowNames.size();
  frame->rowNames = data.rowNames;
  frame->trainingX = data.x;
}

void FillInfo(const Table& table, const FitRecipe& recipe, const ModelData& data, ModelInfo* frame) {
  FillInfo(table, static_cast<const XRecipe&>(recipe), data, frame);
  frame->groupColumn = recipe.groupColumn;
  frame->groups = data.rounds;
}

FitRules RulesOf(const FitRecipe& recipe, const ModelData& data, Notes* notes) {
  FitRules rules;
  rules.mostComponents = MostComponents(data, recipe.components, notes);
  rules.stopAtFirstFailure = !recipe.components;
  rules.judgeComponents = recipe.judgeComponents;
  rules.describedComponents = recipe.judgeComponents ? 0 : recipe.describedComponents;
  rules.unitVariance = recipe.scaling == NCScale::ScalingUnitVariance;
  return rules;
}

void RequireTwoColumns(const Table& table, const ModelData& data) {
  if (data.xNames.size() > 1) return;
  const std::string leftOut = LeftOutText(data);
  throw BadData(table.Name() + ": there is only one column for X, " + Quoted(data.xNames.front()) +
                ": principal components take two or more" + (leftOut.empty() ? "" : "; left out of X: " + leftOut),
                InColumn(data.xNames.front()));
}

}  // namespace kalmia::analysis
