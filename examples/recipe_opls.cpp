// Fits an OPLS model by a recipe: what predicts octane, and what in the spectra has nothing to do with it.
//
//     recipe_opls examples/data/gasoline.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_opls TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  OPLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"octane"};
  recipe.scaling = NCScale::ScalingCentre;
  recipe.predictive = 1;
  recipe.components = 2;  // orthogonal ones
  const OPLSResult result = Fit(recipe, table);
  for (const OPLSComponentRecord& component : result.components)
    std::printf("%-10s  R2X %.3f  R2Y %.3f\n", component.orthogonal ? "orthogonal" : "predictive", component.r2x,
                component.r2y);
  const PLSPredictions predicted = Predict(result.model, table);
  std::printf("%s: %.2f\n", predicted.rows.names.front().c_str(), predicted.predictions.front().y.front());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
