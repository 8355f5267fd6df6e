#include "kalmia/analysis/report/internal/ClassReport.h"

#include <algorithm>

#include "kalmia/analysis/model/DiscriminantRule.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kRateDecimals = 3;

using Align = TextTable::Align;

/// Rows by their class, columns by the one that they are assigned to; in the last one those that are assigned to none,
/// where there are such.
std::string ConfusionText(const std::vector<std::string>& names, const std::vector<std::vector<int>>& confusion,
                          const std::string& title, const std::vector<int>& unassigned = {}) {
  const bool isAnyUnassigned = std::any_of(unassigned.begin(), unassigned.end(), [](int count) { return count > 0; });
  TextTable table;
  table.AddColumn(title, Align::Left);
  for (const std::string& name : names) table.AddColumn("as " + OneLine(name), Align::Right);
  if (isAnyUnassigned) table.AddColumn("as none", Align::Right);
  for (std::size_t g = 0; g < names.size(); ++g) {
    std::vector<std::string> cells = {names[g]};
    for (const int count : confusion[g]) cells.push_back(std::to_string(count));
    if (isAnyUnassigned) cells.push_back(std::to_string(unassigned[g]));
    table.AddRow(cells);
  }
  return table.Text();
}

std::string RatesText(const std::vector<std::string>& names, const ClassFigures& figures) {
  TextTable table;
  table.AddColumn("class", Align::Left);
  for (const char* title : {"sensitivity", "specificity", "AUC"}) table.AddColumn(title, Align::Right);
  for (std::size_t g = 0; g < names.size(); ++g) {
    table.AddRow({names[g], Fixed(figures.sensitivity[g], kRateDecimals), Fixed(figures.specificity[g], kRateDecimals),
                  Fixed(figures.auc[g], kRateDecimals)});
  }
  return "Left out: accuracy " + Fixed(figures.accuracy, kRateDecimals) + ", balanced accuracy " +
         Fixed(figures.balancedAccuracy, kRateDecimals) + "\n" + table.Text();
}

Json ByClass(const std::vector<std::string>& names, const std::vector<double>& rates) {
  Json json = Json::object();
  for (std::size_t g = 0; g < names.size(); ++g) json[names[g]] = JsonNumber(rates[g]);
  return json;
}

}  // namespace

std::string ClassText(const YModelInfo& model) {
  if (!model.classes || !model.classes->fitted) return "";
  const std::vector<std::string>& names = model.yNames;
  std::string text = "\n" + ConfusionText(names, model.classes->fitted->confusion, "fitted rows");
  if (!model.classes->leftOut) return text;
  const ClassFigures& figures = *model.classes->leftOut;
  return text + "\n" + ConfusionText(names, figures.confusion, "left-out rows") + "\n" + RatesText(names, figures);
}

Json ClassJson(const YModelInfo& model) {
  if (!model.classes || !model.classes->fitted) return nullptr;
  const std::vector<std::string>& names = model.yNames;
  Json json = {{"names", names},
               {"confusion", model.classes->fitted->confusion},
               {"confusionCv", nullptr},
               {"accuracyCv", nullptr},
               {"balancedAccuracyCv", nullptr},
               {"sensitivity", nullptr},
               {"specificity", nullptr},
               {"auc", nullptr}};
  if (!model.classes->leftOut) return json;
  const ClassFigures& figures = *model.classes->leftOut;
  json["confusionCv"] = figures.confusion;
  json["accuracyCv"] = JsonNumber(figures.accuracy);
  json["balancedAccuracyCv"] = JsonNumber(figures.balancedAccuracy);
  json["sensitivity"] = ByClass(names, figures.sensitivity);
  json["specificity"] = ByClass(names, figures.specificity);
  json["auc"] = ByClass(names, figures.auc);
  return json;
}

std::optional<RowClasses> RowClassesOf(const YModelInfo& model, const std::optional<ClassFit>& fit,
                                       const RefitValidation* validation) {
  if (!fit || !model.classes) return std::nullopt;
  RowClasses rows{model, model.classes->column, fit->classes.classOfRow, AssignedClasses(fit->values), {}};
  if (validation != nullptr && validation->classes) rows.leftOut = AssignedClasses(validation->classes->values);
  return rows;
}

void AddRowClassesJson(const std::optional<RowClasses>& rows, Json* classes) {
  if (!rows) return;
  const auto names = [&rows](const std::vector<int>& numbers) {
    Json list = Json::array();
    for (const int number : numbers) list.push_back(TextOrNull(ClassName(rows->model, number)));
    return list;
  };
  (*classes)["measured"] = names(rows->own);
  (*classes)["assigned"] = names(rows->fitted);
  (*classes)["assignedCv"] = rows->leftOut.empty() ? Json(nullptr) : names(rows->leftOut);
}

std::string TallyText(const YModelInfo& model, const ClassPredictions& predictions) {
  const ClassTally tally = TallyOf(model.yNames, predictions);
  if (tally.rows == 0) return "";
  return "\n" + ConfusionText(model.yNames, tally.confusion, OneLine(model.classes->column), tally.unassigned) + "\n" +
         std::to_string(tally.right) + " of " + Counted(static_cast<std::size_t>(tally.rows), "row") + " right, " +
         Fixed(static_cast<double>(tally.right) / tally.rows, kRateDecimals) + "\n";
}

Json TallyJson(const YModelInfo& model, const ClassPredictions& predictions) {
  const ClassTally tally = TallyOf(model.yNames, predictions);
  return {{"column", model.classes->column},
          {"names", model.yNames},
          {"rows", tally.rows},
          {"right", tally.right},
          {"accuracy", tally.rows > 0 ? JsonNumber(static_cast<double>(tally.right) / tally.rows) : Json(nullptr)},
          {"confusion", tally.confusion},
          {"unassigned", tally.unassigned}};
}

std::string ClassName(const YModelInfo& model, int number) {
  return number < 0 ? "" : model.yNames[static_cast<std::size_t>(number)];
}

void AddClassJson(const YModelInfo& model, const ClassPredictions& predictions, std::size_t i, Json* row) {
  Json odds = Json::object();
  for (std::size_t g = 0; g < model.yNames.size(); ++g) odds[model.yNames[g]] = JsonNumber(predictions.logOdds(i, g));
  const auto nameOrNull = [&model](int number) { return number < 0 ? Json(nullptr) : Json(ClassName(model, number)); };
  (*row)["class"] = nameOrNull(predictions.assigned[i]);
  (*row)["nearest"] = nameOrNull(predictions.nearest[i]);
  (*row)["logOdds"] = odds;
  (*row)["measuredClass"] = predictions.measured.empty() ? Json(nullptr) : TextOrNull(predictions.measured[i]);
}

void AddClassTitles(const YModelInfo& model, const ClassPredictions& classes, CsvText* csv) {
  if (!classes.measured.empty()) csv->Field("measured " + model.classes->column);
  csv->Field("class").Field("nearest");
  for (const std::string& name : model.yNames) csv->Field("log odds " + name);
}

void AddClassFields(const YModelInfo& model, const ClassPredictions& classes, std::size_t i, CsvText* csv) {
  if (!classes.measured.empty()) csv->Field(classes.measured[i]);
  csv->Field(ClassName(model, classes.assigned[i])).Field(ClassName(model, classes.nearest[i]));
  for (std::size_t g = 0; g < model.yNames.size(); ++g) csv->Number(classes.logOdds(i, g));
}

}  // namespace kalmia::analysis
