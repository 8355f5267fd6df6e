// Fills the missing cells of a table by a recipe, and tells how well hidden cells come back.
//
//     recipe_fill examples/data/wine.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_fill TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  FillRecipe recipe;
  recipe.id = "sample";
  recipe.exclude = {"cultivar"};
  recipe.components = 3;
  recipe.check = true;
  const FillResult result = Fit(recipe, table);
  std::printf("%d missing cells, %d filled\n", result.missing, result.filledCells);
  std::printf("hidden cells come back with %.2f of the error that means have\n", result.trial->all.Ratio());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
