#pragma once

#include <string>

#include "kalmia/analysis/chart/ExactTest.h"
#include "kalmia/analysis/text/Notes.h"

namespace kalmia::analysis {

/// The probability, and which tables it counts.
std::string ExactTestText(const ExactTest& test);

/// The same as JSON, format kalmia-fisher.
std::string ExactTestJson(const ExactTest& test, const Notes& notes);

}  // namespace kalmia::analysis
