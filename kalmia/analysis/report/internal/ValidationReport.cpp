#include "kalmia/analysis/report/internal/ValidationReport.h"

#include <cmath>

#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/text/Numbers.h"
#include "kalmia/analysis/text/internal/TextTable.h"

namespace kalmia::analysis {

namespace {

constexpr int kErrorDigits = 5;
constexpr int kPDigits = 3;
constexpr int kDigits = 4;  ///< of what was compared
constexpr auto kOfLabels = "group-column";  ///< how folds by labels are called
using Align = TextTable::Align;

std::string MarkOf(const RefittedModels& models, std::size_t model) {
  if (model != models.model) return "";
  return models.choice ? "chosen" : "given";
}

bool HasOneY(const RefittedModels& models) { return models.yNames.size() == 1; }

std::string PerYText(const RefittedModels& models) {
  TextTable table;
  table.AddColumn("components", Align::Right);
  table.AddColumn("Y", Align::Left);
  for (const char* title : {"Q2", "RMSECV"}) table.AddColumn(title, Align::Right);
  for (std::size_t a = 0; a < models.labels.size(); ++a) {
    for (std::size_t j = 0; j < models.yNames.size(); ++j) {
      table.AddRow({j == 0 ? models.labels[a] : "", models.yNames[j], ShareText(models.ofY->q2PerY(a, j)),
                    Significant(models.ofY->rmsecv(a, j), kErrorDigits)});
    }
  }
  return table.Text();
}

/// "3 components", "1 + 2 components".
std::string ComponentsText(const RefittedModels& models, std::size_t model) {
  return models.labels[model] + (models.labels[model] == "1" ? " component" : " components");
}

Json JsonByName(const std::vector<std::string>& names, const RealMatrix& numbers, std::size_t row) {
  Json json = Json::object();
  for (std::size_t j = 0; j < names.size(); ++j) json[names[j]] = JsonNumber(numbers(row, j));
  return json;
}

Json CvAnovaJson(const std::optional<CvAnova>& anova) {
  if (!anova) return nullptr;
  return {{"f", JsonNumber(anova->f)}, {"df1", anova->df1}, {"df2", anova->df2}, {"p", JsonNumber(anova->p)}};
}

}  // namespace

RefittedModels RefittedModelsOf(const RefitValidation& validation, const ValidationRecipe& recipe,
                                const std::string& groupColumn) {
  RefittedModels models{recipe, validation.folds, groupColumn, validation.choice, validation.model,
                        validation.errors, &validation.errors, validation.yNames, {}, {}, validation.r2x,
                        validation.r2y};
  for (std::size_t a = 0; a <= validation.errors.MostComponents(); ++a) {
    models.numbers.push_back({{"components", validation.ComponentsOf(a)}});
    models.labels.push_back(std::to_string(validation.ComponentsOf(a)));
  }
  return models;
}

std::string RefitText(const RefittedModels& models) {
  TextTable table;
  table.AddColumn("components", Align::Right);
  table.AddColumn("R2X", Align::Right);
  if (models.ofY != nullptr) table.AddColumn("R2Y", Align::Right);
  table.AddColumn("Q2", Align::Right);
  if (HasOneY(models)) table.AddColumn("RMSECV", Align::Right);
  table.AddColumn("", Align::Left);
  for (std::size_t a = 0; a < models.labels.size(); ++a) {
    std::vector<std::string> cells = {models.labels[a], ShareText(models.r2x[a])};
    if (models.ofY != nullptr) cells.push_back(ShareText(models.r2y[a]));
    cells.push_back(ShareText(models.errors.q2[a]));
    if (HasOneY(models)) cells.push_back(Significant(models.ofY->rmsecv(a, 0), kErrorDigits));
    cells.push_back(MarkOf(models, a));
    table.AddRow(cells);
  }
  return table.Text() + (models.yNames.size() > 1 ? "\n" + PerYText(models) : "");
}

std::string FoldsText(const RefittedModels& models) {
  std::string how = WordOfFoldScheme(models.recipe.folds.scheme);
  if (!models.groupColumn.empty()) how = "those of " + OneLine(models.groupColumn);
  const int repeats = models.folds.Repeats();
  return "cross-validated by refits in " + std::to_string(models.folds.groups) + " groups (" + how + ")" +
         (repeats > 1 ? ", repeated " + std::to_string(repeats) + " times" : "");
}

std::string ChoiceText(const RefittedModels& models) {
  if (!models.choice) return "";
  const ComponentChoice& choice = *models.choice;
  const std::string lead = "Rule " + WordOfSelectionRule(choice.rule) + ": ";
  const std::string limit = Significant(choice.limit, kDigits), best = ComponentsText(models, choice.best);
  const std::string compared = Significant(choice.compared[choice.chosen], kDigits);
  switch (choice.rule) {
    case SelectionRule::OneSE:
      return lead + "the fewest whose squared error of left-out rows, " + compared + " in the mean,\nis at most " +
             limit + ", the least (with " + best + ") and its standard error.\n";
    case SelectionRule::Randomisation:
      return lead + "the fewest whose errors of left-out rows are not larger than those of " + best + ",\n" +
             "the least, with p above " + limit + ": p is " + compared + ".\n";
    case SelectionRule::Min:
      return lead + "the least squared error of left-out rows, " + compared + " in the mean.\n";
    case SelectionRule::Q2: break;
  }
  if (choice.chosen + 1 == choice.compared.size()) {
    return lead + "each lowers the squared error of left-out rows by more than " + limit + " of it.\n";
  }
  return lead + "one more lowers the squared error of left-out rows by " +
         Significant(choice.compared[choice.chosen + 1], kDigits) + " of it, not by more than " + limit + ".\n";
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

std::string NestedText(const RefitValidation& validation) {
  if (!validation.nested) return "";
  std::string text = "Double cross-validation, where each round chooses its own number: RMSECV ";
  for (std::size_t j = 0; j < validation.yNames.size(); ++j) {
    text += (j > 0 ? ", " : "") + Significant(validation.nested->rmsecv[j], kErrorDigits) + " of " +
            OneLine(validation.yNames[j]);
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
  return {{"chosen", chosen}, {"q2", JsonNumber(nested.q2)}, {"rmsecv", rmsecv}, {"q2PerY", q2PerY}};
}

std::string PermutationText(const std::optional<PermutationTest>& test) {
  if (!test) return "";
  const PermutationJudgement& of = test->judgement;
  return "Permutation test, against " + Counted(test->runs.size(), "model") + " of Y in random order: p " +
         Significant(of.pR2, kPDigits) + " of R2, " + Significant(of.pQ2, kPDigits) + " of Q2" +
         (std::isnan(of.pAccuracy) ? "" : ", " + Significant(of.pAccuracy, kPDigits) + " of accuracy") +
         "; intercepts " + Significant(of.interceptR2, kDigits) + " and " + Significant(of.interceptQ2, kDigits) + "\n";
}

Json PermutationJson(const std::optional<PermutationTest>& test) {
  if (!test) return nullptr;
  const PermutationJudgement& of = test->judgement;
  Json runs = Json::array();
  for (const PermutationRun& run : test->runs) {
    const double correlation = run.correlation;
    runs.push_back({{"correlation", JsonNumber(correlation)}, {"r2", JsonNumber(run.r2)}, {"q2", JsonNumber(run.q2)}});
    if (!std::isnan(run.accuracy)) runs.back()["accuracy"] = JsonNumber(run.accuracy);
  }
  Json json = {{"n", test->runs.size()},
          {"pR2", JsonNumber(of.pR2)},
          {"pQ2", JsonNumber(of.pQ2)},
          {"interceptR2", JsonNumber(of.interceptR2)},
          {"interceptQ2", JsonNumber(of.interceptQ2)},
          {"runs", runs}};
  if (!std::isnan(of.pAccuracy)) json["pAccuracy"] = JsonNumber(of.pAccuracy);
  return json;
}

Json RefitJson(const RefittedModels& models, int chosen) {
  const bool isOfLabels = !models.groupColumn.empty();
  Json list = Json::array();
  for (std::size_t a = 0; a < models.numbers.size(); ++a) {
    Json row = models.numbers[a];
    row["r2x"] = JsonNumber(models.r2x[a]);
    if (models.ofY != nullptr) row["r2y"] = JsonNumber(models.r2y[a]);
    row["press"] = JsonNumber(models.errors.press[a]);
    row["q2"] = JsonNumber(models.errors.q2[a]);
    if (models.ofY != nullptr) {
      row["rmsecv"] = JsonByName(models.yNames, models.ofY->rmsecv, a);
      row["q2PerY"] = JsonByName(models.yNames, models.ofY->q2PerY, a);
    }
    list.push_back(row);
  }
  return {{"method", WordOfValidationMethod(ValidationMethod::Refit)},
          {"folds", isOfLabels ? kOfLabels : WordOfFoldScheme(models.recipe.folds.scheme)},
          {"groupColumn", TextOrNull(models.groupColumn)},
          {"groups", models.folds.groups},
          {"repeats", models.folds.Repeats()},
          {"seed", models.recipe.folds.seed},
          {"rule", models.choice ? Json(WordOfSelectionRule(models.choice->rule)) : Json(nullptr)},
          {"chosen", chosen},
          {"components", list}};
}

Json OtherValidationJson(ValidationMethod method, const ModelInfo& model, int chosen) {
  const bool hasFolds = method != ValidationMethod::None;
  const std::string folds = model.groupColumn.empty() ? WordOfFoldScheme(FoldScheme::Interleaved) : kOfLabels;
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

Json CvAnovaJson(const RefitValidation* validation) {
  if (validation == nullptr || !validation->IsJudged() || validation->classes) return nullptr;
  if (validation->cvAnova.size() == 1) return CvAnovaJson(validation->cvAnova.front());
  Json json = Json::object();
  for (std::size_t j = 0; j < validation->cvAnova.size(); ++j) {
    json[validation->yNames[j]] = CvAnovaJson(validation->cvAnova[j]);
  }
  return json;
}

}  // namespace kalmia::analysis
