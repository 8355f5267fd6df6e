#include <filesystem>

#include "app/Commands.h"
#include "app/CsvTable.h"
#include "app/InputFile.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/PlsCsvFiles.h"
#include "app/PlsOutcome.h"
#include "app/PlsReport.h"

namespace kalmia::app {

namespace {

std::vector<FilePlace> Outputs(const PlsOptions& options) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, PlsCsvFileNames());
  if (!options.save.empty()) places.insert(places.begin(), {"--save", options.save});
  return places;
}

}  // namespace

std::string RunPls(const PlsOptions& options, Notes* notes) {
  RefuseToOverwrite({{"the table", options.table}}, Outputs(options));
  const CsvTable table(ReadInput(options.table), InputName(options.table));
  const PlsOutcome outcome = ComputePls(table, options, notes);
  OutputFiles files;
  std::string saved;
  std::vector<std::string> csvPaths;
  if (outcome.AnyKept()) {
    if (!options.save.empty()) {
      files.Stage(options.save, ModelFileBytes(outcome.model));
      saved = options.save;
    }
    if (!options.csvFolder.empty()) {
      files.MakeFolder(options.csvFolder);
      for (const CsvFile& file : PlsCsvFiles(outcome)) {
        csvPaths.push_back((std::filesystem::path(options.csvFolder) / file.name).string());
        files.Stage(csvPaths.back(), file.bytes);
      }
    }
  }
  files.Commit();
  return options.json ? PlsJson(table, outcome, *notes, saved, csvPaths) : PlsText(outcome, saved, csvPaths);
}

}  // namespace kalmia::app
