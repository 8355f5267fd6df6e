// Takes out of spectra, by a recipe, what has nothing to do with octane, and writes the filtered table.
//
//     recipe_filter examples/data/gasoline.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_filter TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  FilterRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"octane"};
  recipe.scaling = NCScale::ScalingCentre;
  recipe.components = 1;
  FilterResult result = Fit(recipe, table);
  std::printf("%.4f of the sum of squares is taken out\n", result.filtered.removed);
  const std::string text = FilteredText(table, result, /*marks=*/{}, &result.notes, /*progress=*/nullptr);
  std::printf("%zu bytes of CSV, from %zu\n", text.size(), table.Text().size());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
