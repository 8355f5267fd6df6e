#pragma once

#include <string>
#include <vector>

#include "kalmia/analysis/steps/Step.h"
#include "kalmia/support/Export.h"

namespace kalmia::analysis {

/// Reads "log, snv, derivative:1:15:2": steps with commas between them, or each on a line of its own; behind a step its
/// parameters, each after a colon; what is not said takes its default. Blank lines and what follows # are passed over.
/// Throws BadRequest that names the step and says what would be right; `source` is how it calls the text.
KALMIA_EXPORT std::vector<Step> ParseSteps(const std::string& text, const std::string& source);

/// The step as ParseSteps reads it, with every parameter: "derivative:1:15:2".
KALMIA_EXPORT std::string StepText(const Step& step);

/// Whether the parameters lie where ParseSteps would take them; a step from a file may be anything.
KALMIA_EXPORT bool IsValid(const Step& step);
/// Throws BadRequest where a step is not valid, or stands where it cannot; `source` is how messages call the steps.
KALMIA_EXPORT void RequireValid(const std::vector<Step>& steps, const std::string& source);

/// Every step with its parameters, their ranges and defaults, for people who ask for help.
KALMIA_EXPORT std::string StepsHelp();

}  // namespace kalmia::analysis
