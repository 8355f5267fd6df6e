#include <optional>
#include <string>
#include <vector>

#include "app/command/Commands.h"
#include "app/command/RunFit.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/InputFile.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/console/Remedies.h"
#include "kalmia/analysis/figure/FigureJson.h"
#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/file/OPLSCvFile.h"
#include "kalmia/analysis/report/ModelPages.h"
#include "kalmia/analysis/report/OPLSReport.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/OPLSAnalysis.h"

namespace kalmia::app {

namespace {

/// --save-cv may replace the file of --resume, once that has been read; no other output may.
void CheckFiles(const OPLSOptions& options) {
  const std::vector<std::string> names = WithResiduals(OPLSCsvFileNames(), options);
  CheckFitPlaces(options, names, options.saveCv);
  if (options.resume.empty()) return;
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, names);
  places.insert(places.begin(), {{"--save", options.save}, {"--report", options.figures.report}});
  RefuseToOverwrite({{"the file of --resume", options.resume}}, Given(places));
}

}  // namespace

std::string RunCommand(const OPLSOptions& options, Notes* notes) {
  CheckFiles(options);
  const ReportAssets assets = AssetsFor(options);
  std::optional<StoredOPLSCv> resumed;
  if (!options.resume.empty()) resumed = ReadOPLSCvFile(ReadInput(options.resume), InputName(options.resume));
  OPLSRecipe recipe = options.recipe;
  recipe.steps = ReadFitSteps(options);
  const Table table = ReadTable(options.table, options.reading);
  const std::vector<int> rows = RowsToTell(table, recipe.id, options);
  TerminalBar bar;
  const OPLSAnalysis analysis =
      Analyse(recipe, table, RecipeOf(options.validation), bar.Get(), resumed ? &*resumed : nullptr);
  const OPLSResult& result = analysis.fit;
  notes->Add(WithRemedies(result.notes));
  const std::vector<RowContributions> contributions = Contributions(result, table, rows, notes);
  std::vector<Figure> figures;
  if (options.figures.AreAsked()) figures = Figures(analysis, RecipeOf(options.figures), contributions);
  const FitFiles files = WriteFitFiles(
      options, [&] { return ModelFileBytes(result.model, options.Parts()); },
      [&] {
        return WithResiduals(OPLSCsvFiles(analysis, MarksOf(options.csvMarks.Asked())), result, options, bar.Get());
      },
      bar.Get(),
      {options.saveCv, [&result] { return OPLSCvFileBytes(result.validation); }}, figures,
      [&] {
        return PageText(PageOf(table, analysis, *notes, RecipeOf(options.figures), contributions), options, assets);
      });
  NoteOlderFiles(options, files, notes);
  if (!files.csv.empty()) NoteNoDistances(result.model, result.model.Components(), notes);
  if (!options.json) return OPLSText(analysis, files, contributions);
  const std::string json = OPLSJson(table, analysis, *notes, files, contributions);
  return options.figures.inJson ? JsonWithFigures(json, figures) : json;
}

}  // namespace kalmia::app
