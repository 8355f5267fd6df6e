#pragma once

#include <string>

#include "kalmia/analysis/steps/Step.h"

namespace kalmia::analysis {

/// The help text on the tables that the step takes, and on limits of its parameters beyond their ranges: "takes rows in
/// which two cells differ". Empty if it takes any table.
std::string StepLimits(StepKind kind);

/// The help text on numbers and missing cells, for all steps.
std::string CommonStepLimits();

}  // namespace kalmia::analysis
