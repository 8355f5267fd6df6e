#pragma once

#include <cstddef>
#include <string>

#include "kalmia/analysis/steps/StepChain.h"
#include "kalmia/analysis/text/internal/Json.h"

namespace kalmia::analysis {

/// "  1  derivative:1:15:2, channels 2 apart", a line for each step, from the one with index `first` on.
std::string ChainText(const StepChain& chain, std::size_t first = 0);

/// The steps, each with what it has learnt; the empty list for a chain without steps.
Json ChainJson(const StepChain& chain);

}  // namespace kalmia::analysis
