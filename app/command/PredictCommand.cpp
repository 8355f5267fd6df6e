#include <filesystem>

#include "app/command/Commands.h"
#include "app/console/ConsoleProgress.h"
#include "app/console/InputFile.h"
#include "app/console/OutputFiles.h"
#include "app/console/OutputPlaces.h"
#include "app/console/ReadTable.h"
#include "kalmia/analysis/file/ModelFile.h"
#include "kalmia/analysis/fit/PredictResult.h"
#include "kalmia/analysis/report/PredictReport.h"
#include "kalmia/analysis/table/Table.h"
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
  if (options.from == "y") TurnAround(model);
}

/// What was asked for with a stored model of one kind.
template <class Model>
std::string PredictWith(const Model& model, const PredictOptions& options, const Table& table, Notes* notes) {
  TerminalBar bar;
  const auto result = Predict(model, table, options.id, bar.Get());
  notes->Add(result.notes);
  PredictFiles written = {InputName(options.model), InputName(options.table), {}};
  OutputFiles files;
  if (!options.csvFolder.empty()) {
    files.MakeFolder(options.csvFolder);
    written.csv.push_back((std::filesystem::path(options.csvFolder) / kPredictionsFile).string());
    files.Stage(written.csv.back(),
                PredictCsv(model, result, kPredictionsFile, MarksOf(options.csvMarks.Asked())).bytes);
  }
  files.Commit();
  return options.json ? PredictJson(model, result, written, *notes) : PredictText(model, table, result);
}

std::string PredictWith(const StoredFilter& /*model*/, const PredictOptions& options, const Table& /*table*/,
                        Notes* /*notes*/) {
  throw BadData(InputName(options.model) + " holds a filter: kalmia filter TABLE --model " + InputName(options.model) +
                " --out FILE applies it");
}

}  // namespace

std::string RunCommand(const PredictOptions& options, Notes* notes) {
  CheckPlaces({{"the model", options.model}, {"the table", options.table}},
              PlacesInCsvFolder(options.csvFolder, {kPredictionsFile}));
  StoredModel model = ReadModelFile(ReadInput(options.model), InputName(options.model));
  std::visit([&options](auto& own) { Direct(&own, options); }, model);
  const Table table = ReadTable(options.table, options.reading);
  return std::visit([&](const auto& own) { return PredictWith(own, options, table, notes); }, model);
}

}  // namespace kalmia::app
