#include "app/console/FitFiles.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <system_error>

#include "app/console/OutputPlaces.h"
#include "app/console/ReadSteps.h"
#include "kalmia/analysis/report/O2PLSReport.h"
#include "kalmia/analysis/report/OPLSReport.h"
#include "kalmia/analysis/report/PCAReport.h"
#include "kalmia/analysis/report/PLSReport.h"
#include "kalmia/analysis/report/ResidualsReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/WorkProgress.h"

namespace kalmia::app {

namespace fs = std::filesystem;

namespace {

/// All that fits may write into the folder of --csv.
std::set<std::string> EveryCsvName() {
  std::set<std::string> names = {kResidualsFile, kXResidualsFile, kYResidualsFile};
  for (auto* const namesOfFamily : {PLSCsvFileNames, PCACsvFileNames, OPLSCsvFileNames, O2PLSCsvFileNames}) {
    for (const std::string& name : namesOfFamily()) names.insert(name);
  }
  return names;
}

}  // namespace

void CheckFitPlaces(const FitOptions& options, const std::vector<std::string>& csvNames, const std::string& saveCv) {
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, csvNames);
  const std::vector<FilePlace> drawings =
      PlacesInSvgFolder(options.figures.folder, FigureNames(options.columns.contributions.size()));
  places.insert(places.end(), drawings.begin(), drawings.end());
  places.insert(places.begin(),
                {{"--save", options.save}, {"--save-cv", saveCv}, {"--report", options.figures.report}});
  CheckPlaces(Given({{"the table", options.table}, {"the steps file", options.stepsFile}}), Given(places));
}

std::optional<GivenSteps> ReadFitSteps(const FitOptions& options) {
  if (options.steps.empty() && options.stepsFile.empty()) return std::nullopt;
  return ReadSteps(options.steps, options.stepsFile);
}

FitFiles WriteFitFiles(const FitOptions& options, const std::function<std::string()>& modelBytes,
                       const std::function<std::vector<CsvFile>()>& csvFiles, NCProgress* progress,
                       const CrossValidationOutput& crossValidation, const std::vector<Figure>& figures,
                       const std::function<std::string()>& page) {
  FitFiles written;
  WorkProgress(progress).Begin("writing the results");
  OutputFiles files;
  // Folders first: the model may be to lie in one of them.
  if (!options.csvFolder.empty()) files.MakeFolder(options.csvFolder);
  if (!options.figures.folder.empty()) files.MakeFolder(options.figures.folder);
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
  written.svg = StageDrawings(options.figures, figures, &files);
  if (!options.figures.report.empty()) {
    files.Stage(options.figures.report, page());
    written.report = options.figures.report;
  }
  files.Commit();
  return written;
}

void WriteReport(const FitOptions& options, const std::function<std::string()>& page, FitFiles* written) {
  if (options.figures.report.empty()) return;
  OutputFiles files;
  files.Stage(options.figures.report, page());
  files.Commit();
  written->report = options.figures.report;
}

void NoteOlderFiles(const FitOptions& options, const FitFiles& written, Notes* notes) {
  if (written.csv.empty()) return;
  std::vector<std::string> older;
  for (const std::string& name : EveryCsvName()) {
    const std::string path = (fs::path(options.csvFolder) / name).string();
    std::error_code ignored;
    const bool isWritten = std::find(written.csv.begin(), written.csv.end(), path) != written.csv.end();
    if (!isWritten && fs::exists(path, ignored)) older.push_back(name);
  }
  if (older.empty()) return;
  notes->Add("the folder " + OneLine(options.csvFolder) + " also holds " + Listed(older) +
             ", which this run has not written: " + (older.size() == 1 ? "it does" : "they do") + " not tell of this model");
}

std::vector<std::string> StageDrawings(const FigureOptions& options, const std::vector<Figure>& figures,
                                       OutputFiles* files) {
  std::vector<std::string> paths;
  if (options.folder.empty()) return paths;
  for (const Figure& figure : figures) {
    paths.push_back(SvgPath(options.folder, figure.name));
    files->Stage(paths.back(), FigureSvg(figure, SizeOf(options.size)));
  }
  return paths;
}

}  // namespace kalmia::app
