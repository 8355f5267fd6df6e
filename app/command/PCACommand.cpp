#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PCAResult.h"
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
  const PCAResult result = Fit(recipe, table, bar.Get());
  notes->Add(result.notes);
  FitFiles files;
  if (result.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(result.model); },
        [&] { return PCACsvFiles(result, MarksOf(options.csvMarks.Asked())); }, bar.Get());
    if (!files.csv.empty()) NoteNoDistances(result.model, result.model.Components(), notes);
  }
  return options.json ? PCAJson(table, result, *notes, files) : PCAText(result, files);
}

}  // namespace kalmia::app
