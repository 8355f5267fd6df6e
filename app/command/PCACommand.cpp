#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PCAOutcome.h"
#include "kalmia/analysis/report/PCACsvFiles.h"
#include "kalmia/analysis/report/PCAReport.h"
#include "kalmia/analysis/table/CsvTable.h"

namespace kalmia::app {

using namespace analysis;

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
