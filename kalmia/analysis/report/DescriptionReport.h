#pragma once

#include <string>

#include "kalmia/analysis/table/Description.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// A line for each column of numbers, then the columns of text, the constant and the empty ones, and the words among
/// numbers.
KALMIA_EXPORT std::string DescriptionText(const Description& description);

/// The same as JSON, format kalmia-describe.
KALMIA_EXPORT std::string DescriptionJson(const Description& description);

}  // namespace kalmia::analysis
