#include "kalmia/analysis/report/internal/StoredValidationReport.h"

#include <cstddef>
#include <vector>

#include "kalmia/analysis/report/internal/ClassReport.h"
#include "kalmia/analysis/report/internal/FitCsv.h"
#include "kalmia/analysis/report/internal/FitReport.h"
#include "kalmia/analysis/text/DisplayText.h"
#include "kalmia/analysis/validation/JackKnife.h"

namespace kalmia::analysis {

namespace {

constexpr double kShare = 0.95;  ///< that intervals cover

std::string Heading(const RefittedModels& models) { return "\nBy number of components, " + FoldsText(models) + "\n"; }

/// What the text leaves to JSON.
std::string JackKnifeText(const StoredValidation& validation) {
  if (!validation.jackKnife) return "";
  return "Jack-knife: standard errors of coefficients" +
         std::string(validation.jackKnife->importances.empty() ? "" : " and of VIP") + ", given by --json\n";
}

template <class Model>
std::string TextOf(const Model& model) {
  if (!model.validation) return ClassText(model);
  const RefittedModels models = RefittedModelsOf(model);
  const std::string tests = CvAnovaText(model.yNames, model.validation->cvAnova) + ClassText(model) +
                            PermutationText(model.validation->permutation) + JackKnifeText(*model.validation);
  return Heading(models) + RefitText(models) + (tests.empty() || tests.front() == '\n' ? "" : "\n") + tests;
}

Json IntervalsJson(const JackKnifeResult& of) {
  return {{"standardErrors", JsonNumbers(of.standardErrors)},
          {"lower", JsonNumbers(of.lower)},
          {"upper", JsonNumbers(of.upper)},
          {"p", JsonNumbers(of.p)}};
}

std::vector<double> RowOf(const RealMatrix& matrix, std::size_t row) {
  const auto begin = matrix.cells.begin() + static_cast<std::ptrdiff_t>(row * matrix.columns);
  return {begin, begin + static_cast<std::ptrdiff_t>(matrix.columns)};
}

Json ImportanceJson(const StoredImportance& of, int degrees) {
  Json json = IntervalsJson(IntervalsOf(of.vip, of.standardErrors, degrees, kShare, /*least=*/0.0));
  json["vip"] = JsonNumbers(of.vip);
  json.erase("p");
  return json;
}

Json JackKnifeJson(const YModelInfo& model, const Coefficients& coefficients) {
  if (!model.validation || !model.validation->jackKnife) return nullptr;
  const StoredJackKnife& jackKnife = *model.validation->jackKnife;
  const int degrees = model.validation->groups - 1;
  Json byName = Json::object();
  for (std::size_t j = 0; j < model.yNames.size(); ++j) {
    std::vector<double> numbers;
    for (const std::vector<double>& slopes : coefficients.slopes) numbers.push_back(slopes[j]);
    numbers.push_back(coefficients.intercepts[j]);
    byName[model.yNames[j]] = IntervalsJson(IntervalsOf(numbers, RowOf(jackKnife.coefficients, j), degrees, kShare));
  }
  Json json = {{"degrees", degrees}, {"coefficients", byName}, {"vip", nullptr}};
  const std::vector<StoredImportance>& importances = jackKnife.importances;
  if (importances.size() == 1) json["vip"] = ImportanceJson(importances.front(), degrees);
  if (importances.size() < 2) return json;
  json["vipPredictive"] = ImportanceJson(importances[0], degrees);
  json["vipOrthogonal"] = ImportanceJson(importances[1], degrees);
  return json;
}

template <class Model>
void AddJson(const Model& model, Json* json) {
  (*json)["validation"] = model.validation ? RefitJson(RefittedModelsOf(model), model.Components()) : Json(nullptr);
  (*json)["cvAnova"] = CvAnovaJson(model);
  (*json)["permutation"] = PermutationJson(model);
  (*json)["classes"] = ClassJson(model);
  (*json)["jackKnife"] = JackKnifeJson(model, CoefficientsOf(model));
}

}  // namespace

std::string RefittedYText(const RefittedModels& models, const YModelInfo& model, const RefitValidation& validation,
                          const std::string& kept, const std::string& end) {
  return RefitText(models) + "\n" + kept + ", " + JudgedText(models) + end + ChoiceText(models, validation.choice) +
         "\n" + QualityText(model) + NestedText(models, validation) + CvAnovaText(model.yNames, models.validation.cvAnova) +
         ClassText(model) + PermutationText(models.validation.permutation);
}

std::string StoredValidationText(const StoredPLS& model) { return TextOf(model); }

std::string StoredValidationText(const StoredOPLS& model) { return TextOf(model); }

std::string StoredValidationText(const StoredPCA& model) {
  if (!model.validation) return "";
  const RefittedModels models = RefittedModelsOf(model);
  return Heading(models) + RefitText(models);
}

std::string StoredValidationText(const StoredO2PLS& model) {
  if (!model.validation) return "";
  const RefittedModels models = RefittedModelsOf(model);
  return Heading(models) + BothWaysText(models);
}

std::string StoredValidationText(const StoredFilter& /*model*/) { return ""; }

void AddStoredValidationJson(const StoredPLS& model, Json* json) { AddJson(model, json); }

void AddStoredValidationJson(const StoredOPLS& model, Json* json) { AddJson(model, json); }

void AddStoredValidationJson(const StoredPCA& model, Json* json) {
  (*json)["validation"] = model.validation ? RefitJson(RefittedModelsOf(model), model.Components()) : Json(nullptr);
}

void AddStoredValidationJson(const StoredO2PLS& model, Json* json) {
  (*json)["validation"] = model.validation ? BothWaysJson(RefittedModelsOf(model), model) : Json(nullptr);
}

void AddStoredValidationJson(const StoredFilter& /*model*/, Json* /*json*/) {}

}  // namespace kalmia::analysis
