#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/validation/ComponentChoice.h"
#include "kalmia/analysis/validation/CvAnova.h"
#include "kalmia/analysis/validation/Folds.h"
#include "kalmia/analysis/validation/LeftOutErrors.h"
#include "kalmia/analysis/validation/PermutationTest.h"
#include "kalmia/analysis/validation/RefitValidation.h"
#include "kalmia/analysis/validation/ValidationRecipe.h"

namespace kalmia::analysis {

// What the reports of fits say of their validation, whatever was fitted.

/// Models that refits have judged, from 0 on, the one without components.
struct RefittedModels {
  const ValidationRecipe& recipe;
  const Folds& folds;
  const std::string& groupColumn;               ///< that made the folds; empty for none
  const std::optional<ComponentChoice>& choice;
  std::size_t model;                            ///< that was chosen or given
  const RowErrors& errors;
  const LeftOutErrors* ofY;                     ///< the same with the errors of each Y column; null for a model of X
  std::vector<std::string> yNames;
  // Of each model.
  std::vector<Json> numbers;        ///< fields that count its components: {"components": 2}
  std::vector<std::string> labels;  ///< the same in texts
  std::vector<double> r2x;          ///< described shares, where the model is fitted to all rows
  std::vector<double> r2y;          ///< none for a model of X
};

/// Of models of Y, called by the number of their components.
RefittedModels RefittedModelsOf(const RefitValidation& validation, const ValidationRecipe& recipe,
                                const std::string& groupColumn);

/// A line for each model with R2X, R2Y, Q2 and RMSECV, marking the one that is kept; with several Y columns also a line
/// for each model and Y column.
std::string RefitText(const RefittedModels& models);

/// "cross-validated by refits in 7 groups (blocks)".
std::string FoldsText(const RefittedModels& models);

/// What was compared with what to choose the number of components: a line, empty where the number was given.
std::string ChoiceText(const RefittedModels& models);

/// A line for each Y column that has one.
std::string CvAnovaText(const std::vector<std::string>& yNames, const std::vector<std::optional<CvAnova>>& cvAnova);

/// RMSECV where each round chose its own number of components; nothing without.
std::string NestedText(const RefitValidation& validation);
/// The field `nested`; null without one.
Json NestedJson(const RefitValidation* validation);

/// How often models of Y in random order are as good; nothing without such a test.
std::string PermutationText(const std::optional<PermutationTest>& test);
/// The field `permutation`; null without one.
Json PermutationJson(const std::optional<PermutationTest>& test);

/// The field `validation` of each method. `chosen` is the number of components of the model.
Json RefitJson(const RefittedModels& models, int chosen);
Json OtherValidationJson(ValidationMethod method, const ModelInfo& model, int chosen);

/// The field `crossValidated`: values of each Y column while the rows were left out; null without refits.
Json CrossValidatedJson(const RefitValidation* validation);

/// The field `cvAnova`: of the Y column, or of each by its name where there are several; null without refits.
Json CvAnovaJson(const RefitValidation* validation);

}  // namespace kalmia::analysis
