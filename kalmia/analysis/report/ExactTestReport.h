#pragma once

#include <string>

#include "kalmia/analysis/chart/ExactTestResult.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// The probability, and which tables it counts.
KALMIA_EXPORT std::string ExactTestText(const ExactTestResult& test);

/// The same as JSON, format kalmia-fisher.
KALMIA_EXPORT std::string ExactTestJson(const ExactTestResult& test);

}  // namespace kalmia::analysis
