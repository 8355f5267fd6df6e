// Takes spectra through steps of preprocessing by a recipe, stores the steps, and takes them back from the stored ones.
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
  recipe.steps = {"the steps", ParseSteps("wavelet-compress:51", "the steps"), {}};
  const PreprocessedTable made = Preprocess(recipe, table);
  std::printf("%zu channels become %zu coefficients\n", made.InputNames().size(), made.signals.names.size());

  const Table coefficients(PreprocessedText(table, made, /*marks=*/{}, /*progress=*/nullptr), "coefficients");
  PreprocessRecipe back;
  back.id = "sample";
  back.steps = ReadStepsFile(StepChainFileBytes(made.chain), "the stored steps");
  back.restore = true;
  const PreprocessedTable restored = Preprocess(back, coefficients);
  double lost = 0.0, all = 0.0;
  for (int k = 0; k < restored.signals.cells.Columns(); ++k) {
    const double cell = ReadNumbers(table, table.Find(restored.signals.names[static_cast<std::size_t>(k)])).front();
    lost += std::pow(restored.signals.cells.Row(0)[k] - cell, 2);
    all += cell * cell;
  }
  std::printf("the first spectrum comes back but for %.1e of its sum of squares\n", lost / all);
  for (const std::string& note : made.notes.Lines()) std::printf("note: %s\n", note.c_str());
  return 0;
} catch (const kalmia::analysis::Failure& failure) {
  return std::fprintf(stderr, "%s\n", failure.what()), 1;
}
