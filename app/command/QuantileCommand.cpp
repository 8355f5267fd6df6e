#include "app/command/Commands.h"
#include "kalmia/analysis/chart/QuantileResult.h"
#include "kalmia/analysis/report/QuantileReport.h"

namespace kalmia::app {

std::string RunCommand(const QuantileOptions& options, Notes* /*notes*/) {
  QuantileRecipe recipe = options.recipe;
  recipe.probability = *options.probability;
  const QuantileResult result = ComputeQuantile(recipe);
  return options.json ? QuantileJson(result) : QuantileText(result);
}

}  // namespace kalmia::app
