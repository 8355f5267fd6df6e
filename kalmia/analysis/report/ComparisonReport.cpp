#include "kalmia/analysis/report/ComparisonReport.h"

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kQ2Decimals = 3;
constexpr int kErrorDigits = 5;
constexpr int kPDigits = 2;
constexpr int kRateDecimals = 3;

std::string ComponentsOf(const ComparedModel& model) {
  if (model.orthogonal == 0) return std::to_string(model.components);
  return std::to_string(model.components - model.orthogonal) + " + " + std::to_string(model.orthogonal);
}

}  // namespace

std::string ComparisonText(const Table& table, const Comparison& comparison) {
  TextTable text;
  text.AddColumn("model", TextTable::Align::Left);
  text.AddColumn("components", TextTable::Align::Right);
  text.AddColumn("Q2", TextTable::Align::Right);
  const bool hasClasses = comparison.models.front().classes.has_value();
  const std::size_t shownY = hasClasses && comparison.yNames.size() == 2 ? 1 : comparison.yNames.size();  // both alike
  for (std::size_t j = 0; j < shownY; ++j) {
    text.AddColumn(shownY == 1 ? "RMSECV" : "RMSECV " + OneLine(comparison.yNames[j]), TextTable::Align::Right);
  }
  if (hasClasses) {
    for (const char* title : {"accuracy", "balanced"}) text.AddColumn(title, TextTable::Align::Right);
  }
  text.AddColumn("against the best", TextTable::Align::Left);
  for (std::size_t m = 0; m < comparison.models.size(); ++m) {
    const ComparedModel& model = comparison.models[m];
    std::vector<std::string> cells = {model.name, ComponentsOf(model), Fixed(model.q2, kQ2Decimals)};
    for (std::size_t j = 0; j < shownY; ++j) cells.push_back(Significant(model.rmsecv[j], kErrorDigits));
    if (hasClasses) {
      cells.push_back(Fixed(model.classes->accuracy, kRateDecimals));
      cells.push_back(Fixed(model.classes->balancedAccuracy, kRateDecimals));
    }
    cells.push_back(m == comparison.best ? "best" : "p " + Significant(comparison.p(m, comparison.best), kPDigits));
    text.AddRow(cells);
  }
  return "Models of " + Listed(comparison.yNames) + " in " + table.Name() + ", compared by " +
         Counted(comparison.rows, "row") + ", left out in " +
         Counted(static_cast<std::size_t>(comparison.folds.groups), "group") + "\n\n" + text.Text() +
         "\np: how often signs by chance give as large a difference between the errors of two models\n";
}

std::string ComparisonJson(const Table& table, const Comparison& comparison, const ValidationRecipe& validation,
                           const Notes& notes) {
  Json json = JsonHeader("kalmia-compare");
  json["table"] = table.Name();
  json["y"] = comparison.yNames;
  json["rows"] = comparison.rows;
  json["folds"] = WordOfFoldScheme(validation.folds.scheme);
  json["groups"] = comparison.folds.groups;
  json["repeats"] = comparison.folds.Repeats();
  json["seed"] = validation.folds.seed;
  json["rule"] = WordOfSelectionRule(validation.selection.rule);
  json["best"] = comparison.models[comparison.best].name;
  Json models = Json::array();
  for (std::size_t m = 0; m < comparison.models.size(); ++m) {
    const ComparedModel& model = comparison.models[m];
    Json rmsecv = Json::object(), p = Json::object();
    for (std::size_t j = 0; j < model.rmsecv.size(); ++j) rmsecv[comparison.yNames[j]] = JsonNumber(model.rmsecv[j]);
    for (std::size_t other = 0; other < comparison.models.size(); ++other) {
      if (other != m) p[comparison.models[other].name] = JsonNumber(comparison.p(m, other));
    }
    models.push_back({{"name", model.name},
                      {"components", model.components},
                      {"orthogonal", model.orthogonal},
                      {"chosen", model.isChosen},
                      {"q2", JsonNumber(model.q2)},
                      {"rmsecv", rmsecv},
                      {"meanError", JsonNumber(model.meanError)},
                      {"p", p}});
    if (!model.classes) continue;
    models.back()["accuracy"] = JsonNumber(model.classes->accuracy);
    models.back()["balancedAccuracy"] = JsonNumber(model.classes->balancedAccuracy);
  }
  json["models"] = models;
  json["notes"] = notes.Lines();
  return JsonText(json);
}

}  // namespace kalmia::analysis
