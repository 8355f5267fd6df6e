#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/ModelFile.h"
#include "app/PcaCsvFiles.h"
#include "app/PcaOutcome.h"
#include "app/PcaReport.h"
#include "app/ReadTable.h"

namespace kalmia::app {

std::string RunCommand(const PcaOptions& options, Notes* notes) {
  CheckFitPlaces(options, PcaCsvFileNames());
  const CsvTable table = ReadTable(options.table, options.reading);
  PCARecipe recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  TerminalBar bar;
  const PcaOutcome outcome = ComputePca(table, recipe, notes, bar.Get());
  FitFiles files;
  if (outcome.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(outcome.model); },
        [&] { return PcaCsvFiles(outcome, MarksOf(options.csvMarks)); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(outcome.model, outcome.model.Components(), notes);
  }
  return options.json ? PcaJson(table, outcome, *notes, files) : PcaText(outcome, files);
}

}  // namespace kalmia::app
