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

/// Models that refits have judged, from 0 on, the one without components, as a model carries them; behind them the
/// model itself where it was given more components than all rounds can have; but not of O2PLS.
struct RefittedModels {
  const StoredValidation& validation;
  std::string groupColumn;          ///< that made the folds; empty for none
  std::vector<std::string> yNames;  ///< none for a model of X
  std::vector<std::string> shownY;  ///< of which texts have a line each, see ShownYNames
  std::size_t model;                ///< that was chosen or given
  // Of each model.
  std::vector<StoredValidationEntry> entries;  ///< of one that was not judged without errors, which are not numbers
  std::vector<Json> numbers;                   ///< fields that count its components: {"components": 2}
  std::vector<std::string> labels;             ///< the same in texts

  /// Whether Y are dummies of classes.
  bool HasClasses() const { return validation.components.front().classes.has_value(); }
  /// Whether the rounds can have the model.
  bool IsJudged() const { return model < validation.components.size(); }
};

/// Of a model that was judged by refits.
RefittedModels RefittedModelsOf(const StoredPLS& model);
RefittedModels RefittedModelsOf(const StoredOPLS& model);
RefittedModels RefittedModelsOf(const StoredO2PLS& model);
RefittedModels RefittedModelsOf(const StoredPCA& model);

/// A line for each model with R2X, R2Y, Q2 and RMSECV, marking the one that is kept; with several Y columns also a line
/// for each model and Y column.
std::string RefitText(const RefittedModels& models);

/// "cross-validated by refits in 7 groups (blocks)".
std::string FoldsText(const RefittedModels& models);

/// What judged the model, with `more` on the folds; of one that the rounds cannot have, what they judged instead.
std::string JudgedText(const RefittedModels& models, const std::string& more = "");

/// What was compared with what to choose the number of components: a line, empty where the number was given. Where
/// there was nothing to choose from, `whyNone`, if it is known, says why.
std::string ChoiceText(const RefittedModels& models, const std::optional<ComponentChoice>& choice,
                       const std::string& whyNone = "");

/// What a model of Y without components says of any row: "the model is the mean of octane".
std::string MeanModelText(const YModelInfo& model);

/// A line for each Y column that has one.
std::string CvAnovaText(const std::vector<std::string>& yNames, const std::vector<std::optional<CvAnova>>& cvAnova);

/// RMSECV, and of classes their accuracies, where each round chose its own number of components; nothing without.
std::string NestedText(const RefittedModels& models, const RefitValidation& validation);
/// The field `nested`; null without one.
Json NestedJson(const RefitValidation* validation);

/// How often models of Y in random order are as good; nothing without such a test.
std::string PermutationText(const std::optional<StoredPermutation>& test);
/// The field `permutation`, with the runs where they are known; null without a test.
Json PermutationJson(const YModelInfo& model, const std::optional<PermutationTest>& test = {});

/// The field `validation` of each method. `chosen` is the number of components of the model.
Json RefitJson(const RefittedModels& models, int chosen);
Json OtherValidationJson(ValidationMethod method, const ModelInfo& model, int chosen);

/// The field `crossValidated`: values of each Y column while the rows were left out; null without refits.
Json CrossValidatedJson(const RefitValidation* validation);

/// The field `cvAnova`: of the Y column, or of each by its name where there are several; null without any.
Json CvAnovaJson(const YModelInfo& model);

// Of O2PLS, whose numbers of components its own rules find.

/// Q2 of both directions, then the errors of each Y column.
std::string BothWaysText(const RefittedModels& models);
/// {"joint": 1, "xUnique": 1, "yUnique": 0}
Json NumbersJson(const StoredO2PLS& model);
/// The field `validation`.
Json BothWaysJson(const RefittedModels& models, const StoredO2PLS& model);

}  // namespace kalmia::analysis
