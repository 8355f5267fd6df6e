#include "app/console/FitFiles.h"

#include <filesystem>

#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadSteps.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::app {

namespace fs = std::filesystem;

void CheckFitPlaces(const FitOptions& options, const std::vector<std::string>& csvNames, const std::string& saveCv) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, csvNames);
  places.insert(places.begin(), {{"--save", options.save}, {"--save-cv", saveCv}});
  CheckPlaces(Given({{"the table", options.table}, {"the steps file", options.stepsFile}}), Given(places));
}

std::optional<GivenSteps> ReadFitSteps(const FitOptions& options) {
  if (options.steps.empty() && options.stepsFile.empty()) return std::nullopt;
  return ReadSteps(options.steps, options.stepsFile);
}

FitFiles WriteFitFiles(const FitOptions& options, const std::function<std::string()>& modelBytes,
                       const std::function<std::vector<CsvFile>()>& csvFiles, NCProgress* progress,
                       const CrossValidationOutput& crossValidation) {
  FitFiles written;
  WorkProgress(progress).Begin("writing the results");
  OutputFiles files;
  if (!options.csvFolder.empty()) files.MakeFolder(options.csvFolder);  // first: the model may be to lie in it
  if (!options.save.empty()) {
    files.Stage(options.save, modelBytes());
    written.saved = options.save;
  }
  if (!crossValidation.path.empty()) {
    files.Stage(crossValidation.path, crossValidation.bytes());
    written.savedCv = crossValidation.path;
  }
  if (!options.csvFolder.empty()) {
    for (const CsvFile& file : csvFiles()) {
      written.csv.push_back((fs::path(options.csvFolder) / file.name).string());
      files.Stage(written.csv.back(), file.bytes);
    }
  }
  files.Commit();
  return written;
}

}  // namespace kalmia::app
