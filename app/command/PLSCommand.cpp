#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PLSOutcome.h"
#include "kalmia/analysis/report/PLSCsvFiles.h"
#include "kalmia/analysis/report/PLSReport.h"
#include "kalmia/analysis/table/CsvTable.h"

namespace kalmia::app {

using namespace analysis;

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
