#include "kalmia/analysis/report/internal/ValidationReport.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/report/internal/NamedComponents.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kErrorDigits = 5;
constexpr int kPDigits = 3;
constexpr int kDigits = 4;  ///< of what was compared
constexpr int kRateDecimals = 3;
using Align = TextTable::Align;

std::string MarkOf(const RefittedModels& models, std::size_t model) {
  if (model != models.model) return "";
  return models.validation.rule.empty() ? "given" : "chosen";
}

bool HasOneY(const RefittedModels& models) { return models.shownY.size() == 1; }

/// Accuracy and balanced accuracy; of a model that was not judged none.
std::vector<std::string> RatesText(const StoredValidationEntry& entry) {
  const ClassRates rates = entry.classes.value_or(ClassRates());
  return {Fixed(rates.accuracy, kRateDecimals), Fixed(rates.balancedAccuracy, kRateDecimals)};
}

void AddRatesJson(const ClassRates& rates, Json* json) {
  (*json)["accuracy"] = JsonNumber(rates.accuracy);
  (*json)["balancedAccuracy"] = JsonNumber(rates.balancedAccuracy);
}

std::string PerYText(const RefittedModels& models) {
  TextTable table;
  table.AddColumn("components", Align::Right);
  table.AddColumn("Y", Align::Left);
  for (const char* title : {"Q2", "RMSECV"}) table.AddColumn(title, Align::Right);
  for (std::size_t a = 0; a < models.labels.size(); ++a) {
    for (std::size_t j = 0; j < models.shownY.size(); ++j) {
      const StoredValidationEntry& entry = models.entries[a];
      table.AddRow({j == 0 ? models.labels[a] : "", models.shownY[j], ShareText(entry.q2PerY[j]),
                    Significant(entry.rmsecv[j], kErrorDigits)});
    }
  }
  return table.Text();
}

/// "3 components", "1 + 2 components".
std::string ComponentsText(const RefittedModels& models, std::size_t model) {
  return models.labels[model] + (models.labels[model] == "1" ? " component" : " components");
}

Json JsonByName(const std::vector<std::string>& names, const std::vector<double>& numbers) {
  Json json = Json::object();
  for (std::size_t j = 0; j < numbers.size(); ++j) json[names[j]] = JsonNumber(numbers[j]);
  return json;
}

/// Numbers and label of a model.
void AddNumbers(const StoredValidationEntry& entry, RefittedModels* models) {
  const auto sum = [&entry] {
    std::string label;
    for (const int count : entry.kinds) label += (label.empty() ? "" : " + ") + std::to_string(count);
    return label;
  };
  switch (entry.kinds.size()) {
    case 2:
      models->numbers.push_back(
          {{"components", entry.components}, {"predictive", entry.kinds[0]}, {"orthogonal", entry.kinds[1]}});
      models->labels.push_back(entry.components == 0 ? "0" : sum());
      break;
    case 3:
      models->numbers.push_back({{"joint", entry.kinds[0]}, {"xUnique", entry.kinds[1]}, {"yUnique", entry.kinds[2]}});
      models->labels.push_back(sum());
      break;
    default:
      models->numbers.push_back({{"components", entry.components}});
      models->labels.push_back(std::to_string(entry.components));
  }
}

/// `own` is what is known of the model itself, which follows the others where it was not judged.
RefittedModels ModelsOf(const ModelInfo& model, const std::vector<std::string>& yNames,
                        const std::vector<std::string>& shownY, std::optional<StoredValidationEntry> own) {
  const StoredValidation& validation = *model.validation;
  RefittedModels models{validation,         model.groupColumn,     yNames, shownY,
                        validation.Model(), validation.components, {},     {}};
  if (own && !models.IsJudged()) {
    own->components = validation.chosen;
    own->press = own->q2 = kNotANumber;
    own->rmsecv.assign(yNames.size(), kNotANumber);
    own->q2PerY = own->rmsecv;
    models.entries.push_back(std::move(*own));
  }
  for (const StoredValidationEntry& entry : models.entries) AddNumbers(entry, &models);
  return models;
}

Json RunsJson(const std::vector<PermutationRun>& runs) {
  Json list = Json::array();
  for (const PermutationRun& run : runs) {
    const double correlation = run.correlation;
    list.push_back({{"correlation", JsonNumber(correlation)}, {"r2", JsonNumber(run.r2)}, {"q2", JsonNumber(run.q2)}});
    if (!std::isnan(run.accuracy)) list.back()["accuracy"] = JsonNumber(run.accuracy);
  }
  return list;
}

Json AnovaJson(const std::optional<CvAnova>& anova) {
  if (!anova) return nullptr;
  return {{"f", JsonNumber(anova->f)}, {"df1", anova->df1}, {"df2", anova->df2}, {"p", JsonNumber(anova->p)}};
}

}  // namespace

RefittedModels RefittedModelsOf(const StoredPLS& model) {
  StoredValidationEntry own;
  if (!model.components.empty()) {
    own.r2x = model.components.back().r2xCum;
    own.r2y = model.components.back().y.r2Cum;
  }
  return ModelsOf(model, model.yNames, ShownYNames(model), std::move(own));
}

RefittedModels RefittedModelsOf(const StoredOPLS& model) {
  StoredValidationEntry own;
  own.kinds = {model.Predictive(), model.Orthogonal()};
  own.r2x = own.r2y = 0.0;
  for (const OPLSComponentRecord& component : model.components) {
    own.r2x += component.r2x;
    own.r2y += component.r2y;
  }
  return ModelsOf(model, model.yNames, ShownYNames(model), std::move(own));
}

RefittedModels RefittedModelsOf(const StoredO2PLS& model) {
  return ModelsOf(model, model.yNames, model.yNames, /*own=*/std::nullopt);
}

RefittedModels RefittedModelsOf(const StoredPCA& model) {
  StoredValidationEntry own;
  if (!model.components.empty()) own.r2x = model.components.back().r2xCum;
  return ModelsOf(model, {}, {}, std::move(own));
}

std::string RefitText(const RefittedModels& models) {
  const bool hasY = !models.yNames.empty();
  TextTable table;
  table.AddColumn("components", Align::Right);
  table.AddColumn("R2X", Align::Right);
  if (hasY) table.AddColumn("R2Y", Align::Right);
  table.AddColumn("Q2", Align::Right);
  if (HasOneY(models)) table.AddColumn("RMSECV", Align::Right);
  if (models.HasClasses()) {
    for (const char* title : {"accuracy", "balanced"}) table.AddColumn(title, Align::Right);
  }
  table.AddColumn("", Align::Left);
  for (std::size_t a = 0; a < models.labels.size(); ++a) {
    const StoredValidationEntry& entry = models.entries[a];
    std::vector<std::string> cells = {models.labels[a], ShareText(entry.r2x)};
    if (hasY) cells.push_back(ShareText(entry.r2y));
    cells.push_back(ShareText(entry.q2));
    if (HasOneY(models)) cells.push_back(Significant(entry.rmsecv[0], kErrorDigits));
    if (models.HasClasses()) {
      for (std::string& rate : RatesText(entry)) cells.push_back(std::move(rate));
    }
    cells.push_back(MarkOf(models, a));
    table.AddRow(cells);
  }
  return table.Text() + (models.shownY.size() > 1 ? "\n" + PerYText(models) : "");
}

std::string FoldsText(const RefittedModels& models) {
  const StoredValidation& validation = models.validation;
  const std::string how = models.groupColumn.empty() ? validation.folds : "those of " + OneLine(models.groupColumn);
  return "cross-validated by refits in " + std::to_string(validation.groups) + " groups (" + how + ")" +
         (validation.repeats > 1 ? ", repeated " + std::to_string(validation.repeats) + " times" : "");
}

std::string JudgedText(const RefittedModels& models, const std::string& more) {
  if (models.IsJudged()) return FoldsText(models) + more;
  return "not judged: " + FoldsText(models) + more + " up to " +
         ComponentsText(models, models.validation.components.size() - 1);
}

std::string ChoiceText(const RefittedModels& models, const std::optional<ComponentChoice>& chosen,
                       const std::string& whyNone) {
  if (!chosen) return "";
  const ComponentChoice& choice = *chosen;
  if (choice.compared.size() == 1) {
    return "No component can be judged: " + (whyNone.empty() ? "some round can have none" : whyNone) + ".\n";
  }
  const std::string lead = "Rule " + WordOfSelectionRule(choice.rule) + ": ";
  const std::string squares = "squared error of scaled " + std::string(models.yNames.empty() ? "X" : "Y");
  const std::string limit = Significant(choice.limit, kDigits), best = ComponentsText(models, choice.best);
  const std::string compared = Significant(choice.compared[choice.chosen], kDigits);
  switch (choice.rule) {
    case SelectionRule::OneSE:
      return lead + "the fewest whose mean " + squares + " in left-out rows, " + compared + ",\nis at most " + limit +
             ": the least, " + Significant(choice.compared[choice.best], kDigits) + " (with " + best +
             "), and its standard error, " + Significant(choice.limit - choice.compared[choice.best], kDigits) + ".\n";
    case SelectionRule::Randomisation:
      return lead + "the fewest whose errors of left-out rows are not larger than those of " + best + ",\n" +
             "the least, with p above " + limit + ": p is " + compared + ".\n";
    case SelectionRule::Min:
      return lead + "the least mean " + squares + " in left-out rows, " + compared + ".\n";
    case SelectionRule::Q2: break;
  }
  if (choice.chosen + 1 == choice.compared.size()) {
    return lead + "each lowers the " + squares + " in left-out rows by more than " + limit + " of it.\n";
  }
  return lead + "one more lowers the " + squares + " in left-out rows by " +
         Significant(choice.compared[choice.chosen + 1], kDigits) + " of it, not by more than " + limit + ".\n";
}

std::string MeanModelText(const YModelInfo& model) {
  if (!model.classes) return "the model is the mean of " + Listed(model.yNames);
  const std::vector<double>& priors = model.classes->rule.logPriors;
  const auto largest = std::max_element(priors.begin(), priors.end());
  const bool isTied = std::count(priors.begin(), priors.end(), *largest) > 1;
  const std::string& name = model.yNames[static_cast<std::size_t>(largest - priors.begin())];
  return "all rows go to " + OneLine(name) + ", the " + (isTied ? "first " : "") + "class of the largest prior";
}

std::string CvAnovaText(const std::vector<std::string>& yNames, const std::vector<std::optional<CvAnova>>& cvAnova) {
  std::string text;
  for (std::size_t j = 0; j < cvAnova.size(); ++j) {
    const std::optional<CvAnova>& anova = cvAnova[j];
    if (!anova) continue;
    text += "CV-ANOVA, errors of left-out rows against " + OneLine(yNames[j]) + " about its mean: F " +
            Significant(anova->f, kErrorDigits) + " (" + std::to_string(anova->df1) + ", " +
            std::to_string(anova->df2) + "), p " + Significant(anova->p, kPDigits) + "\n";
  }
  return text;
}

std::string NestedText(const RefittedModels& models, const RefitValidation& validation) {
  if (!validation.nested) return "";
  std::string text = "Double cross-validation, where each round chooses its own number: RMSECV ";
  for (std::size_t j = 0; j < models.shownY.size(); ++j) {
    text += (j > 0 ? ", " : "") + Significant(validation.nested->rmsecv[j], kErrorDigits) + " of " +
            OneLine(models.shownY[j]);
  }
  if (validation.nested->classes) {
    const ClassFigures& figures = *validation.nested->classes;
    text += ";\naccuracy " + Fixed(figures.accuracy, kRateDecimals) + ", balanced accuracy " +
            Fixed(figures.balancedAccuracy, kRateDecimals);
  }
  return text + "\n";
}

Json NestedJson(const RefitValidation* validation) {
  if (validation == nullptr || !validation->nested) return nullptr;
  const NestedValidation& nested = *validation->nested;
  Json chosen = Json::array(), rmsecv = Json::object(), q2PerY = Json::object();
  for (const std::size_t model : nested.models) chosen.push_back(validation->ComponentsOf(model));
  for (std::size_t j = 0; j < validation->yNames.size(); ++j) {
    rmsecv[validation->yNames[j]] = JsonNumber(nested.rmsecv[j]);
    q2PerY[validation->yNames[j]] = JsonNumber(nested.q2PerY[j]);
  }
  Json json = {{"chosen", chosen}, {"q2", JsonNumber(nested.q2)}, {"rmsecv", rmsecv}, {"q2PerY", q2PerY}};
  if (nested.classes) AddRatesJson({nested.classes->accuracy, nested.classes->balancedAccuracy}, &json);
  return json;
}

std::string PermutationText(const std::optional<StoredPermutation>& test) {
  if (!test) return "";
  const PermutationJudgement& of = test->judgement;
  return "Permutation test, against " + Counted(static_cast<std::size_t>(test->runs), "model") +
         " of Y in random order: p " + Significant(of.pR2, kPDigits) + " of R2, " + Significant(of.pQ2, kPDigits) +
         " of Q2" + (std::isnan(of.pAccuracy) ? "" : ", " + Significant(of.pAccuracy, kPDigits) + " of accuracy") +
         "; intercepts " + Significant(of.interceptR2, kDigits) + " and " + Significant(of.interceptQ2, kDigits) + "\n";
}

Json PermutationJson(const YModelInfo& model, const std::optional<PermutationTest>& test) {
  if (!model.validation || !model.validation->permutation) return nullptr;
  const PermutationJudgement& of = model.validation->permutation->judgement;
  Json json = {{"n", model.validation->permutation->runs},
               {"pR2", JsonNumber(of.pR2)},
               {"pQ2", JsonNumber(of.pQ2)},
               {"interceptR2", JsonNumber(of.interceptR2)},
               {"interceptQ2", JsonNumber(of.interceptQ2)}};
  if (test) json["runs"] = RunsJson(test->runs);
  if (!std::isnan(of.pAccuracy)) json["pAccuracy"] = JsonNumber(of.pAccuracy);
  return json;
}

Json RefitJson(const RefittedModels& models, int chosen) {
  const StoredValidation& validation = models.validation;
  const bool hasY = !models.yNames.empty();
  Json list = Json::array();
  for (std::size_t a = 0; a < models.numbers.size(); ++a) {
    const StoredValidationEntry& entry = models.entries[a];
    Json row = models.numbers[a];
    row["r2x"] = JsonNumber(entry.r2x);
    if (hasY) row["r2y"] = JsonNumber(entry.r2y);
    row["press"] = JsonNumber(entry.press);
    row["q2"] = JsonNumber(entry.q2);
    if (hasY) {
      row["rmsecv"] = JsonByName(models.yNames, entry.rmsecv);
      row["q2PerY"] = JsonByName(models.yNames, entry.q2PerY);
    }
    if (models.HasClasses()) AddRatesJson(entry.classes.value_or(ClassRates()), &row);
    list.push_back(row);
  }
  return {{"method", WordOfValidationMethod(ValidationMethod::Refit)},
          {"folds", validation.folds},
          {"groupColumn", TextOrNull(models.groupColumn)},
          {"groups", validation.groups},
          {"repeats", validation.repeats},
          {"seed", validation.seed},
          {"rule", TextOrNull(validation.rule)},
          {"chosen", chosen},
          {"components", list}};
}

Json OtherValidationJson(ValidationMethod method, const ModelInfo& model, int chosen) {
  const bool hasFolds = method != ValidationMethod::None;
  const std::string folds = model.groupColumn.empty() ? WordOfFoldScheme(FoldScheme::Interleaved) : kFoldsOfLabels;
  return {{"method", WordOfValidationMethod(method)},
          {"folds", hasFolds ? Json(folds) : Json(nullptr)},
          {"groupColumn", hasFolds ? TextOrNull(model.groupColumn) : Json(nullptr)},
          {"groups", hasFolds ? Json(model.groups) : Json(nullptr)},
          {"repeats", hasFolds ? Json(1) : Json(nullptr)},
          {"seed", nullptr},
          {"rule", nullptr},
          {"chosen", chosen},
          {"components", Json::array()}};
}

Json CrossValidatedJson(const RefitValidation* validation) {
  if (validation == nullptr || !validation->IsJudged()) return nullptr;
  Json json = Json::object();
  for (std::size_t j = 0; j < validation->yNames.size(); ++j) {
    Json column = Json::array();
    for (std::size_t i = 0; i < validation->predicted.rows; ++i) {
      column.push_back(JsonNumber(validation->predicted(i, j)));
    }
    json[validation->yNames[j]] = column;
  }
  return json;
}

Json CvAnovaJson(const YModelInfo& model) {
  if (!model.validation || model.validation->cvAnova.empty()) return nullptr;
  const std::vector<std::optional<CvAnova>>& cvAnova = model.validation->cvAnova;
  if (cvAnova.size() == 1) return AnovaJson(cvAnova.front());
  Json json = Json::object();
  for (std::size_t j = 0; j < cvAnova.size(); ++j) json[model.yNames[j]] = AnovaJson(cvAnova[j]);
  return json;
}

std::string BothWaysText(const RefittedModels& models) {
  const std::vector<StoredValidationEntry>& y = models.validation.components;
  const std::vector<StoredValidationEntry>& x = models.validation.xFromY;
  TextTable q2, errors;
  for (const char* title : {"joint", "X-unique", "Y-unique", "Q2 of Y from X", "Q2 of X from Y"}) {
    q2.AddColumn(title, Align::Right);
  }
  for (std::size_t a = 0; a < y.size(); ++a) {
    std::vector<std::string> cells;
    for (const int count : y[a].kinds) cells.push_back(std::to_string(count));
    cells.insert(cells.end(), {ShareText(y[a].q2), ShareText(x[a].q2)});
    q2.AddRow(cells);
  }
  errors.AddColumn("Y", Align::Left);
  for (const char* title : {"RMSECV of the mean", "RMSECV", "Q2"}) errors.AddColumn(title, Align::Right);
  const std::size_t last = y.size() - 1, shown = std::min(models.yNames.size(), kLinesShown);
  for (std::size_t j = 0; j < shown; ++j) {
    errors.AddRow({models.yNames[j], Significant(y[0].rmsecv[j], kErrorDigits),
                   last > 0 ? Significant(y[last].rmsecv[j], kErrorDigits) : "-",
                   last > 0 ? ShareText(y[last].q2PerY[j]) : "-"});
  }
  const std::size_t left = models.yNames.size() - shown;
  return q2.Text() + "\n" + errors.Text() +
         (left == 0 ? "" : "  and " + std::to_string(left) + " more: JSON gives them all\n");
}

Json NumbersJson(const StoredO2PLS& model) {
  return {{"joint", model.Joint()}, {"xUnique", model.XUnique()}, {"yUnique", model.YUnique()}};
}

Json BothWaysJson(const RefittedModels& models, const StoredO2PLS& model) {
  Json json = RefitJson(models, model.Components());
  json["chosen"] = NumbersJson(model);
  const std::vector<StoredValidationEntry>& x = models.validation.xFromY;
  for (std::size_t a = 0; a < x.size(); ++a) {
    json["components"][a]["xFromY"] = {{"press", JsonNumber(x[a].press)},
                                       {"q2", JsonNumber(x[a].q2)},
                                       {"rmsecv", JsonByName(model.xNames, x[a].rmsecv)}};
  }
  return json;
}

}  // namespace kalmia::analysis
