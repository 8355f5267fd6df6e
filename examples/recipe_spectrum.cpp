// Computes by a recipe how a tank's level follows its inflow, and which periods each of them repeats.
//
//     recipe_spectrum examples/data/tank.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_spectrum TABLE"), 2;
  SpectrumRecipe recipe;
  recipe.column = "level";
  recipe.with = "inflow";
  recipe.lags = 24;
  const SpectrumResult result = ComputeSpectrum(recipe, ReadTableFile(argv[1]));
  if (const auto lag = result.PeakLag())
    std::printf("largest correlation at lag %d: %.4f\n", *lag,
                result.correlations[static_cast<std::size_t>(*lag - result.FirstLag())]);
  for (const ColumnSpectrum& part : result.parts)
    if (const auto peak = SpectrumResult::Peak(part))
      std::printf("%s: most power at a period of %.1f rows\n", part.column.c_str(), 1.0 / result.Frequency(*peak));
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
