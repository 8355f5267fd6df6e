#include "kalmia/analysis/report/PredictReport.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kPredictionDigits = 6;
constexpr int kScoreDigits = 5;
constexpr int kMostMoreDigits = 10;
constexpr int kDistanceDecimals = 3;
constexpr int kErrorDigits = 5;

/// How many digits predictions of a Y column, from 0, need: those of a column far from zero as many more as its shift
/// has in front of what varies.
int PredictionDigits(const YModelInfo& model, const PLSPredictions& result, std::size_t j) {
  const double shift = model.yScaling.ShiftOfColumn(j);
  double spread = 0.0;
  for (const RowPrediction& row : result.predictions) {
    if (!row.y.empty()) spread = std::max(spread, std::fabs(row.y[j] - shift));
  }
  const double more = shift == 0.0 ? 0.0 : std::ceil(std::log10(std::fabs(shift) / spread));
  return kPredictionDigits + static_cast<int>(std::clamp<double>(more, 0.0, kMostMoreDigits));
}

/// Root mean square error over the rows that have a measured and a predicted value.
struct PredictionError {
  int rows = 0;
  double rmsep = 0.0;
};

/// Of Y column j, from 0.
PredictionError ErrorOf(const PLSPredictions& result, std::size_t j) {
  PredictionError error;
  double sum = 0.0;
  for (std::size_t i = 0; i < result.measured[j].size(); ++i) {
    if (std::isnan(result.measured[j][i]) || result.predictions[i].y.empty()) continue;
    const double difference = result.measured[j][i] - result.predictions[i].y[j];
    sum += difference * difference;
    ++error.rows;
  }
  error.rmsep = std::sqrt(sum / error.rows);
  return error;
}

std::string Measured(double cell) { return Shortest(cell, "-"); }

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
      const bool has = !result.measured[j].empty() && !std::isnan(result.measured[j][i]);
      measured.push_back(has ? JsonNumber(result.measured[j][i]) : Json(nullptr));
    }
    list.push_back({{"row", result.rows.names[i]},
                    {"predicted", predicted},
                    {"measured", measured},
                    {"distance", JsonNumber(DistanceToModel(model, result.components, row))},
                    {"reason", TextOrNull(row.reason)}});
  }
  return list;
}

double Distance(const StoredPCA& model, const RowScores& row) {
  return DistanceToModel(model, model.Components(), row);
}

/// A score from a row that may have none; `a` counts from 0.
double Score(const RowScores& row, std::size_t a) { return row.t.empty() ? kNone : row.t[a]; }

std::size_t CountOf(const StoredPCA& model) { return model.components.size(); }

// What the JSON of predictions has for each kind of model: the name of its format, and fields of its own.

constexpr auto PredictFormat(const YModelInfo& /*model*/) { return "kalmia-predict"; }
constexpr auto PredictFormat(const StoredO2PLS& /*model*/) { return "kalmia-predict-o2pls"; }
constexpr auto PredictFormat(const StoredPCA& /*model*/) { return "kalmia-predict-pca"; }

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
  const YModelInfo& info = model;
  (*json)["from"] = model.inputBlock == "X" ? "x" : "y";
  AddPredictJson(info, result, json);
}

void AddPredictJson(const StoredPCA& model, const PCAPredictions& result, Json* json) {
  Json list = Json::array();
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    Json scores = Json::array();
    for (std::size_t a = 0; a < CountOf(model); ++a) scores.push_back(JsonNumber(Score(row, a)));
    list.push_back({{"row", result.rows.names[i]},
                    {"t", scores},
                    {"distance", JsonNumber(Distance(model, row))},
                    {"reason", TextOrNull(row.reason)}});
  }
  (*json)["rows"] = list;
}

template <class Model, class Result>
std::string JsonOf(const Model& model, const Result& result, const PredictFiles& files, const Notes& notes) {
  Json json = JsonHeader(PredictFormat(model));
  json["model"] = files.model;
  json["table"] = files.table;
  json["components"] = model.Components();
  json["missingColumns"] = result.rows.missingColumns;
  AddPredictJson(model, result, &json);
  json["csvFiles"] = files.csv;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace

std::string PredictText(const YModelInfo& model, const Table& table, const PLSPredictions& result) {
  const bool anyReason = std::any_of(result.predictions.begin(), result.predictions.end(),
                                     [](const auto& row) { return !row.reason.empty(); });
  TextTable text;
  text.AddColumn("row", TextTable::Align::Left);
  std::vector<int> digits;
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    digits.push_back(PredictionDigits(model, result, j));
    text.AddColumn(OneLine(model.yNames[j]), TextTable::Align::Right);
    if (!result.measured[j].empty()) text.AddColumn("measured", TextTable::Align::Right);
  }
  text.AddColumn("distance", TextTable::Align::Right);
  if (anyReason) text.AddColumn("not predicted because", TextTable::Align::Left);
  for (std::size_t i = 0; i < result.predictions.size(); ++i) {
    const RowPrediction& row = result.predictions[i];
    std::vector<std::string> cells = {result.rows.names[i]};
    for (std::size_t j = 0; j < model.yNames.size(); ++j) {
      cells.push_back(row.y.empty() ? "-" : Significant(row.y[j], digits[j]));
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
      if (!result.measured[j].empty()) csv.Number(result.measured[j][i]);
      csv.Number(result.predictions[i].y.empty() ? kNone : result.predictions[i].y[j]);
    }
    csv.Number(DistanceToModel(model, result.components, result.predictions[i]))
        .Field(result.predictions[i].reason)
        .EndLine();
  }
  return {file, csv.Text()};
}

std::string PredictText(const StoredPCA& model, const Table& table, const PCAPredictions& result) {
  const bool anyReason =
      std::any_of(result.scores.begin(), result.scores.end(), [](const auto& row) { return !row.reason.empty(); });
  TextTable text;
  text.AddColumn("row", TextTable::Align::Left);
  for (std::size_t a = 1; a <= CountOf(model); ++a) text.AddColumn("t" + std::to_string(a), TextTable::Align::Right);
  text.AddColumn("distance", TextTable::Align::Right);
  if (anyReason) text.AddColumn("no scores because", TextTable::Align::Left);
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    std::vector<std::string> cells = {result.rows.names[i]};
    for (std::size_t a = 0; a < CountOf(model); ++a) cells.push_back(Significant(Score(row, a), kScoreDigits));
    cells.push_back(Fixed(Distance(model, row), kDistanceDecimals));
    if (anyReason) cells.push_back(row.reason);
    text.AddRow(cells);
  }
  return "Scores of " + table.Name() + ", " + Counted(result.scores.size(), "row") + ", in " +
         Counted(CountOf(model), "component") + "\n\n" + text.Text();
}

CsvFile PredictCsv(const StoredPCA& model, const PCAPredictions& result, const std::string& file,
                   const CsvMarks& marks) {
  CsvText csv(marks);
  csv.Field("row");
  for (std::size_t a = 1; a <= CountOf(model); ++a) csv.Field("t" + std::to_string(a));
  csv.Field("distance").Field("reason").EndLine();
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    csv.Field(result.rows.names[i]);
    for (std::size_t a = 0; a < CountOf(model); ++a) csv.Number(Score(row, a));
    csv.Number(Distance(model, row)).Field(row.reason).EndLine();
  }
  return {file, csv.Text()};
}

std::string PredictJson(const StoredPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

std::string PredictJson(const StoredOPLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

std::string PredictJson(const StoredO2PLS& model, const PLSPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

std::string PredictJson(const StoredPCA& model, const PCAPredictions& result, const PredictFiles& files,
                        const Notes& notes) {
  return JsonOf(model, result, files, notes);
}

}  // namespace kalmia::analysis
