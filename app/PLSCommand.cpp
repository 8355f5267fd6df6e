#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/ModelFile.h"
#include "app/PLSCsvFiles.h"
#include "app/PLSOutcome.h"
#include "app/PLSReport.h"
#include "app/ReadTable.h"

namespace kalmia::app {

std::string RunCommand(const PLSOptions& options, Notes* notes) {
  CheckFitPlaces(options, PLSCsvFileNames());
  PLSRecipe recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const PLSOutcome outcome = ComputePLS(table, recipe, notes, bar.Get());
  FitFiles files;
  if (outcome.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(outcome.model); },
        [&] { return PLSCsvFiles(outcome, MarksOf(options.csvMarks.Asked())); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(outcome.model, outcome.model.Components(), notes);
  }
  return options.json ? PLSJson(table, outcome, *notes, files) : PLSText(outcome, files);
}

}  // namespace kalmia::app
