// Fits a PLS model to a table by a recipe, stores it, and predicts rows with what was stored.
//
//     recipe_pls examples/data/gasoline.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_pls TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  PLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"octane"};
  recipe.scaling = NCScale::ScalingCentre;
  recipe.components = 3;
  const PLSResult result = Fit(recipe, table);
  for (const ComponentRecord& component : result.components)
    std::printf("R2X %.3f  R2Y %.3f  Q2 cum %.3f\n", component.r2x, component.y.r2, component.y.q2Cum);
  std::printf("RMSEE %.3f\n", result.model.quality.front().rmsee);

  const StoredModel stored = ReadModelFile(ModelFileBytes(result.model), "the stored model");
  const PLSPredictions predicted = Predict(std::get<StoredPLS>(stored), table);
  std::printf("%s: %.2f\n", predicted.rows.names.front().c_str(), predicted.predictions.front().y.front());
  for (const std::string& note : result.notes.Lines()) std::printf("note: %s\n", note.c_str());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
