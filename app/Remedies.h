#pragma once

#include <string>

#include "app/Failure.h"

namespace kalmia::app {

/// What the failure says, and by which option it may be helped.
std::string MessageOf(const Failure& failure);

}  // namespace kalmia::app
