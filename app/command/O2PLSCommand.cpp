#include <string>
#include <vector>

#include "app/command/Commands.h"
#include "app/command/RunFit.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "app/console/Remedies.h"
#include "kalmia/analysis/figure/FigureJson.h"
#include "kalmia/analysis/figure/ModelFigures.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/report/ModelPages.h"
#include "kalmia/analysis/report/O2PLSReport.h"
#include "kalmia/analysis/report/ResidualsReport.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/validation/O2PLSAnalysis.h"

namespace kalmia::app {

namespace {

void CheckFiles(const O2PLSOptions& options) {
  std::vector<std::string> names = O2PLSCsvFileNames();
  if (options.columns.residuals) names.insert(names.end(), {kXResidualsFile, kYResidualsFile});
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, names);
  const std::vector<FilePlace> drawings = PlacesInSvgFolder(options.figures.folder, FigureNames());
  places.insert(places.end(), drawings.begin(), drawings.end());
  places.insert(places.begin(), {{"--save", options.save}, {"--report", options.figures.report}});
  CheckPlaces({{"the X table", options.table}, {"the Y table", options.yTable}}, Given(places));
}

/// What is left of a block is told by the model that predicts from it: the model is turned around meanwhile.
void AddResiduals(const CsvMarks& marks, NCProgress* progress, O2PLSResult* fit, std::vector<CsvFile>* files) {
  const auto add = [&](const Block& block, const char* file) {
    const NCDataMatrix<float> residuals = XResiduals(fit->model, block.cells, progress);
    files->push_back(ResidualsCsv(fit->data.rowNames, block.names, residuals, marks, file));
  };
  add(fit->data.x, kXResidualsFile);
  TurnAround(&fit->model);
  add(fit->data.y, kYResidualsFile);
  TurnAround(&fit->model);
}

std::vector<CsvFile> FilesOf(const O2PLSOptions& options, NCProgress* progress, O2PLSAnalysis* analysis) {
  const CsvMarks marks = MarksOf(options.csvMarks.Asked());
  std::vector<CsvFile> files = O2PLSCsvFiles(*analysis, marks);
  if (options.columns.residuals) AddResiduals(marks, progress, &analysis->fit, &files);
  return files;
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
  const ReportAssets assets = AssetsFor(options);
  const Table xTable = ReadTable(options.table, options.reading);
  const Table yTable = ReadTable(options.yTable, options.reading);
  TerminalBar bar;
  O2PLSAnalysis analysis =
      Analyse(RecipeOf(options), xTable, yTable, RecipeOf(options.validation), bar.Get());
  const O2PLSResult& result = analysis.fit;
  notes->Add(WithRemedies(result.notes));
  const auto page = [&] {
    return PageText(PageOf(analysis, *notes, RecipeOf(options.figures)), options, assets);
  };
  FitFiles files;
  std::vector<Figure> figures;
  if (result.AnyKept()) {
    if (options.figures.AreAsked()) figures = Figures(analysis, RecipeOf(options.figures));
    files = WriteFitFiles(
        options, [&] { return ModelFileBytes(result.model, options.Parts()); },
        [&] { return FilesOf(options, bar.Get(), &analysis); }, bar.Get(), {}, figures, page);
    NoteOlderFiles(options, files, notes);
  } else {
    WriteReport(options, page, &files);
  }
  if (!options.json) return O2PLSText(analysis, files);
  const std::string json = O2PLSJson(analysis, *notes, files);
  return options.figures.inJson ? JsonWithFigures(json, figures) : json;
}

}  // namespace kalmia::app
