#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/model/ComponentRecord.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

// The components of each kind of model, one line each, as they are shown for one just fitted and for a stored one. The
// report of the kind defines them.

/// In place of a table that would have no line.
constexpr auto kNoComponent = "The model has no component.\n";

/// Of PLS; with several Y columns also a line for each component and Y column.
std::string ComponentText(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames);
Json ComponentJson(const std::vector<ComponentRecord>& components, const std::vector<std::string>& yNames);

std::string ComponentText(const std::vector<PCAComponentRecord>& components);
Json ComponentJson(const std::vector<PCAComponentRecord>& components);

std::string ComponentText(const std::vector<OPLSComponentRecord>& components);
Json ComponentJson(const std::vector<OPLSComponentRecord>& components);

std::string ComponentText(const std::vector<O2PLSComponentRecord>& components);
Json ComponentJson(const std::vector<O2PLSComponentRecord>& components);

/// Of a filter: what each takes out of X, and its angle to Y.
std::string ComponentText(const std::vector<FilterComponentRecord>& components);
Json ComponentJson(const std::vector<FilterComponentRecord>& components);

}  // namespace kalmia::analysis
