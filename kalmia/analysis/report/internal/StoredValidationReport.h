#pragma once

#include <string>

#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/report/internal/ValidationReport.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

/// What the report of a fit tells of a model of Y that full refits judged: the table by number of components; in a line
/// `kept`, what judged it and `end`; what chose it, its quality, and what tests say.
std::string RefittedYText(const RefittedModels& models, const YModelInfo& model, const RefitValidation& validation,
                          const std::string& kept, const std::string& end);

// What a stored model carries of its validation by full refits, as the report of its fit told it. Nothing of a filter.

/// Tables by number of components, then what tests say; "" without any. Each begins with an empty line.
std::string StoredValidationText(const StoredPLS& model);
std::string StoredValidationText(const StoredPCA& model);
std::string StoredValidationText(const StoredOPLS& model);
std::string StoredValidationText(const StoredO2PLS& model);
std::string StoredValidationText(const StoredFilter& model);

/// The fields `validation`, and of PLS and OPLS `cvAnova`, `permutation`, `classes` and `jackKnife`; null without.
void AddStoredValidationJson(const StoredPLS& model, Json* json);
void AddStoredValidationJson(const StoredPCA& model, Json* json);
void AddStoredValidationJson(const StoredOPLS& model, Json* json);
void AddStoredValidationJson(const StoredO2PLS& model, Json* json);
void AddStoredValidationJson(const StoredFilter& model, Json* json);

}  // namespace kalmia::analysis
