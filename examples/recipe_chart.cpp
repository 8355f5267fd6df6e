// Judges subgroups of five by a recipe for a control chart and prints the first signals; ChartSvg(result) draws it.
//
//     recipe_chart examples/data/drift.csv
#include <algorithm>
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_chart TABLE"), 2;
  ChartRecipe recipe;
  recipe.column = "diameter";
  recipe.type = "mean-range";
  recipe.subgroup = 5;
  recipe.rules = "western-electric";
  const ChartResult result = ComputeChart(recipe, ReadTableFile(argv[1]));
  for (std::size_t i = 0; i < std::min<std::size_t>(result.signals.size(), 5); ++i) {
    const ChartSignal& signal = result.signals[i];
    std::printf("subgroup %zu: %s %s %.4f, %s\n", signal.point + 1, signal.series.c_str(), signal.direction.c_str(),
                signal.value, result.RuleName(signal).c_str());
  }
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
