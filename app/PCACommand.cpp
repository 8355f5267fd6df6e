#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/ModelFile.h"
#include "app/PCACsvFiles.h"
#include "app/PCAOutcome.h"
#include "app/PCAReport.h"
#include "app/ReadTable.h"

namespace kalmia::app {

std::string RunCommand(const PCAOptions& options, Notes* notes) {
  CheckFitPlaces(options, PCACsvFileNames());
  PCARecipe recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  const CsvTable table = ReadTable(options.table, options.reading);
  TerminalBar bar;
  const PCAOutcome outcome = ComputePCA(table, recipe, notes, bar.Get());
  FitFiles files;
  if (outcome.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(outcome.model); },
        [&] { return PCACsvFiles(outcome, MarksOf(options.csvMarks.Asked())); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(outcome.model, outcome.model.Components(), notes);
  }
  return options.json ? PCAJson(table, outcome, *notes, files) : PCAText(outcome, files);
}

}  // namespace kalmia::app
