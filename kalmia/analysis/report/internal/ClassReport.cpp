#include "kalmia/analysis/report/internal/ClassReport.h"

#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"
#include "kalmia/analysis/validation/ClassFigures.h"

namespace kalmia::analysis {

namespace {

constexpr int kRateDecimals = 3;

using Align = TextTable::Align;

/// Rows by their class, columns by the one that they are assigned to.
std::string ConfusionText(const std::vector<std::string>& names, const std::vector<std::vector<int>>& confusion,
                          const std::string& title) {
  TextTable table;
  table.AddColumn(title, Align::Left);
  for (const std::string& name : names) table.AddColumn("as " + OneLine(name), Align::Right);
  for (std::size_t g = 0; g < names.size(); ++g) {
    std::vector<std::string> cells = {names[g]};
    for (const int count : confusion[g]) cells.push_back(std::to_string(count));
    table.AddRow(cells);
  }
  return table.Text();
}

std::string RatesText(const ClassValidation& classes) {
  const ClassFigures& figures = classes.figures;
  TextTable table;
  table.AddColumn("class", Align::Left);
  for (const char* title : {"sensitivity", "specificity", "AUC"}) table.AddColumn(title, Align::Right);
  for (std::size_t g = 0; g < classes.classes.names.size(); ++g) {
    table.AddRow({classes.classes.names[g], Fixed(figures.sensitivity[g], kRateDecimals),
                  Fixed(figures.specificity[g], kRateDecimals), Fixed(figures.auc[g], kRateDecimals)});
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

std::string ClassText(const std::optional<ClassFit>& fit, const RefitValidation* validation) {
  if (!fit) return "";
  const std::vector<std::string>& names = fit->classes.names;
  std::string text =
      "\n" + ConfusionText(names, JudgeClasses(fit->classes.classOfRow, fit->values).confusion, "fitted rows");
  if (validation == nullptr || !validation->classes) return text;
  return text + "\n" + ConfusionText(names, validation->classes->figures.confusion, "left-out rows") + "\n" +
         RatesText(*validation->classes);
}

Json ClassJson(const std::optional<ClassFit>& fit, const RefitValidation* validation) {
  if (!fit) return nullptr;
  const std::vector<std::string>& names = fit->classes.names;
  Json json = {{"names", names},
               {"confusion", JudgeClasses(fit->classes.classOfRow, fit->values).confusion},
               {"confusionCv", nullptr},
               {"accuracyCv", nullptr},
               {"balancedAccuracyCv", nullptr},
               {"sensitivity", nullptr},
               {"specificity", nullptr},
               {"auc", nullptr}};
  if (validation == nullptr || !validation->classes) return json;
  const ClassFigures& figures = validation->classes->figures;
  json["confusionCv"] = figures.confusion;
  json["accuracyCv"] = JsonNumber(figures.accuracy);
  json["balancedAccuracyCv"] = JsonNumber(figures.balancedAccuracy);
  json["sensitivity"] = ByClass(names, figures.sensitivity);
  json["specificity"] = ByClass(names, figures.specificity);
  json["auc"] = ByClass(names, figures.auc);
  return json;
}

}  // namespace kalmia::analysis
