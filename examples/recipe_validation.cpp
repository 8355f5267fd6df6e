// Judges a PLS model by rows that its models did not see: each group of rows is left out once, and all is fitted anew.
//
//     recipe_validation examples/data/gasoline.csv
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_validation TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  PLSRecipe recipe;
  recipe.id = "sample";
  recipe.y = {"octane"};
  ValidationRecipe rounds;
  rounds.folds.scheme = FoldScheme::Interleaved;
  rounds.selection.rule = SelectionRule::OneSE;
  const PLSAnalysis analysis = Analyse(recipe, table, rounds);
  const PLSValidation& validation = *analysis.validation;
  for (int a = 0; a <= 6; ++a) {
    const auto number = static_cast<std::size_t>(a);
    std::printf("%d components  Q2 %7.4f  RMSECV %.4f%s\n", a, validation.errors.q2[number],
                validation.errors.rmsecv(number, 0), a == validation.components ? "  chosen" : "");
  }
  if (const auto& anova = validation.cvAnova.front())
    std::printf("CV-ANOVA  F %.2f (%d, %d)  p %.2g\n", anova->f, anova->df1, anova->df2, anova->p);
  std::printf("sample 1: fitted %.2f, left out %.2f\n", analysis.fit.fitted.front().y.front(),
              validation.predicted(0, 0));
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
