// Tells by a recipe what chemistry and taste of olive oils share, and predicts each from the other.
//
//     recipe_o2pls examples/data/oliveoil.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_o2pls TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  O2PLSRecipe recipe;
  recipe.id = "sample";
  recipe.x = {"Acidity..DK"};
  recipe.y = {"yellow..syrup"};
  recipe.numbers = O2PLSNumbers{1, 1, 0};
  O2PLSResult result = Fit(recipe, table, table);
  std::printf("%d joint component, %d unique to chemistry\n", result.model.Joint(), result.model.XUnique());
  std::printf("chemistry tells %.3f of the taste, taste %.3f of the chemistry\n", result.r2y, result.r2x);
  const PLSPredictions taste = Predict(result.model, table);
  TurnAround(&result.model);
  const PLSPredictions chemistry = Predict(result.model, table);
  std::printf("%s: %s %.1f, %s %.2f\n", taste.rows.names.front().c_str(), result.model.xNames.front().c_str(),
              taste.predictions.front().y.front(), result.model.yNames.front().c_str(),
              chemistry.predictions.front().y.front());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
