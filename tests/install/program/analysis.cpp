// Fits a model to a table and stores it, by the installed Kalmia::analysis alone.
#include <iostream>

#include "kalmia/analysis/analysis.h"

int main() {
  using namespace kalmia::analysis;
  const Table table(TextBuffer("sample,a,b,y\ns1,1,2,3.1\ns2,2,1,3.9\ns3,3,5,8.2\ns4,4,3,6.8\ns5,5,4,9.1\n"),
                       "oils.csv");
  PLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"y"};
  recipe.components = 1;
  recipe.groups = 5;
  const PLSAnalysis analysis = Analyse(recipe, table);
  const StoredModel stored = ReadModelFile(ModelFileBytes(analysis.fit.model), "the model");
  std::cout << PLSText(analysis, {});
  return std::get<StoredPLS>(stored).yNames == std::vector<std::string>{"y"} && analysis.fit.AnyKept() ? 0 : 1;
}
