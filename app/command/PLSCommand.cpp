#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PLSResult.h"
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
  const PLSResult result = Fit(recipe, table, bar.Get());
  notes->Add(result.notes);
  FitFiles files;
  if (result.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(result.model); },
        [&] { return PLSCsvFiles(result, MarksOf(options.csvMarks.Asked())); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(result.model, result.model.Components(), notes);
  }
  return options.json ? PLSJson(table, result, *notes, files) : PLSText(result, files);
}

}  // namespace kalmia::app
