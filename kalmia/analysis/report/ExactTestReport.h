#pragma once

#include <string>

#include "kalmia/analysis/chart/ExactTestResult.h"

namespace kalmia::analysis {

/// The probability, and which tables it counts.
std::string ExactTestText(const ExactTestResult& test);

/// The same as JSON, format kalmia-fisher.
std::string ExactTestJson(const ExactTestResult& test);

}  // namespace kalmia::analysis
