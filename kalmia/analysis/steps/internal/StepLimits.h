#pragma once

#include <string>

#include "kalmia/analysis/steps/Step.h"

namespace kalmia::analysis {

/// What the step asks of the table, and of its parameters beyond their ranges, as a help text: "takes rows in which two
/// cells differ". Empty if it takes whatever comes.
std::string StepLimits(StepKind kind);

/// What all steps ask of numbers, and do with missing cells: lines of a help text.
std::string CommonStepLimits();

}  // namespace kalmia::analysis
