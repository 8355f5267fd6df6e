#include <string>
#include <vector>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/report/O2PLSReport.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/O2PLSAnalysis.h"

namespace kalmia::app {

namespace {

void CheckFiles(const O2PLSOptions& options) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, O2PLSCsvFileNames());
  places.insert(places.begin(), {"--save", options.save});
  CheckPlaces({{"the X table", options.table}, {"the Y table", options.yTable}}, Given(places));
}

/// The numbers come all three or not at all.
O2PLSRecipe RecipeOf(const O2PLSOptions& options) {
  O2PLSRecipe recipe = options.recipe;
  if (options.joint) recipe.numbers = {*options.joint, *options.xUnique, *options.yUnique};
  return recipe;
}

}  // namespace

std::string RunCommand(const O2PLSOptions& options, Notes* notes) {
  CheckFiles(options);
  const Table xTable = ReadTable(options.table, options.reading);
  const Table yTable = ReadTable(options.yTable, options.reading);
  TerminalBar bar;
  const O2PLSAnalysis analysis =
      Analyse(RecipeOf(options), xTable, yTable, RecipeOf(options.validation), bar.Get());
  const O2PLSResult& result = analysis.fit;
  notes->Add(result.notes);
  FitFiles files;
  if (result.AnyKept()) {
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(result.model, options.Parts()); },
        [&] { return O2PLSCsvFiles(analysis, MarksOf(options.csvMarks.Asked())); }, bar.Get());
  }
  return options.json ? O2PLSJson(analysis, *notes, files) : O2PLSText(analysis, files);
}

}  // namespace kalmia::app
