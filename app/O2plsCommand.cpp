#include <string>
#include <vector>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/ModelFile.h"
#include "app/O2plsCsvFiles.h"
#include "app/O2plsOutcome.h"
#include "app/O2plsReport.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"

namespace kalmia::app {

namespace {

void CheckFiles(const O2plsOptions& options) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, O2plsCsvFileNames());
  if (!options.save.empty()) places.insert(places.begin(), {"--save", options.save});
  CheckPlaces({{"the X table", options.table}, {"the Y table", options.yTable}}, places);
}

/// The numbers come all three or not at all.
O2PLSRecipe RecipeOf(const O2plsOptions& options) {
  O2PLSRecipe recipe = options.recipe;
  if (options.joint) recipe.numbers = {*options.joint, *options.xUnique, *options.yUnique};
  return recipe;
}

}  // namespace

std::string RunCommand(const O2plsOptions& options, Notes* notes) {
  CheckFiles(options);
  const CsvTable xTable = ReadTable(options.table, options.reading);
  const CsvTable yTable = ReadTable(options.yTable, options.reading);
  TerminalBar bar;
  const O2plsOutcome outcome = ComputeO2pls(xTable, yTable, RecipeOf(options), notes, bar.Get());
  FitFiles files;
  if (outcome.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(outcome.model); },
        [&] { return O2plsCsvFiles(outcome, MarksOf(options.csvMarks)); }, bar.Get());
  }
  return options.json ? O2plsJson(outcome, *notes, files) : O2plsText(outcome, files);
}

}  // namespace kalmia::app
