// Describes the columns of a table, each mean with its 95 % interval: mean +- t s / sqrt(n).
//
//     recipe_quantile examples/data/wine.csv
#include <cmath>
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_quantile TABLE"), 2;
  for (const ColumnDescription& column : Describe(ReadTableFile(argv[1])).columns) {
    const ColumnMoments& moments = column.moments;
    if (moments.n < 2) continue;
    QuantileRecipe recipe;
    recipe.distribution = "t";
    recipe.probability = 0.95;
    recipe.df = moments.n - 1;
    const double half = ComputeQuantile(recipe).value * moments.standardDeviation / std::sqrt(moments.n);
    std::printf("%s: %.4g +- %.2g\n", column.name.c_str(), moments.mean, half);
  }
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
