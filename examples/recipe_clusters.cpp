// Builds a tree of wines by a recipe and cuts it into three clusters.
//
//     recipe_clusters examples/data/wine.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_clusters TABLE"), 2;
  ClusterRecipe recipe;
  recipe.id = "sample";
  recipe.exclude = {"cultivar"};
  recipe.cut = 3;
  const ClusterResult result = Fit(recipe, ReadTableFile(argv[1]));
  for (const ClusterSummary& cluster : SummariesOf(result))
    std::printf("%d wines, highest merge %.2f\n", cluster.rows, cluster.highest);
  std::printf("cophenetic correlation %.4f\n", result.copheneticCorrelation);
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
