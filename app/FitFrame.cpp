#include "app/FitFrame.h"

#include "app/Version.h"

namespace kalmia::app {

void FillFrame(const CsvTable& table, const FitOptions& options, const ModelData& data, ModelFrame* frame) {
  frame->writtenBy = kVersion;
  frame->table = table.Name();
  frame->idColumn = options.id;
  frame->groupColumn = options.groupColumn;
  frame->groups = data.rounds;
  frame->scaling = options.scaling;
  frame->chain = data.chain;
  frame->xNames = data.xNames;
  frame->rowNames = data.rowNames;
}

FitRules RulesOf(const FitOptions& options, const ModelData& data, Notes* notes) {
  FitRules rules;
  rules.mostComponents = MostComponents(data, options.components, notes);
  rules.stopAtFirstFailure = !options.components;
  rules.unitVariance = options.scaling == NCScale::ScalingUnitVariance;
  return rules;
}

}  // namespace kalmia::app
