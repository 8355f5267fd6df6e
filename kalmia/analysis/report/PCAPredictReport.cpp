#include <algorithm>
#include <limits>

#include "kalmia/analysis/report/PredictReport.h"
#include "kalmia/analysis/report/internal/PredictJson.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr double kNone = std::numeric_limits<double>::quiet_NaN();
constexpr int kScoreDigits = 5;
constexpr int kDistanceDecimals = 3;

double Distance(const StoredPCA& model, const RowScores& row) {
  return DistanceToModel(model, model.Components(), row);
}

/// A score from a row that may have none; `a` counts from 0.
double Score(const RowScores& row, std::size_t a) { return row.t.empty() ? kNone : row.t[a]; }

std::size_t CountOf(const StoredPCA& model) { return model.components.size(); }

}  // namespace

std::string PredictText(const StoredPCA& model, const CsvTable& table, const PCAPredictions& result) {
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

void AddPredictJson(const StoredPCA& model, const PCAPredictions& result, Json* json) {
  Json list = Json::array();
  for (std::size_t i = 0; i < result.scores.size(); ++i) {
    const RowScores& row = result.scores[i];
    Json scores = Json::array();
    for (std::size_t a = 0; a < CountOf(model); ++a) scores.push_back(JsonNumber(Score(row, a)));
    list.push_back({{"row", result.rows.names[i]},
                    {"t", scores},
                    {"distance", JsonNumber(Distance(model, row))},
                    {"reason", row.reason.empty() ? Json(nullptr) : Json(row.reason)}});
  }
  (*json)["rows"] = list;
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

}  // namespace kalmia::analysis
