#pragma once

#include <string>

#include "app/Analysis.h"
#include "kalmia/analysis/steps/GivenSteps.h"

namespace kalmia::app {

/// Reads the steps in the text of --steps, or, where that is empty, those in the file of --steps-file, of either kind.
/// Throws as ParseSteps and ReadStepsFile, and BadFile for a file that cannot be read.
GivenSteps ReadSteps(const std::string& text, const std::string& path);

}  // namespace kalmia::app
