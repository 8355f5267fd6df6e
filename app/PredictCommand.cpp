#include <algorithm>
#include <cmath>
#include <filesystem>

#include "app/CellNumber.h"
#include "app/Commands.h"
#include "app/CsvTable.h"
#include "app/DisplayText.h"
#include "app/Failure.h"
#include "app/InputFile.h"
#include "app/Json.h"
#include "app/Numbers.h"
#include "app/OutputFiles.h"
#include "app/OutputPlaces.h"
#include "app/PlsCsvFiles.h"
#include "app/Prediction.h"
#include "app/StoredModel.h"
#include "app/TableColumns.h"
#include "app/TextTable.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::app {

namespace {

constexpr auto kMissingCell = static_cast<float>(kMissing);
constexpr int kPredictionDigits = 6;
constexpr int kDistanceDecimals = 3;
constexpr int kErrorDigits = 5;
constexpr std::size_t kColumnsNamed = 10;  ///< a note names so many missing columns, and counts the others

/// The rows of a new table as the model wants them, and what the model says of them.
struct NewRows {
  std::vector<std::string> names;
  std::vector<std::string> missingColumns;
  NCDataMatrix<float> x;
  std::vector<std::vector<float>> measured;  ///< for each Y of the model its cells, or nothing if it is not there
  std::vector<RowPrediction> predictions;
};

/// Root mean square error over the rows that have a measured and a predicted value.
struct PredictionError {
  int rows = 0;
  double rmsep = 0.0;
};

[[noreturn]] void Refuse(const CsvTable& table, const std::string& message) {
  throw Failure(ExitCode::BadData, table.Name() + ": " + message);
}

void ReadX(const StoredModel& model, const CsvTable& table, NewRows* rows, int* moved) {
  rows->x = NCDataMatrix<float>(table.Rows(), static_cast<int>(model.xNames.size()));
  for (std::size_t k = 0; k < model.xNames.size(); ++k) {
    const int column = table.Find(model.xNames[k]);
    if (column < 0) {
      rows->missingColumns.push_back(model.xNames[k]);
      continue;
    }
    const std::vector<float> cells = ReadNumbers(table, column, moved);
    for (std::size_t i = 0; i < cells.size(); ++i) {
      rows->x(static_cast<int>(i) + 1, static_cast<int>(k) + 1, cells[i]);
    }
  }
  if (rows->missingColumns.size() == model.xNames.size()) {
    Refuse(table, "no column has the name of one of the model's X columns");
  }
  if (rows->x.GetNumMisVal() == static_cast<long long>(rows->x.SizeRows()) * rows->x.SizeColumns()) {
    Refuse(table, "every cell of the model's X columns is missing");
  }
}

void NoteMissingColumns(const NewRows& rows, Notes* notes) {
  if (rows.missingColumns.empty()) return;
  notes->Add("taken as missing cells, not in the table: " + Listed(rows.missingColumns, kColumnsNamed));
}

/// Measured values of Y serve as a check; a column of texts under the name of a Y is none, and a note says so.
void ReadMeasured(const StoredModel& model, const CsvTable& table, NewRows* rows, int* moved, Notes* notes) {
  std::vector<std::string> texts;
  for (const std::string& name : model.yNames) {
    rows->measured.emplace_back();
    const int column = table.Find(name);
    if (column < 0) continue;
    const ColumnKind kind = KindOfColumn(table, column);
    if (kind == ColumnKind::Numbers) rows->measured.back() = ReadNumbers(table, column, moved);
    if (kind == ColumnKind::Texts) texts.push_back(name);
  }
  if (!texts.empty()) notes->Add("not taken as measured values, text columns: " + Listed(texts));
}

int IdColumn(const StoredModel& model, const CsvTable& table, const PredictOptions& options) {
  if (!options.id.empty()) return RequireColumn(table, options.id);
  return model.idColumn.empty() ? -1 : table.Find(model.idColumn);
}

/// Of Y column j, from 0.
PredictionError ErrorOf(const NewRows& rows, std::size_t j) {
  PredictionError error;
  double sum = 0.0;
  for (std::size_t i = 0; i < rows.measured[j].size(); ++i) {
    if (rows.measured[j][i] == kMissingCell || rows.predictions[i].y.empty()) continue;
    const double difference = rows.measured[j][i] - rows.predictions[i].y[j];
    sum += difference * difference;
    ++error.rows;
  }
  error.rmsep = std::sqrt(sum / error.rows);
  return error;
}

std::string Measured(float cell) { return cell == kMissingCell ? "-" : Shortest(cell); }

std::string ErrorText(const StoredModel& model, const NewRows& rows) {
  TextTable table;
  table.AddColumn("Y", TextTable::Align::Left);
  table.AddColumn("rows", TextTable::Align::Right);
  table.AddColumn("RMSEP", TextTable::Align::Right);
  bool any = false;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    const PredictionError error = ErrorOf(rows, j);
    if (error.rows == 0) continue;
    any = true;
    table.AddRow({model.yNames[j], std::to_string(error.rows), Significant(error.rmsep, kErrorDigits)});
  }
  return any ? "\n" + table.Text() : "";
}

std::string PredictText(const StoredModel& model, const CsvTable& source, const NewRows& rows) {
  const bool anyReason = std::any_of(rows.predictions.begin(), rows.predictions.end(),
                                     [](const auto& row) { return !row.reason.empty(); });
  TextTable table;
  table.AddColumn("row", TextTable::Align::Left);
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    table.AddColumn(OneLine(model.yNames[j]), TextTable::Align::Right);
    if (!rows.measured[j].empty()) table.AddColumn("measured", TextTable::Align::Right);
  }
  table.AddColumn("distance", TextTable::Align::Right);
  if (anyReason) table.AddColumn("not predicted because", TextTable::Align::Left);
  for (std::size_t i = 0; i < rows.predictions.size(); ++i) {
    const RowPrediction& row = rows.predictions[i];
    std::vector<std::string> cells = {rows.names[i]};
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      cells.push_back(row.y.empty() ? "-" : Significant(row.y[j], kPredictionDigits));
      if (!rows.measured[j].empty()) cells.push_back(Measured(rows.measured[j][i]));
    }
    cells.push_back(Fixed(DistanceToModel(model, row), kDistanceDecimals));
    if (anyReason) cells.push_back(row.reason);
    table.AddRow(cells);
  }
  return "Predictions of " + Listed(model.yNames) + " for " + source.Name() + ", " +
         Counted(rows.predictions.size(), "row") + ", with " +
         Counted(static_cast<std::size_t>(model.Components()), "component") + "\n\n" + table.Text() +
         ErrorText(model, rows);
}

Json RowsJson(const StoredModel& model, const NewRows& rows) {
  Json list = Json::array();
  for (std::size_t i = 0; i < rows.predictions.size(); ++i) {
    const RowPrediction& row = rows.predictions[i];
    Json predicted = Json::array();
    Json measured = Json::array();
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      predicted.push_back(row.y.empty() ? Json(nullptr) : JsonNumber(row.y[j]));
      const bool has = !rows.measured[j].empty() && rows.measured[j][i] != kMissingCell;
      measured.push_back(has ? JsonNumber(AsWritten(rows.measured[j][i])) : Json(nullptr));
    }
    list.push_back({{"row", rows.names[i]},
                    {"predicted", predicted},
                    {"measured", measured},
                    {"distance", JsonNumber(DistanceToModel(model, row))},
                    {"reason", row.reason.empty() ? Json(nullptr) : Json(row.reason)}});
  }
  return list;
}

std::string PredictJson(const StoredModel& model, const PredictOptions& options, const NewRows& rows,
                        const Notes& notes, const std::vector<std::string>& csvFiles) {
  Json json = JsonHeader("kalmia-predict");
  json["model"] = InputName(options.model);
  json["table"] = InputName(options.table);
  json["components"] = model.Components();
  json["y"] = model.yNames;
  json["missingColumns"] = rows.missingColumns;
  json["rows"] = RowsJson(model, rows);
  Json errors = Json::array();
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    const PredictionError error = ErrorOf(rows, j);
    errors.push_back({{"name", model.yNames[j]}, {"rows", error.rows}, {"rmsep", JsonNumber(error.rmsep)}});
  }
  json["errors"] = errors;
  json["csvFiles"] = csvFiles;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string RunPredict(const PredictOptions& options, Notes* notes) {
  RefuseToOverwrite({{"the model", options.model}, {"the table", options.table}},
                    PlacesInCsvFolder(options.csvFolder, {kPredictionsFile}));
  const StoredModel model = ReadModelFile(ReadInput(options.model), InputName(options.model));
  const CsvTable table(ReadInput(options.table), InputName(options.table));
  NewRows rows;
  int moved = 0;
  rows.names = RowNames(table, IdColumn(model, table, options));
  ReadX(model, table, &rows, &moved);
  ReadMeasured(model, table, &rows, &moved, notes);
  NoteMissingColumns(rows, notes);
  NoteMovedCells(moved, notes);
  rows.predictions = PredictRows(model, rows.x);
  std::vector<std::string> csvFiles;
  OutputFiles files;
  if (!options.csvFolder.empty()) {
    files.MakeFolder(options.csvFolder);
    const CsvFile file = PredictionsCsv(model, rows.names, rows.predictions, rows.measured);
    csvFiles.push_back((std::filesystem::path(options.csvFolder) / file.name).string());
    files.Stage(csvFiles.back(), file.bytes);
  }
  files.Commit();
  return options.json ? PredictJson(model, options, rows, *notes, csvFiles) : PredictText(model, table, rows);
}

}  // namespace kalmia::app
