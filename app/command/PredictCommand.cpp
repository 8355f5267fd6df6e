#include <filesystem>
#include <utility>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/FitFiles.h"
#include "app/console/InputFile.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/figure/FigureJson.h"
#include "kalmia/analysis/figure/PredictFigures.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/model/Contributions.h"
#include "kalmia/analysis/model/PCAScores.h"
#include "kalmia/analysis/model/Prediction.h"
#include "kalmia/analysis/report/PredictReport.h"
#include "kalmia/analysis/report/ResidualsReport.h"
#include "kalmia/analysis/table/Table.h"
#include "kalmia/analysis/table/TableRows.h"
#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

namespace {

constexpr auto kPredictionsFile = "predictions.csv";

/// The model as it predicts from the block of the table.
template <class Model>
void Direct(Model* /*model*/, const PredictOptions& options) {
  if (options.from != "y") return;
  throw BadRequest(InputName(options.model) + " predicts from X only: --from y takes an O2PLS model");
}

void Direct(StoredO2PLS* model, const PredictOptions& options) {
  if (!options.columns.contributions.empty()) {
    throw BadRequest(InputName(options.model) +
                     " holds an O2PLS model, which has no T2: --contributions takes a model of PCA, PLS or OPLS");
  }
  if (options.from == "y") TurnAround(model);
}

/// What columns add to the rows that were asked for.
template <class Model, class Result>
std::vector<RowContributions> Contributions(const Model& model, const Result& result, const PredictOptions& options,
                                            const Table& table, Notes* notes) {
  return ContributionsOfNewRows(model, result.rows,
                                RequireRows(table, result.rows.names, options.columns.contributions), notes);
}

template <class Model, class Result>
std::string Report(const Model& model, const Result& result, const PredictOptions& options, const Table& table,
                   const PredictFiles& written, const std::vector<RowContributions>& contributions,
                   const Notes& notes) {
  return options.json ? PredictJson(model, result, written, notes, contributions)
                      : PredictText(model, table, result, contributions);
}

/// O2PLS has no T2 to contribute to.
std::vector<RowContributions> Contributions(const StoredO2PLS& /*model*/, const PLSPredictions& /*result*/,
                                            const PredictOptions& /*options*/, const Table& /*table*/,
                                            Notes* /*notes*/) {
  return {};
}

std::string Report(const StoredO2PLS& model, const PLSPredictions& result, const PredictOptions& options,
                   const Table& table, const PredictFiles& written,
                   const std::vector<RowContributions>& /*contributions*/, const Notes& notes) {
  return options.json ? PredictJson(model, result, written, notes) : PredictText(model, table, result);
}

/// What was asked for with a stored model of one kind.
template <class Model>
std::string PredictWith(const Model& model, const PredictOptions& options, const Table& table, Notes* notes) {
  TerminalBar bar;
  const auto result = Predict(model, table, options.id, bar.Get());
  notes->Add(result.notes);
  const std::vector<RowContributions> contributions = Contributions(model, result, options, table, notes);
  PredictFiles written = {InputName(options.model), InputName(options.table), {}, {}};
  OutputFiles files;
  if (!options.csvFolder.empty()) {
    files.MakeFolder(options.csvFolder);
    const auto stage = [&](const CsvFile& file) {
      written.csv.push_back((std::filesystem::path(options.csvFolder) / file.name).string());
      files.Stage(written.csv.back(), file.bytes);
    };
    const CsvMarks marks = MarksOf(options.csvMarks.Asked());
    stage(PredictCsv(model, result, kPredictionsFile, marks));
    if (options.columns.residuals) {
      stage(ResidualsCsv(result.rows.names, model.xNames, XResiduals(model, result.rows.x, bar.Get()), marks));
    }
  }
  std::vector<Figure> figures;
  if (options.figures.AreAsked()) figures = Figures(model, result, RecipeOf(options.figures), contributions);
  if (!options.figures.folder.empty()) files.MakeFolder(options.figures.folder);
  written.svg = StageDrawings(options.figures, figures, &files);
  files.Commit();
  const std::string report = Report(model, result, options, table, written, contributions, *notes);
  return options.figures.inJson ? JsonWithFigures(report, figures) : report;
}

std::string PredictWith(const StoredFilter& /*model*/, const PredictOptions& options, const Table& /*table*/,
                        Notes* /*notes*/) {
  throw BadData(InputName(options.model) + " holds a filter: kalmia filter TABLE --model " + InputName(options.model) +
                " --out FILE applies it");
}

}  // namespace

std::string RunCommand(const PredictOptions& options, Notes* notes) {
  std::vector<std::string> names = {kPredictionsFile};
  if (options.columns.residuals) names.push_back(kResidualsFile);
  std::vector<FilePlace> places = PlacesInCsvFolder(options.csvFolder, names);
  for (FilePlace& place :
       PlacesInSvgFolder(options.figures.folder, FigureNames(options.columns.contributions.size()))) {
    places.push_back(std::move(place));
  }
  CheckPlaces({{"the model", options.model}, {"the table", options.table}}, places);
  StoredModel model = ReadModelFile(ReadInput(options.model), InputName(options.model));
  std::visit([&options](auto& own) { Direct(&own, options); }, model);
  const Table table = ReadTable(options.table, options.reading);
  return std::visit([&](const auto& own) { return PredictWith(own, options, table, notes); }, model);
}

}  // namespace kalmia::app
