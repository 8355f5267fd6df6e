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

/// Also false where the names of the Y columns cannot be names of classes: fewer than two, or one that comes twice.
bool ReadClasses(std::istream& stream, const std::vector<std::string>& names, StoredClasses* classes);

}  // namespace kalmia::analysis
