#include "app/PlsReport.h"

#include <filesystem>

#include "app/ComponentTable.h"
#include "app/DisplayText.h"
#include "app/Numbers.h"

namespace kalmia::app {

namespace {

std::string Percent(int part, double whole) { return Fixed(100.0 * part / whole, 1) + " %"; }

/// "1.2 % of the X cells are missing"; empty if none is.
std::string MissingText(const PlsData& data) {
  const double cells = static_cast<double>(data.x.SizeRows()) * data.x.SizeColumns();
  std::string text;
  if (data.x.GetNumMisVal() > 0) text += Percent(data.x.GetNumMisVal(), cells) + " of the X cells";
  if (data.y.GetNumMisVal() > 0) {
    if (!text.empty()) text += " and ";
    text += Percent(data.y.GetNumMisVal(), static_cast<double>(data.y.SizeRows()) * data.y.SizeColumns()) +
            " of the Y cells";
  }
  return text.empty() ? "" : "; missing: " + text;
}

std::string Heading(const PlsOutcome& outcome) {
  const PlsData& data = outcome.data;
  return "PLS of " + Listed(data.yNames) + " on " + Counted(data.xNames.size(), "column") + " of " +
         outcome.model.table + ", " + Counted(data.rowNames.size(), "row") + "\nX " +
         ScalingText(outcome.model.scaling) + MissingText(data) + "\n\n";
}

std::string GroupsText(const StoredModel& model) {
  return "cross-validated in " + std::to_string(model.groups) + " groups" +
         (model.groupColumn.empty() ? "" : " of " + OneLine(model.groupColumn));
}

std::string Outcome(const PlsOutcome& outcome) {
  if (outcome.AnyKept()) {
    const std::string kept = Counted(static_cast<std::size_t>(outcome.model.Components()), "component") + " kept, ";
    const std::string early = outcome.endedEarly.empty() ? "" : "; no further one: " + outcome.endedEarly;
    return kept + GroupsText(outcome.model) + early + ".\n\n" + QualityText(outcome.model);
  }
  if (outcome.components.empty()) {
    return "No component is kept: none can be computed, " + outcome.endedEarly + ".\nNothing is saved.\n";
  }
  const ComponentRecord& first = outcome.components.front();
  return "No component is kept, " + GroupsText(outcome.model) + ": Q2 of the first, " + Significant(first.y.q2, 4) +
         ", does not exceed its limit, " + Significant(first.q2Limit, 4) + ".\nNothing is saved.\n";
}

/// "11 files into results: scores.csv, ..."
std::string FilesText(const std::vector<std::string>& paths) {
  std::vector<std::string> names;
  for (const std::string& path : paths) names.push_back(std::filesystem::path(path).filename().string());
  const std::string folder = std::filesystem::path(paths.front()).parent_path().string();
  return Counted(paths.size(), "file") + " into " + OneLine(folder) + ": " + Listed(names);
}

}  // namespace

std::string PlsText(const PlsOutcome& outcome, const std::string& saved, const std::vector<std::string>& csvFiles) {
  std::string text = Heading(outcome);
  if (!outcome.components.empty()) text += ComponentText(outcome.components, outcome.data.yNames) + "\n";
  text += Outcome(outcome);
  if (!saved.empty()) text += "\nSaved the model as " + OneLine(saved) + "\n";
  if (!csvFiles.empty()) text += "\nWrote " + FilesText(csvFiles) + "\n";
  return text;
}

std::string PlsJson(const CsvTable& table, const PlsOutcome& outcome, const Notes& notes, const std::string& saved,
                    const std::vector<std::string>& csvFiles) {
  const PlsData& data = outcome.data;
  const StoredModel& model = outcome.model;
  Json json = JsonHeader("kalmia-pls");
  json["table"] = {{"file", table.Name()},
                   {"rows", table.Rows()},
                   {"columns", table.Columns()},
                   {"separator", std::string(1, table.Separator())},
                   {"decimal", table.DecimalComma() ? "," : "."}};
  json["scaling"] = ScalingWord(model.scaling);
  json["x"] = {{"columns", data.xNames}, {"missingCells", data.x.GetNumMisVal()}};
  json["y"] = {{"columns", data.yNames}, {"missingCells", data.y.GetNumMisVal()}};
  json["rows"] = data.rowNames.size();
  json["leftOut"] = {{"textColumns", data.textColumns},
                     {"constantColumns", data.constantColumns},
                     {"emptyColumns", data.emptyColumns},
                     {"rows", data.leftOutRows}};
  json["crossValidation"] = {{"groups", model.groups},
                             {"groupColumn", model.groupColumn.empty() ? Json(nullptr) : Json(model.groupColumn)}};
  json["components"] = ComponentJson(outcome.components, data.yNames);
  json["kept"] = model.Components();
  json["endedEarly"] = outcome.endedEarly.empty() ? Json(nullptr) : Json(outcome.endedEarly);
  json["quality"] = QualityJson(model);
  json["saved"] = saved.empty() ? Json(nullptr) : Json(saved);
  json["csvFiles"] = csvFiles;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::app
