// Extracts principal components by a recipe, and tells which rows lie furthest from the model.
//
//     recipe_pca examples/data/wine.csv
#include <algorithm>
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_pca TABLE"), 2;
  PCARecipe recipe;
  recipe.id = "sample";
  recipe.exclude = {"cultivar"};
  const PCAResult result = Fit(recipe, ReadTableFile(argv[1]));
  for (const PCAComponentRecord& component : result.model.components)
    std::printf("R2X %.3f  Q2 %.3f\n", component.r2x, component.q2);
  const auto distances = DistancesToModel(result.model, result.model.Components(), result.rows);
  const auto furthest = std::max_element(distances.begin(), distances.end());
  const auto row = static_cast<std::size_t>(furthest - distances.begin());
  std::printf("furthest from the model: %s, %.2f deviations\n", result.model.rowNames[row].c_str(), *furthest);
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
