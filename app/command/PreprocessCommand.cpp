#include <string>
#include <vector>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadSteps.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/StepChainFile.h"
#include "kalmia/analysis/report/PreprocessReport.h"
#include "kalmia/analysis/steps/PreprocessedTable.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

PreprocessRecipe RecipeOf(const PreprocessOptions& options) {
  PreprocessRecipe recipe = options.recipe;
  recipe.steps = ReadSteps(options.steps, options.stepsFile);
  if (recipe.steps.chain && !options.save.empty()) {
    throw BadRequest(recipe.steps.name + " holds saved steps already: --save does not go with it");
  }
  return recipe;
}

}  // namespace

std::string RunCommand(const PreprocessOptions& options, Notes* notes) {
  CheckPlaces(Given({{"the table", options.table}, {"--steps-file", options.stepsFile}}),
              Given({{"--out", options.out}, {"--save", options.save}}));
  const PreprocessRecipe recipe = RecipeOf(options);
  const Table table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const PreprocessedTable result = Preprocess(recipe, table, bar.Get());
  notes->Add(result.notes);
  OutputFiles files;
  files.Stage(options.out, PreprocessedText(table, result, MarksOf(options.csvMarks.Asked()), bar.Get()));
  if (!options.save.empty()) files.Stage(options.save, StepChainFileBytes(result.chain));
  files.Commit();
  const PreprocessFiles written = {options.out, options.save};
  return options.json ? PreprocessJson(table, result, written) : PreprocessText(result, written);
}

}  // namespace kalmia::app
