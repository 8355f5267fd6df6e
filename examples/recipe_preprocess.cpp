// Takes spectra through steps of preprocessing by a recipe, stores the steps, and goes through the stored ones again.
//
//     recipe_preprocess examples/data/gasoline.csv
#include <cmath>
#include <cstdio>

#include "kalmia/analysis/analysis.h"

int main(int argc, char** argv) try {
  using namespace kalmia::analysis;
  if (argc != 2) return std::puts("usage: recipe_preprocess TABLE"), 2;
  const Table table = ReadTableFile(argv[1]);
  PreprocessRecipe recipe;
  recipe.id = "sample";
  recipe.exclude = {"octane"};
  recipe.steps = {"the steps", ParseSteps("snv, wavelet-compress:51", "the steps"), {}};
  const PreprocessedTable learnt = Preprocess(recipe, table);
  std::printf("%zu channels become %zu coefficients\n", learnt.InputNames().size(), learnt.signals.names.size());

  PreprocessRecipe again;
  again.id = "sample";
  again.steps = ReadStepsFile(StepChainFileBytes(learnt.chain), "the stored steps");
  const PreprocessedTable stored = Preprocess(again, table);
  double furthest = 0.0, squares = 0.0;
  for (int k = 0; k < stored.signals.cells.Columns(); ++k) {
    const double cell = stored.signals.cells.Row(0)[k];
    furthest = std::fmax(furthest, std::fabs(cell - learnt.signals.cells.Row(0)[k]));
    squares += cell * cell;
  }
  std::printf("the stored steps give the first spectrum again to %g\n", furthest);
  std::printf("its coefficients hold %.4f of its sum of squares\n", squares / (learnt.InputNames().size() - 1.0));
  for (const std::string& note : learnt.notes.Lines()) std::printf("note: %s\n", note.c_str());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
