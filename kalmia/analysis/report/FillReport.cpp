#include "kalmia/analysis/report/FillReport.h"

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kDigits = 4;

std::size_t AsSize(int count) { return static_cast<std::size_t>(count); }

std::string ModelText(const FilledColumns& filled) {
  const FillModel& model = filled.model;
  std::string text = "PCA of " + Counted(AsSize(filled.modelColumns), "column") + " at unit variance, " +
                     Counted(AsSize(filled.modelRows), "row") + ": " +
                     Counted(AsSize(model.components), "component");
  if (model.components > 0) {
    text += ", refitted in " + Counted(AsSize(model.rounds), "round") + "; in the last a cell moved by at most " +
            Significant(model.lastMove, 2) + " standard deviations";
  }
  return text + "\n";
}

std::string ChoiceText(const FillChoice& choice) {
  if (choice.errors.empty()) return "";
  TextTable table;
  for (const char* title : {"components", "error"}) table.AddColumn(title, TextTable::Align::Right);
  table.AddColumn("", TextTable::Align::Left);
  for (std::size_t a = 0; a < choice.errors.size(); ++a) {
    const std::string remark = AsSize(choice.components) == a ? "chosen" : "";
    table.AddRow({std::to_string(a), Significant(choice.errors[a], kDigits), remark});
  }
  return "\n" + Counted(AsSize(choice.components), "component") + " chosen: root mean square error of " +
         Counted(AsSize(choice.hiddenCells), "cell") + ", hidden in " + Counted(AsSize(choice.trials), "trial") +
         " and filled again, in standard deviations:\n" + table.Text();
}

std::string ReasonText(const LeftEmpty& left) {
  switch (left.reason) {
    case LeftEmpty::Reason::TextColumn: return "column " + Quoted(left.name) + " holds text";
    case LeftEmpty::Reason::EmptyColumn: return "column " + Quoted(left.name) + " has no cell at all";
    case LeftEmpty::Reason::ExcludedColumn: return "column " + Quoted(left.name) + " takes no part";
    case LeftEmpty::Reason::EmptyRow: break;
  }
  return "row " + Quoted(left.name) + " has no cell in a column that varies";
}

std::string LeftText(const std::vector<LeftEmpty>& leftEmpty) {
  if (leftEmpty.empty()) return "";
  std::string text = "\nLeft empty:\n";
  for (const LeftEmpty& left : leftEmpty) {
    text += "  " + Counted(AsSize(left.cells), "cell") + ": " + ReasonText(left) + "\n";
  }
  return text;
}

/// The number was chosen anew, so that the hidden cells had no say in it.
std::string TrialChoiceText(const FillTrial& trial, const FillChoice& choice) {
  if (trial.choice.errors.empty()) return "";
  const std::string ofAll = choice.errors.empty() ? "" : "; of all cells " + std::to_string(choice.components);
  return " (" + std::to_string(trial.choice.components) + " chosen from the cells that were left" + ofAll + ")";
}

std::string TrialText(const FillTrial& trial, const FillChoice& choice) {
  if (trial.all.cells == 0) return "\nTrial: there are too few cells to hide a tenth of them and fill them again\n";
  std::string text = "\nTrial: " + Counted(AsSize(trial.all.cells), "present cell") +
                     " hidden and filled again, with " + Counted(AsSize(trial.components), "component") +
                     TrialChoiceText(trial, choice) + "\nRoot mean square error " +
                     Significant(trial.all.filled, kDigits) +
                     " standard deviations; of filling with means " + Significant(trial.all.means, kDigits) +
                     "; ratio " + Significant(trial.all.Ratio(), kDigits) + "\n\n";
  TextTable table;
  table.AddColumn("column", TextTable::Align::Left);
  for (const char* title : {"cells", "error", "of means", "ratio"}) table.AddColumn(title, TextTable::Align::Right);
  for (const FillError& column : trial.columns) {
    table.AddRow({column.name, std::to_string(column.cells), Significant(column.filled, kDigits),
                  Significant(column.means, kDigits), Significant(column.Ratio(), kDigits)});
  }
  return text + table.Text();
}

std::string ReasonWord(LeftEmpty::Reason reason) {
  switch (reason) {
    case LeftEmpty::Reason::TextColumn: return "textColumn";
    case LeftEmpty::Reason::EmptyColumn: return "emptyColumn";
    case LeftEmpty::Reason::ExcludedColumn: return "excludedColumn";
    case LeftEmpty::Reason::EmptyRow: break;
  }
  return "emptyRow";
}

Json ErrorJson(const FillError& error) {
  return {{"cells", error.cells},
          {"error", JsonNumber(error.cells > 0 ? error.filled : error.Ratio())},
          {"errorOfMeans", JsonNumber(error.cells > 0 ? error.means : error.Ratio())},
          {"ratio", JsonNumber(error.Ratio())}};
}

/// Null where none was chosen.
Json ChosenJson(const FillChoice& choice) { return choice.errors.empty() ? Json(nullptr) : Json(choice.components); }

Json TrialJson(const FillTrial& trial) {
  Json json = ErrorJson(trial.all);
  json["chosenComponents"] = ChosenJson(trial.choice);
  json["components"] = trial.components;
  json["columns"] = Json::array();
  for (const FillError& column : trial.columns) {
    Json line = {{"name", column.name}};
    line.update(ErrorJson(column));
    json["columns"].push_back(line);
  }
  return json;
}

Json ModelJson(const FilledColumns& filled) {
  const FillModel& model = filled.model;
  return {{"rows", filled.modelRows},
          {"columns", filled.modelColumns},
          {"components", model.components},
          {"rounds", model.rounds},
          {"lastMove", JsonNumber(model.lastMove)},
          {"settled", model.Settled()}};
}

}  // namespace

std::string FillText(const Table& table, const FillResult& result, const std::string& out, bool anew) {
  const std::string hasAll = anew ? " holds the same cells" : " is the same";
  std::string text = result.missing == 0
                         ? "No cell of " + table.Name() + " is missing; " + OneLine(out) + hasAll + "\n"
                         : "Filled " + std::to_string(result.filledCells) + " of " +
                               Counted(AsSize(result.missing), "missing cell") + " of " + table.Name() + " into " +
                               OneLine(out) + "\n";
  if (result.filledCells > 0) text += ModelText(result.filled) + ChoiceText(result.choice);
  text += LeftText(result.leftEmpty);
  if (result.trial) text += TrialText(*result.trial, result.choice);
  return text;
}

std::string FillJson(const Table& table, const FillResult& result, const std::string& out, const Notes& notes) {
  Json json = JsonHeader("kalmia-fill");
  json["table"] = table.Name();
  json["rows"] = table.Rows();
  json["out"] = out;
  json["missingCells"] = result.missing;
  json["filledCells"] = result.filledCells;
  json["leftEmpty"] = Json::array();
  for (const LeftEmpty& left : result.leftEmpty) {
    json["leftEmpty"].push_back({{"reason", ReasonWord(left.reason)}, {"name", left.name}, {"cells", left.cells}});
  }
  json["constantColumns"] = result.filled.constantColumns;
  json["model"] = ModelJson(result.filled);
  json["choice"] = result.choice.errors;
  json["chosenComponents"] = ChosenJson(result.choice);
  json["trial"] = result.trial ? TrialJson(*result.trial) : Json(nullptr);
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
