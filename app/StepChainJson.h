#pragma once

#include "app/Json.h"
#include "app/StepChain.h"

namespace kalmia::app {

/// The steps, each with what it has learnt; the empty list for a chain without steps.
Json ChainJson(const StepChain& chain);

}  // namespace kalmia::app
