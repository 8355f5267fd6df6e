#pragma once

#include <string>

#include "kalmia/analysis/file/OPLSCvFile.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

// What a file keeps, as text and as JSON. `file` is how messages call the file.

/// Of a model of any kind: JSON of format kalmia-info, or kalmia-info-pca, -opls, -o2pls or -filter.
KALMIA_EXPORT std::string InfoText(const StoredModel& model, const std::string& file);
KALMIA_EXPORT std::string InfoJson(const StoredModel& model, const std::string& file);

/// Of saved steps: JSON of format kalmia-info-steps.
KALMIA_EXPORT std::string InfoText(const StepChain& chain, const std::string& file);
KALMIA_EXPORT std::string InfoJson(const StepChain& chain, const std::string& file);

/// Of a stored cross-validation of OPLS: JSON of format kalmia-info-crossvalidation.
KALMIA_EXPORT std::string InfoText(const StoredOPLSCv& cv, const std::string& file);
KALMIA_EXPORT std::string InfoJson(const StoredOPLSCv& cv, const std::string& file);

}  // namespace kalmia::analysis
