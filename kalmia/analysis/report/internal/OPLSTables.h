#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/text/Json.h"

namespace kalmia::analysis {

// OPLS components as they are shown for a model just fitted and for a stored one: one line each.

std::string OPLSComponentText(const std::vector<OPLSComponentRecord>& components);
Json OPLSComponentJson(const std::vector<OPLSComponentRecord>& components);

/// "predictive 1", "orthogonal 2": what each component is, and its number among those.
std::vector<std::string> OPLSComponentNames(const std::vector<OPLSComponentRecord>& components);

}  // namespace kalmia::analysis
