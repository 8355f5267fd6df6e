#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <string>
#include <vector>

#include "kalmia/analysis/model/StoredModel.h"

namespace kalmia::analysis {

// What a model file holds of classes, as docs/model-file.md lists it.

void WriteClasses(const StoredClasses& classes, std::ostream& stream);

/// False also where the names, those of the Y columns, cannot be those of classes: fewer than two, or one twice.
bool ReadClasses(std::istream& stream, const std::vector<std::string>& names, StoredClasses* classes);

}  // namespace kalmia::analysis
