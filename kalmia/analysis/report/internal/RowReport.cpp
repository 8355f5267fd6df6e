#include "kalmia/analysis/report/internal/RowReport.h"

#include <algorithm>

#include "kalmia/analysis/table/internal/CsvText.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"

namespace kalmia::analysis {

namespace {

constexpr int kLimitDigits = 4;
constexpr std::size_t kRowsNamed = 5;  ///< the others are counted; rows.csv and JSON have them all

std::string PairText(const std::string& what, const LimitPair& limits) {
  std::string text;
  if (limits.at95) text += Significant(*limits.at95, kLimitDigits) + " (95 %)";
  if (limits.at99) text += (text.empty() ? "" : ", ") + Significant(*limits.at99, kLimitDigits) + " (99 %)";
  return text.empty() ? "" : what + " " + text;
}

Json NumberOrNull(const std::optional<double>& number) { return number ? JsonNumber(*number) : Json(nullptr); }

Json PairJson(const LimitPair& limits) {
  return {{"0.95", NumberOrNull(limits.at95)}, {"0.99", NumberOrNull(limits.at99)}};
}

/// The names of rows that have one of the flags.
std::vector<std::string> NamesWith(const ModelInfo& model, const RowDiagnosis& diagnosis,
                                   const std::vector<std::string>& flags) {
  std::vector<std::string> names;
  for (std::size_t i = 0; i < diagnosis.flags.size(); ++i) {
    const std::vector<std::string>& ofRow = diagnosis.flags[i];
    if (std::find_first_of(ofRow.begin(), ofRow.end(), flags.begin(), flags.end()) == ofRow.end()) continue;
    names.push_back(model.rowNames[i]);
  }
  return names;
}

}  // namespace

std::string LimitsText(const RowLimits& limits) {
  const std::string t2 = PairText("T2", limits.t2), distance = PairText("distance", limits.distance);
  return t2 + (t2.empty() || distance.empty() ? "" : "; ") + distance;
}

Json LimitsJson(const RowLimits& limits) {
  return {{"t2", PairJson(limits.t2)}, {"distance", PairJson(limits.distance)}};
}

Json LimitsJson(const ModelInfo& model, int components) {
  if (!model.rowTerms) return nullptr;
  return {{"training", LimitsJson(LimitsOfTrainingRows(*model.rowTerms))},
          {"new", LimitsJson(LimitsOfNewRows(*model.rowTerms, components))}};
}

std::string RowsText(const ModelInfo& model) {
  const RowDiagnosis diagnosis = DiagnoseTrainingRows(model);
  const std::string limits = LimitsText(diagnosis.limits);
  if (limits.empty()) return "";
  const std::vector<std::string> beyond99 = NamesWith(model, diagnosis, {"T2 99 %", "distance 99 %"});
  const std::size_t beyond95 = NamesWith(model, diagnosis, {"T2 95 %", "distance 95 %"}).size();
  return "\nLimits of the rows: " + limits + "\n" + Counted(beyond95, "row") + " beyond a limit of 95 %, " +
         std::to_string(beyond99.size()) + " beyond one of 99 %" +
         (beyond99.empty() ? "" : ": " + Listed(beyond99, kRowsNamed)) + ".\n";
}

void AddRowsJson(const ModelInfo& model, int components, Json* json) {
  const RowDiagnosis diagnosis = DiagnoseTrainingRows(model);
  Json list = Json::array();
  for (std::size_t i = 0; i < diagnosis.flags.size(); ++i) {
    list.push_back({{"row", model.rowNames[i]},
                    {"t2", JsonNumber(diagnosis.t2[i])},
                    {"distance", JsonNumber(diagnosis.distances[i])},
                    {"absoluteDistance", JsonNumber(diagnosis.absoluteDistances[i])},
                    {"flags", diagnosis.flags[i]}});
  }
  (*json)["rowStatistics"] = diagnosis.flags.empty() ? Json(nullptr) : list;
  (*json)["limits"] = LimitsJson(model, components);
}

CsvFile RowsCsv(const ModelInfo& model, const CsvMarks& marks) {
  const RowDiagnosis diagnosis = DiagnoseTrainingRows(model);
  CsvText csv(marks);
  csv.Field("row").Field("T2").Field("distance").Field("absolute distance").Field("flags").EndLine();
  for (std::size_t i = 0; i < diagnosis.flags.size(); ++i) {
    csv.Field(model.rowNames[i]).Number(diagnosis.t2[i]).Number(diagnosis.distances[i]);
    csv.Number(diagnosis.absoluteDistances[i]).Field(FlagsText(diagnosis.flags[i])).EndLine();
  }
  return {"rows.csv", csv.Text()};
}

std::string FlagsText(const std::vector<std::string>& flags) {
  std::string text;
  for (const std::string& flag : flags) text += (text.empty() ? "" : "; ") + flag;
  return text;
}

}  // namespace kalmia::analysis
