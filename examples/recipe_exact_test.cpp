// Tests a table of counts by a recipe: a lady tells of eight cups of tea whether the milk came first, and is right with
// three of each four (Fisher 1935, The Design of Experiments, chapter II).
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main() try {
  using namespace kalmia::analysis;
  const Table counts(TextBuffer("she says,milk first,tea first\nmilk first,3,1\ntea first,1,3\n"), "tea");
  ExactTestRecipe recipe;
  recipe.alternative = "greater";
  const ExactTestResult result = ComputeExactTest(recipe, counts);
  std::printf("so many right ones or more have a probability of %.6f\n", result.probability);
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
