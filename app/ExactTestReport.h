#pragma once

#include <string>

#include "app/ExactTest.h"
#include "app/Notes.h"

namespace kalmia::app {

/// The probability, and which tables it counts.
std::string ExactTestText(const ExactTest& test);

/// The same as JSON, format kalmia-fisher.
std::string ExactTestJson(const ExactTest& test, const Notes& notes);

}  // namespace kalmia::app
