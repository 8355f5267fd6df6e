// Counts the values of a column in bins by a recipe.
//
//     recipe_histogram examples/data/wine.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_histogram TABLE"), 2;
  const HistogramRecipe recipe = {"alcohol"};
  const HistogramResult result = ComputeHistogram(recipe, ReadTableFile(argv[1]));
  for (int bin = 1; bin <= result.Bins(); ++bin)
    std::printf("%5.2f to %5.2f: %d\n", result.From(bin), result.To(bin), result.Count(bin));
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
