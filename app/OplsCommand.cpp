#include <optional>
#include <string>
#include <vector>

#include "app/Commands.h"
#include "app/ConsoleProgress.h"
#include "app/CsvTable.h"
#include "app/FitFiles.h"
#include "app/InputFile.h"
#include "app/ModelFile.h"
#include "app/OplsCsvFiles.h"
#include "app/OplsCvFile.h"
#include "app/OplsOutcome.h"
#include "app/OplsReport.h"
#include "app/OutputPlaces.h"
#include "app/ReadTable.h"

namespace kalmia::app {

namespace {

/// --save-cv may replace the file of --resume, once that has been read; no other output may.
void CheckFiles(const OplsOptions& options) {
  CheckFitPlaces(options, OplsCsvFileNames(), options.saveCv);
  if (options.resume.empty()) return;
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, OplsCsvFileNames());
  if (!options.save.empty()) places.insert(places.begin(), {"--save", options.save});
  RefuseToOverwrite({{"the file of --resume", options.resume}}, places);
}

}  // namespace

std::string RunCommand(const OplsOptions& options, Notes* notes) {
  CheckFiles(options);
  std::optional<StoredOplsCv> resumed;
  if (!options.resume.empty()) resumed = ReadOplsCvFile(ReadInput(options.resume), InputName(options.resume));
  const CsvTable table = ReadTable(options.table, options.reading);
  OPLSRecipe recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  TerminalBar bar;
  const OplsOutcome outcome = ComputeOpls(table, recipe, resumed ? &*resumed : nullptr, notes, bar.Get());
  const FitFiles files = WriteFitFiles(
      options, [&] { return ModelFileBytes(outcome.model); },
      [&] { return OplsCsvFiles(outcome, MarksOf(options.csvMarks)); }, bar.Get(),
      {options.saveCv, [&outcome] { return OplsCvFileBytes(outcome.validation); }});
  if (!files.csv.empty()) NoteNoDistances(outcome.model, outcome.model.Components(), notes);
  return options.json ? OplsJson(table, outcome, *notes, files) : OplsText(outcome, files);
}

}  // namespace kalmia::app
