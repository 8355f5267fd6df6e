#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/model/StoredModel.h"
#include "kalmia/analysis/text/Json.h"

namespace kalmia::analysis {

// Components and the quality of a fit as they are shown for a model just fitted and for a stored one.

/// One line for each component, then, with several Y columns, one for each component and Y column.
std::string ComponentText(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames);
Json ComponentJson(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames);

/// RMSEE and RMSECV of each Y column.
std::string QualityText(const YModelInfo& model);
Json QualityJson(const YModelInfo& model);

/// "significant", "not significant", with ", not kept" behind it.
std::string Verdict(bool significant, bool kept);

}  // namespace kalmia::analysis
