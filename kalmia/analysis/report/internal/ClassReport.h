#pragma once

#include <optional>
#include <string>

#include "kalmia/analysis/fit/ClassFit.h"
#include "kalmia/analysis/text/internal/Json.h"
#include "kalmia/analysis/validation/RefitValidation.h"

namespace kalmia::analysis {

// What reports of models of classes say beside others. `fit` is empty where Y is numbers: then there is nothing to say.
// `validation` is null without refits.

/// How many rows of each class the model assigns to each, fitted and left out, with sensitivity, specificity and AUC.
std::string ClassText(const std::optional<ClassFit>& fit, const RefitValidation* validation);

/// The field `classes`.
Json ClassJson(const std::optional<ClassFit>& fit, const RefitValidation* validation);

}  // namespace kalmia::analysis
