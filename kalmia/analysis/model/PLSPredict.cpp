#include "kalmia/analysis/model/PLSPredict.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "kalmia/analysis/table/TableColumns.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"
#include "kalmia/containers/Missing.h"

namespace kalmia::analysis {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kPredictionDigits = 6;
constexpr int kDistanceDecimals = 3;
constexpr int kErrorDigits = 5;

/// Root mean square error over the rows that have a measured and a predicted value.
struct PredictionError {
  int rows = 0;
  double rmsep = 0.0;
};

/// Measured values of Y serve as a check; a column of texts under the name of a Y is none, and a note says so.
void ReadMeasured(const YModelInfo& model, const CsvTable& table, PLSPredictions* result, Notes* notes) {
  std::vector<std::string> texts;
  for (const std::string& name : model.yNames) {
    result->measured.emplace_back();
    const int column = table.Find(name);
    if (column < 0) continue;
    const ColumnKind kind = KindOfColumn(table, column);
    if (kind == ColumnKind::Numbers) result->measured.back() = ReadNumbers(table, column, &result->rows.moved);
    if (kind == ColumnKind::Texts) texts.push_back(name);
  }
  if (!texts.empty()) notes->Add("not taken as measured values, text columns: " + Listed(texts));
}

/// Of Y column j, from 0.
PredictionError ErrorOf(const PLSPredictions& result, std::size_t j) {
  PredictionError error;
  double sum = 0.0;
  for (std::size_t i = 0; i < result.measured[j].size(); ++i) {
    if (result.measured[j][i] == kMissingCell<float> || result.predictions[i].y.empty()) continue;
    const double difference = result.measured[j][i] - result.predictions[i].y[j];
    sum += difference * difference;
    ++error.rows;
  }
  error.rmsep = std::sqrt(sum / error.rows);
  return error;
}

std::string Measured(float cell) { return cell == kMissingCell<float> ? "-" : Shortest(cell); }

std::string ErrorText(const YModelInfo& model, const PLSPredictions& result) {
  TextTable table;
  table.AddColumn("Y", TextTable::Align::Left);
  table.AddColumn("rows", TextTable::Align::Right);
  table.AddColumn("RMSEP", TextTable::Align::Right);
  bool any = false;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    const PredictionError error = ErrorOf(result, j);
    if (error.rows == 0) continue;
    any = true;
    table.AddRow({model.yNames[j], std::to_string(error.rows), Significant(error.rmsep, kErrorDigits)});
  }
  return any ? "\n" + table.Text() : "";
}

Json RowsJson(const YModelInfo& model, const PLSPredictions& result) {
  Json list = Json::array();
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    const RowPrediction& row = result.predictions[i];
    Json predicted = Json::array();
    Json measured = Json::array();
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      predicted.push_back(row.y.empty() ? Json(nullptr) : JsonNumber(row.y[j]));
      const bool has = !result.measured[j].empty() && result.measured[j][i] != kMissingCell<float>;
      measured.push_back(has ? JsonNumber(ShortestDouble(result.measured[j][i])) : Json(nullptr));
    }
    list.push_back({{"row", result.rows.names[i]},
                    {"predicted", predicted},
                    {"measured", measured},
                    {"distance", JsonNumber(DistanceToModel(model, result.components, row))},
                    {"reason", row.reason.empty() ? Json(nullptr) : Json(row.reason)}});
  }
  return list;
}

template <class Model>
PLSPredictions PredictWith(const Model& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  PLSPredictions result;
  result.components = model.Components();
  result.rows = std::move(rows);
  ReadMeasured(model, table, &result, notes);
  NoteMovedCells(result.rows.moved, notes);
  result.predictions = PredictRows(model, result.rows.x, progress);
  return result;
}

}  // namespace

PLSPredictions PredictTable(const StoredPLS& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  return PredictWith(model, table, std::move(rows), notes, progress);
}

PLSPredictions PredictTable(const StoredOPLS& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  return PredictWith(model, table, std::move(rows), notes, progress);
}

PLSPredictions PredictTable(const StoredO2PLS& model, const CsvTable& table, NewRows rows, Notes* notes,
                            NCProgress* progress) {
  return PredictWith(model, table, std::move(rows), notes, progress);
}

std::string PredictText(const YModelInfo& model, const CsvTable& table, const PLSPredictions& result) {
  const bool anyReason = std::any_of(result.predictions.begin(), result.predictions.end(),
                                     [](const auto& row) { return !row.reason.empty(); });
  TextTable text;
  text.AddColumn("row", TextTable::Align::Left);
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    text.AddColumn(OneLine(model.yNames[j]), TextTable::Align::Right);
    if (!result.measured[j].empty()) text.AddColumn("measured", TextTable::Align::Right);
  }
  text.AddColumn("distance", TextTable::Align::Right);
  if (anyReason) text.AddColumn("not predicted because", TextTable::Align::Left);
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    const RowPrediction& row = result.predictions[i];
    std::vector<std::string> cells = {result.rows.names[i]};
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      cells.push_back(row.y.empty() ? "-" : Significant(row.y[j], kPredictionDigits));
      if (!result.measured[j].empty()) cells.push_back(Measured(result.measured[j][i]));
    }
    cells.push_back(Fixed(DistanceToModel(model, result.components, row), kDistanceDecimals));
    if (anyReason) cells.push_back(row.reason);
    text.AddRow(cells);
  }
  return "Predictions of " + Listed(model.yNames) + " for " + table.Name() + ", " +
         Counted(result.predictions.size(), "row") + ", with " +
         Counted(static_cast<std::size_t>(result.components), "component") + "\n\n" + text.Text() +
         ErrorText(model, result);
}

void AddPredictJson(const YModelInfo& model, const PLSPredictions& result, Json* json) {
  (*json)["y"] = model.yNames;
  (*json)["rows"] = RowsJson(model, result);
  Json errors = Json::array();
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    const PredictionError error = ErrorOf(result, j);
    errors.push_back({{"name", model.yNames[j]}, {"rows", error.rows}, {"rmsep", JsonNumber(error.rmsep)}});
  }
  (*json)["errors"] = errors;
}

void AddPredictJson(const StoredO2PLS& model, const PLSPredictions& result, Json* json) {
  const YModelInfo& frame = model;
  (*json)["from"] = model.inputBlock == "X" ? "x" : "y";
  AddPredictJson(frame, result, json);
}

CsvFile PredictCsv(const YModelInfo& model, const PLSPredictions& result, const std::string& file,
                   const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row");
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    if (!result.measured[j].empty()) csv.Field("measured " + model.yNames[j]);
    csv.Field("predicted " + model.yNames[j]);
  }
  csv.Field("distance").Field("reason").EndLine();
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    csv.Field(result.rows.names[i]);
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      if (!result.measured[j].empty()) csv.Cell(result.measured[j][i]);
      csv.Number(result.predictions[i].y.empty() ? kNone : result.predictions[i].y[j]);
    }
    csv.Number(DistanceToModel(model, result.components, result.predictions[i]))
        .Field(result.predictions[i].reason)
        .EndLine();
  }
  return {file, csv.Text()};
}

}  // namespace kalmia::analysis
