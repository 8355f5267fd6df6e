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
#include "kalmia/analysis/table/CsvTable.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

/// What --save has written is applied as it is, or backwards.
void RequireThatTheChainAgrees(const PreprocessOptions& options, const GivenSteps& steps) {
  if (options.recipe.restore && !(steps.chain && EndsCompressed(*steps.chain))) {
    throw BadRequest("--restore takes saved steps that end with wavelet-compress, not " + steps.name);
  }
  if (steps.chain && (!options.recipe.x.empty() || !options.recipe.exclude.empty() || !options.save.empty())) {
    const std::string reason = " holds saved steps and their columns: --x, --exclude and --save do not go with it";
    throw BadRequest(steps.name + reason);
  }
}

PreprocessRecipe RecipeOf(const PreprocessOptions& options) {
  PreprocessRecipe recipe = options.recipe;
  recipe.steps = ReadSteps(options.steps, options.stepsFile);
  RequireThatTheChainAgrees(options, recipe.steps);
  return recipe;
}

}  // namespace

std::string RunCommand(const PreprocessOptions& options, Notes* notes) {
  CheckPlaces(Given({{"the table", options.table}, {"--steps-file", options.stepsFile}}),
              Given({{"--out", options.out}, {"--save", options.save}}));
  const PreprocessRecipe recipe = RecipeOf(options);
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const PreprocessedTable result = Preprocess(table, recipe, notes, bar.Get());
  OutputFiles files;
  files.Stage(options.out, PreprocessedText(table, result, MarksOf(options.csvMarks.Asked()), bar.Get()));
  if (!options.save.empty()) files.Stage(options.save, StepChainFileBytes(result.chain));
  files.Commit();
  const PreprocessFiles written = {options.out, options.save};
  return options.json ? PreprocessJson(table, result, written, *notes) : PreprocessText(result, written);
}

}  // namespace kalmia::app
