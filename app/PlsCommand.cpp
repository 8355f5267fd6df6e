#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/ModelFile.h"
#include "app/PlsCsvFiles.h"
#include "app/PlsOutcome.h"
#include "app/PlsReport.h"
#include "app/ReadTable.h"

namespace kalmia::app {

std::string RunCommand(const PlsOptions& options, Notes* notes) {
  CheckFitPlaces(options, PlsCsvFileNames());
  const CsvTable table = ReadTable(options.table, options.reading);
  PLSRecipe recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  TerminalBar bar;
  const PlsOutcome outcome = ComputePls(table, recipe, notes, bar.Get());
  FitFiles files;
  if (outcome.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(outcome.model); },
        [&] { return PlsCsvFiles(outcome, MarksOf(options.csvMarks)); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(outcome.model, outcome.model.Components(), notes);
  }
  return options.json ? PlsJson(table, outcome, *notes, files) : PlsText(outcome, files);
}

}  // namespace kalmia::app
