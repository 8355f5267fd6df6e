#pragma once

#include <string>

#include "kalmia/analysis/text/Failure.h"

namespace kalmia::app {

using namespace analysis;

/// What the failure says, and by which option it may be helped.
std::string MessageOf(const Failure& failure);

}  // namespace kalmia::app
